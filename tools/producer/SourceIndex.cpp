#include "SourceIndex.hpp"

#include <filesystem>

namespace zelkor::producer {

namespace fs = std::filesystem;

namespace {

std::string realName(std::string const& name) {
    std::error_code error;
    fs::path const real = fs::canonical(name, error);
    return error ? fs::absolute(name, error).lexically_normal().string() : real.string();
}

} // namespace

ProjectPaths::ProjectPaths(std::string root) : root_(realName(root)) {
    if (root_.size() > 1 && root_.back() == '/') root_.pop_back();
}

bool ProjectPaths::isBelowRoot(std::string const& absolute) const {
    if (root_ == "/") return true;
    return absolute.size() > root_.size() && absolute.starts_with(root_) && absolute[root_.size()] == '/';
}

std::string ProjectPaths::modelPath(std::string const& absolute) const {
    if (absolute.empty() || absolute[0] != '/') return absolute;
    if (root_ == "/" || absolute.starts_with("/usr/")) {
        return isBelowRoot(absolute) && root_ != "/" ? absolute.substr(root_.size() + 1) : absolute;
    }
    return fs::path(absolute).lexically_relative(root_).string();
}

std::string ProjectPaths::withoutRoot(std::string text) const {
    if (root_ == "/") return text;
    std::string const prefix = root_ + "/";
    for (std::size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at)) {
        text.erase(at, prefix.size());
    }
    return text;
}

SourceIndex::SourceIndex(CXTranslationUnit unit, ProjectPaths const& paths) : unit_(unit), paths_(paths) {}

FileInfo const& SourceIndex::file(CXFile file) {
    auto const [entry, isNew] = files_.try_emplace(file);
    FileInfo& info = entry->second;
    if (!isNew) return info;
    std::string name = toText(clang_File_tryGetRealPathName(file));
    if (name.empty()) name = toText(clang_getFileName(file));
    name = realName(name);
    CXSourceLocation const start = clang_getLocationForOffset(unit_, file, 0);
    info.isSystem = clang_Location_isInSystemHeader(start) != 0;
    info.inProject = !info.isSystem && (paths_.isBelowRoot(name) || !name.starts_with("/usr/"));
    info.path = paths_.modelPath(name);
    info.id = makeId("file", info.path);
    info.realPath = std::move(name);
    return info;
}

FileInfo const* SourceIndex::fileOf(CXSourceLocation location) {
    CXFile handle = nullptr;
    clang_getFileLocation(location, &handle, nullptr, nullptr, nullptr);
    return handle ? &file(handle) : nullptr;
}

bool SourceIndex::inProject(CXCursor cursor) {
    FileInfo const* const info = fileOf(clang_getCursorLocation(cursor));
    return info && info->inProject;
}

SourceIndex::Place SourceIndex::place(CXSourceLocation location) {
    Place place;
    clang_getFileLocation(location, &place.handle, &place.position.line, &place.position.column,
                          &place.offset);
    return place;
}

std::optional<Position> SourceIndex::position(CXSourceLocation location) {
    Place found = place(location);
    if (!found.handle) return std::nullopt;
    found.position.file = file(found.handle).id;
    return found.position;
}

std::optional<Range> SourceIndex::range(CXSourceRange extent) {
    return rangeBetween(place(clang_getRangeStart(extent)), place(clang_getRangeEnd(extent)));
}

std::optional<SourceIndex::Excerpt> SourceIndex::excerpt(CXSourceRange extent) {
    Place const start = place(clang_getRangeStart(extent));
    Place const end = place(clang_getRangeEnd(extent));
    std::optional<Range> const range = rangeBetween(start, end);
    if (!range) return std::nullopt;
    return Excerpt{*range, textBetween(start, end)};
}

std::optional<Range> SourceIndex::rangeBetween(Place start, Place end) {
    if (!start.handle || !end.handle) return std::nullopt;
    start.position.file = file(start.handle).id;
    end.position.file = file(end.handle).id;
    // The front end's end is the column after the last character; a comment may end with its line.
    if (end.position.column > 1) --end.position.column;
    return Range{start.position, end.position};
}

std::string_view SourceIndex::text(CXSourceRange extent) {
    return textBetween(place(clang_getRangeStart(extent)), place(clang_getRangeEnd(extent)));
}

std::string_view SourceIndex::textBetween(Place const& start, Place const& end) {
    if (!start.handle || start.handle != end.handle) return {};
    std::string_view const all = contents(start.handle);
    if (start.offset > end.offset || end.offset > all.size()) return {};
    return all.substr(start.offset, end.offset - start.offset);
}

std::string_view SourceIndex::contents(CXFile file) {
    // The front end searches all files of the unit each time.
    auto const [entry, isNew] = contents_.try_emplace(file);
    if (isNew) {
        std::size_t size = 0;
        char const* const bytes = clang_getFileContents(unit_, file, &size);
        if (bytes) entry->second = std::string_view(bytes, size);
    }
    return entry->second;
}

} // namespace zelkor::producer
