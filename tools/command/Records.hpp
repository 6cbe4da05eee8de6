// How elements are shown: their place, their title, their line in a list, the members that all JSON records
// share.
#pragma once

#include "Json.hpp"
#include "Lookup.hpp"

#include <string>
#include <tuple>

namespace zelkor::command {

/// Where an element is defined, else where it is declared first; an empty path when the model does not tell.
struct Place {
    std::string path;
    unsigned line = 0; ///< 0 for a file as a whole
    unsigned column = 0;

    [[nodiscard]] bool known() const noexcept { return !path.empty(); }
    /// \returns "path:line:column", for a file its path, or an empty text.
    [[nodiscard]] std::string text() const;
    /// What has no place comes last.
    friend bool operator<(Place const& a, Place const& b) {
        return std::tuple(!a.known(), std::string_view(a.path), a.line, a.column) <
               std::tuple(!b.known(), std::string_view(b.path), b.line, b.column);
    }
};
[[nodiscard]] Place placeOf(brant::zero::ModelElement const& element);
/// \returns whether that place lies in a file from a system include folder, or the element has none.
[[nodiscard]] bool isForeign(brant::zero::ModelElement const& element);

/// \returns the class as model files spell it, such as "types.ClassType".
[[nodiscard]] std::string className(brant::zero::ModelElement const& element);
/// \returns the text that tells the element best: a type as declared, a declaration's signature, the
/// qualified name of what has one, a file's path, a position, a value. Empty for a null handle, and where
/// nothing tells.
[[nodiscard]] std::string title(brant::zero::ModelElement const& element);
/// \returns what stands behind the class in a list: the signature of a function, else the qualified name,
/// else the title.
[[nodiscard]] std::string lineText(brant::zero::ModelElement const& element);

/// \returns identity, class, both names, `signature` of a symbol or `text` of what is none, and the place
/// when it is known: the record that every verb begins with.
[[nodiscard]] JsonMembers recordOf(brant::zero::ModelElement const& element);
/// \returns "1 file", "2 files".
[[nodiscard]] std::string counted(std::size_t count, std::string const& noun);
/// \returns a record on a line of its own, indented by four blanks.
[[nodiscard]] std::string recordLine(JsonMembers const& members);
/// \returns a whole reply. `records` are objects, each indented by four blanks; `more` stands in front of
/// them.
[[nodiscard]] std::string jsonReply(std::string const& format, std::vector<std::string> const& records,
                                    JsonMembers const& more = {});

} // namespace zelkor::command
