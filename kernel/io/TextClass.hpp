// What a text holds that a form must take care of, found in strides of one register.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace brant::zero::io {

/// Kinds of characters, as bits.
enum TextBits : unsigned {
    ControlBit = 1,   ///< under U+0020
    BeyondBit = 2,    ///< over U+007F
    QuoteBit = 4,     ///< "
    BackslashBit = 8, ///< the escape of JSON
    MarkupBit = 16    ///< & < >
};

inline unsigned classify(char character) noexcept {
    auto const byte = static_cast<unsigned char>(character);
    if (byte < 0x20) return ControlBit;
    if (byte >= 0x80) return BeyondBit;
    switch (character) {
    case '"':
        return QuoteBit;
    case '\\':
        return BackslashBit;
    case '&':
    case '<':
    case '>':
        return MarkupBit;
    default:
        return 0;
    }
}

#if defined(__SSE2__)
inline unsigned classifyBlock(void const* block) noexcept {
    __m128i const bytes = _mm_loadu_si128(static_cast<__m128i const*>(block));
    auto const holds = [&](char wanted) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(wanted)); };
    auto const bit = [](__m128i found, unsigned value) { return _mm_movemask_epi8(found) != 0 ? value : 0u; };
    __m128i const markup = _mm_or_si128(_mm_or_si128(holds('&'), holds('<')), holds('>'));
    __m128i const control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(0x1f)), bytes);
    return bit(control, ControlBit) | bit(bytes, BeyondBit) | bit(holds('"'), QuoteBit) |
           bit(holds('\\'), BackslashBit) | bit(markup, MarkupBit);
}
#endif

/// \returns the bits of all characters of the text.
inline unsigned classify(std::string_view text) noexcept {
    unsigned bits = 0;
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= text.size(); i += 16)
        bits |= classifyBlock(text.data() + i);
    if (i < text.size()) {
        char block[16] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
        std::memcpy(block, text.data() + i, text.size() - i);
        bits |= classifyBlock(block);
    }
#else
    for (; i < text.size(); ++i)
        bits |= classify(text[i]);
#endif
    return bits;
}

} // namespace brant::zero::io
