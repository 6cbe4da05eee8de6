#include "Answers.hpp"

#include "Terminal.hpp"

#include <algorithm>
#include <initializer_list>
#include <iostream>
#include <map>
#include <numeric>

namespace zelkor::command {

namespace {

/// \returns how many items to show of so many, by `--limit`; 0 or absent shows all.
std::size_t limited(Arguments const& arguments, std::size_t count) {
    std::size_t const limit = arguments.number("--limit", 0);
    return limit == 0 ? count : std::min(limit, count);
}

/// The parts of a line. A file is told by its path alone, a position by its place and class.
struct Cells {
    explicit Cells(Row const& row)
        : place(placeOf(row.element).text()), cls(className(row.element)), text(lineText(row.element)) {
        if (text == place) text.clear();
        if (zelkor::ast::source::SourceFile::cast(row.element)) cls.clear();
    }
    std::string place, cls, text;
};

std::string noteOf(Row const& row) {
    return row.note.empty() ? "" : "  " + painted(Paint::Note, '[' + row.note + ']');
}

/// Colours do not count for the width.
std::string padded(Paint paint, std::string const& text, std::size_t width) {
    return painted(paint, text) + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

/// Puts parts in a row, each but the first behind a separator; empty ones are left out.
std::string joined(std::initializer_list<std::string> parts, char const* separator) {
    std::string out;
    for (std::string const& part : parts)
        if (!part.empty()) out += (out.empty() ? "" : separator) + part;
    return out;
}

std::string plainLine(Row const& row) {
    Cells const cells(row);
    std::string const what =
        joined({painted(Paint::Class, cells.cls), painted(Paint::Name, cells.text)}, " ");
    return joined({painted(Paint::Place, cells.place), what}, ": ") + noteOf(row) + '\n';
}

std::string treeLine(Row const& row) {
    Cells const cells(row);
    std::string const what =
        joined({painted(Paint::Class, cells.cls), painted(Paint::Name, cells.text)}, " ");
    return std::string(2 * row.level, ' ') + joined({what, painted(Paint::Place, cells.place)}, "  ") +
           noteOf(row) + '\n';
}

std::string columns(std::vector<Row> const& rows, std::size_t count) {
    std::vector<Cells> lines;
    std::size_t place = 0;
    std::size_t cls = 0;
    for (std::size_t i = 0; i < count; ++i) {
        lines.emplace_back(rows[i]);
        place = std::max(place, lines.back().place.size());
        cls = std::max(cls, lines.back().cls.size());
    }
    std::string out;
    for (std::size_t i = 0; i < count; ++i)
        out += padded(Paint::Place, lines[i].place, place + 2) + padded(Paint::Class, lines[i].cls, cls + 2) +
               painted(Paint::Name, lines[i].text) + noteOf(rows[i]) + '\n';
    return out;
}

std::string textOf(std::vector<Section> const& sections, std::size_t limit) {
    std::string out;
    for (Section const& section : sections) {
        std::size_t const count = std::min(limit, section.rows.size());
        limit -= count;
        if (count == 0) continue;
        if (!section.heading.empty()) {
            if (!out.empty()) out += '\n';
            out += painted(Paint::Heading, section.heading) + '\n';
        }
        if (section.layout == Layout::Columns) out += columns(section.rows, count);
        for (std::size_t i = 0; i < count && section.layout != Layout::Columns; ++i)
            out += section.layout == Layout::Tree ? treeLine(section.rows[i]) : plainLine(section.rows[i]);
    }
    return out;
}

/// Each once: the answers about several subjects may have to say the same.
std::vector<std::string> notesOf(std::vector<Section> const& sections) {
    std::vector<std::string> notes;
    for (Section const& section : sections)
        for (std::string const& note : section.notes)
            if (std::find(notes.begin(), notes.end(), note) == notes.end()) notes.push_back(note);
    return notes;
}

std::string jsonOf(std::string const& verb, std::vector<Section> const& sections, std::size_t limit,
                   std::size_t total) {
    JsonMembers more(",\n  ");
    std::string subjects;
    std::string notes;
    std::vector<std::string> records;
    for (Section const& section : sections) {
        if (section.subject &&
            (&section == &sections.front() || !(section.subject == (&section - 1)->subject)))
            subjects += (subjects.empty() ? "" : ",\n    ") + ('{' + recordOf(section.subject).str() + '}');
        for (Row const& row : section.rows) {
            if (records.size() == limit) break;
            JsonMembers members = recordOf(row.element);
            if (section.subject) members.text("subject", section.subject->identifier());
            records.push_back(recordLine(members.append(row.members)));
        }
    }
    for (std::string const& note : notesOf(sections))
        notes += (notes.empty() ? "" : ",\n    ") + jsonText(note);
    more.number("total", total);
    if (!subjects.empty()) more.raw("subjects", '[' + subjects + ']');
    if (!notes.empty()) more.raw("notes", '[' + notes + ']');
    return jsonReply("zelkor-" + verb, records, more);
}

} // namespace

int printAnswer(Arguments const& arguments, std::string const& verb, std::vector<Section> const& sections) {
    std::size_t total = 0;
    for (Section const& section : sections)
        total += section.rows.size();
    std::size_t const limit = limited(arguments, total);
    print(arguments.has("--json") ? jsonOf(verb, sections, limit, total) : textOf(sections, limit));
    for (Section const& section : sections)
        if (section.rows.empty() && !section.nothing.empty())
            std::cerr << "zelkor: " << section.nothing << '\n';
    for (std::string const& note : notesOf(sections))
        std::cerr << "zelkor: note: " << note << '\n';
    return total == 0 ? Difference : Ok;
}

std::vector<std::string> namesOf(std::vector<brant::zero::ModelElement> const& subjects) {
    std::vector<std::string> names;
    std::map<std::string, std::size_t> uses;
    for (brant::zero::ModelElement const& subject : subjects) {
        names.push_back(lineText(subject));
        ++uses[names.back()];
    }
    for (std::size_t i = 0; i < names.size(); ++i)
        if (Place const place = placeOf(subjects[i]); uses[names[i]] > 1 && place.known())
            names[i] += " at " + place.text();
    return names;
}

void sortByPlace(std::vector<Row>& rows) {
    std::vector<std::pair<Place, std::size_t>> order;
    for (std::size_t i = 0; i < rows.size(); ++i)
        order.emplace_back(placeOf(rows[i].element), i);
    std::stable_sort(order.begin(), order.end(),
                     [](auto const& a, auto const& b) { return a.first < b.first; });
    std::vector<Row> sorted;
    for (auto const& [place, i] : order)
        sorted.push_back(std::move(rows[i]));
    rows = std::move(sorted);
}

void printLimited(Arguments const& arguments, std::string const& verb, std::vector<std::string> const& texts,
                  std::vector<std::string> const& records, JsonMembers more) {
    bool const json = arguments.has("--json");
    std::vector<std::string> shown = json ? records : texts;
    more.number("total", shown.size());
    shown.resize(limited(arguments, shown.size()));
    print(json ? jsonReply("zelkor-" + verb, shown, more)
               : std::accumulate(shown.begin(), shown.end(), std::string()));
}

unsigned depthOf(Arguments const& arguments, unsigned fallback) {
    if (!arguments.has("--transitive")) {
        unsigned const depth = arguments.number("--depth", fallback);
        if (depth == 0) throw UsageError("--depth counts from 1; --transitive goes all the way");
        return depth;
    }
    if (arguments.has("--depth")) throw UsageError("--depth and --transitive exclude each other");
    return unlimitedDepth;
}

} // namespace zelkor::command
