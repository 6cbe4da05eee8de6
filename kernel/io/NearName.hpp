// Names in messages: quoted, and which of the known ones a misspelled one may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brant::zero::io {

/// \returns UTF-8 text between quotes, cut where it is too long to help anybody.
[[nodiscard]] std::string quote(std::string_view text);

/// \returns the nearest of the names, or an empty text when none is near. The distance counts inserted, left
/// out, changed and swapped neighbouring characters, letters without case; a third of the name may be wrong.
[[nodiscard]] std::string_view nearName(std::string_view name, std::vector<std::string_view> const& names);

/// \returns "; did you mean 'Name'?" or nothing.
[[nodiscard]] std::string suggestion(std::string_view name, std::vector<std::string_view> const& names);

} // namespace brant::zero::io
