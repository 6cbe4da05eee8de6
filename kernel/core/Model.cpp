// Handles on models, transactions and subscriptions.

#include "brant/zero/Model.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Storage.hpp"
#include "brant/zero/meta/KernelPackage.hpp"
#include "brant/zero/meta/Names.hpp"

#include <stdexcept>

namespace brant::zero {

WorkQueue::~WorkQueue() = default;

namespace {

class InlineQueue final : public WorkQueue {
  public:
    void post(std::function<void()> work) override { work(); }
};

} // namespace

std::shared_ptr<WorkQueue> DefaultWorkQueueFactory::operator()(TransactionCoordinator const*) const {
    return std::make_shared<InlineQueue>();
}

Model::Model(ModelImpl* impl) noexcept : impl_(impl) {
    if (impl_ != nullptr) impl_->addRef();
}
Model::Model(Model const& other) noexcept : Model(other.impl_) {}
Model& Model::operator=(Model const& other) noexcept {
    Model copy(other);
    std::swap(impl_, copy.impl_);
    return *this;
}
Model& Model::operator=(Model&& other) noexcept {
    Model taken(std::move(other));
    std::swap(impl_, taken.impl_);
    return *this;
}
Model::~Model() {
    if (impl_ != nullptr) impl_->removeRef();
}

Model::operator bool() const noexcept {
    return impl_ != nullptr && impl_->valid();
}

namespace {

ModelImpl& checkedModel(ModelImpl* impl) {
    if (impl == nullptr || !impl->valid())
        throw DeadHandle(impl == nullptr ? HandleState::Null : HandleState::ModelGone);
    return *impl;
}

} // namespace

Model Model::create(boost::uuids::uuid const& uuid, ModelConstellation const& constellation,
                    std::function<std::shared_ptr<WorkQueue>(TransactionCoordinator*)> const& queueFactory) {
    Model model(new ModelImpl(uuid));
    model.impl_->setConstellation(constellation);
    if (queueFactory) model.impl_->setQueue(queueFactory(&model.impl_->transactions()));
    return model;
}

meta::Class const& Model::metaClass() {
    return meta::KernelPackage::getInstance().modelClass();
}
boost::uuids::uuid Model::uuid() const {
    return checkedModel(impl_).uuid();
}
Transaction Model::beginTransaction(bool topLevel) const {
    return checkedModel(impl_).beginTransaction(topLevel);
}
std::vector<ModelElement> Model::getTopLevelElements() const {
    return checkedModel(impl_).getTopLevelElements();
}
ModelElement Model::findElement(boost::uuids::uuid const& uuid, FindElementBehavior behavior) const {
    return checkedModel(impl_).findElement(uuid, behavior);
}
std::size_t Model::size() const {
    return checkedModel(impl_).elements().size();
}
void Model::forEachElement(std::function<void(ModelElementImpl const&)> const& visit) const {
    for (ModelElementImpl const* element : checkedModel(impl_).elements())
        visit(*element);
}
Subscription Model::onCommit(std::function<void(CommitNotice const&)> callback) const {
    return Subscription(checkedModel(impl_).subscribe(std::move(callback)));
}

ModelElement Model::createProxy(meta::Class const& metaClass, ProxyId const& id) const {
    ModelImpl& model = checkedModel(impl_);
    schema::ClassTable const* table = meta::tableOf(metaClass);
    if (table == nullptr || table->construct == nullptr) reportException(brant0::messages::InvalidValue());
    struct Making {
        Making() { Core::makingProxy() = true; }
        ~Making() { Core::makingProxy() = false; }
    };
    ModelElement proxy;
    {
        Making const making;
        proxy = ModelElement(table->construct(&model, {}));
    }
    model.addProxy(*proxy.get(), id);
    return proxy;
}

// Transactions.

Transaction::Transaction(Transaction&& other) noexcept
    : model_(std::move(other.model_)), level_(std::exchange(other.level_, 0)) {}

Transaction::~Transaction() {
    rollback();
}

void Transaction::commit() {
    if (level_ == 0) return;
    TransactionCoordinator& transactions = checkedModel(model_.get()).transactions();
    transactions.requireInnermost(level_);
    std::size_t const level = std::exchange(level_, 0);
    try {
        transactions.commit(level);
    } catch (...) {
        // What a callback threw leaves nothing to abandon.
        transactions.abandon(level);
        throw;
    }
}

void Transaction::commit(boost::optional<Value> const&) {
    commit();
}

void Transaction::rollback() {
    if (std::size_t const level = std::exchange(level_, 0); level != 0 && model_)
        model_.get()->transactions().abandon(level);
}

Subscription& Subscription::operator=(Subscription&& other) noexcept {
    cancel();
    entry_ = std::move(other.entry_);
    return *this;
}
Subscription::~Subscription() {
    cancel();
}
void Subscription::cancel() noexcept {
    if (entry_ != nullptr) entry_->active = false;
    entry_ = nullptr;
}

Model::Thawer::Thawer(Model model) noexcept : model_(std::move(model)) {
    model_.get()->thaw();
}
Model::Thawer::~Thawer() {
    if (model_.get() != nullptr) model_.get()->refreeze();
}
Model::Freezer::Freezer(Model model) : model_(std::move(model)) {
    model_.get()->freeze();
}
Model::Thawer Model::Freezer::thaw() const {
    return Thawer(model_);
}

// Notices.

ElementChange::ElementChange(ModelElement element, std::shared_ptr<Storage> storage)
    : element_(std::move(element)), storage_(std::move(storage)) {}

boost::uuids::uuid const& ElementChange::uuid() const noexcept {
    return storage_->uuid();
}
meta::Class const& ElementChange::getMetaClass() const {
    return storage_->getMetaClass();
}
std::vector<meta::Property> ElementChange::properties() const {
    std::vector<meta::Property> result;
    schema::ClassTable const& table = element_.get()->classTable();
    for (std::size_t i = 1; i < table.count; ++i)
        if (storage_->changed(i)) result.push_back(Core::propertyOf(table.stored[i]));
    return result;
}
Value ElementChange::oldValue(meta::Property const& property) const {
    return storage_->getOldValue(property, ReflectionPrivateTag::PUBLIC_ACCESS);
}
void ElementChange::build() const {
    storage_->buildAll();
}
void ElementChange::close() const noexcept {
    storage_->close();
}

} // namespace brant::zero
