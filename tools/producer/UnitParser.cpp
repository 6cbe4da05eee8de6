#include "UnitParser.hpp"

#include "Clang.hpp"
#include "DeclarationReader.hpp"
#include "PreprocessorReader.hpp"
#include "Producer.hpp"
#include "UnitFile.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <set>

namespace zelkor::producer {

namespace fs = std::filesystem;

namespace {

constexpr unsigned parseOptions = CXTranslationUnit_DetailedPreprocessingRecord |
                                  CXTranslationUnit_KeepGoing | CXTranslationUnit_IncludeAttributedTypes;

std::vector<std::string> frontEndArguments(CompileCommand const& command, ParserSettings const& settings,
                                           ProjectPaths const& paths, std::vector<std::string> arguments) {
    std::vector<std::string> own = settings.extraArguments;
    // What the project's own compiler warns of is no trouble of an import, and to find it takes time: "-w".
    // Else `__FILE__` would tell each string on which machine it was read.
    if (paths.root() != "/") own.push_back("-fmacro-prefix-map=" + paths.root() + "/=");
    own.insert(own.end(), {"-resource-dir", settings.resourceDirectory, "-working-directory",
                           command.directory, "-ferror-limit=0", "-fparse-all-comments", "-w"});
    // What follows "--" is a file name.
    auto const end = std::find(arguments.begin(), arguments.end(), "--");
    arguments.insert(end, own.begin(), own.end());
    return arguments;
}

void describeError(CXErrorCode error, UnitFacts& facts) {
    switch (error) {
    case CXError_Crashed:
        facts.failure = "the front end crashed on this unit";
        facts.advice = "take it out of the compile database when the crash disturbs";
        break;
    case CXError_InvalidArguments:
        facts.failure = "the front end rejected the arguments of this unit's command";
        facts.advice = "try the command by hand with clang-19";
        break;
    default:
        facts.failure = "the front end could not parse this unit";
        facts.advice = "try its command by hand with clang-19";
    }
}

Severity severityOf(CXDiagnosticSeverity severity) {
    switch (severity) {
    case CXDiagnostic_Fatal:
        return Severity::Fatal;
    case CXDiagnostic_Error:
        return Severity::Error;
    case CXDiagnostic_Warning:
        return Severity::Warning;
    default:
        return Severity::Note;
    }
}

// Options that only another compiler knows do no harm, but the front end takes them for errors.
bool takeRejectedOption(std::string const& text, UnitFacts& facts) {
    for (std::string_view const prefix :
         {"unknown argument: '", "unknown argument '", "unsupported option '"}) {
        if (!text.starts_with(prefix)) continue;
        std::string const option = text.substr(prefix.size(), text.find('\'', prefix.size()) - prefix.size());
        auto& known = facts.rejectedOptions;
        if (std::find(known.begin(), known.end(), option) == known.end()) known.push_back(option);
        return true;
    }
    return false;
}

void readDiagnostics(SourceIndex& sources, UnitFacts& facts) {
    for (unsigned i = 0, count = clang_getNumDiagnostics(sources.unit()); i < count; ++i) {
        ClangDiagnostic const handle(clang_getDiagnostic(sources.unit(), i));
        Diagnostic diagnostic;
        diagnostic.severity = severityOf(clang_getDiagnosticSeverity(handle.get()));
        diagnostic.text = toText(clang_getDiagnosticSpelling(handle.get()));
        CXFile file = nullptr;
        clang_getFileLocation(clang_getDiagnosticLocation(handle.get()), &file, &diagnostic.line,
                              &diagnostic.column, nullptr);
        if (!file && takeRejectedOption(diagnostic.text, facts)) continue;
        if (file) diagnostic.file = sources.file(file).path; // the command names it from its own folder
        facts.diagnostics.push_back(std::move(diagnostic));
    }
}

struct Parsed {
    ClangUnit unit;
    CXErrorCode result;
};

Parsed parse(CXIndex index, std::vector<std::string> const& arguments) {
    std::vector<char const*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(argument.c_str());
    CXTranslationUnit handle = nullptr;
    CXErrorCode const result = clang_parseTranslationUnit2FullArgv(index, nullptr, pointers.data(),
                                                                   static_cast<int>(pointers.size()), nullptr,
                                                                   0, parseOptions, &handle);
    Parsed parsed{ClangUnit(handle), result};
    if (result != CXError_Success) parsed.unit.reset();
    return parsed;
}

// Some values that another compiler takes make the front end refuse the whole command, and it does not tell
// which. None of these decides much of what the unit declares.
// Each kind is left out by itself, then, for the empty prefix, all of them.
constexpr std::array<std::string_view, 4> suspects{"-m", "-std=", "-traditional", ""};

std::vector<std::string> takeSuspects(std::vector<std::string>& arguments, std::string_view prefix) {
    static constexpr std::array<std::string_view, 3> sizes{"-m32", "-m64", "-mx32"}; // of types, so they stay
    std::vector<std::string> taken;
    std::erase_if(arguments, [&](std::string const& argument) {
        auto const startsWith = [&](std::string_view start) { return argument.starts_with(start); };
        bool const isSuspect = prefix.empty() ? std::any_of(suspects.begin(), suspects.end() - 1, startsWith)
                                              : startsWith(prefix);
        bool const isTaken = isSuspect && std::find(sizes.begin(), sizes.end(), argument) == sizes.end();
        if (isTaken) taken.push_back(argument);
        return isTaken;
    });
    return taken;
}

// \returns null with the reason in the facts.
ClangUnit parseSomehow(CXIndex index, CompileCommand const& command, ParserSettings const& settings,
                       ProjectPaths const& paths, UnitFacts& facts) {
    std::vector<std::string> const arguments = cleanArguments(command.arguments);
    Parsed parsed = parse(index, frontEndArguments(command, settings, paths, arguments));
    for (std::string_view const prefix : suspects) {
        if (parsed.unit || parsed.result == CXError_Crashed) break;
        std::vector<std::string> fewer = arguments;
        facts.rejectedOptions = takeSuspects(fewer, prefix);
        if (!facts.rejectedOptions.empty())
            parsed = parse(index, frontEndArguments(command, settings, paths, fewer));
    }
    if (!parsed.unit) {
        facts.rejectedOptions.clear();
        describeError(parsed.result, facts);
    }
    return std::move(parsed.unit);
}

// \returns false, with the reason in the facts, when there is nothing to parse.
bool checkPaths(CompileCommand const& command, UnitFacts& facts) {
    for (std::string const& path : {command.directory, command.file}) {
        std::error_code error;
        if (fs::exists(path, error)) continue;
        if (!error) error = std::make_error_code(std::errc::no_such_file_or_directory);
        facts.failure = path + ": " + error.message();
        facts.advice =
            "build the project first, so that generated sources are there, or record its commands again";
        return false;
    }
    return true;
}

void readPreprocessing(PreprocessorReader& reader, CompileCommand const& command, CXTranslationUnit unit) {
    reader.readFiles();
    visitChildren(clang_getTranslationUnitCursor(unit), [&](CXCursor cursor) {
        if (clang_isPreprocessing(clang_getCursorKind(cursor))) reader.read(cursor);
        return CXChildVisit_Continue;
    });
    reader.finish(command.arguments);
}

// The content is what was parsed, even if the file has changed since.
void readInputs(SourceIndex& sources, UnitFacts& facts) {
    struct Reader {
        SourceIndex& sources;
        UnitFacts& facts;
        std::set<std::string> known;
    } reader{sources, facts, {}};
    clang_getInclusions(
        sources.unit(),
        [](CXFile file, CXSourceLocation*, unsigned depth, CXClientData data) {
            auto& [sources, facts, known] = *static_cast<Reader*>(data);
            std::string const& path = sources.file(file).realPath;
            if (!known.insert(path).second) return;
            auto const place = depth == 0 ? facts.inputs.begin() : facts.inputs.end();
            facts.inputs.insert(place, {path, digestOf(sources.contents(file))});
        },
        &reader);
}

} // namespace

std::string findResourceDirectory(std::string const& given) {
    std::string const directory = given.empty() ? ZELKOR_CLANG_RESOURCE_DIR : given;
    std::error_code error;
    if (fs::exists(fs::path(directory) / "include" / "stddef.h", error)) return directory;
    throw ImportError(
        directory +
        ": the headers of the front end are not there, and without them types would be silently wrong; "
        "install the package libclang-common-19-dev or name the directory that has include/stddef.h");
}

std::string unitPath(CompileCommand const& command, ProjectPaths const& paths) {
    std::error_code error;
    fs::path const real = fs::canonical(command.file, error);
    return paths.modelPath(error ? command.file : real.string());
}

Digest commandDigest(CompileCommand const& command, ParserSettings const& settings,
                     ProjectPaths const& paths) {
    std::string text = toolLine();
    auto const add = [&text](std::string_view part) { text.append(1, '\0').append(part); };
    add(paths.root());
    add(command.directory);
    add(command.file);
    add(settings.wantsUses ? "uses" : "");
    for (std::string const& argument :
         frontEndArguments(command, settings, paths, cleanArguments(command.arguments)))
        add(argument);
    // What the front end reads from the environment.
    for (char const* const name :
         {"CPATH", "C_INCLUDE_PATH", "CPLUS_INCLUDE_PATH", "CCC_OVERRIDE_OPTIONS", "SDKROOT"}) {
        char const* const value = std::getenv(name);
        add(value ? value : "");
    }
    return digestOf(text);
}

void parseUnit(CompileCommand const& command, ParserSettings const& settings, ProjectPaths const& paths,
               UnitSink const& sink) {
    UnitFacts facts;
    facts.file = unitPath(command, paths);
    if (!checkPaths(command, facts)) return sink.unit(std::move(facts));
    ClangIndex const index(clang_createIndex(0, 0));
    ClangUnit const unit = parseSomehow(index.get(), command, settings, paths, facts);
    if (!unit) return sink.unit(std::move(facts));
    SourceIndex sources(unit.get(), paths);
    readDiagnostics(sources, facts);
    PreprocessorReader preprocessor(sources, facts);
    readPreprocessing(preprocessor, command, unit.get());
    if (sink.files) sink.files(facts.files);
    readInputs(sources, facts);
    DeclarationReader declarations(sources, facts, settings.wantsUses);
    visitChildren(clang_getTranslationUnitCursor(unit.get()), [&](CXCursor cursor) {
        if (!clang_isPreprocessing(clang_getCursorKind(cursor))) declarations.declare(cursor);
        return CXChildVisit_Continue;
    });
    declarations.finish();
    sink.unit(std::move(facts));
}

UnitFacts parseUnit(CompileCommand const& command, ParserSettings const& settings,
                    ProjectPaths const& paths) {
    UnitFacts result;
    parseUnit(command, settings, paths, {[&result](UnitFacts&& facts) { result = std::move(facts); }});
    return result;
}

} // namespace zelkor::producer
