// What the preprocessor knows of a unit: files and the include graph, macros, comments, and by the predefined
// macros the target and the language.
#pragma once

#include "SourceIndex.hpp"
#include "SourceScanner.hpp"

#include <map>
#include <unordered_map>
#include <vector>

namespace zelkor::producer {

class PreprocessorReader {
  public:
    PreprocessorReader(SourceIndex& sources, UnitFacts& facts);

    // Files in the order in which the unit reached them; call before `read`.
    void readFiles();
    // Takes one cursor of the preprocessing record.
    void read(CXCursor cursor);
    // Comments and undefinitions of project files, macros of the command line; call after all cursors.
    void finish(std::vector<std::string> const& arguments);

  private:
    struct PendingMacro {
        CXCursor cursor;
        std::optional<Position> position;
        bool isKept = false;
        bool isReferenced = false;
        bool isCommandLine = false;
    };
    // Names the definition by its number, or a macro that has none by its name.
    struct PendingUse {
        std::size_t macro = 0;
        std::string builtin;
        Position place;
    };

    FileFact& fileFact(CXFile file);
    void readDefinition(CXCursor cursor);
    void readExpansion(CXCursor cursor);
    void readInclude(CXCursor cursor);
    void scanFile(CXFile file, FileFact& fact, LexicalRules const& rules);
    void addUndefinition(std::string const& name, std::optional<Position> position, bool isCommandLine);
    std::string replacementText(CXCursor definition);
    void finishMacros(std::vector<std::string> const& arguments);

    SourceIndex& sources_;
    UnitFacts& facts_;
    std::unordered_map<CXFile, std::size_t> fileIndex_;
    IdMap<std::size_t> fileById_;
    std::vector<CXFile> handles_;
    std::vector<PendingMacro> macros_;
    CursorMap<std::size_t> macroIndex_;
    std::map<std::string, std::string> predefined_;
    std::map<std::string, MacroFact> builtins_;
    std::vector<PendingUse> uses_;
};

} // namespace zelkor::producer
