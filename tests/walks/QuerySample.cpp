#include "walks/QuerySample.hpp"

#include "brant/zero/Core.hpp"

namespace querytest {

using brant::zero::ModelElement;

Sample::Sample(std::uint32_t seed)
    : RandomModel(seed, 250,
                  {"get", "set", "x", "getValue", "setValue", "size", "resize", "run", "", "_impl"}) {
    za::Project const project = za::Project::create(m.model);
    for (char16_t const* path : {u"a.c", u"lib/b.h", u"lib/c.hpp", u"/usr/include/d.h"}) {
        auto const file = za::source::SourceFile::create(m.model);
        file.setPath(path);
        file.setIsInclude(path[0] != u'a');
        project.getFilesMutable().insert(file);
        files.push_back(file);
    }
    project.getCompilationsMutable().add(za::source::CompilationUnit::cast(unit));
    std::vector<zt::Type> more = {m.pointer(m.voidType()), m.reference(m.integer())};
    for (int i = 0; i < 12; ++i)
        more.push_back(m.in(pick(scopes()), zt::StructType::create(m.model), name()));
    for (int i = 0; i < 40; ++i) {
        za::Function const function = m.declare(name(), m.voidType(), {}, pick(scopes()));
        for (unsigned count = below(5); count > 0; --count)
            function.getParamsMutable().add(m.variable(name(), chance(10) ? zt::Type() : pick(more)));
        function.setIsInline(chance(50));
        function.setIsVariadic(chance(25));
        function.setNumOptionalParams(below(4));
        function.setStorageClass(static_cast<za::StorageClassKind>(1 + below(3)));
        place(function);
    }
    for (za::Symbol const& symbol : symbols())
        place(symbol);
}

void Sample::place(za::source::LocatedObject const& object) {
    if (chance(25)) return;
    auto const position = za::source::SourcePosition::create(m.model);
    position.setLine(below(300));
    position.setCol(below(80));
    if (chance(80)) position.setFile(pick(files));
    object.setDefPos(position);
}

namespace {

void append(std::vector<ModelElement>& found, ModelElement const& element) {
    using namespace brant::zero;
    for (std::size_t i = 1; i < element->classTable().count; ++i) {
        schema::PropertyRow const& row = *element->classTable().stored[i];
        if (!row.owning()) continue;
        meta::Property const property = Core::propertyOf(&row);
        std::vector<ModelElement> children;
        Value const value = element.getPropertyValue(property);
        if (row.kind == schema::PropertyKind::Reference)
            children.push_back(value.getValue<ModelElement>());
        else
            children = dynamic_cast<ReferenceCollection&>(*value.collection()).getAllValues();
        for (ModelElement const& child : children) {
            if (!child) continue;
            found.push_back(child);
            append(found, child);
        }
    }
}

} // namespace

std::vector<ModelElement> elementsBelow(ModelElement const& element) {
    std::vector<ModelElement> found;
    append(found, element);
    return found;
}

std::vector<ModelElement> elementsOf(brant::zero::Model const& model) {
    std::vector<ModelElement> found;
    for (ModelElement const& element : model.getTopLevelElements()) {
        found.push_back(element);
        append(found, element);
    }
    return found;
}

} // namespace querytest
