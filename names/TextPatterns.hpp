/// \file
/// The two patterns of the printer, scanned by hand: a library's regular expressions recurse with the length
/// of the text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zelkor::ast::names {

/// Stands for the name of what has none.
inline constexpr std::string_view unnamed = "#unnamed#";
/// Stands for a type that is missing, and for what the guard leaves out.
inline constexpr std::string_view unknown = "#unknown#";

/// Replaces each run of white space from `start` on by one blank, as ECMAScript's `\s+` would. Linear.
void collapseBlanks(std::string& text, std::size_t start);
/// Takes out each `unnamed` from `start` on, in one pass: what the gaps bring together stays. Linear.
void eraseUnnamed(std::string& text, std::size_t start);

} // namespace zelkor::ast::names
