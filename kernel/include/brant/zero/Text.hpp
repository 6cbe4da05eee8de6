#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "brant/zero/Export.hpp"

namespace brant::zero {

/// True when `text` is UTF-8 throughout: no overlong forms, no surrogates, nothing above U+10FFFF. O(n).
[[nodiscard]] ZELKOR_API bool isValidUtf8(std::string_view text) noexcept;

/// True when every surrogate of `text` has its partner. O(n).
[[nodiscard]] ZELKOR_API bool isWellFormedUtf16(std::u16string_view text) noexcept;

/// The strict conversions: they append all of `text`, or return false and leave `out` as it was when
/// `text` holds a lone surrogate or is no UTF-8.
[[nodiscard]] ZELKOR_API bool appendUtf8(std::string& out, std::u16string_view text);
[[nodiscard]] ZELKOR_API bool appendUtf16(std::u16string& out, std::string_view text);

/// For messages and other places where some text is better than none: lone surrogates become U+FFFD.
ZELKOR_API std::string toUtf8(std::u16string_view text);

/// Nothing when `text` is no UTF-8.
[[nodiscard]] ZELKOR_API std::optional<std::u16string> toUtf16(std::string_view text);

} // namespace brant::zero
