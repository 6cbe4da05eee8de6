/// \file
/// The text forms of truth values and numbers, the same in files, schema defaults and everywhere else.
///
/// A truth value is `true` or `false`. An integer is decimal, with `-` when negative. A real is the shortest
/// decimal that reads back as the same number, or `inf`, `-inf`, `nan`. The locale has no part in it.
#pragma once

#include "brant/zero/Export.hpp"

#include <concepts>
#include <string>
#include <string_view>
#include <system_error>

namespace brant::zero::meta {

template <class T>
concept TextScalar = std::same_as<T, bool> || std::same_as<T, int> || std::same_as<T, unsigned int> ||
    std::same_as<T, long> || std::same_as<T, unsigned long> || std::same_as<T, double>;

/// Appends the text form of `value`, ASCII throughout.
template <TextScalar T>
ZELKOR_API void appendText(std::string& out, T value);

/// Reads a text form: the whole of `text`, no blanks, no `+`.
/// \returns `std::errc()` and the value in `out`, or `std::errc::invalid_argument` for a text of another
/// form, `std::errc::result_out_of_range` for a number that `T` does not hold; `out` is as it was then.
template <TextScalar T>
[[nodiscard]] ZELKOR_API std::errc parseText(std::string_view text, T& out) noexcept;

#define BRANT0_FOR_EACH_TEXT_SCALAR(X) X(bool) X(int) X(unsigned int) X(long) X(unsigned long) X(double)
#define BRANT0_EXTERN(T)                                                                                     \
    extern template void appendText<T>(std::string&, T);                                                     \
    extern template std::errc parseText<T>(std::string_view, T&) noexcept;
BRANT0_FOR_EACH_TEXT_SCALAR(BRANT0_EXTERN)
#undef BRANT0_EXTERN

} // namespace brant::zero::meta
