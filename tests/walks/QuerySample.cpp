#include "walks/QuerySample.hpp"

#include "brant/zero/Core.hpp"

namespace querytest {

using brant::zero::ModelElement;

Sample::Sample(std::uint32_t seed, int scopes) : random_(seed) {
    auto tx = ast.getModel().beginTransaction();
    za::Project const project = za::Project::create(ast.getModel());
    for (char16_t const* path : {u"a.c", u"lib/b.h", u"lib/c.hpp", u"/usr/include/d.h"}) {
        auto const file = za::source::SourceFile::create(ast.getModel());
        file.setPath(path);
        file.setIsInclude(path[0] != u'a');
        project.getFilesMutable().insert(file);
        files.push_back(file);
    }
    unit = za::source::CompilationUnit::create(ast.getModel());
    project.getCompilationsMutable().add(unit);
    std::vector<za::Scope> made{unit};
    for (int i = 0; i < scopes; ++i) {
        za::Scope const scope = made[draw(static_cast<unsigned>(made.size()))];
        fill(scope);
        auto const inner = za::Namespace::create(ast.getModel());
        inner.setName(name());
        scope.getNamespacesMutable().add(inner);
        made.push_back(inner);
    }
    // Something that stands alone in the model.
    fill(za::Scope(za::Scope::create(ast.getModel())));
    tx.commit();
}

std::string Sample::name() {
    static char const* const parts[] = {"get", "set", "Value", "size", "x", "run", "", "_impl"};
    return std::string(parts[draw(8)]) + parts[draw(8)];
}

void Sample::place(za::source::LocatedObject const& object) {
    if (draw(4) == 0) return;
    auto const position = za::source::SourcePosition::create(ast.getModel());
    position.setLine(draw(300));
    position.setCol(draw(80));
    if (draw(5) != 0) position.setFile(files[draw(4)]);
    object.setDefPos(position);
}

void Sample::fill(za::Function const& function) {
    function.setName(name());
    function.setIsInline(draw(2) == 0);
    function.setIsVariadic(draw(4) == 0);
    function.setNumOptionalParams(draw(4));
    function.setStorageClass(static_cast<za::StorageClassKind>(1 + draw(3)));
    function.setType(type());
    place(function);
    for (unsigned i = draw(5); i > 0; --i) {
        auto const param = za::Variable::create(ast.getModel());
        param.setName(name());
        param.setType(type());
        function.getParamsMutable().add(param);
    }
    if (draw(3) == 0) function.setScope(za::Scope::create(ast.getModel()));
}

void Sample::addType(za::Scope const& scope) {
    auto const model = ast.getModel();
    zt::Type made;
    switch (draw(6)) {
    case 0:
        made = zt::IntegerType::create(model);
        break;
    case 1:
        made = zt::LValueReferenceType::create(model);
        break;
    case 2:
        made = zt::QualifiedType::create(model);
        break;
    case 3:
        made = zt::VoidType::create(model);
        break;
    default:
        made = zt::PointerType::create(model);
    }
    if (auto const based = zt::BasedType::cast(made); based && !types.empty()) based.setType(type());
    made.setName(name());
    scope.getSymbolsMutable().add(made);
    types.push_back(made);
}

void Sample::addStruct(za::Scope const& scope) {
    auto const model = ast.getModel();
    zt::StructType const type = draw(2) == 0 ? zt::StructType::create(model) : zt::ClassType::create(model);
    type.setName(name());
    place(type);
    for (unsigned i = draw(4); i > 0; --i) {
        auto const method = zt::Method::create(model);
        fill(method);
        method.setIsVirtual(draw(2) == 0);
        type.getMethodsMutable().add(method);
    }
    for (unsigned i = draw(3); i > 0; --i) {
        auto const member = zt::Member::create(model);
        member.setName(name());
        member.setType(this->type());
        type.getMembersMutable().add(member);
    }
    scope.getSymbolsMutable().add(type);
    types.push_back(type);
}

void Sample::fill(za::Scope const& scope) {
    for (unsigned i = 1 + draw(3); i > 0; --i)
        addType(scope);
    addStruct(scope);
    for (unsigned i = draw(4); i > 0; --i) {
        auto const function = za::Function::create(ast.getModel());
        fill(function);
        scope.getSymbolsMutable().add(function);
    }
    auto const variable = za::Variable::create(ast.getModel());
    variable.setName(name());
    variable.setType(type());
    scope.getSymbolsMutable().add(variable);
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
