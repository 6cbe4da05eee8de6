// Finding symbols by their names.

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

bool standsIn(za::Symbol const& symbol, std::u16string_view wanted) {
    za::source::LocatedObject const located = za::source::LocatedObject::cast(symbol);
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

bool fits(za::Symbol const& symbol, Wanted const& wanted) {
    std::string const& name = symbol.getName();
    if (wanted.name && name != *wanted.name) return false;
    if (wanted.qualified &&
        !(mayBe(name, *wanted.qualified) && symbol.getFullyQualifiedName() == *wanted.qualified))
        return false;
    if (wanted.signature &&
        !(mayBe(name, *wanted.signature) && symbol.generateSignature() == *wanted.signature))
        return false;
    if (wanted.pattern && !wanted.pattern->matches(std::string_view(symbol.getFullyQualifiedName())))
        return false;
    return !wanted.file || standsIn(symbol, *wanted.file);
}

template <class Take>
void eachSymbol(Model const& model, ClassTable const& table, Take const& take) {
    brant::zero::query::Walk walk(brant::zero::query::WalkPlan::of(table), model);
    while (Body* const body = walk.next())
        if (!body->isProxy() && !take(brant::zero::handleOn<za::Symbol>(body))) return;
}

py::list listOf(std::vector<za::Symbol> const& symbols, Model const& model) {
    py::list list;
    for (za::Symbol const& symbol : symbols)
        list.append(owned(wrap(symbol.get(), model)));
    return list;
}

py::list find(Model const& model, py::handle type, py::handle name, py::handle qualified,
              py::handle signature, py::handle regex, py::handle file, bool onlyFirst) {
    ClassTable const* table = &za::Symbol::Impl::table;
    if (!type.is_none()) {
        ElementClass const* const entry = PyType_Check(type.ptr())
                                              ? Types::get().find(reinterpret_cast<PyTypeObject*>(type.ptr()))
                                              : nullptr;
        if (entry == nullptr || !entry->table->conformsTo(*table))
            failType("find", "a class of symbols", type.ptr());
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
    std::vector<za::Symbol> found;
    {
        Unlocked const unlocked(model);
        eachSymbol(model, *table, [&](za::Symbol const& symbol) {
            if (fits(symbol, wanted)) found.push_back(symbol);
            return !onlyFirst || found.empty();
        });
    }
    return listOf(found, model);
}

/// \returns the simple names in the model, each once.
py::set simpleNames(Model const& model) {
    std::vector<std::string> names;
    {
        Unlocked const unlocked(model);
        eachSymbol(model, za::Symbol::Impl::table, [&](za::Symbol const& symbol) {
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
