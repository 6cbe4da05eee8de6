// How elements are shown: their place, their title in a line, the members that all JSON records share.
#pragma once

#include "Lookup.hpp"

#include <string>

namespace zelkor::command {

/// Where an element is defined, else where it is declared first; an empty path when the model does not tell.
struct Place {
    std::string path;
    unsigned line = 0;
    unsigned column = 0;

    [[nodiscard]] bool known() const noexcept { return !path.empty(); }
    /// \returns "path:line:column", or an empty text.
    [[nodiscard]] std::string text() const;
};
[[nodiscard]] Place placeOf(brant::zero::ModelElement const& element);

/// \returns the class as model files spell it, such as "types.ClassType".
[[nodiscard]] std::string className(brant::zero::ModelElement const& element);
/// \returns the text that tells the element best: a type as declared, a declaration's signature, the
/// qualified name of what has one, a file's path, a position, a value. Empty for a null handle, and where
/// nothing tells.
[[nodiscard]] std::string title(brant::zero::ModelElement const& element);

/// \returns `"uuid": ..., "class": ..., "name": ..., "qualifiedName": ...` without braces.
[[nodiscard]] std::string commonMembers(brant::zero::ModelElement const& element);
/// \returns `, "file": ..., "line": ..., "column": ...`, or nothing for an unknown place.
[[nodiscard]] std::string placeMembers(Place const& place);
/// \returns a whole reply. `records` are objects, each indented by four blanks.
[[nodiscard]] std::string jsonReply(std::string const& format, std::vector<std::string> const& records);

} // namespace zelkor::command
