#include "ParsedUnit.hpp"

#include "ClangText.hpp"

#include <algorithm>
#include <filesystem>
#include <map>

namespace zelkor::producer::test {

ParsedUnit::ParsedUnit(WalkedUnit const& unit, std::string const& resourceDirectory, unsigned options)
    : index_(clang_createIndex(0, 0)) {
    std::vector<std::string> arguments = unit.arguments;
    auto const output = std::find(arguments.begin(), arguments.end(), "-o");
    if (output != arguments.end()) arguments.erase(output, std::min(output + 2, arguments.end()));
    auto const end = std::find(arguments.begin(), arguments.end(), "--");
    arguments.insert(end, {"-resource-dir", resourceDirectory, "-working-directory", unit.directory});
    std::vector<char const*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(argument.c_str());
    clang_parseTranslationUnit2FullArgv(index_, nullptr, pointers.data(), static_cast<int>(pointers.size()),
                                        nullptr, 0, options | CXTranslationUnit_KeepGoing, &unit_);
}

ParsedUnit::~ParsedUnit() {
    if (unit_) clang_disposeTranslationUnit(unit_);
    clang_disposeIndex(index_);
}

bool placeOf(CXCursor cursor, std::string const& projectRoot, Place& place) {
    CXFile file = nullptr;
    unsigned line = 0;
    unsigned column = 0;
    clang_getFileLocation(clang_getCursorLocation(cursor), &file, &line, &column, nullptr);
    if (!file) return false;
    // Asking the file system for each cursor would take most of the time of a check.
    static std::map<std::string, std::string> known;
    std::string const written = take(clang_File_tryGetRealPathName(file));
    auto const [entry, isNew] = known.try_emplace(written);
    if (isNew) {
        std::error_code error;
        entry->second = std::filesystem::canonical(written, error).string();
    }
    std::string name = entry->second;
    bool const isForeign = name.starts_with("/usr/") && !name.starts_with(projectRoot + "/");
    if (!isForeign) name = std::filesystem::path(name).lexically_relative(projectRoot).string();
    place = {name, line, column};
    return true;
}

bool isInProject(Place const& place) {
    return !std::get<0>(place).starts_with('/');
}

std::string textOf(Place const& place) {
    auto const& [file, line, column] = place;
    return file + ':' + std::to_string(line) + ':' + std::to_string(column);
}

} // namespace zelkor::producer::test
