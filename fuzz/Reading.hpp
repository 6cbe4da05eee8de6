// What both targets do with an input: it is refused with a place, or it is a sound model that writes and
// reads back.
#pragma once

#include <zelkor/ast.hpp>
#include <zelkor/ast/io.hpp>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

namespace zelkor::fuzz {

inline void require(bool condition, char const* rule) {
    if (condition) return;
    std::cerr << "broken: " << rule << '\n';
    std::abort();
}

inline int read(std::uint8_t const* data, std::size_t size, zelkor::ast::io::IoFormat format) {
    namespace io = zelkor::ast::io;
    zelkor::ast::Ast ast;
    try {
        ast = io::deserializeFromUTF8String(std::string(reinterpret_cast<char const*>(data), size), format);
    } catch (brant::zero::io::ParseError const& error) {
        require(error.getLine() > 0 && error.getColumn() > 0, "a refusal says where");
        return 0;
    }
    require(!ast.getModel().verify().has_value(), "what was read is a sound model");
    std::string const text = io::serializeToUTF8String(ast, format);
    zelkor::ast::Ast again = io::deserializeFromUTF8String(text, format);
    require(io::serializeToUTF8String(again, format) == text, "write, read, write gives the same bytes");
    auto const other = format == io::IoFormat::json ? io::IoFormat::xml : io::IoFormat::json;
    zelkor::ast::Ast crossed = io::deserializeFromUTF8String(io::serializeToUTF8String(ast, other), other);
    require(io::serializeToUTF8String(crossed, format) == text, "the other form holds the same model");
    return 0;
}

} // namespace zelkor::fuzz
