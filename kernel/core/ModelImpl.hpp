/// The body of a model.
#pragma once

#include "IdentityIndex.hpp"
#include "TransactionCoordinator.hpp"
#include "brant/zero/Model.hpp"

#include <deque>
#include <unordered_map>

namespace brant::zero {

struct Subscription::Entry {
    std::function<void(CommitNotice const&)> callback;
    bool active = true;
};

class ZELKOR_API ModelImpl final : public ElementImpl {
  public:
    explicit ModelImpl(boost::uuids::uuid const& uuid);

    [[nodiscard]] TransactionCoordinator& transactions() noexcept { return transactions_; }
    [[nodiscard]] Model This() { return Model(this); }
    Transaction beginTransaction(bool topLevel);
    [[nodiscard]] std::vector<ModelElement> getTopLevelElements() const;
    [[nodiscard]] ModelElement findElement(boost::uuids::uuid const& uuid, FindElementBehavior behavior);
    /// \returns the element that the placeholder stands for, or the placeholder.
    [[nodiscard]] ModelElementImpl* resolveProxy(ModelElementImpl const* requester, ModelElementImpl* proxy);
    [[nodiscard]] ModelElementImpl* peekResolveProxy(ModelElementImpl const* requester,
                                                     ModelElementImpl* proxy) {
        return resolveProxy(requester, proxy);
    }
    [[nodiscard]] ProxyId const& proxyId(ModelElementImpl const& proxy) const;

    /// Has `enter` look whether the identity is taken; for those that a caller chose, which the nil UUID is
    /// not.
    void expect(boost::uuids::uuid const& uuid);
    /// \throws UniquenessConstraint when the identity is known to be taken.
    void enter(ModelElementImpl& element);
    /// Drops the model's count.
    void leave(ModelElementImpl& element) noexcept;
    /// Takes a destroyed element back; its count is handed over.
    void reenter(ModelElementImpl& element) noexcept;
    void enterTopLevel(ModelElementImpl& element);
    void enterTopLevelAt(ModelElementImpl& element, std::uint32_t slot) noexcept;
    void leaveTopLevel(ModelElementImpl& element) noexcept;
    void addProxy(ModelElementImpl& proxy, ProxyId id);
    void removeProxy(ModelElementImpl& proxy) noexcept;

    [[nodiscard]] std::vector<ModelElementImpl*> const& elements() const noexcept { return elements_; }
    [[nodiscard]] std::vector<ModelElementImpl*> const& topLevelSlots() const noexcept { return topLevel_; }
    [[nodiscard]] IdentityIndex& identities() noexcept { return identities_; }

    std::shared_ptr<Subscription::Entry> subscribe(std::function<void(CommitNotice const&)> callback);
    [[nodiscard]] bool observed() noexcept;
    void deliver(CommitNotice notice);
    /// Trims the top-level list once no transaction is open.
    void settle() noexcept;
    /// Has old values that are still to be delivered built before anything changes again.
    void settleNotices();

    void setQueue(std::shared_ptr<WorkQueue> queue) noexcept { queue_ = std::move(queue); }
    void setConstellation(ModelConstellation constellation) { constellation_ = std::move(constellation); }
    void freeze() noexcept { frozen_ = true; }
    void thaw() noexcept { ++thawed_; }
    void refreeze() noexcept { --thawed_; }
    [[nodiscard]] bool writable() const noexcept { return !frozen_ || thawed_ > 0; }

  private:
    ~ModelImpl() override;
    void dispose() noexcept override;
    void tearDown() noexcept;
    void ensureIdentities();

    std::vector<ModelElementImpl*> elements_; ///< counted; order of no meaning
    std::vector<ModelElementImpl*> topLevel_; ///< by slot; null where an element has left
    std::size_t topLevelHoles_ = 0;
    IdentityIndex identities_{elements_};
    std::unordered_map<ModelElementImpl*, ProxyId> proxies_; ///< not counted; a placeholder takes itself out
    TransactionCoordinator transactions_;
    std::vector<std::shared_ptr<Subscription::Entry>> subscriptions_;
    std::deque<CommitNotice> pending_;
    std::size_t settled_ = 0; ///< of the pending ones, how many have their old values built
    bool delivering_ = false;
    std::shared_ptr<WorkQueue> queue_;
    ModelConstellation constellation_;
    bool frozen_ = false;
    int thawed_ = 0;
};

} // namespace brant::zero
