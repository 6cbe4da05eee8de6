// What differs between a terminal and a pipe: colours.
#pragma once

#include <string>

namespace zelkor::command {

enum class Paint { Place, Class, Name, Note, Heading };

/// Decides for the whole run. `option` is the value of --color, or empty. The order: the option, NO_COLOR,
/// CLICOLOR_FORCE, whether standard output is a terminal that is not dumb. \throws UsageError for an unknown
/// option.
void decideColours(std::string const& option);

/// \returns the text between the codes that colour it; the text alone when colours are off or it is empty.
[[nodiscard]] std::string painted(Paint paint, std::string const& text);

} // namespace zelkor::command
