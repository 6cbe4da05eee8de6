#pragma once

#include <bits/hash_bytes.h>
#include <boost/uuid/uuid.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifndef __GLIBCXX__
#error "brant/zero/Hash.hpp needs the GNU C++ library: hashes of texts are its _Hash_bytes"
#endif

namespace brant::zero {

/// Folds one more value into `seed`. The step is written out because library versions differ in theirs,
/// and hashes of collections must not change with the library.
constexpr void hashCombine(std::uint64_t& seed, std::uint64_t k) noexcept {
    constexpr std::uint64_t multiplier = 0xc6a4a7935bd1e995u;
    k *= multiplier;
    k ^= k >> 47;
    k *= multiplier;
    seed ^= k;
    seed *= multiplier;
    seed += 0xe6546b64u;
}

inline std::uint64_t hashBytes(void const* data, std::size_t size) noexcept {
    return std::_Hash_bytes(data, size, 0xc70f6907u);
}

inline std::uint64_t hashString(std::string_view text) noexcept {
    return hashBytes(text.data(), text.size());
}

inline std::uint64_t hashString(std::u16string_view text) noexcept {
    return hashBytes(text.data(), text.size() * sizeof(char16_t));
}

/// Both zeros compare equal and hash to 0.
inline std::uint64_t hashReal(double value) noexcept {
    return value == 0.0 ? 0 : hashBytes(&value, sizeof value);
}

/// Folds `hash(element)` of every element in order into one value; an empty range gives 0.
template <class Range, class Hash>
constexpr std::uint64_t hashRange(Range const& range, Hash&& hash) {
    std::uint64_t seed = 0;
    for (auto const& element : range)
        hashCombine(seed, hash(element));
    return seed;
}

namespace services::hashers {

/// Function object for unordered containers; there is one for each kind of key that the kernel uses.
template <class T>
struct Brant0Hasher;

template <>
struct Brant0Hasher<boost::uuids::uuid> {
    std::size_t operator()(boost::uuids::uuid const& id) const noexcept {
        std::uint64_t low, high;
        std::memcpy(&low, id.data, sizeof low);
        std::memcpy(&high, id.data + sizeof low, sizeof high);
        // Random identities would do without mixing. Name-based and hand-made ones, and tables that mask
        // the low bits, need every bit of the input in every bit of the result.
        std::uint64_t mixed = low * 0xc2b2ae3d27d4eb4fu + high * 0x9e3779b97f4a7c15u;
        mixed ^= mixed >> 32;
        mixed *= 0xd6e8feb86659fd93u;
        return mixed ^ (mixed >> 32);
    }
};

} // namespace services::hashers
} // namespace brant::zero
