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

void IdentityIndex::build() {
    entries_ = {}; // of an attempt that ran out of memory
    used_ = 0;
    grow(std::bit_ceil(registry_.size() * 2 + 64));
    for (std::size_t slot = 0; slot < registry_.size(); ++slot)
        add(registry_[slot]->uuid(), static_cast<std::uint32_t>(slot));
    built_ = true;
}

void IdentityIndex::grow(std::size_t capacity) {
    decltype(entries_) entries(capacity);
    entries.swap(entries_);
    std::size_t const mask = entries_.size() - 1;
    for (Entry const& entry : entries) {
        if (entry.hash == 0) continue;
        std::size_t i = entry.hash & mask;
        while (entries_[i].hash != 0)
            i = (i + 1) & mask;
        entries_[i] = entry;
    }
}

ModelElementImpl* IdentityIndex::find(boost::uuids::uuid const& uuid) const noexcept {
    if (entries_.empty()) return nullptr;
    std::uint32_t const hash = hashOf(uuid);
    std::size_t const mask = entries_.size() - 1;
    for (std::size_t i = hash & mask; entries_[i].hash != 0; i = (i + 1) & mask)
        if (entries_[i].hash == hash && registry_[entries_[i].slot]->uuid() == uuid)
            return registry_[entries_[i].slot];
    return nullptr;
}

void IdentityIndex::makeRoom() {
    if ((used_ + 1) * 3 > entries_.size() * 2) grow(std::bit_ceil(entries_.size() * 2 + 64));
}

bool IdentityIndex::insert(boost::uuids::uuid const& uuid, std::uint32_t slot) {
    makeRoom();
    std::uint32_t const hash = hashOf(uuid);
    std::size_t const mask = entries_.size() - 1;
    std::size_t i = hash & mask;
    for (; entries_[i].hash != 0; i = (i + 1) & mask)
        if (entries_[i].hash == hash && registry_[entries_[i].slot]->uuid() == uuid) return false;
    entries_[i] = {hash, slot};
    ++used_;
    return true;
}

void IdentityIndex::add(boost::uuids::uuid const& uuid, std::uint32_t slot) {
    makeRoom();
    std::uint32_t const hash = hashOf(uuid);
    std::size_t const mask = entries_.size() - 1;
    std::size_t i = hash & mask;
    while (entries_[i].hash != 0)
        i = (i + 1) & mask;
    entries_[i] = {hash, slot};
    ++used_;
}

std::size_t IdentityIndex::entryOf(std::uint32_t hash, std::uint32_t slot) const noexcept {
    std::size_t const mask = entries_.size() - 1;
    std::size_t i = hash & mask;
    while (entries_[i].hash != 0 && (entries_[i].hash != hash || entries_[i].slot != slot))
        i = (i + 1) & mask;
    return i;
}

void IdentityIndex::move(boost::uuids::uuid const& uuid, std::uint32_t from, std::uint32_t to) noexcept {
    if (entries_.empty()) return;
    Entry& entry = entries_[entryOf(hashOf(uuid), from)];
    if (entry.hash != 0) entry.slot = to;
}

void IdentityIndex::erase(boost::uuids::uuid const& uuid, std::uint32_t slot) noexcept {
    if (entries_.empty()) return;
    std::size_t const mask = entries_.size() - 1;
    std::size_t hole = entryOf(hashOf(uuid), slot);
    if (entries_[hole].hash == 0) return;
    // Backward shift keeps probe sequences whole without tombstones.
    for (std::size_t i = (hole + 1) & mask; entries_[i].hash != 0; i = (i + 1) & mask) {
        std::size_t const wanted = entries_[i].hash & mask;
        if (((i - wanted) & mask) >= ((i - hole) & mask)) {
            entries_[hole] = entries_[i];
            hole = i;
        }
    }
    entries_[hole] = {};
    --used_;
}

} // namespace brant::zero
