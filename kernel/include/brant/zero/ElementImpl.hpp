/// \file
/// Identity, reference count and liveness: what elements and models have in common.
#pragma once

#include "brant/zero/Export.hpp"
#include "brant/zero/Uuid.hpp"

#include <atomic>
#include <cstdint>

namespace brant::zero {

/// Why a handle is not usable, kept by the object after it has died.
enum class Liveness : std::uint8_t { Alive, Destroyed, RolledBack, ModelGone };

class ZELKOR_API ElementImpl {
  public:
    /// Count of an object that is being taken apart; handles dropped meanwhile neither revive nor delete it.
    static constexpr std::uint32_t REFCOUNT_DELETING = 0x80000000u;

    ElementImpl(ElementImpl const&) = delete;
    ElementImpl& operator=(ElementImpl const&) = delete;

    /// Takes a reference. Atomic.
    void addRef() const noexcept {
        if (refCount_.load(std::memory_order_relaxed) != REFCOUNT_DELETING)
            refCount_.fetch_add(1, std::memory_order_relaxed);
    }
    /// Gives a reference back; the last one deletes the object. Atomic.
    void removeRef() const noexcept {
        if (refCount_.load(std::memory_order_relaxed) == REFCOUNT_DELETING) return;
        if (refCount_.fetch_sub(1, std::memory_order_acq_rel) == 1) const_cast<ElementImpl*>(this)->dispose();
    }

    [[nodiscard]] bool valid() const noexcept { return valid_; }
    [[nodiscard]] Liveness liveness() const noexcept { return liveness_; }
    [[nodiscard]] boost::uuids::uuid const& uuid() const noexcept { return uuid_; }
    [[nodiscard]] std::uint32_t refCount() const noexcept {
        return refCount_.load(std::memory_order_relaxed);
    }

    /// \returns a fresh version 4 identity (RFC 4122). No system call per identity.
    static boost::uuids::uuid generateNewUuid() { return generateUuid(); }

    /// Hook for tools: called once per owned collection when an element is invalidated. Null by default.
    static void (*m_callback)(ElementImpl* element, void* collection);

  protected:
    explicit ElementImpl(boost::uuids::uuid const& uuid) noexcept
        : uuid_(uuid.is_nil() ? generateUuid() : uuid) {}
    virtual ~ElementImpl();

    /// Frees what the object holds, then the object. Called once, when the count has reached zero.
    virtual void dispose() noexcept = 0;
    /// The store that shields an object under destruction, with a full fence behind it.
    void beginDestruction() noexcept { refCount_.exchange(REFCOUNT_DELETING, std::memory_order_seq_cst); }

    boost::uuids::uuid uuid_;
    mutable std::atomic<std::uint32_t> refCount_{0};
    bool valid_ = true;
    Liveness liveness_ = Liveness::Alive;
    std::uint16_t state_ = 0; ///< bits of the derived classes
};

} // namespace brant::zero
