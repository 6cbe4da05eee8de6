#include "brant/zero/Uuid.hpp"

#include <bit>
#include <boost/uuid/name_generator_md5.hpp>
#include <boost/uuid/name_generator_sha1.hpp>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <pthread.h>
#include <sys/random.h>
#include <system_error>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace brant::zero {

namespace {

/// xoshiro256++ by Blackman and Vigna: 256 bits of state, no statistical weakness known.
struct Generator {
    std::uint64_t state[4];
    bool seeded;

    std::uint64_t next() noexcept {
        std::uint64_t const result = std::rotl(state[0] + state[3], 23) + state[0];
        std::uint64_t const shifted = state[1] << 17;
        state[2] ^= state[0];
        state[3] ^= state[1];
        state[1] ^= state[2];
        state[0] ^= state[3];
        state[2] ^= shifted;
        state[3] = std::rotl(state[3], 45);
        return result;
    }
};

// One register-relative access instead of a call; the object is small enough for the room that the loader
// keeps for libraries loaded late.
[[gnu::tls_model("initial-exec")]] constinit thread_local Generator generator{};

// The only thread of a forked child is the one that forked, so its generator is the only one to disown.
void disownAfterFork() {
    generator.seeded = false;
}

void fillWithEntropy(void* data, std::size_t size) {
    auto* out = static_cast<char*>(data);
    while (size != 0) {
        ssize_t const got = getrandom(out, size, 0);
        if (got < 0) {
            if (errno == EINTR) continue;
            throw std::system_error(errno, std::generic_category(), "no entropy for new identities");
        }
        out += got;
        size -= std::size_t(got);
    }
}

[[gnu::noinline]] void seed() {
    static std::once_flag handlerSet;
    std::call_once(handlerSet, [] { pthread_atfork(nullptr, nullptr, disownAfterFork); });
    fillWithEntropy(generator.state, sizeof generator.state);
    generator.state[0] |= 1; // the all-zero state would stay all zero
    generator.seeded = true;
}

constexpr std::size_t hyphens[] = {8, 13, 18, 23};

/// Digit values by character; 0xff for anything else.
struct DigitTable {
    std::uint8_t values[256];

    constexpr DigitTable() : values{} {
        for (auto& value : values)
            value = 0xff;
        for (int i = 0; i < 10; ++i)
            values['0' + i] = std::uint8_t(i);
        for (int i = 0; i < 6; ++i)
            values['a' + i] = values['A' + i] = std::uint8_t(10 + i);
    }
};
constexpr DigitTable digits;

bool hasFrame(std::string_view text) noexcept {
    if (text.size() != uuidTextSize) return false;
    for (std::size_t position : hyphens)
        if (text[position] != '-') return false;
    return true;
}

#if defined(__x86_64__)

/// The bytes at `from` as the low end of a word.
template <class Word>
std::uint64_t word(char const* from) noexcept {
    Word value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

void putHalf(char* to, std::uint64_t value) noexcept {
    auto const half = static_cast<std::uint32_t>(value);
    std::memcpy(to, &half, sizeof half);
}

__m128i joinWords(std::uint64_t low, std::uint64_t high) noexcept {
    return _mm_set_epi64x(static_cast<std::int64_t>(high), static_cast<std::int64_t>(low));
}
std::uint64_t lowWord(__m128i value) noexcept {
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(value));
}
std::uint64_t highWord(__m128i value) noexcept {
    return lowWord(_mm_unpackhi_epi64(value, value));
}

__m128i load(void const* from) noexcept {
    return _mm_loadu_si128(static_cast<__m128i const*>(from));
}
void store(void* to, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

/// Sixteen digits to eight values of 0 to 255 in 16-bit lanes; clears `valid` bits of lanes that hold no
/// digit.
__m128i pairsOf(__m128i text, __m128i& valid) noexcept {
    __m128i const digit = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    __m128i const isDigit = _mm_cmpeq_epi8(_mm_min_epu8(digit, _mm_set1_epi8(9)), digit);
    __m128i const letter = _mm_sub_epi8(_mm_or_si128(text, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
    __m128i const isLetter = _mm_cmpeq_epi8(_mm_min_epu8(letter, _mm_set1_epi8(5)), letter);
    valid = _mm_and_si128(valid, _mm_or_si128(isDigit, isLetter));
    __m128i const value = _mm_or_si128(_mm_and_si128(isDigit, digit),
                                       _mm_and_si128(isLetter, _mm_add_epi8(letter, _mm_set1_epi8(10))));
    __m128i const joined = _mm_or_si128(_mm_slli_epi16(value, 4), _mm_srli_epi16(value, 8));
    return _mm_and_si128(joined, _mm_set1_epi16(0xff));
}

/// Values of 0 to 15 to lower-case digits.
__m128i digitsOf(__m128i values) noexcept {
    __m128i const isLetter = _mm_cmpgt_epi8(values, _mm_set1_epi8(9));
    __m128i const gap = _mm_and_si128(isLetter, _mm_set1_epi8('a' - '0' - 10));
    return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), gap);
}

#endif

} // namespace

uuid generateUuid() {
    if (!generator.seeded) [[unlikely]]
        seed();
    std::uint64_t const halves[2] = {generator.next(), generator.next()};
    uuid id;
    std::memcpy(id.data, halves, sizeof halves);
    id.data[6] = std::uint8_t((id.data[6] & 0x0f) | 0x40);
    id.data[8] = std::uint8_t((id.data[8] & 0x3f) | 0x80);
    return id;
}

uuid nameUuid3(uuid const& nameSpace, std::string_view name) {
    return boost::uuids::name_generator_md5(nameSpace)(name.data(), name.size());
}

uuid nameUuid5(uuid const& nameSpace, std::string_view name) {
    return boost::uuids::name_generator_sha1(nameSpace)(name.data(), name.size());
}

bool parseUuid(std::string_view text, uuid& result) noexcept {
#if defined(__x86_64__)
    if (!hasFrame(text)) return false;
    // Joined in registers: one wide load behind narrow stores would wait for all of them.
    char const* const from = text.data();
    __m128i const first = joinWords(word<std::uint64_t>(from),
                                    word<std::uint32_t>(from + 9) | word<std::uint32_t>(from + 14) << 32);
    __m128i const second = joinWords(word<std::uint32_t>(from + 19) | word<std::uint32_t>(from + 24) << 32,
                                     word<std::uint64_t>(from + 28));
    __m128i valid = _mm_set1_epi8(-1);
    __m128i const high = pairsOf(first, valid);
    __m128i const low = pairsOf(second, valid);
    if (_mm_movemask_epi8(valid) != 0xffff) return false;
    store(result.data, _mm_packus_epi16(high, low));
    return true;
#else
    return detail::parseUuidPortable(text, result);
#endif
}

void formatUuid(uuid const& id, char* out) noexcept {
#if defined(__x86_64__)
    __m128i const bytes = load(id.data);
    __m128i const mask = _mm_set1_epi8(0x0f);
    __m128i const high = digitsOf(_mm_and_si128(_mm_srli_epi16(bytes, 4), mask));
    __m128i const low = digitsOf(_mm_and_si128(bytes, mask));
    __m128i const first = _mm_unpacklo_epi8(high, low);
    __m128i const second = _mm_unpackhi_epi8(high, low);
    std::uint64_t const words[4] = {lowWord(first), highWord(first), lowWord(second), highWord(second)};
    std::memcpy(out, &words[0], 8);
    putHalf(out + 9, words[1]);
    putHalf(out + 14, words[1] >> 32);
    putHalf(out + 19, words[2]);
    putHalf(out + 24, words[2] >> 32);
    std::memcpy(out + 28, &words[3], 8);
    for (std::size_t position : hyphens)
        out[position] = '-';
#else
    detail::formatUuidPortable(id, out);
#endif
}

std::string toString(uuid const& id) {
    std::string text(uuidTextSize, '\0');
    formatUuid(id, text.data());
    return text;
}

namespace detail {

bool parseUuidPortable(std::string_view text, uuid& result) noexcept {
    if (!hasFrame(text)) return false;
    uuid id;
    std::size_t from = 0;
    for (auto& byte : id.data) {
        if (text[from] == '-') ++from;
        unsigned const high = digits.values[static_cast<unsigned char>(text[from])];
        unsigned const low = digits.values[static_cast<unsigned char>(text[from + 1])];
        if ((high | low) > 15) return false;
        byte = std::uint8_t(high << 4 | low);
        from += 2;
    }
    result = id;
    return true;
}

void formatUuidPortable(uuid const& id, char* out) noexcept {
    constexpr char digit[] = "0123456789abcdef";
    std::size_t next = 0;
    for (std::size_t position = 0; position < uuidTextSize;) {
        if (position == hyphens[0] || position == hyphens[1] || position == hyphens[2] ||
            position == hyphens[3]) {
            out[position++] = '-';
            continue;
        }
        out[position++] = digit[id.data[next] >> 4];
        out[position++] = digit[id.data[next++] & 15];
    }
}

} // namespace detail
} // namespace brant::zero
