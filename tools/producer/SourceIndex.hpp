// Files of one translation unit: their names in the model, whether they are the project's, places and text in
// them.
#pragma once

#include "Clang.hpp"
#include "Facts.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zelkor::producer {

// How absolute names become names of the model; the same for all units of a project.
class ProjectPaths {
  public:
    explicit ProjectPaths(std::string root);

    std::string const& root() const { return root_; }
    // Relative to the root where the file lies below it, or beside it but not below /usr; otherwise
    // unchanged.
    std::string modelPath(std::string const& absolute) const;
    bool isBelowRoot(std::string const& absolute) const;
    // Removes the root from text of the front end that quotes absolute names.
    std::string withoutRoot(std::string text) const;

  private:
    std::string root_;
};

struct FileInfo {
    Id id{};
    std::string path; // as in the model
    std::string realPath;
    bool inProject = false;
    bool isSystem = false;
};

class SourceIndex {
  public:
    SourceIndex(CXTranslationUnit unit, ProjectPaths const& paths);

    CXTranslationUnit unit() const { return unit_; }
    ProjectPaths const& paths() const { return paths_; }
    FileInfo const& file(CXFile file);
    // Null when the location is in no file, as that of a predefined macro.
    FileInfo const* fileOf(CXSourceLocation location);
    bool inProject(CXCursor cursor);
    std::optional<Position> position(CXSourceLocation location);
    std::optional<Position> position(CXCursor cursor) { return position(clang_getCursorLocation(cursor)); }
    // From the first to the last character, unlike the front end's ranges.
    std::optional<Range> range(CXSourceRange extent);
    // Both, for the price of the range: the front end takes its time to find a place.
    struct Excerpt {
        Range range;
        std::string_view text;
    };
    std::optional<Excerpt> excerpt(CXSourceRange extent);
    // The text as it stands in the file, empty when the range begins and ends in different ones.
    std::string_view text(CXSourceRange extent);

    std::string_view contents(CXFile file);

  private:
    struct Place {
        CXFile handle = nullptr;
        Position position;
        unsigned offset = 0;
    };
    static Place place(CXSourceLocation location);
    std::optional<Range> rangeBetween(Place start, Place end);
    std::string_view textBetween(Place const& start, Place const& end);

    CXTranslationUnit unit_;
    ProjectPaths const& paths_;
    std::unordered_map<CXFile, FileInfo> files_;
    std::unordered_map<CXFile, std::string_view> contents_;
};

} // namespace zelkor::producer
