// The verbs of the command. Data goes to standard output, everything else to standard error.
#pragma once

#include "Options.hpp"

#include <zelkor/ast.hpp>
#include <zelkor/ast/io.hpp>

#include <string>

namespace zelkor::command {

int runImport(Arguments const& arguments);
int runMerge(Arguments const& arguments);
int runConvert(Arguments const& arguments);
int runStats(Arguments const& arguments);
int runSchema(Arguments const& arguments);
int runType(Arguments const& arguments);
int runSignature(Arguments const& arguments);
int runFind(Arguments const& arguments);
int runShow(Arguments const& arguments);

/// \returns the format that a path's ending or an option names. \throws UsageError for an unknown one.
[[nodiscard]] zelkor::ast::io::IoFormat formatOf(std::string const& path, std::string const& option);
/// Reads a model; "-" is standard input, whose format is told by its first character.
[[nodiscard]] zelkor::ast::Ast readModel(std::string const& path, std::string const& format = {});
/// Writes a model; "-" is standard output.
void writeModel(zelkor::ast::Ast& ast, std::string const& path, zelkor::ast::io::IoFormat format);
/// \returns the path in the encoding of the library. \throws UsageError when it is no valid UTF-8.
[[nodiscard]] std::u16string widePath(std::string const& path);
/// Writes to standard output. \throws std::runtime_error with the reason when that fails.
void print(std::string const& text);

} // namespace zelkor::command
