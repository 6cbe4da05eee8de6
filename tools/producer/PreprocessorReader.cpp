#include "PreprocessorReader.hpp"

#include "Target.hpp"

#include <algorithm>
#include <filesystem>
#include <set>

namespace zelkor::producer {

namespace {

class Tokens {
  public:
    Tokens(CXTranslationUnit unit, CXSourceRange extent) : unit_(unit) {
        clang_tokenize(unit, extent, &tokens_, &count_);
    }
    ~Tokens() { clang_disposeTokens(unit_, tokens_, count_); }
    Tokens(Tokens const&) = delete;
    Tokens& operator=(Tokens const&) = delete;

    unsigned size() const { return count_; }
    CXTokenKind kind(unsigned i) const { return clang_getTokenKind(tokens_[i]); }
    std::string text(unsigned i) const { return toText(clang_getTokenSpelling(unit_, tokens_[i])); }
    CXSourceRange extent(unsigned i) const { return clang_getTokenExtent(unit_, tokens_[i]); }

  private:
    CXTranslationUnit unit_;
    CXToken* tokens_ = nullptr;
    unsigned count_ = 0;
};

unsigned offsetOf(CXSourceLocation location) {
    unsigned offset = 0;
    clang_getSpellingLocation(location, nullptr, nullptr, nullptr, &offset);
    return offset;
}

unsigned lineOf(CXSourceLocation location) {
    unsigned line = 0;
    clang_getFileLocation(location, nullptr, &line, nullptr, nullptr);
    return line;
}

// Names in `-D NAME=VALUE` or `-U NAME`, with or without the blank.
std::set<std::string> namesOfOption(std::vector<std::string> const& arguments, std::string const& option) {
    std::set<std::string> names;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (!arguments[i].starts_with(option)) continue;
        std::string name = arguments[i].substr(option.size());
        if (name.empty() && i + 1 < arguments.size()) name = arguments[++i];
        names.insert(name.substr(0, name.find_first_of("=(")));
    }
    return names;
}

// Pairs of the first line and the one after the last.
std::vector<std::pair<unsigned, unsigned>> skippedLines(CXTranslationUnit unit, CXFile file) {
    std::vector<std::pair<unsigned, unsigned>> lines;
    CXSourceRangeList* const list = clang_getSkippedRanges(unit, file);
    for (unsigned i = 0; list && i < list->count; ++i)
        lines.emplace_back(lineOf(clang_getRangeStart(list->ranges[i])),
                           lineOf(clang_getRangeEnd(list->ranges[i])));
    clang_disposeSourceRangeList(list);
    return lines;
}

} // namespace

PreprocessorReader::PreprocessorReader(SourceIndex& sources, UnitFacts& facts)
    : sources_(sources), facts_(facts) {}

FileFact& PreprocessorReader::fileFact(CXFile file) {
    auto const [entry, isNew] = fileIndex_.try_emplace(file, facts_.files.size());
    if (!isNew) return facts_.files[entry->second];
    FileInfo const& info = sources_.file(file);
    // The front end may hold one file under several handles, as when two names lead to it.
    auto const [same, isNewFile] = fileById_.try_emplace(info.id, facts_.files.size());
    if (!isNewFile) {
        entry->second = same->second;
        return facts_.files[same->second];
    }
    FileFact fact;
    fact.id = info.id;
    fact.path = info.path;
    fact.inProject = info.inProject;
    fact.isFromSystemDirectory = info.isSystem;
    facts_.files.push_back(std::move(fact));
    handles_.push_back(file);
    return facts_.files.back();
}

void PreprocessorReader::readFiles() {
    struct Inclusion {
        CXFile file;
        bool isMain;
    };
    std::vector<Inclusion> inclusions;
    clang_getInclusions(
        sources_.unit(),
        [](CXFile file, CXSourceLocation*, unsigned depth, CXClientData data) {
            static_cast<std::vector<Inclusion>*>(data)->push_back({file, depth == 0});
        },
        &inclusions);
    std::stable_sort(inclusions.begin(), inclusions.end(),
                     [](Inclusion const& a, Inclusion const& b) { return a.isMain && !b.isMain; });
    for (Inclusion const& inclusion : inclusions) {
        FileFact& fact = fileFact(inclusion.file);
        fact.isTopLevel |= inclusion.isMain;
        fact.isInclude |= !inclusion.isMain;
    }
}

void PreprocessorReader::read(CXCursor cursor) {
    switch (clang_getCursorKind(cursor)) {
    case CXCursor_MacroDefinition:
        readDefinition(cursor);
        break;
    case CXCursor_MacroExpansion:
        readExpansion(cursor);
        break;
    case CXCursor_InclusionDirective:
        readInclude(cursor);
        break;
    default:
        break;
    }
}

void PreprocessorReader::readDefinition(CXCursor cursor) {
    PendingMacro macro;
    macro.cursor = cursor;
    CXSourceLocation const location = clang_getCursorLocation(cursor);
    macro.position = sources_.position(location);
    if (macro.position) {
        FileInfo const* const file = sources_.fileOf(location);
        macro.isKept = file && file->inProject;
    } else {
        CXString place;
        clang_getPresumedLocation(location, &place, nullptr, nullptr);
        macro.isCommandLine = toText(place) == "<command line>";
        macro.isKept = true;
    }
    macroIndex_.emplace(cursor, macros_.size());
    macros_.push_back(macro);
}

void PreprocessorReader::readExpansion(CXCursor cursor) {
    if (!sources_.inProject(cursor)) return;
    CXCursor const definition = clang_getCursorReferenced(cursor);
    auto const found = macroIndex_.find(definition);
    if (found != macroIndex_.end()) {
        macros_[found->second].isKept = true;
        macros_[found->second].isReferenced = true;
        uses_.push_back({found->second, {}, sources_.position(cursor).value_or(Position{})});
        return;
    }
    // __LINE__ and its like have no definition anywhere.
    std::string const name = toText(clang_getCursorSpelling(cursor));
    MacroFact& builtin = builtins_[name];
    builtin.name = name;
    builtin.isPredefined = true;
    builtin.isReferenced = true;
    uses_.push_back({0, name, sources_.position(cursor).value_or(Position{})});
}

void PreprocessorReader::readInclude(CXCursor cursor) {
    CXFile const target = clang_getIncludedFile(cursor);
    std::string const writtenName = toText(clang_getCursorSpelling(cursor));
    if (!target) {
        facts_.missingHeaders.push_back(writtenName);
        return;
    }
    std::size_t const targetIndex = static_cast<std::size_t>(&fileFact(target) - facts_.files.data());
    CXFile source = nullptr;
    unsigned line = 0;
    clang_getFileLocation(clang_getCursorLocation(cursor), &source, &line, nullptr, nullptr);
    if (!source) {
        facts_.files[targetIndex].isPreinclude = true;
    } else {
        std::string_view const directive = sources_.text(clang_getCursorExtent(cursor));
        std::size_t const bracket = directive.find_first_of("<\"");
        facts_.files[targetIndex].isSystemSyntax |=
            bracket != std::string_view::npos && directive[bracket] == '<';
        fileFact(source).includes.push_back({facts_.files[targetIndex].id, writtenName, line});
    }
    FileFact& included = facts_.files[targetIndex];
    included.isInclude = true;
    if (included.writtenName.empty()) included.writtenName = writtenName;
}

void PreprocessorReader::finish(std::vector<std::string> const& arguments) {
    finishMacros(arguments);
    facts_.target = targetOf(predefined_);
    facts_.language = languageOf(predefined_);
    LexicalRules const rules = lexicalRulesOf(predefined_);
    for (std::size_t i = 0; i < handles_.size(); ++i) {
        if (facts_.files[i].inProject) scanFile(handles_[i], facts_.files[i], rules);
    }
    for (std::string const& name : namesOfOption(arguments, "-U"))
        addUndefinition(name, std::nullopt, true);
}

void PreprocessorReader::scanFile(CXFile file, FileFact& fact, LexicalRules const& rules) {
    SourceScan const scan = scanSource(sources_.contents(file), rules);
    auto const positionOf = [&fact](TextPlace const& place) {
        return Position{fact.id, place.line, place.column};
    };
    fact.comments.reserve(scan.comments.size());
    for (ScannedPiece const& comment : scan.comments)
        fact.comments.push_back(
            {{positionOf(comment.start), positionOf(comment.end)}, std::string(comment.text)});
    if (scan.undefinitions.empty()) return;
    auto const skipped = skippedLines(sources_.unit(), file);
    auto const isSkipped = [&skipped](unsigned line) {
        return std::any_of(skipped.begin(), skipped.end(),
                           [line](auto const& range) { return range.first <= line && line < range.second; });
    };
    for (ScannedPiece const& name : scan.undefinitions) {
        if (!isSkipped(name.start.line))
            addUndefinition(std::string(name.text), positionOf(name.start), false);
    }
}

void PreprocessorReader::addUndefinition(std::string const& name, std::optional<Position> position,
                                         bool isCommandLine) {
    MacroFact macro;
    macro.name = name;
    macro.position = position;
    macro.isUndef = true;
    macro.isCommandLine = isCommandLine;
    macro.id = position ? makeId(makeId(position->file, "undef", position->line), name, position->column)
                        : makeId("undef", name);
    facts_.macros.push_back(std::move(macro));
}

std::string PreprocessorReader::replacementText(CXCursor definition) {
    Tokens const tokens(sources_.unit(), clang_getCursorExtent(definition));
    std::string text;
    unsigned previousEnd = 0;
    for (unsigned i = 1; i < tokens.size(); ++i) {
        if (tokens.kind(i) == CXToken_Comment) continue;
        CXSourceRange const extent = tokens.extent(i);
        unsigned const start = offsetOf(clang_getRangeStart(extent));
        if (!text.empty() && start != previousEnd) text += ' ';
        text += tokens.text(i);
        previousEnd = offsetOf(clang_getRangeEnd(extent));
    }
    return text;
}

void PreprocessorReader::finishMacros(std::vector<std::string> const& arguments) {
    std::set<std::string> const defined = namesOfOption(arguments, "-D");
    std::vector<Id> ids(macros_.size());
    for (std::size_t i = 0; i < macros_.size(); ++i) {
        PendingMacro const& pending = macros_[i];
        if (!pending.isKept) continue;
        MacroFact macro;
        macro.name = toText(clang_getCursorSpelling(pending.cursor));
        macro.text = replacementText(pending.cursor);
        macro.position = pending.position;
        macro.isReferenced = pending.isReferenced;
        // The front end adds names of its own to the command line.
        macro.isCommandLine = pending.isCommandLine && defined.contains(macro.name);
        macro.isPredefined = !pending.position && !macro.isCommandLine;
        if (!pending.position) predefined_[macro.name] = macro.text;
        macro.id = macro.position ? makeId(makeId(macro.position->file, "macro", macro.position->line),
                                           macro.name, macro.position->column)
                                  : makeId("macro", macro.name + ' ' + macro.text);
        ids[i] = macro.id;
        facts_.macros.push_back(std::move(macro));
    }
    for (auto& [name, macro] : builtins_) {
        macro.id = makeId("macro", name);
        facts_.macros.push_back(macro);
    }
    for (PendingUse const& use : uses_)
        facts_.macroUses.push_back(
            {use.builtin.empty() ? ids[use.macro] : builtins_[use.builtin].id, use.place});
}

} // namespace zelkor::producer
