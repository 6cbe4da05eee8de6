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
    /// `root` is what the element was found in; null for the model.
    [[nodiscard]] bool takes(ModelElement const& element, ModelElement const& root) const {
        return hasName(element) && !simpleName(element).empty() &&
               (class_ ? meta::isSubclassOf(element.getMetaClass(), class_) : !isPredefined(element)) &&
               (file_.empty() || isPathOf(file_, placeOf(element).path)) &&
               (foreign_ || !isForeign(element)) && (locals_ || !isLocal(element, root));
    }

  private:
    meta::Class class_;
    std::string file_;
    bool locals_;
    bool foreign_;
};

bool hasFile(za::Ast const& ast, std::string const& path) {
    bool found = false;
    forEachElement(ast, [&](ModelElement const& element) {
        auto const file = za::source::SourceFile::cast(element);
        found = found || (file && isPathOf(path, brant::zero::toUtf8(file.getPath())));
    });
    return found;
}

} // namespace

int runList(Arguments const& arguments) {
    arguments.requireOperands({"FILE"}, "--in");
    Filter const filter(arguments);
    za::Ast const ast = readModel(arguments.operands()[0]);
    Section section;
    section.layout = Layout::Columns;
    section.nothing = "no symbol fits";
    std::unordered_set<brant::zero::ModelElementImpl const*> seen;
    auto const visit = [&](ModelElement const& element, ModelElement const& root) {
        if (filter.takes(element, root) && seen.insert(element.get()).second)
            section.rows.push_back({element});
    };
    if (arguments.has("--in")) {
        std::string const scope = arguments.value("--in");
        Lookup const lookup = lookUp(ast, scope);
        if (lookup.elements.empty()) {
            section.nothing.clear();
            reportMissing(scope, lookup);
        }
        for (ModelElement const& root : lookup.elements)
            forEachBelow(root, [&](ModelElement const& element) {
                if (!(element == root)) visit(element, root);
            });
    } else {
        forEachElement(ast, [&](ModelElement const& element) { visit(element, {}); });
    }
    sortByPlace(section.rows);
    if (arguments.has("--file") && !hasFile(ast, arguments.value("--file"))) {
        section.nothing.clear();
        reportMissing(arguments.value("--file"), lookUpFiles(ast, arguments.value("--file")));
    }
    return printAnswer(arguments, "list", {section});
}

} // namespace zelkor::command
