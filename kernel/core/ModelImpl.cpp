#include "ModelImpl.hpp"

#include "brant/zero/Core.hpp"
#include "brant/zero/Storage.hpp"
#include "brant/zero/Text.hpp"

#include <algorithm>
#include <exception>

namespace brant::zero {

namespace {

void makeRoom(std::vector<ModelElementImpl*>& list) {
    if (list.size() == list.capacity()) list.reserve(list.size() * 2 + 16);
}

} // namespace

ModelImpl::ModelImpl(boost::uuids::uuid const& uuid) : ElementImpl(uuid), transactions_(*this) {}
ModelImpl::~ModelImpl() = default;

void ModelImpl::dispose() noexcept {
    beginDestruction();
    tearDown();
    delete this;
}

void ModelImpl::tearDown() noexcept {
    // References go first, so that no element is deleted while another still points at it: cycles are broken
    // and nothing recurses, however deep the model is.
    valid_ = false;
    for (auto const& [proxy, id] : proxies_) {
        proxy->valid_ = false;
        proxy->liveness_ = Liveness::ModelGone;
    }
    for (ModelElementImpl* element : elements_) {
        if (m_callback != nullptr) element->invalidate();
        element->valid_ = false;
        element->liveness_ = Liveness::ModelGone;
        element->container_ = nullptr;
        element->feature_ = nullptr;
    }
    for (ModelElementImpl* element : elements_)
        Core::dropLinks(*element);
    for (ModelElementImpl* element : elements_)
        element->removeRef();
    elements_.clear();
    topLevel_.clear();
}

Transaction ModelImpl::beginTransaction(bool) {
    return Transaction(This(), transactions_.begin());
}

std::vector<ModelElement> ModelImpl::getTopLevelElements() const {
    std::vector<ModelElement> result;
    result.reserve(topLevel_.size() - topLevelHoles_);
    for (ModelElementImpl* element : topLevel_)
        if (element != nullptr) result.emplace_back(element);
    return result;
}

ModelElement ModelImpl::findElement(boost::uuids::uuid const& uuid, FindElementBehavior) {
    ensureIdentities();
    return ModelElement(identities_.find(uuid));
}

ModelElementImpl* ModelImpl::resolveProxy(ModelElementImpl const*, ModelElementImpl* proxy) {
    auto const entry = proxies_.find(proxy);
    if (entry == proxies_.end()) return proxy;
    boost::uuids::uuid uuid;
    if (entry->second.isExternal() || !parseUuid(toUtf8(entry->second.element), uuid)) return proxy;
    ensureIdentities();
    ModelElementImpl* found = identities_.find(uuid);
    return found != nullptr && found->classTable().conformsTo(proxy->classTable()) ? found : proxy;
}

ProxyId const& ModelImpl::proxyId(ModelElementImpl const& proxy) const {
    return proxies_.at(const_cast<ModelElementImpl*>(&proxy));
}

void ModelImpl::expect(boost::uuids::uuid const& uuid) {
    if (!uuid.is_nil()) ensureIdentities();
}

void ModelImpl::ensureIdentities() {
    if (!identities_.built()) identities_.build();
}

void ModelImpl::enter(ModelElementImpl& element) {
    // All that can fail comes first.
    makeRoom(elements_);
    makeRoom(topLevel_);
    auto const slot = static_cast<std::uint32_t>(elements_.size());
    if (identities_.built() && !identities_.insert(element.uuid(), slot))
        reportException(brant0::messages::UniquenessConstraint());
    enterTopLevel(element);
    element.registrySlot_ = slot;
    elements_.push_back(&element);
    element.addRef();
}

void ModelImpl::reenter(ModelElementImpl& element) noexcept {
    element.registrySlot_ = static_cast<std::uint32_t>(elements_.size());
    elements_.push_back(&element);
    if (identities_.built()) identities_.add(element.uuid(), element.registrySlot_);
}

void ModelImpl::leave(ModelElementImpl& element) noexcept {
    std::uint32_t const slot = element.registrySlot_;
    ModelElementImpl* const last = elements_.back();
    if (identities_.built()) {
        identities_.erase(element.uuid(), slot);
        if (last != &element) identities_.move(last->uuid(), last->registrySlot_, slot);
    }
    elements_[slot] = last;
    last->registrySlot_ = slot;
    elements_.pop_back();
    element.removeRef();
}

void ModelImpl::enterTopLevel(ModelElementImpl& element) {
    topLevel_.push_back(&element);
    element.order_ = static_cast<std::uint32_t>(topLevel_.size() - 1);
}

void ModelImpl::enterTopLevelAt(ModelElementImpl& element, std::uint32_t slot) noexcept {
    while (topLevel_.size() <= slot) {
        topLevel_.push_back(nullptr);
        ++topLevelHoles_;
    }
    // An element made in the abandoned level may stand in the slot; it is about to go.
    if (topLevel_[slot] == nullptr) --topLevelHoles_;
    topLevel_[slot] = &element;
    element.order_ = slot;
}

void ModelImpl::leaveTopLevel(ModelElementImpl& element) noexcept {
    std::uint32_t const slot = element.order_;
    if (slot >= topLevel_.size() || topLevel_[slot] != &element) return;
    topLevel_[slot] = nullptr;
    ++topLevelHoles_;
    while (!topLevel_.empty() && topLevel_.back() == nullptr) {
        topLevel_.pop_back();
        --topLevelHoles_;
    }
}

void ModelImpl::settle() noexcept {
    if (topLevelHoles_ < 64 || topLevelHoles_ * 2 < topLevel_.size()) return;
    std::size_t used = 0;
    for (ModelElementImpl* element : topLevel_)
        if (element != nullptr) {
            element->order_ = static_cast<std::uint32_t>(used);
            topLevel_[used++] = element;
        }
    topLevel_.resize(used);
    topLevelHoles_ = 0;
}

void ModelImpl::addProxy(ModelElementImpl& proxy, ProxyId id) {
    proxies_.emplace(&proxy, std::move(id));
    proxy.state_ |= ModelElementImpl::Proxy;
}

void ModelImpl::removeProxy(ModelElementImpl& proxy) noexcept {
    proxies_.erase(&proxy);
}

std::shared_ptr<Subscription::Entry> ModelImpl::subscribe(std::function<void(CommitNotice const&)> callback) {
    auto entry = std::make_shared<Subscription::Entry>();
    entry->callback = std::move(callback);
    subscriptions_.push_back(entry);
    return entry;
}

bool ModelImpl::observed() noexcept {
    std::erase_if(subscriptions_, [](auto const& entry) { return !entry->active; });
    return !subscriptions_.empty();
}

void ModelImpl::settleNotices() {
    for (; settled_ < pending_.size(); ++settled_) {
        for (ElementChange const& change : pending_[settled_].changed)
            change.build();
        for (ElementChange const& change : pending_[settled_].destroyed)
            change.build();
    }
}

void ModelImpl::deliver(CommitNotice notice) {
    pending_.push_back(std::move(notice));
    if (delivering_) return;
    Model const keep = This(); // a callback may drop the last handle
    delivering_ = true;
    std::exception_ptr failure;
    while (!pending_.empty()) {
        // The front stays in the queue while it is delivered, so that its old values are built before a
        // callback writes.
        for (auto const& entry : std::vector(subscriptions_)) {
            if (!entry->active) continue;
            try {
                entry->callback(pending_.front());
            } catch (...) {
                if (!failure) failure = std::current_exception();
            }
        }
        for (auto const* changes : {&pending_.front().changed, &pending_.front().destroyed})
            for (ElementChange const& change : *changes)
                change.close();
        pending_.pop_front();
        settled_ -= settled_ > 0;
    }
    delivering_ = false;
    if (failure) std::rethrow_exception(failure);
}

} // namespace brant::zero
