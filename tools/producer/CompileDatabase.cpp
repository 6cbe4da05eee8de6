#include "CompileDatabase.hpp"

#include "Clang.hpp"
#include "Producer.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace zelkor::producer {

namespace fs = std::filesystem;

namespace {

constexpr char databaseName[] = "compile_commands.json";

// The front end only takes a directory with a file of the fixed name, so that any other name needs a
// directory of its own.
class DatabaseDirectory {
  public:
    explicit DatabaseDirectory(fs::path const& database) {
        if (database.filename() == databaseName) {
            directory_ = database.parent_path();
            return;
        }
        std::string pattern = (fs::temp_directory_path() / "zelkor-import-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw ImportError("cannot make a temporary directory in " + pattern);
        directory_ = temporary_ = pattern;
        fs::create_symlink(database, directory_ / databaseName);
    }
    ~DatabaseDirectory() {
        std::error_code ignored;
        if (!temporary_.empty()) fs::remove_all(temporary_, ignored);
    }
    DatabaseDirectory(DatabaseDirectory const&) = delete;
    DatabaseDirectory& operator=(DatabaseDirectory const&) = delete;

    std::string path() const { return directory_.string(); }

  private:
    fs::path directory_;
    fs::path temporary_;
};

fs::path locateDatabase(std::string const& path) {
    std::error_code error;
    fs::path const absolute = fs::absolute(path.empty() ? "." : path, error);
    fs::path const database = fs::is_directory(absolute, error) ? absolute / databaseName : absolute;
    if (!fs::exists(database, error)) {
        throw ImportError(
            database.string() +
            ": no such compile database; configure with CMAKE_EXPORT_COMPILE_COMMANDS=ON, or build "
            "under `bear -- make`");
    }
    if (fs::is_directory(database, error))
        throw ImportError(database.string() +
                          ": is a folder where a compile database should be; remove it and configure again");
    if (!std::ifstream(database)) throw ImportError(database.string() + ": cannot be read");
    if (fs::file_size(database, error) == 0) {
        throw ImportError(database.string() + ": is empty; configure or build the project again");
    }
    return database;
}

// The front end writes the cause of a malformed database to the standard error output and tells it in no
// other way.
class CapturedErrors {
  public:
    CapturedErrors() : file_(std::tmpfile()) {
        if (!file_) return;
        saved_ = dup(STDERR_FILENO);
        dup2(fileno(file_), STDERR_FILENO);
    }
    ~CapturedErrors() { stop(); }
    CapturedErrors(CapturedErrors const&) = delete;
    CapturedErrors& operator=(CapturedErrors const&) = delete;

    // Ends the capture; the last line that was written.
    std::string stop() {
        std::string last;
        if (!file_) return last;
        dup2(saved_, STDERR_FILENO);
        close(saved_);
        std::rewind(file_);
        char line[512];
        while (std::fgets(line, sizeof line, file_)) {
            std::string const text(line, std::strcspn(line, "\n"));
            if (!text.empty()) last = text.substr(text.starts_with("json-compilation-database: ") ? 27 : 0);
        }
        std::fclose(std::exchange(file_, nullptr));
        return last;
    }

  private:
    std::FILE* file_;
    int saved_ = -1;
};

CompileCommand toCommand(CXCompileCommand handle, fs::path const& database) {
    CompileCommand command;
    // A database that travels with its sources may name its directories from where it lies itself.
    command.directory = (database.parent_path() / toText(clang_CompileCommand_getDirectory(handle))).string();
    fs::path const file = toText(clang_CompileCommand_getFilename(handle));
    command.file = (fs::path(command.directory) / file).lexically_normal().string();
    for (unsigned i = 0, count = clang_CompileCommand_getNumArgs(handle); i < count; ++i) {
        command.arguments.push_back(toText(clang_CompileCommand_getArg(handle, i)));
    }
    return command;
}

bool isLauncher(std::string const& argument) {
    static constexpr std::array<std::string_view, 5> names{"ccache", "sccache", "distcc", "icecc", "gomacc"};
    return std::find(names.begin(), names.end(), fs::path(argument).filename().string()) != names.end();
}

struct DroppedOption {
    std::string_view text;
    bool isPrefix;
    bool takesValue; // in an argument of its own, when the text is the whole argument
};

constexpr std::array<DroppedOption, 17> droppedOptions{{
    {"-c", false, false},
    {"-S", false, false},
    {"-o", true, true},
    {"-MF", true, true},
    {"-MT", true, true},
    {"-MQ", true, true},
    {"-MJ", true, true},
    {"-M", true, false}, // after the ones with a value
    {"-save-temps", true, false},
    {"--serialize-diagnostics", false, true},
    {"-Werror", true, false}, // a warning must not make a unit incomplete
    {"-fmodule-mapper=", true, false},
    // Files and processors that another compiler knows, on which no declaration depends.
    {"-fprofile-use", true, false},
    {"-fprofile-instr-use", true, false},
    {"-fauto-profile", true, false},
    {"-fdiagnostics-format", true, false},
    {"-mtune", true, false},
}};

// `-Xclang -include-pch -Xclang FILE`: what a build adds beside the header itself. Another version of the
// front end cannot read the file.
std::size_t precompiledHeader(std::vector<std::string> const& arguments, std::size_t at) {
    bool const isOne = at + 3 < arguments.size() && arguments[at] == "-Xclang" &&
                       arguments[at + 1] == "-include-pch" && arguments[at + 2] == "-Xclang";
    return isOne ? 4 : 0;
}

// As `-x` tells it: it outweighs the name of the file.
std::string toldLanguage(std::vector<std::string> const& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (!arguments[i].starts_with("-x")) continue;
        if (arguments[i].size() > 2) return arguments[i].substr(2);
        return i + 1 < arguments.size() ? arguments[i + 1] : std::string();
    }
    return {};
}

bool isForeign(CompileCommand const& command) {
    static constexpr std::array<std::string_view, 24> suffixes{
        ".s",   ".S", ".sx",  ".asm", ".nasm", ".o",  ".obj", ".a",  ".so", ".rc", ".res",   ".f",
        ".for", ".F", ".f77", ".f90", ".F90",  ".cu", ".hip", ".cl", ".d",  ".rs", ".swift", ".go"};
    std::string const language = toldLanguage(command.arguments);
    if (!language.empty() && language != "none")
        return !language.starts_with("c") && !language.starts_with("obj");
    std::string const suffix = fs::path(command.file).extension().string();
    return std::find(suffixes.begin(), suffixes.end(), suffix) != suffixes.end();
}

} // namespace

std::vector<std::string> cleanArguments(std::vector<std::string> const& arguments) {
    std::vector<std::string> cleaned;
    std::size_t i = 0;
    while (i + 1 < arguments.size() && isLauncher(arguments[i]))
        ++i;
    if (i < arguments.size()) cleaned.push_back(arguments[i++]);
    for (; i < arguments.size(); ++i) {
        i += precompiledHeader(arguments, i);
        if (i == arguments.size()) break;
        std::string const& argument = arguments[i];
        auto const dropped =
            std::find_if(droppedOptions.begin(), droppedOptions.end(), [&](auto const& option) {
                return option.isPrefix ? argument.starts_with(option.text) : argument == option.text;
            });
        if (dropped == droppedOptions.end()) {
            cleaned.push_back(argument);
        } else if (dropped->takesValue && argument == dropped->text) {
            ++i;
        }
    }
    return cleaned;
}

std::vector<CompileCommand> readCompileDatabase(std::string const& path) {
    fs::path const database = locateDatabase(path);
    DatabaseDirectory const directory(database);
    CXCompilationDatabase_Error error = CXCompilationDatabase_NoError;
    CapturedErrors errors;
    ClangDatabase const handle(clang_CompilationDatabase_fromDirectory(directory.path().c_str(), &error));
    std::string const cause = errors.stop();
    if (!handle || error != CXCompilationDatabase_NoError) {
        throw ImportError(database.string() + ": is no compile database: " + cause +
                          " It must be a JSON array of objects with the members \"directory\", \"file\", and "
                          "\"command\" or \"arguments\".");
    }
    ClangCommands const list(clang_CompilationDatabase_getAllCompileCommands(handle.get()));
    std::vector<CompileCommand> commands;
    for (unsigned i = 0, count = list ? clang_CompileCommands_getSize(list.get()) : 0; i < count; ++i) {
        commands.push_back(toCommand(clang_CompileCommands_getCommand(list.get(), i), database));
    }
    if (commands.empty()) {
        throw ImportError(database.string() +
                          ": names no translation unit; build the project from scratch, so that "
                          "every command is recorded");
    }
    return commands;
}

std::vector<CompileCommand> takeForeignCommands(std::vector<CompileCommand>& commands) {
    auto const first = std::stable_partition(
        commands.begin(), commands.end(), [](CompileCommand const& command) { return !isForeign(command); });
    std::vector<CompileCommand> foreign(std::make_move_iterator(first),
                                        std::make_move_iterator(commands.end()));
    commands.erase(first, commands.end());
    return foreign;
}

std::string commonDirectory(std::vector<CompileCommand> const& commands) {
    // Sources of installed packages that a project compiles along, such as a test framework's, lie far from
    // its own.
    auto const isInstalled = [](CompileCommand const& command) { return command.file.starts_with("/usr/"); };
    bool const leavesOut = !std::all_of(commands.begin(), commands.end(), isInstalled);
    std::optional<fs::path> common;
    for (CompileCommand const& command : commands) {
        if (leavesOut && isInstalled(command)) continue;
        fs::path const directory = fs::path(command.file).parent_path();
        if (!common) common = directory;
        auto const parts = std::mismatch(common->begin(), common->end(), directory.begin(), directory.end());
        fs::path shared;
        for (auto part = common->begin(); part != parts.first; ++part)
            shared /= *part;
        common = shared;
    }
    return common->string();
}

} // namespace zelkor::producer
