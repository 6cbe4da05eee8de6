// Words that the writers and readers of both forms share.
#pragma once

#include <string_view>

namespace brant::zero::io {

inline constexpr std::string_view formatName = "zelkor-ast";
inline constexpr std::string_view formatVersion = "1.0";
inline constexpr unsigned formatMajor = 1;
inline constexpr unsigned formatMinor = 0;

} // namespace brant::zero::io
