#include "Verbs.hpp"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <iterator>
#include <system_error>

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

zelkor::ast::Ast readModel(std::string const& path, std::string const& format) {
    if (path != "-") return io::deserializeFromFile(widePath(path), formatOf(path, format));
    std::string const text{std::istreambuf_iterator<char>(std::cin), {}};
    std::size_t const first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    bool const xml = format.empty() ? first != std::string::npos && text[first] == '<'
                                    : formatOf("", format) == io::IoFormat::xml;
    return io::deserializeFromUTF8String(text, xml ? io::IoFormat::xml : io::IoFormat::json);
}

void print(std::string const& text) {
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
    std::cout.flush();
    if (!std::cout)
        throw std::system_error(errno, std::generic_category(), "cannot write to standard output");
}

void writeModel(zelkor::ast::Ast& ast, std::string const& path, io::IoFormat format) {
    if (path == "-")
        print(io::serializeToUTF8String(ast, format));
    else
        io::serializeToFile(ast, widePath(path), format);
}

int runConvert(Arguments const& arguments) {
    arguments.requireOperands({"IN", "OUT"});
    std::string const& out = arguments.operands()[1];
    zelkor::ast::Ast ast = readModel(arguments.operands()[0], arguments.value("--from"));
    writeModel(ast, out, formatOf(out, arguments.value("--format")));
    return Ok;
}

} // namespace zelkor::command
