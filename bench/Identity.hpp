// Identities of the benched models: random numbers, version-4 identities and their text of 36 characters.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zelkor::bench {

/// Random numbers from a fixed seed (xoshiro256++), the same on every machine. Not for secrets.
class Random {
  public:
    explicit Random(std::uint64_t seed) {
        for (auto& word : state)
            word = split(seed);
    }

    std::uint64_t next() {
        std::uint64_t const result = rotate(state[0] + state[3], 23) + state[0];
        std::uint64_t const shifted = state[1] << 17;
        state[2] ^= state[0];
        state[3] ^= state[1];
        state[1] ^= state[2];
        state[0] ^= state[3];
        state[2] ^= shifted;
        state[3] = rotate(state[3], 45);
        return result;
    }

    /// A number in [0, bound); `bound` must not be 0.
    unsigned below(unsigned bound) {
        return static_cast<unsigned>(((next() >> 32) * static_cast<std::uint64_t>(bound)) >> 32);
    }

    bool percent(unsigned chance) { return below(100) < chance; }

  private:
    static std::uint64_t rotate(std::uint64_t value, int by) { return (value << by) | (value >> (64 - by)); }

    static std::uint64_t split(std::uint64_t& seed) {
        std::uint64_t mixed = (seed += 0x9e3779b97f4a7c15U);
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebU;
        return mixed ^ (mixed >> 31);
    }

    std::array<std::uint64_t, 4> state;
};

struct Identity {
    std::uint64_t high = 0;
    std::uint64_t low = 0;

    friend bool operator==(Identity const&, Identity const&) = default;
};

/// Draws version-4 identities; two sources of one seed draw the same ones, so that documents can be compared.
class IdentitySource {
  public:
    explicit IdentitySource(std::uint64_t seed) : random(seed) {}

    Identity next() {
        Identity drawn{random.next(), random.next()};
        drawn.high = (drawn.high & ~std::uint64_t{0xf000}) | 0x4000;
        drawn.low = (drawn.low & ~(std::uint64_t{3} << 62)) | (std::uint64_t{2} << 62);
        return drawn;
    }

  private:
    Random random;
};

constexpr std::size_t identityLength = 36;

namespace detail {
constexpr std::array<char, 512> makePairs() {
    std::array<char, 512> pairs{};
    constexpr char digits[] = "0123456789abcdef";
    for (unsigned byte = 0; byte < 256; ++byte) {
        pairs[2 * byte] = digits[byte >> 4];
        pairs[2 * byte + 1] = digits[byte & 15];
    }
    return pairs;
}

constexpr std::array<std::int8_t, 256> makeNibbles() {
    std::array<std::int8_t, 256> nibbles{};
    for (auto& nibble : nibbles)
        nibble = -1;
    for (int digit = 0; digit < 10; ++digit)
        nibbles['0' + digit] = static_cast<std::int8_t>(digit);
    for (int digit = 0; digit < 6; ++digit)
        nibbles['a' + digit] = static_cast<std::int8_t>(10 + digit);
    return nibbles;
}

inline constexpr std::array<char, 512> pairs = makePairs();
inline constexpr std::array<std::int8_t, 256> nibbles = makeNibbles();

constexpr bool dashBefore(unsigned byte) {
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}
} // namespace detail

/// Writes 36 characters at `at` and returns the place after them.
inline char* formatIdentity(Identity const& identity, char* at) {
    for (unsigned byte = 0; byte < 16; ++byte) {
        if (detail::dashBefore(byte)) *at++ = '-';
        std::uint64_t const word = byte < 8 ? identity.high : identity.low;
        unsigned const value = static_cast<unsigned>(word >> (56 - 8 * (byte % 8))) & 0xff;
        *at++ = detail::pairs[2 * value];
        *at++ = detail::pairs[2 * value + 1];
    }
    return at;
}

/// Nothing when `text` is no identity in lower-case text.
inline std::optional<Identity> parseIdentity(std::string_view text) {
    if (text.size() != identityLength) return std::nullopt;
    std::uint64_t words[2] = {0, 0};
    int seen = 0;
    char const* at = text.data();
    for (unsigned byte = 0; byte < 16; ++byte) {
        if (detail::dashBefore(byte)) seen |= *at++ == '-' ? 0 : -1;
        int const upper = detail::nibbles[static_cast<unsigned char>(*at++)];
        int const lower = detail::nibbles[static_cast<unsigned char>(*at++)];
        seen |= upper | lower;
        words[byte / 8] = (words[byte / 8] << 8) | static_cast<unsigned>((upper << 4) | lower);
    }
    if (seen < 0) return std::nullopt;
    return Identity{words[0], words[1]};
}

/// The text of an identity, kept in place.
class IdentityText {
  public:
    explicit IdentityText(Identity const& identity) { *formatIdentity(identity, text.data()) = 0; }
    char const* data() const { return text.data(); }
    operator std::string_view() const { return {text.data(), identityLength}; }

  private:
    std::array<char, identityLength + 1> text;
};

} // namespace zelkor::bench
