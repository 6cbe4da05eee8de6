/// The table from identities to elements of one model: open addressing, a pointer and 32 bits of the hash an
/// entry.
#pragma once

#include "brant/zero/ModelElement.hpp"

#include <cstdint>
#include <vector>

namespace brant::zero {

class ZELKOR_API IdentityIndex {
  public:
    [[nodiscard]] bool built() const noexcept { return built_; }
    void build(std::vector<ModelElementImpl*> const& elements);
    void clear() noexcept;
    [[nodiscard]] ModelElementImpl* find(boost::uuids::uuid const& uuid) const noexcept;
    /// \requires no element with that identity is present.
    void insert(ModelElementImpl* element);
    void erase(ModelElementImpl const* element) noexcept;

  private:
    void grow(std::size_t capacity);
    void place(ModelElementImpl* element, std::uint32_t hash) noexcept;

    std::vector<ModelElementImpl*> slots_; ///< a power of two, at most two thirds full
    std::vector<std::uint32_t> hashes_;    ///< of the slots' elements, 0 where there is none
    std::size_t used_ = 0;
    bool built_ = false;
};

} // namespace brant::zero
