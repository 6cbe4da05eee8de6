// What collections share, and the kernel's private doors to them.

#include "ModelImpl.hpp"
#include "brant/zero/Collection.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/Property.hpp"

namespace brant::zero {

AbstractOwnedCollection::Operation::Operation(AbstractOwnedCollection& collection)
    : model_(nullptr), level_(0) {
    ModelElementImpl* owner = collection.owner();
    if (owner != nullptr) {
        Core::requireAlive(*owner);
        Core::requireWritable(*owner);
    }
    if (owner == nullptr || owner->model() == nullptr || !collection.row().stored()) return;
    model_ = owner->model();
    level_ = model_->transactions().begin();
}

AbstractOwnedCollection::Operation::~Operation() {
    if (model_ != nullptr) model_->transactions().abandon(level_);
}

void AbstractOwnedCollection::Operation::commit() {
    ModelImpl* const model = std::exchange(model_, nullptr);
    if (model == nullptr) return;
    try {
        model->transactions().commit(level_);
    } catch (...) {
        // Either the commit stood and a callback threw, or it was refused and the level is still open.
        model->transactions().abandon(level_);
        throw;
    }
}

void AbstractOwnedCollection::modifying() {
    Core::recordTouch(*this);
}

meta::Property AbstractOwnedCollection::getCollectionProperty() const {
    return Core::propertyOf(&row());
}

meta::Type ReferenceCollection::getCollectionType() const {
    return row().target->metaClass();
}

void ReferenceCollection::copyContents(AbstractOwnedCollection const& other) {
    basicCopyValues(static_cast<ReferenceCollection const&>(other));
}

meta::Property ReferenceCollection::getOpposite() const {
    return Core::propertyOf(row().opposite);
}

void ReferenceCollection::checkCompatibleModel(ModelElement const& element) const {
    Core::requireSameModel(owner(), element.get());
}

ModelElement ReferenceCollection::resolveProxy(ModelElement const& proxy) const {
    ModelElementImpl* holder = owner();
    if (holder == nullptr || holder->model() == nullptr || proxy == nullptr) return proxy;
    return ModelElement(holder->model()->resolveProxy(holder, proxy.get()));
}

ModelElement ReferenceCollection::peekResolveProxy(ModelElement const& proxy) const {
    return resolveProxy(proxy);
}

void ReferenceCollection::genericEnsureAt(ModelElement const& element, unsigned long) {
    genericAdd(element);
}

bool ReferenceCollection::conforms(ModelElement const& element) const noexcept {
    return element.get()->classTable().conformsTo(*row().target);
}

void ReferenceCollection::requireConforming(ModelElement const& element) const {
    if (!conforms(element))
        reportException(brant0::messages::CannotAddIncompatibleTypes(
            meta::qualifiedName(element.get()->getMetaClass()), meta::qualifiedName(getCollectionType())));
}

std::unique_ptr<AbstractOwnedCollection> Core::snapshotOf(AbstractOwnedCollection const& collection) {
    return collection.snapshot();
}

void Core::applyInverse(AbstractOwnedCollection& snapshot, UndoEntry const& entry) {
    snapshot.applyInverse(entry);
}

void Core::dropContents(AbstractOwnedCollection& collection) noexcept {
    collection.dropContents();
}

std::size_t Core::sizeUpToTwo(AbstractOwnedCollection const& collection) {
    auto& members = const_cast<AbstractOwnedCollection&>(collection);
    std::size_t const size = members.asReferences() != nullptr
                                 ? members.asReferences()->genericSize()
                                 : static_cast<AbstractPrimitiveCollection const&>(collection).size();
    return size > 1 ? 2 : 1;
}

void Core::replaceByProxy(ReferenceCollection& collection, ModelElement const& target,
                          ModelElement const& proxy) {
    AbstractOwnedCollection::Operation operation(collection);
    collection.modifying();
    collection.basicRemove(target);
    collection.basicAddWithProxy(proxy);
    operation.commit();
}

bool& Core::makingProxy() noexcept {
    thread_local bool making = false;
    return making;
}

} // namespace brant::zero
