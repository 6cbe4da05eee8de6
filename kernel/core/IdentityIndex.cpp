#include "IdentityIndex.hpp"

#include <bit>
#include <cstring>

namespace brant::zero {

std::size_t IdentityIndex::home(boost::uuids::uuid const& uuid) const noexcept {
    // Callers choose identities, so all bytes count and the high bits of a product pick the slot.
    std::uint64_t low;
    std::uint64_t high;
    std::memcpy(&low, uuid.data, 8);
    std::memcpy(&high, uuid.data + 8, 8);
    std::uint64_t const mixed = (low ^ (high * 0x9e3779b97f4a7c15ull)) * 0xc6a4a7935bd1e995ull;
    return (mixed ^ (mixed >> 32)) & (slots_.size() - 1);
}

void IdentityIndex::build(std::vector<ModelElementImpl*> const& elements) {
    slots_.clear();
    used_ = 0;
    grow(std::bit_ceil(elements.size() * 2 + 64));
    for (ModelElementImpl* element : elements)
        insert(element);
    built_ = true;
}

void IdentityIndex::clear() noexcept {
    slots_ = {};
    used_ = 0;
    built_ = false;
}

void IdentityIndex::grow(std::size_t capacity) {
    std::vector<ModelElementImpl*> old(capacity, nullptr);
    old.swap(slots_);
    used_ = 0;
    for (ModelElementImpl* element : old)
        if (element != nullptr) insert(element);
}

ModelElementImpl* IdentityIndex::find(boost::uuids::uuid const& uuid) const noexcept {
    if (slots_.empty()) return nullptr;
    for (std::size_t i = home(uuid); slots_[i] != nullptr; i = (i + 1) & (slots_.size() - 1))
        if (slots_[i]->uuid() == uuid) return slots_[i];
    return nullptr;
}

void IdentityIndex::insert(ModelElementImpl* element) {
    if ((used_ + 1) * 3 > slots_.size() * 2) grow(std::bit_ceil(slots_.size() * 2 + 64));
    std::size_t i = home(element->uuid());
    while (slots_[i] != nullptr)
        i = (i + 1) & (slots_.size() - 1);
    slots_[i] = element;
    ++used_;
}

void IdentityIndex::erase(ModelElementImpl const* element) noexcept {
    if (slots_.empty()) return;
    std::size_t const mask = slots_.size() - 1;
    std::size_t hole = home(element->uuid());
    while (slots_[hole] != element) {
        if (slots_[hole] == nullptr) return;
        hole = (hole + 1) & mask;
    }
    // Backward shift keeps probe sequences whole without tombstones.
    for (std::size_t i = (hole + 1) & mask; slots_[i] != nullptr; i = (i + 1) & mask) {
        std::size_t const wanted = home(slots_[i]->uuid());
        if (((i - wanted) & mask) >= ((i - hole) & mask)) {
            slots_[hole] = slots_[i];
            hole = i;
        }
    }
    slots_[hole] = nullptr;
    --used_;
}

} // namespace brant::zero
