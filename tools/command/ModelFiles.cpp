#include "Verbs.hpp"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include <unistd.h>

namespace zelkor::command {

namespace io = zelkor::ast::io;

io::IoFormat formatOf(std::string const& path, std::string const& option) {
    std::string const word = !option.empty() ? option : (path.ends_with(".xml") ? "xml" : "json");
    if (word == "json") return io::IoFormat::json;
    if (word == "xml") return io::IoFormat::xml;
    std::string const near = nearest(word, {"json", "xml"});
    throw UsageError("unknown format '" + word + "'; use json or xml" +
                     (near.empty() ? "" : " (did you mean '" + near + "'?)"));
}

std::u16string widePath(std::string const& path) {
    auto wide = brant::zero::toUtf16(path);
    if (!wide) throw UsageError("the path is not valid UTF-8: " + path);
    return *wide;
}

namespace {

/// \returns the format that a text begins in; none when it holds nothing but blanks and byte order marks.
std::optional<io::IoFormat> formatOfText(std::string_view text) {
    static constexpr std::string_view skipped("\0 \t\r\n\xEF\xBB\xBF\xFF\xFE", 10);
    std::size_t const first = text.find_first_not_of(skipped);
    if (first == std::string_view::npos) return std::nullopt;
    return text[first] == '<' ? io::IoFormat::xml : io::IoFormat::json;
}

/// Only of what can be read twice; a pipe would lose its beginning.
std::optional<io::IoFormat> formatOfFile(std::string const& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    char beginning[64];
    std::ifstream file(path, std::ios::binary);
    file.read(beginning, sizeof beginning);
    return formatOfText(std::string_view(beginning, static_cast<std::size_t>(file.gcount())));
}

} // namespace

zelkor::ast::Ast readModel(std::string const& path, std::string const& format) {
    bool const isInput = path == "-";
    std::string const text = isInput ? std::string{std::istreambuf_iterator<char>(std::cin), {}} : "";
    std::optional<io::IoFormat> told;
    if (format.empty()) told = isInput ? formatOfText(text) : formatOfFile(path);
    io::IoFormat const found = told ? *told : formatOf(path, format);
    if (!isInput) return io::deserializeFromFile(widePath(path), found);
    try {
        return io::deserializeFromUTF8String(text, found);
    } catch (brant::zero::io::ParseError const& error) {
        throw brant::zero::io::ParseError("-", error.getLine(), error.getColumn(), error.getMessage(),
                                          error.getExpected());
    }
}

void print(std::string const& text) {
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
    std::cout.flush();
    if (!std::cout)
        throw std::system_error(errno, std::generic_category(), "cannot write to standard output");
}

void requireWritable(std::string const& path) {
    if (path == "-") return;
    if (path.empty()) throw UsageError("the name of the file to write is empty");
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw UsageError(path + ": is a folder; name a file in it");
    if (std::filesystem::is_other(path, error)) return; // such as /dev/null, which nothing is put beside
    std::filesystem::path const folder =
        std::filesystem::weakly_canonical(std::filesystem::absolute(path), error).parent_path();
    if (!std::filesystem::is_directory(folder, error))
        throw UsageError(path + ": there is no folder " + folder.string() + "; make it first");
    for (std::string const& needed : {folder.string(), path})
        if (::access(needed.c_str(), W_OK) != 0 && errno != ENOENT)
            throw UsageError(path + ": cannot be written: " + needed + ": " +
                             std::generic_category().message(errno));
}

namespace {

/// A signal must not end the program while the file beside the model is there that will become it.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t signals;
        sigemptyset(&signals);
        for (int const signal : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&signals, signal);
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(SignalsHeld const&) = delete;
    SignalsHeld& operator=(SignalsHeld const&) = delete;

  private:
    sigset_t before_;
};

} // namespace

void writeModel(zelkor::ast::Ast& ast, std::string const& path, io::IoFormat format) {
    if (path == "-") {
        print(io::serializeToUTF8String(ast, format));
        return;
    }
    SignalsHeld const held;
    io::serializeToFile(ast, widePath(path), format);
}

int runConvert(Arguments const& arguments) {
    arguments.requireOperands({"IN", "OUT"});
    std::string const& out = arguments.operands()[1];
    requireWritable(out);
    zelkor::ast::Ast ast = readModel(arguments.operands()[0], arguments.value("--from"));
    writeModel(ast, out, formatOf(out, arguments.value("--format")));
    return Ok;
}

} // namespace zelkor::command
