// Finding symbols and namespaces by their names.

#include "Model.hpp"

#include "Texts.hpp"
#include "Types.hpp"

#include <brant/zero/Text.hpp>
#include <brant/zero/TypedAccess.hpp>
#include <brant/zero/query/Pattern.hpp>
#include <brant/zero/query/Walk.hpp>
#include <zelkor/ast.hpp>

#include <optional>

namespace zelkor::python {

namespace {

namespace za = zelkor::ast;
using brant::zero::query::Pattern;

struct Wanted {
    std::optional<std::string> name;
    std::optional<std::string> qualified;
    std::optional<std::string> signature;
    std::optional<Pattern> pattern;
    std::optional<std::u16string> file;
};

std::optional<std::string> optionalBytes(py::handle value, char const* where) {
    return value.is_none() ? std::nullopt : std::optional(bytesOf(value.ptr(), where));
}

/// True when the whole path is meant, or its last parts.
bool isFile(std::u16string_view path, std::u16string_view wanted) {
    if (!path.ends_with(wanted)) return false;
    return path.size() == wanted.size() || wanted.starts_with(u'/') ||
           path[path.size() - wanted.size() - 1] == u'/';
}

bool standsIn(ModelElement const& element, std::u16string_view wanted) {
    za::source::LocatedObject const located = za::source::LocatedObject::cast(element);
    if (!located) return false;
    auto const in = [&](za::source::SourcePosition const& position) {
        za::source::SourceFile const file = position ? position.getFile() : za::source::SourceFile();
        return file && isFile(file.getPath(), wanted);
    };
    if (in(located.getDefPos())) return true;
    for (za::source::SourcePosition const& position : located.getDeclPos())
        if (in(position)) return true;
    return false;
}

/// A qualified name and a signature have the symbol's own name in them, if it has one; writing them takes
/// longer than looking for that.
bool mayBe(std::string const& name, std::string const& whole) {
    return whole.find(name) != std::string::npos;
}

std::string signatureOf(za::Symbol const& symbol) {
    return symbol.generateSignature();
}
std::string signatureOf(za::Namespace const& space) {
    return space.getFullyQualifiedName();
}

template <class Named>
bool fits(Named const& element, Wanted const& wanted) {
    std::string const& name = element.getName();
    if (wanted.name && name != *wanted.name) return false;
    if (wanted.qualified &&
        !(mayBe(name, *wanted.qualified) && element.getFullyQualifiedName() == *wanted.qualified))
        return false;
    if (wanted.signature && !(mayBe(name, *wanted.signature) && signatureOf(element) == *wanted.signature))
        return false;
    if (wanted.pattern && !wanted.pattern->matches(std::string_view(element.getFullyQualifiedName())))
        return false;
    return !wanted.file || standsIn(element, *wanted.file);
}

/// Hands the elements of a class to `take`, until it returns false.
template <class Named, class Take>
void each(Model const& model, ClassTable const& table, Take const& take) {
    brant::zero::query::Walk walk(brant::zero::query::WalkPlan::of(table), model);
    while (Body* const body = walk.next())
        if (!take(brant::zero::handleOn<Named>(body))) return;
}

/// What is asked for among the elements of a class that are a `Named`.
template <class Named>
void collect(Model const& model, ClassTable const& table, Wanted const& wanted, bool onlyFirst,
             std::vector<ModelElement>& found) {
    ClassTable const& named = Named::Impl::table;
    if (!table.conformsTo(named) && !named.conformsTo(table)) return;
    each<Named>(model, table.conformsTo(named) ? table : named, [&](Named const& element) {
        if (fits(element, wanted)) found.push_back(element);
        return !onlyFirst || found.empty();
    });
}

py::list listOf(std::vector<ModelElement> const& elements, Model const& model) {
    py::list list;
    for (ModelElement const& element : elements)
        list.append(owned(wrap(element.get(), model)));
    return list;
}

py::list find(Model const& model, py::handle type, py::handle name, py::handle qualified,
              py::handle signature, py::handle regex, py::handle file, bool onlyFirst) {
    ClassTable const* table = &brant::zero::modelElementTable;
    if (!type.is_none()) {
        ElementClass const* const entry = PyType_Check(type.ptr())
                                              ? Types::get().find(reinterpret_cast<PyTypeObject*>(type.ptr()))
                                              : nullptr;
        if (entry == nullptr) failType("find", "a class of elements", type.ptr());
        table = entry->table;
    }
    Wanted wanted{optionalBytes(name, "find: name"), optionalBytes(qualified, "find: qualified"),
                  optionalBytes(signature, "find: signature"), std::nullopt, std::nullopt};
    if (!regex.is_none()) {
        std::string const text = bytesOf(regex.ptr(), "find: regex");
        (void)Pattern(text); // a fault is told with the text as it was given
        wanted.pattern = Pattern("[\\s\\S]*(?:" + text + ")[\\s\\S]*");
    }
    if (!file.is_none()) wanted.file = textOf(file.ptr(), "find: file");
    std::vector<ModelElement> found;
    {
        Unlocked const unlocked(model);
        collect<za::Symbol>(model, *table, wanted, onlyFirst, found);
        if (!onlyFirst || found.empty()) collect<za::Namespace>(model, *table, wanted, onlyFirst, found);
    }
    return listOf(found, model);
}

/// \returns the simple names in the model, each once.
py::set simpleNames(Model const& model) {
    std::vector<std::string> names;
    {
        Unlocked const unlocked(model);
        each<za::Symbol>(model, za::Symbol::Impl::table, [&](za::Symbol const& symbol) {
            names.push_back(symbol.getName());
            return true;
        });
    }
    py::set distinct;
    for (std::string const& name : names)
        if (!name.empty()) distinct.add(owned(toPython(name)));
    return distinct;
}

} // namespace

void initFind(py::module_& module) {
    module.def("find", find);
    module.def("simple_names", simpleNames);
}

} // namespace zelkor::python
