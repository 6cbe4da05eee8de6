/// \file
/// Whole models to text and back.
#pragma once

#include "zelkor/ast/Ast.hpp"

#include <cstdint>
#include <string>

namespace zelkor::ast::io {

/// The text forms. Any value other than 0 means XML.
enum class IoFormat : std::uint32_t { json = 0, xml = 1 };

/// Writes all that the model holds to a file. A regular file is replaced whole at the end, through symbolic
/// links; pipes and devices are written directly. Single values equal to their defaults are left out. Linear
/// in the model. \throws brant::zero::io::FileError with path and reason; the old file stays then.
ZELKOR_API void serializeToFile(Ast& ast, std::u16string const& path, IoFormat format);
/// The same as UTF-8 text.
[[nodiscard]] ZELKOR_API std::string serializeToUTF8String(Ast& ast, IoFormat format);
/// The same as UTF-16 text, without byte order mark.
[[nodiscard]] ZELKOR_API std::u16string serializeToUTF16String(Ast& ast, IoFormat format);

/// Reads a file into a new model. The project of the result is the first element without container whose
/// class is `Project` itself; it is null when there is none. Linear in the text. \throws
/// brant::zero::io::FileError when the file cannot be read, brant::zero::io::ParseError when its text cannot.
[[nodiscard]] ZELKOR_API Ast deserializeFromFile(std::u16string const& path, IoFormat format);
/// The same from UTF-8 text.
[[nodiscard]] ZELKOR_API Ast deserializeFromUTF8String(std::string const& text, IoFormat format);
/// The same from UTF-16 text.
[[nodiscard]] ZELKOR_API Ast deserializeFromUTF16String(std::u16string const& text, IoFormat format);

} // namespace zelkor::ast::io
