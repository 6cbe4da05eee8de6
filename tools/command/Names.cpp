// The verbs that print one text for what a name stands for: its type, its signature.

#include "Records.hpp"

#include <functional>
#include <optional>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

/// The text that a verb prints for an element; none for what has no such text.
using Describe = std::function<std::optional<std::string>(ModelElement const&)>;

int describe(Arguments const& arguments, char const* what, Describe const& textOf) {
    arguments.requireOperands({"FILE", "NAME|UUID"});
    za::Ast const ast = readModel(arguments.operands()[0]);
    std::string const& word = arguments.operands()[1];
    Lookup const lookup = lookUp(ast, word);
    if (lookup.elements.empty()) return reportMissing(word, lookup);
    std::string lines;
    std::vector<std::string> records;
    for (ModelElement const& element : lookup.elements)
        if (std::optional<std::string> const text = textOf(element)) {
            lines += *text + '\n';
            records.push_back("    {" + commonMembers(element) + ", \"" + what + "\": " + jsonText(*text) +
                              "}");
        }
    if (lines.empty())
        throw UsageError("'" + word + "' is a " + className(lookup.elements.front()) + " and has no " + what);
    print(arguments.has("--json") ? jsonReply(std::string("zelkor-") + what, records) : lines);
    return Ok;
}

} // namespace

int runType(Arguments const& arguments) {
    bool const skip = arguments.has("--skip-typedefs");
    auto const declaredAs = [&](std::string const& name) { return arguments.value("--declare", name); };
    return describe(arguments, "type", [&](ModelElement element) -> std::optional<std::string> {
        if (auto const made = za::Template::cast(element)) element = made.getProtoTypeInstantiation();
        if (auto const type = za::types::Type::cast(element))
            return za::types::Type::generateTypeName(type, declaredAs(""), skip);
        if (auto const declaration = za::Declaration::cast(element))
            return za::types::Type::generateTypeName(declaration.getType(), declaredAs(declaration.getName()),
                                                     skip);
        return std::nullopt;
    });
}

int runSignature(Arguments const& arguments) {
    return describe(arguments, "signature", [](ModelElement const& element) -> std::optional<std::string> {
        if (auto const symbol = za::Symbol::cast(element)) return symbol.generateSignature();
        return std::nullopt;
    });
}

} // namespace zelkor::command
