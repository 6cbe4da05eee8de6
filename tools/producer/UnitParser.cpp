#include "UnitParser.hpp"

#include "Clang.hpp"
#include "DeclarationReader.hpp"
#include "PreprocessorReader.hpp"
#include "Producer.hpp"

#include <algorithm>
#include <filesystem>

namespace zelkor::producer {

namespace fs = std::filesystem;

namespace {

constexpr unsigned parseOptions = CXTranslationUnit_DetailedPreprocessingRecord |
                                  CXTranslationUnit_KeepGoing | CXTranslationUnit_IncludeAttributedTypes;

std::vector<std::string> frontEndArguments(CompileCommand const& command, ParserSettings const& settings) {
    std::vector<std::string> arguments = cleanArguments(command.arguments);
    std::vector<std::string> own = settings.extraArguments;
    own.insert(own.end(),
               {"-resource-dir", settings.resourceDirectory, "-working-directory", command.directory,
                "-ferror-limit=0", "-fparse-all-comments", "-Wno-unknown-warning-option",
                "-Wno-unused-command-line-argument", "-Wno-ignored-optimization-argument"});
    // What follows "--" is a file name.
    auto const end = std::find(arguments.begin(), arguments.end(), "--");
    arguments.insert(end, own.begin(), own.end());
    return arguments;
}

char const* describeError(CXErrorCode error) {
    switch (error) {
    case CXError_Crashed:
        return "the front end crashed on this unit";
    case CXError_InvalidArguments:
        return "the front end rejected the arguments of this unit's command";
    default:
        return "the front end could not parse this unit; try its command by hand with clang-19";
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

void readDiagnostics(CXTranslationUnit unit, UnitFacts& facts) {
    for (unsigned i = 0, count = clang_getNumDiagnostics(unit); i < count; ++i) {
        ClangDiagnostic const handle(clang_getDiagnostic(unit, i));
        Diagnostic diagnostic;
        diagnostic.severity = severityOf(clang_getDiagnosticSeverity(handle.get()));
        diagnostic.text = toText(clang_getDiagnosticSpelling(handle.get()));
        CXFile file = nullptr;
        clang_getFileLocation(clang_getDiagnosticLocation(handle.get()), &file, &diagnostic.line,
                              &diagnostic.column, nullptr);
        if (!file && takeRejectedOption(diagnostic.text, facts)) continue;
        if (file) diagnostic.file = toText(clang_getFileName(file));
        facts.diagnostics.push_back(std::move(diagnostic));
    }
}

void readUnit(CXTranslationUnit unit, CompileCommand const& command, ProjectPaths const& paths,
              bool wantsUses, UnitFacts& facts) {
    SourceIndex sources(unit, paths);
    CXCursor const root = clang_getTranslationUnitCursor(unit);
    PreprocessorReader preprocessor(sources, facts);
    preprocessor.readFiles();
    visitChildren(root, [&](CXCursor cursor) {
        if (clang_isPreprocessing(clang_getCursorKind(cursor))) preprocessor.read(cursor);
        return CXChildVisit_Continue;
    });
    preprocessor.finish(command.arguments);
    DeclarationReader declarations(sources, facts, wantsUses);
    visitChildren(root, [&](CXCursor cursor) {
        if (!clang_isPreprocessing(clang_getCursorKind(cursor))) declarations.declare(cursor);
        return CXChildVisit_Continue;
    });
    declarations.finish();
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

UnitFacts parseUnit(CompileCommand const& command, ParserSettings const& settings,
                    ProjectPaths const& paths) {
    UnitFacts facts;
    std::error_code error;
    fs::path const real = fs::canonical(command.file, error);
    facts.file = paths.modelPath(error ? command.file : real.string());
    if (error) {
        facts.failure = command.file + ": " + error.message();
        return facts;
    }
    std::vector<std::string> const arguments = frontEndArguments(command, settings);
    std::vector<char const*> pointers;
    for (std::string const& argument : arguments)
        pointers.push_back(argument.c_str());
    ClangIndex const index(clang_createIndex(0, 0));
    CXTranslationUnit handle = nullptr;
    CXErrorCode const result = clang_parseTranslationUnit2FullArgv(index.get(), nullptr, pointers.data(),
                                                                   static_cast<int>(pointers.size()), nullptr,
                                                                   0, parseOptions, &handle);
    ClangUnit const unit(handle);
    if (result != CXError_Success || !unit) {
        facts.failure = describeError(result);
        return facts;
    }
    readDiagnostics(unit.get(), facts);
    readUnit(unit.get(), command, paths, settings.wantsUses, facts);
    return facts;
}

} // namespace zelkor::producer
