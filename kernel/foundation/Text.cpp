#include "brant/zero/Text.hpp"

#include <algorithm>
#include <boost/locale/utf.hpp>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace brant::zero {

namespace {

namespace utf = boost::locale::utf;
using Utf8 = utf::utf_traits<char>;
using Utf16 = utf::utf_traits<char16_t>;

// Nearly all text is ASCII: names, paths, numbers. The loops below take it in strides of one register and
// leave single characters of any other kind to the library.

bool isAscii(char unit) noexcept {
    return static_cast<unsigned char>(unit) < 0x80;
}
bool isAscii(char16_t unit) noexcept {
    return unit < 0x80;
}

#if defined(__SSE2__)
__m128i loadUnits(void const* from) noexcept {
    return _mm_loadu_si128(static_cast<__m128i const*>(from));
}
#endif

/// Copies the ASCII text at the start of `from` and returns its length.
std::size_t copyAscii(char16_t const* from, std::size_t size, char* to) noexcept {
    std::size_t i = 0;
#if defined(__SSE2__)
    __m128i const beyond = _mm_set1_epi16(short(0xff80));
    for (; i + 8 <= size; i += 8) {
        __m128i const units = loadUnits(from + i);
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(units, beyond), _mm_setzero_si128())) != 0xffff)
            break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + i), _mm_packus_epi16(units, units));
    }
#endif
    for (; i < size && isAscii(from[i]); ++i)
        to[i] = static_cast<char>(from[i]);
    return i;
}

std::size_t copyAscii(char const* from, std::size_t size, char16_t* to) noexcept {
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + 8 <= size; i += 8) {
        __m128i const bytes = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(from + i));
        if ((_mm_movemask_epi8(bytes) & 0xff) != 0) break;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    }
#endif
    for (; i < size && isAscii(from[i]); ++i)
        to[i] = static_cast<char16_t>(from[i]);
    return i;
}

/// Length of the ASCII text at the start of `from`, or less by a part of a stride.
std::size_t skipAscii(char const* from, std::size_t size) noexcept {
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= size; i += 16)
        if (_mm_movemask_epi8(loadUnits(from + i)) != 0) return i;
#endif
    while (i < size && isAscii(from[i]))
        ++i;
    return i;
}

/// The same for units that are no surrogates.
std::size_t skipWithoutSurrogates(char16_t const* from, std::size_t size) noexcept {
    std::size_t i = 0;
#if defined(__SSE2__)
    __m128i const kind = _mm_set1_epi16(short(0xf800));
    __m128i const surrogate = _mm_set1_epi16(short(0xd800));
    for (; i + 8 <= size; i += 8)
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(loadUnits(from + i), kind), surrogate)) != 0)
            return i;
#endif
    while (i < size && (from[i] & 0xf800) != 0xd800)
        ++i;
    return i;
}

bool isCharacter(utf::code_point point) noexcept {
    return point != utf::illegal && point != utf::incomplete;
}

// The pieces are collected on the stack, since a string cannot grow without clearing what it gains.
constexpr std::size_t pieceSize = 512;

enum class OnError { Fail, Replace };

template <OnError onError>
bool append(std::string& out, std::u16string_view text) {
    std::size_t const before = out.size();
    char piece[pieceSize];
    char16_t const* next = text.data();
    char16_t const* const end = next + text.size();
    while (next != end) {
        char* to = piece;
        char* const full = piece + pieceSize - Utf8::max_width;
        while (next != end && to < full) {
            std::size_t const room = std::min<std::size_t>(std::size_t(end - next), std::size_t(full - to));
            std::size_t const copied = copyAscii(next, room, to);
            next += copied;
            to += copied;
            // Run of other characters: many scripts have no ASCII between them.
            while (next != end && to < full && !isAscii(*next)) {
                char16_t const* const start = next;
                utf::code_point point = Utf16::decode(next, end);
                if (!isCharacter(point)) {
                    if (onError == OnError::Fail) {
                        out.resize(before);
                        return false;
                    }
                    // The unit after a lone surrogate is not part of the fault.
                    next = start + 1;
                    point = 0xfffd;
                }
                to = Utf8::encode(point, to);
            }
        }
        out.append(piece, std::size_t(to - piece));
    }
    return true;
}

} // namespace

bool isValidUtf8(std::string_view text) noexcept {
    char const* next = text.data();
    char const* const end = next + text.size();
    while (true) {
        next += skipAscii(next, std::size_t(end - next));
        if (next == end) return true;
        do {
            if (!isCharacter(Utf8::decode(next, end))) return false;
        } while (next != end && !isAscii(*next));
    }
}

bool isWellFormedUtf16(std::u16string_view text) noexcept {
    char16_t const* next = text.data();
    char16_t const* const end = next + text.size();
    while (true) {
        next += skipWithoutSurrogates(next, std::size_t(end - next));
        if (next == end) return true;
        if (!isCharacter(Utf16::decode(next, end))) return false;
    }
}

bool appendUtf8(std::string& out, std::u16string_view text) {
    return append<OnError::Fail>(out, text);
}

bool appendUtf16(std::u16string& out, std::string_view text) {
    std::size_t const before = out.size();
    char16_t piece[pieceSize];
    char const* next = text.data();
    char const* const end = next + text.size();
    while (next != end) {
        char16_t* to = piece;
        char16_t* const full = piece + pieceSize - Utf16::max_width;
        while (next != end && to < full) {
            std::size_t const room = std::min<std::size_t>(std::size_t(end - next), std::size_t(full - to));
            std::size_t const copied = copyAscii(next, room, to);
            next += copied;
            to += copied;
            while (next != end && to < full && !isAscii(*next)) {
                utf::code_point const point = Utf8::decode(next, end);
                if (!isCharacter(point)) {
                    out.resize(before);
                    return false;
                }
                to = Utf16::encode(point, to);
            }
        }
        out.append(piece, std::size_t(to - piece));
    }
    return true;
}

std::string toUtf8(std::u16string_view text) {
    std::string result;
    append<OnError::Replace>(result, text);
    return result;
}

std::optional<std::u16string> toUtf16(std::string_view text) {
    std::optional<std::u16string> result(std::in_place);
    if (!appendUtf16(*result, text)) result.reset();
    return result;
}

} // namespace brant::zero
