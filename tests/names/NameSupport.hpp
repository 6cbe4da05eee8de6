/// \file
/// A model for tests of names, whose parts are made in one expression each.
#pragma once

#include "zelkor/ast.hpp"

#include <initializer_list>
#include <string>
#include <vector>

namespace testnames {

namespace za = zelkor::ast;
namespace zt = zelkor::ast::types;
namespace zc = zelkor::ast::constants;
using zt::FloatKind;
using zt::IntegerKind;

/// One model. What has a scope as an argument stays outside of all scopes when it is null.
class Maker {
  public:
    Maker() : model(ast.getModel()), transaction(model.beginTransaction()) {}

    za::Ast ast;
    brant::zero::Model model;

    template <class T>
    T make(std::string const& name = {}, za::Scope const& scope = {}) {
        T element = T::create(model);
        if (!name.empty()) element.setName(name);
        if (scope) element.setOwningScope(scope);
        return element;
    }
    /// A type of a class that has only a base type.
    template <class T>
    T over(zt::Type const& base) {
        T type = T::create(model);
        if (base) type.setType(base);
        return type;
    }

    // Scopes.
    za::Scope root() { return za::source::CompilationUnit::create(model); }
    za::Namespace space(std::string const& name, za::Scope const& parent = {}) {
        za::Namespace space = za::Namespace::create(model);
        space.setName(name);
        if (parent) space.setParent(parent);
        return space;
    }
    za::Scope block(za::Scope const& parent = {}) {
        za::Scope scope = za::Scope::create(model);
        if (parent) scope.setParent(parent);
        return scope;
    }
    /// The inside of a function, template or aggregate.
    template <class T>
    za::Scope inside(T const& owner) {
        if (!owner.getScope()) owner.setScope(za::Scope::create(model));
        return owner.getScope();
    }

    // Types.
    zt::IntegerType integer(IntegerKind kind = IntegerKind::SignedInt, bool isSigned = true) {
        zt::IntegerType type = zt::IntegerType::create(model);
        type.setKind(kind);
        type.setIsSigned(isSigned);
        return type;
    }
    zt::FloatType floating(FloatKind kind) {
        zt::FloatType type = zt::FloatType::create(model);
        type.setKind(kind);
        return type;
    }
    zt::Type voidType() { return zt::VoidType::create(model); }
    zt::Type charType() { return integer(IntegerKind::Char); }
    zt::PointerType pointer(zt::Type const& base) { return over<zt::PointerType>(base); }
    zt::LValueReferenceType reference(zt::Type const& base) { return over<zt::LValueReferenceType>(base); }
    zt::RValueReferenceType rvalue(zt::Type const& base) { return over<zt::RValueReferenceType>(base); }
    /// \param flags any of "c", "v", "r", "q".
    zt::QualifiedType qualified(std::string const& flags, zt::Type const& base) {
        auto type = over<zt::QualifiedType>(base);
        type.setIsConst(flags.find('c') != std::string::npos);
        type.setIsVolatile(flags.find('v') != std::string::npos);
        type.setIsRestrict(flags.find('r') != std::string::npos);
        type.setIsQualifier(flags.find('q') != std::string::npos);
        return type;
    }
    zt::ArrayType array(zt::Type const& base, std::initializer_list<int> dimensions) {
        auto type = over<zt::ArrayType>(base);
        for (int dimension : dimensions)
            type.getDimensionsMutable().push_back(dimension);
        return type;
    }
    zt::VectorType vector(zt::Type const& base, int width) {
        auto type = over<zt::VectorType>(base);
        type.setWidth(width);
        return type;
    }
    zt::FunctionType function(zt::Type const& result, std::vector<zt::Type> const& parameters = {},
                              bool variadic = false) {
        zt::FunctionType type = zt::FunctionType::create(model);
        if (result) type.setRetType(result);
        for (zt::Type const& parameter : parameters)
            type.getParamTypesMutable().add(parameter);
        type.setIsVariadic(variadic);
        return type;
    }
    zt::TypedefType alias(std::string const& name, zt::Type const& base, za::Scope const& scope = {}) {
        auto type = make<zt::TypedefType>(name, scope);
        if (base) type.setType(base);
        return type;
    }
    zt::TemplateParamType param(std::string const& name, bool pack = false, za::Scope const& scope = {}) {
        auto type = make<zt::TemplateParamType>(name, scope);
        type.setIsPack(pack);
        return type;
    }
    /// The same type in a scope.
    template <class T>
    T in(za::Scope const& scope, T const& type, std::string const& name = {}) {
        type.setOwningScope(scope);
        if (!name.empty()) type.setName(name);
        return type;
    }

    // Template arguments; each is new, its constant without owner.
    za::TemplateArg argument(za::TemplateArgKind kind, std::string const& name = {}) {
        za::TemplateArg argument = za::TemplateArg::create(model);
        argument.setKind(kind);
        argument.setName(name);
        return argument;
    }
    za::TemplateArg typeArgument(zt::Type const& type) {
        za::TemplateArg made = argument(za::TemplateArgKind::Type);
        if (type) made.setType(type);
        return made;
    }
    za::TemplateArg valueArgument(zc::Constant const& value) {
        za::TemplateArg made = argument(za::TemplateArgKind::NonType);
        if (value) made.setVal(value);
        return made;
    }
    za::TemplateArg packMark() { return argument(za::TemplateArgKind::StartOfPackExpansion); }
    /// The same function, aggregate or typedef, made with these arguments.
    template <class T>
    T with(T const& owner, std::vector<za::TemplateArg> const& arguments) {
        for (za::TemplateArg const& argument : arguments)
            owner.getTemplateArgsMutable().add(argument);
        return owner;
    }
    zc::IntegerConstant number(std::string const& value, zt::Type const& type = {},
                               std::string const& name = {}) {
        auto made = constant<zc::IntegerConstant>(type, name);
        made.setValue(value);
        return made;
    }
    zc::AddressConstant address(za::AddressKind kind, std::string const& value) {
        zc::AddressConstant made = zc::AddressConstant::create(model);
        made.setKind(kind);
        made.setValue(value);
        return made;
    }
    template <class T>
    T constant(zt::Type const& type, std::string const& name = {}) {
        T value = T::create(model);
        if (type) value.setType(type);
        if (!name.empty()) value.setName(name);
        return value;
    }

    // Declarations.
    /// A function or method with that result and these parameters, whose type says the same.
    template <class T = za::Function>
    T declare(std::string const& name, zt::Type const& result,
              std::vector<za::Variable> const& parameters = {}, za::Scope const& scope = {}) {
        T declared = make<T>(name, scope);
        declared.setType(function(result));
        for (za::Variable const& parameter : parameters)
            declared.getParamsMutable().add(parameter);
        return declared;
    }
    za::Variable variable(std::string const& name, zt::Type const& type, za::Scope const& scope = {}) {
        auto made = make<za::Variable>(name, scope);
        if (type) made.setType(type);
        return made;
    }
    za::Variable pack(std::string const& name, zt::Type const& type) {
        za::Variable made = variable(name, type);
        made.setIsParameterPack(true);
        return made;
    }
    template <class T>
    T methodOf(zt::StructType const& owner, T const& method) {
        method.setOwningAggregate(owner);
        return method;
    }
    zt::Member memberOf(zt::AggregateType const& owner, std::string const& name, zt::Type const& type = {}) {
        auto made = make<zt::Member>(name);
        if (type) made.setType(type);
        made.setAggregate(owner);
        return made;
    }

  private:
    brant::zero::Transaction transaction; ///< never committed: the model dies with the test
};

/// Shorthand for the printer.
inline std::string print(zt::Type const& type, std::string const& declared = {}, bool skipTypedefs = false) {
    return zt::Type::generateTypeName(type, declared, skipTypedefs);
}

} // namespace testnames
