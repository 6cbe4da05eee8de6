// The verbs that print one text for what a name stands for: its type, its signature.

#include "Answers.hpp"

#include <functional>
#include <optional>
#include <string_view>

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
    std::vector<std::string> lines;
    std::vector<std::string> records;
    for (ModelElement const& element : lookup.elements)
        if (std::optional<std::string> const text = textOf(element)) {
            lines.push_back(*text + '\n');
            JsonMembers members = recordOf(element); // which has the signature already
            if (std::string_view(what) != "signature") members.text(what, *text);
            records.push_back(recordLine(members));
        }
    if (lines.empty() && !lookup.elements.empty())
        throw UsageError("'" + word + "' is a " + className(lookup.elements.front()) + " and has no " + what);
    printLimited(arguments, what, lines, records);
    return lookup.elements.empty() ? reportMissing(word, lookup) : Ok;
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
