/// The table from identities to elements of one model: open addressing, 32 bits of the hash and the element's
/// place in the registry an entry, so that a search or an insertion touches one line of memory.
#pragma once

#include "../foundation/LargeAllocator.hpp"
#include "brant/zero/ModelElement.hpp"

#include <cstdint>
#include <vector>

namespace brant::zero {

class ZELKOR_API IdentityIndex {
  public:
    /// Of the elements of a registry, which must outlive this object.
    explicit IdentityIndex(std::vector<ModelElementImpl*> const& registry) noexcept : registry_(registry) {}

    [[nodiscard]] bool built() const noexcept { return built_; }
    void build();
    [[nodiscard]] ModelElementImpl* find(boost::uuids::uuid const& uuid) const noexcept;
    /// `slot` is the place that the element has or is about to take in the registry.
    /// \returns false, and changes nothing, when an element with that identity is present.
    bool insert(boost::uuids::uuid const& uuid, std::uint32_t slot);
    /// As `insert`, without looking: what a rollback brings back may meet one that is about to vanish.
    void add(boost::uuids::uuid const& uuid, std::uint32_t slot);
    void erase(boost::uuids::uuid const& uuid, std::uint32_t slot) noexcept;
    /// Tells that an element has gone to another place in the registry.
    void move(boost::uuids::uuid const& uuid, std::uint32_t from, std::uint32_t to) noexcept;

  private:
    struct Entry {
        std::uint32_t hash = 0; ///< 0 where there is no element
        std::uint32_t slot = 0;
    };

    void makeRoom();
    void grow(std::size_t capacity);
    /// \returns the number of the element's entry, or of an empty one.
    [[nodiscard]] std::size_t entryOf(std::uint32_t hash, std::uint32_t slot) const noexcept;

    std::vector<ModelElementImpl*> const& registry_;
    std::vector<Entry, LargeAllocator<Entry>> entries_; ///< a power of two, at most two thirds full
    std::size_t used_ = 0;
    bool built_ = false;
};

} // namespace brant::zero
