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
int runList(Arguments const& arguments);
int runTree(Arguments const& arguments);
int runCallers(Arguments const& arguments);
int runCallees(Arguments const& arguments);
int runPath(Arguments const& arguments);
int runReads(Arguments const& arguments);
int runWrites(Arguments const& arguments);
int runRefs(Arguments const& arguments);
int runIncludes(Arguments const& arguments);
int runValidate(Arguments const& arguments);
int runExport(Arguments const& arguments);
int runHelp(Arguments const& arguments);

/// One verb of the command.
struct Verb {
    char const* name;
    char const* operands;
    char const* summary;
    std::vector<Option> options;
    std::vector<char const*> examples;
    int (*run)(Arguments const& arguments);
};
/// \returns all verbs, in the order in which the help lists them.
[[nodiscard]] std::vector<Verb> const& verbs();
/// \returns the verb of that name. \throws UsageError when there is none; it names the nearest.
[[nodiscard]] Verb const& verbNamed(std::string const& name);

/// \returns the list of verbs with what each is for.
[[nodiscard]] std::string usageText();
/// \returns the page that `zelkor VERB --help` prints.
[[nodiscard]] std::string helpText(Verb const& verb);

/// \returns the format that a path's ending or an option names. \throws UsageError for an unknown one.
[[nodiscard]] zelkor::ast::io::IoFormat formatOf(std::string const& path, std::string const& option);
/// Reads a model; "-" is standard input. Without a format the first character tells it, of an empty file and
/// of a pipe its name.
[[nodiscard]] zelkor::ast::Ast readModel(std::string const& path, std::string const& format = {});
/// Looks before long work whether a model can be written. \throws UsageError with the reason when not.
void requireWritable(std::string const& path);
/// Writes a model; "-" is standard output. A signal to end waits until a file is whole.
void writeModel(zelkor::ast::Ast& ast, std::string const& path, zelkor::ast::io::IoFormat format);
/// \returns the path in the encoding of the library. \throws UsageError when it is no valid UTF-8.
[[nodiscard]] std::u16string widePath(std::string const& path);
/// Writes to standard output. \throws std::runtime_error with the reason when that fails.
void print(std::string const& text);

} // namespace zelkor::command
