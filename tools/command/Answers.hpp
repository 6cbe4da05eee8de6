// The reply of a verb that lists elements: the one place where lists become text or JSON.
#pragma once

#include "Records.hpp"

#include <limits>
#include <string>
#include <vector>

namespace zelkor::command {

/// One line of a reply: an element, and how it belongs to what was asked for.
struct Row {
    brant::zero::ModelElement element;
    JsonMembers members = {}; ///< of its record, behind those that all records have
    std::string note = {};    ///< in brackets at the end of the line; may be empty
    unsigned level = 0;       ///< in a tree: how deep the line is indented
};

enum class Layout {
    Lines,   ///< "path:line:column: class text [note]"
    Columns, ///< the same, each column as wide as its widest cell
    Tree     ///< indented, the place last
};

/// The answer about one subject.
struct Section {
    brant::zero::ModelElement subject; ///< null when the question has none
    std::string heading = {};          ///< stands above the rows; empty for none
    std::vector<Row> rows = {};
    std::vector<std::string> notes =
        {};                   ///< what the reader has to know about the answer: what it cannot tell
    std::string nothing = {}; ///< what to say instead when there are no rows
    Layout layout = Layout::Lines;
};

/// Prints the sections, at most `--limit` rows in all, as text or with `--json` as one reply named after the
/// verb. Notes go to standard error, and into the reply. \returns Ok, or Difference when no section has rows.
int printAnswer(Arguments const& arguments, std::string const& verb, std::vector<Section> const& sections);

/// \returns what headings call the subjects of a question: as lines do, with the place where two read alike.
[[nodiscard]] std::vector<std::string> namesOf(std::vector<brant::zero::ModelElement> const& subjects);

/// By place; what has none comes last. Rows of one place stay in their order.
void sortByPlace(std::vector<Row>& rows);

/// Prints what a verb has made itself, at most `--limit` of it: the texts, or with `--json` the records.
void printLimited(Arguments const& arguments, std::string const& verb, std::vector<std::string> const& texts,
                  std::vector<std::string> const& records, JsonMembers more = {});

/// What `--transitive` stands for.
inline constexpr unsigned unlimitedDepth = std::numeric_limits<unsigned>::max();
/// \returns how many steps `--depth` or `--transitive` ask for. \throws UsageError for 0 and for both.
[[nodiscard]] unsigned depthOf(Arguments const& arguments, unsigned fallback);

} // namespace zelkor::command
