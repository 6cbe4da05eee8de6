#include "IdentityIndex.hpp"

#include <bit>
#include <cstring>

namespace brant::zero {

namespace {

/// Never 0. It tells nearly all elements apart, so that they are not touched, which would miss the cache for
/// each.
std::uint32_t hashOf(boost::uuids::uuid const& uuid) noexcept {
    // Callers choose identities, so all bytes count and the high bits of a product pick the slot.
    std::uint64_t low;
    std::uint64_t high;
    std::memcpy(&low, uuid.data, 8);
    std::memcpy(&high, uuid.data + 8, 8);
    std::uint64_t const mixed = (low ^ (high * 0x9e3779b97f4a7c15ull)) * 0xc6a4a7935bd1e995ull;
    auto const hash = static_cast<std::uint32_t>(mixed ^ (mixed >> 32));
    return hash == 0 ? 1 : hash;
}

} // namespace

void IdentityIndex::build(std::vector<ModelElementImpl*> const& elements) {
    clear();
    grow(std::bit_ceil(elements.size() * 2 + 64));
    for (ModelElementImpl* element : elements)
        insert(element);
    built_ = true;
}

void IdentityIndex::clear() noexcept {
    slots_ = {};
    hashes_ = {};
    used_ = 0;
    built_ = false;
}

void IdentityIndex::grow(std::size_t capacity) {
    std::vector<ModelElementImpl*> elements(capacity, nullptr);
    std::vector<std::uint32_t> hashes(capacity, 0);
    elements.swap(slots_);
    hashes.swap(hashes_);
    for (std::size_t i = 0; i < elements.size(); ++i)
        if (hashes[i] != 0) place(elements[i], hashes[i]);
}

void IdentityIndex::place(ModelElementImpl* element, std::uint32_t hash) noexcept {
    std::size_t const mask = slots_.size() - 1;
    std::size_t i = hash & mask;
    while (hashes_[i] != 0)
        i = (i + 1) & mask;
    slots_[i] = element;
    hashes_[i] = hash;
}

ModelElementImpl* IdentityIndex::find(boost::uuids::uuid const& uuid) const noexcept {
    if (slots_.empty()) return nullptr;
    std::uint32_t const hash = hashOf(uuid);
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t i = hash & mask; hashes_[i] != 0; i = (i + 1) & mask)
        if (hashes_[i] == hash && slots_[i]->uuid() == uuid) return slots_[i];
    return nullptr;
}

void IdentityIndex::insert(ModelElementImpl* element) {
    if ((used_ + 1) * 3 > slots_.size() * 2) grow(std::bit_ceil(slots_.size() * 2 + 64));
    place(element, hashOf(element->uuid()));
    ++used_;
}

void IdentityIndex::erase(ModelElementImpl const* element) noexcept {
    if (slots_.empty()) return;
    std::size_t const mask = slots_.size() - 1;
    std::size_t hole = hashOf(element->uuid()) & mask;
    while (slots_[hole] != element) {
        if (hashes_[hole] == 0) return;
        hole = (hole + 1) & mask;
    }
    // Backward shift keeps probe sequences whole without tombstones.
    for (std::size_t i = (hole + 1) & mask; hashes_[i] != 0; i = (i + 1) & mask) {
        std::size_t const wanted = hashes_[i] & mask;
        if (((i - wanted) & mask) >= ((i - hole) & mask)) {
            slots_[hole] = slots_[i];
            hashes_[hole] = hashes_[i];
            hole = i;
        }
    }
    slots_[hole] = nullptr;
    hashes_[hole] = 0;
    --used_;
}

} // namespace brant::zero
