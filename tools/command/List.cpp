// `zelkor list`: what has a name, in columns.

#include "Answers.hpp"
#include "Classes.hpp"

#include <brant/zero/meta/Names.hpp>

#include <unordered_set>

namespace zelkor::command {

namespace za = zelkor::ast;
namespace meta = brant::zero::meta;
using brant::zero::ModelElement;

namespace {

/// Parameters, what stands inside of functions, and the parameters of templates.
bool isLocal(ModelElement const& element) {
    for (ModelElement up = element.container(); up; up = up.container())
        if (za::Function::cast(up) || za::Template::cast(up)) return true;
    return false;
}

class Filter {
  public:
    explicit Filter(Arguments const& arguments)
        : file_(arguments.value("--file")), locals_(arguments.has("--locals")),
          foreign_(!arguments.has("--no-system-headers")) {
        if (arguments.has("--class"))
            class_ =
                classNamed(arguments.value("--class"),
                           {za::Symbol::metaClass(), za::Namespace::metaClass(), za::Macro::metaClass()});
    }
    [[nodiscard]] bool takes(ModelElement const& element) const {
        return hasName(element) && !simpleName(element).empty() &&
               (!class_ || meta::isSubclassOf(element.getMetaClass(), class_)) &&
               (file_.empty() || isPathOf(file_, placeOf(element).path)) &&
               (foreign_ || !isForeign(element)) && (locals_ || !isLocal(element));
    }

  private:
    meta::Class class_;
    std::string file_;
    bool locals_;
    bool foreign_;
};

} // namespace

int runList(Arguments const& arguments) {
    arguments.requireOperands({"FILE"});
    Filter const filter(arguments);
    za::Ast const ast = readModel(arguments.operands()[0]);
    Section section;
    section.layout = Layout::Columns;
    section.nothing = "no symbol fits";
    std::unordered_set<brant::zero::ModelElementImpl const*> seen;
    auto const visit = [&](ModelElement const& element) {
        if (filter.takes(element) && seen.insert(element.get()).second) section.rows.push_back({element});
    };
    if (arguments.has("--in")) {
        std::string const scope = arguments.value("--in");
        Lookup const lookup = lookUp(ast, scope);
        if (lookup.elements.empty()) return reportMissing(scope, lookup);
        for (ModelElement const& root : lookup.elements)
            forEachBelow(root, [&](ModelElement const& element) {
                if (!(element == root)) visit(element);
            });
    } else {
        forEachElement(ast, visit);
    }
    sortByPlace(section.rows);
    return printAnswer(arguments, "list", {section});
}

} // namespace zelkor::command
