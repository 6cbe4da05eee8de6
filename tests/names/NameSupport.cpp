#include "names/NameSupport.hpp"

namespace testnames {

za::Namespace Maker::space(std::string const& name, za::Scope const& parent) {
    za::Namespace space = za::Namespace::create(model);
    space.setName(name);
    if (parent) space.setParent(parent);
    return space;
}

za::Scope Maker::block(za::Scope const& parent) {
    za::Scope scope = za::Scope::create(model);
    if (parent) scope.setParent(parent);
    return scope;
}

zt::IntegerType Maker::integer(IntegerKind kind, bool isSigned) {
    zt::IntegerType type = zt::IntegerType::create(model);
    type.setKind(kind);
    type.setIsSigned(isSigned);
    return type;
}

zt::FloatType Maker::floating(FloatKind kind) {
    zt::FloatType type = zt::FloatType::create(model);
    type.setKind(kind);
    return type;
}

zt::QualifiedType Maker::qualified(std::string const& flags, zt::Type const& base) {
    auto type = over<zt::QualifiedType>(base);
    type.setIsConst(flags.find('c') != std::string::npos);
    type.setIsVolatile(flags.find('v') != std::string::npos);
    type.setIsRestrict(flags.find('r') != std::string::npos);
    type.setIsQualifier(flags.find('q') != std::string::npos);
    return type;
}

zt::ArrayType Maker::array(zt::Type const& base, std::initializer_list<int> dimensions) {
    auto type = over<zt::ArrayType>(base);
    for (int dimension : dimensions)
        type.getDimensionsMutable().push_back(dimension);
    return type;
}

zt::VectorType Maker::vector(zt::Type const& base, int width) {
    auto type = over<zt::VectorType>(base);
    type.setWidth(width);
    return type;
}

zt::FunctionType Maker::function(zt::Type const& result, std::vector<zt::Type> const& parameters,
                                 bool variadic) {
    zt::FunctionType type = zt::FunctionType::create(model);
    if (result) type.setRetType(result);
    for (zt::Type const& parameter : parameters)
        type.getParamTypesMutable().add(parameter);
    type.setIsVariadic(variadic);
    return type;
}

zt::TypedefType Maker::alias(std::string const& name, zt::Type const& base, za::Scope const& scope) {
    auto type = make<zt::TypedefType>(name, scope);
    if (base) type.setType(base);
    return type;
}

zt::TemplateParamType Maker::param(std::string const& name, bool pack, za::Scope const& scope) {
    auto type = make<zt::TemplateParamType>(name, scope);
    type.setIsPack(pack);
    return type;
}

za::TemplateArg Maker::argument(za::TemplateArgKind kind, std::string const& name) {
    za::TemplateArg argument = za::TemplateArg::create(model);
    argument.setKind(kind);
    argument.setName(name);
    return argument;
}

za::TemplateArg Maker::typeArgument(zt::Type const& type) {
    za::TemplateArg made = argument(za::TemplateArgKind::Type);
    if (type) made.setType(type);
    return made;
}

za::TemplateArg Maker::valueArgument(zc::Constant const& value) {
    za::TemplateArg made = argument(za::TemplateArgKind::NonType);
    if (value) made.setVal(value);
    return made;
}

zc::IntegerConstant Maker::number(std::string const& value, zt::Type const& type, std::string const& name) {
    auto made = constant<zc::IntegerConstant>(type, name);
    made.setValue(value);
    return made;
}

zc::AddressConstant Maker::address(za::AddressKind kind, std::string const& value) {
    zc::AddressConstant made = zc::AddressConstant::create(model);
    made.setKind(kind);
    made.setValue(value);
    return made;
}

za::Variable Maker::variable(std::string const& name, zt::Type const& type, za::Scope const& scope) {
    auto made = make<za::Variable>(name, scope);
    if (type) made.setType(type);
    return made;
}

za::Variable Maker::pack(std::string const& name, zt::Type const& type) {
    za::Variable made = variable(name, type);
    made.setIsParameterPack(true);
    return made;
}

zt::Member Maker::memberOf(zt::AggregateType const& owner, std::string const& name, zt::Type const& type) {
    auto made = make<zt::Member>(name);
    if (type) made.setType(type);
    made.setAggregate(owner);
    return made;
}

} // namespace testnames
