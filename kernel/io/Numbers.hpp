// Numbers as the text forms spell them, whatever the locale.
#pragma once

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace brant::zero::io {

/// Room that any number needs.
inline constexpr std::size_t longestNumber = 32;

template <class Number>
char* formatNumber(Number value, char* to) noexcept {
    return std::to_chars(to, to + longestNumber, value).ptr;
}

/// \returns the word for a number that has no digits, or nothing.
inline std::string_view wordFor(double value) noexcept {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "INF" : "-INF";
    return {};
}

} // namespace brant::zero::io
