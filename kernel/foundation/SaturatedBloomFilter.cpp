#include "brant/zero/SaturatedBloomFilter.hpp"

#include "brant/zero/Hash.hpp"

namespace brant::zero {

namespace {

constexpr unsigned saturated = 15;
constexpr unsigned bitsOfIndex = 9; // 512 counters
constexpr unsigned hashCount = 3;

/// Calls `visit` with the number of each counter of `id` until it returns false; tells whether none did.
template <class Visit>
bool forEachCounter(boost::uuids::uuid const& id, Visit visit) {
    std::uint64_t hash = services::hashers::Brant0Hasher<boost::uuids::uuid>()(id);
    for (unsigned i = 0; i < hashCount; ++i, hash >>= bitsOfIndex)
        if (!visit(unsigned(hash & ((1u << bitsOfIndex) - 1)))) return false;
    return true;
}

constexpr unsigned shiftOf(unsigned index) {
    return (index & 1u) * 4;
}

} // namespace

void SaturatedBloomFilter::add(boost::uuids::uuid const& id) {
    if (!_counters) _counters = std::make_unique<Counters>();
    ++_size;
    forEachCounter(id, [this](unsigned index) {
        std::uint8_t& pair = (*_counters)[index / 2];
        if ((pair >> shiftOf(index) & saturated) != saturated)
            pair = std::uint8_t(pair + (1u << shiftOf(index)));
        return true;
    });
}

void SaturatedBloomFilter::remove(boost::uuids::uuid const& id) noexcept {
    if (!contains(id)) return;
    // With the last identity the counters that lost count go too.
    if (--_size == 0) return _counters.reset();
    forEachCounter(id, [this](unsigned index) {
        std::uint8_t& pair = (*_counters)[index / 2];
        unsigned const counter = pair >> shiftOf(index) & saturated;
        if (counter != saturated && counter != 0) pair = std::uint8_t(pair - (1u << shiftOf(index)));
        return true;
    });
}

bool SaturatedBloomFilter::contains(boost::uuids::uuid const& id) const noexcept {
    return _counters && forEachCounter(id, [this](unsigned index) {
               return ((*_counters)[index / 2] >> shiftOf(index) & saturated) != 0;
           });
}

} // namespace brant::zero
