// Short ways to write texts in tests.
#pragma once

#include <zelkor/ast.hpp>
#include <zelkor/ast/io.hpp>

#include <string>
#include <string_view>

namespace zelkor::test {

namespace za = zelkor::ast;
using brant::zero::io::ParseError;
using za::io::IoFormat;

inline std::string save(za::Ast ast, IoFormat format) {
    return za::io::serializeToUTF8String(ast, format);
}
inline za::Ast load(std::string const& text, IoFormat format) {
    return za::io::deserializeFromUTF8String(text, format);
}
inline IoFormat other(IoFormat format) {
    return format == IoFormat::json ? IoFormat::xml : IoFormat::json;
}

/// An identity that ends in the given digits.
inline std::string id(int number) {
    std::string const digits = std::to_string(number);
    return std::string("00000000-0000-4000-8000-000000000000")
        .replace(36 - digits.size(), digits.size(), digits);
}

inline std::string jsonDocument(std::string_view elements, std::string_view version = "1.0") {
    return std::string("{\"format\":\"zelkor-ast\",\"version\":\"")
        .append(version)
        .append("\",\"elements\":[\n")
        .append(elements)
        .append("]}\n");
}
inline std::string xmlDocument(std::string_view elements, std::string_view version = "1.0") {
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<model format=\"zelkor-ast\" version=\"")
        .append(version)
        .append("\">\n")
        .append(elements)
        .append("</model>\n");
}
/// An element without content and how it is written: class, number of its identity, the rest.
inline std::string jsonElement(std::string_view name, int number, std::string_view rest = {}) {
    return std::string("{\"class\":\"")
               .append(name)
               .append("\",\"uuid\":\"")
               .append(id(number))
               .append("\"")
               .append(rest) +
           "}";
}
inline std::string xmlElement(std::string_view name, int number, std::string_view rest = "/>") {
    return std::string("<").append(name).append(" uuid=\"").append(id(number)).append("\"").append(rest);
}

/// \returns what the reader says of a text that it must refuse.
inline std::string refusal(std::string const& text, IoFormat format) {
    try {
        load(text, format);
    } catch (ParseError const& error) {
        return error.what();
    }
    return "the text was read";
}

} // namespace zelkor::test
