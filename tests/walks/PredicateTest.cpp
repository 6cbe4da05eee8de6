// The questions that replace downcasts, asked of every class, and the two rules about structs.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

using namespace testmodel;
namespace za = zelkor::ast;
namespace zc = zelkor::ast::constants;
namespace zt = zelkor::ast::types;

namespace {

struct Row {
    char const* asked; ///< class that has the operation
    char const* operation;
    char const* yes; ///< the classes whose elements answer true
};

Row const rows[] = {
    {"Type", "isNullPtrType", "NullPtrType"},
    {"Type", "isErrorType", "ErrorType"},
    {"Type", "isOpaqueType", "OpaqueType"},
    {"Type", "isVoidType", "VoidType"},
    {"Type", "isBasedType",
     "BasedType VectorType ArrayType PointerType PointerToMemberType ReferenceType LValueReferenceType "
     "RValueReferenceType TyperefType TypedefType QualifiedType TypeAttrType TypeOpType"},
    {"Type", "isVectorType", "VectorType"},
    {"Type", "isArrayType", "ArrayType"},
    {"Type", "isPointerType", "PointerType"},
    {"Type", "isPointerToMemberType", "PointerToMemberType"},
    {"Type", "isReferenceType", "ReferenceType LValueReferenceType RValueReferenceType"},
    {"Type", "isTyperefType", "TyperefType TypedefType QualifiedType TypeAttrType TypeOpType"},
    {"Type", "isQualifiedType", "QualifiedType"},
    {"Type", "isBooleanType", "BooleanType"},
    {"Type", "isIntegerType", "IntegerType"},
    {"Type", "isFloatType", "FloatType"},
    {"Type", "isEnumType", "EnumType"},
    {"Type", "isAggregateType", "AggregateType UnionType StructType ClassType"},
    {"Type", "isUnionType", "UnionType"},
    {"Type", "isStructType", "StructType ClassType"},
    {"Type", "isClassType", "ClassType"},
    {"Type", "isFunctionType", "FunctionType"},
    {"Type", "isTemplateParamType", "TemplateParamType"},
    {"TyperefType", "isTypedefType", "TypedefType"},
    {"TyperefType", "isTypeAttrType", "TypeAttrType"},
    {"TyperefType", "isTypeOpType", "TypeOpType"},
    {"ReferenceType", "isLValueReferenceType", "LValueReferenceType"},
    {"ReferenceType", "isRValueReferenceType", "RValueReferenceType"},
    {"Constant", "isAggregate", "AggregateConstant"},
    {"Constant", "isNumeric", "NumericConstant IntegerConstant FloatConstant"},
    {"Constant", "isFloat", "FloatConstant"},
    {"Constant", "isInteger", "IntegerConstant"},
    {"Constant", "isError", "ErrorConstant"},
    {"Constant", "isVoid", "VoidConstant"},
    {"Constant", "isAddress", "AddressConstant"},
    {"Constant", "isString", "StringConstant"},
    {"Constant", "isTemplateParam", "TemplateParamConstant"},
    {"Constant", "isPointerToMember", "PointerToMemberConstant"},
    {"Constant", "isDynamicInit", "DynamicInitConstant"},
    {"Constant", "isInitRepeat", "InitRepeatConstant"},
    {"Constant", "isDesignator", "DesignatorConstant"},
};

ClassTable const& classNamed(std::string const& name) {
    for (ClassTable const* table : classes())
        if (table->name == name) return *table;
    throw std::out_of_range(name);
}

meta::Operation operationNamed(ClassTable const& table, std::string const& name) {
    table.metaClass();
    for (std::uint16_t i = 0; i < table.operationCount; ++i)
        if (table.operations[i].name == name)
            return meta::Operation(static_cast<ModelElementImpl*>(table.operations[i].object));
    throw std::out_of_range(name);
}

std::set<std::string> words(std::string const& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

} // namespace

TEST(Predicate, IsTrueForTheClassesItNames) {
    Model const model = newModel();
    for (Row const& row : rows) {
        ClassTable const& asked = classNamed(row.asked);
        meta::Operation const operation = operationNamed(asked, row.operation);
        std::set<std::string> yes;
        for (ClassTable const* table : classes()) {
            if (table->isAbstract || !table->conformsTo(asked)) continue;
            if (make(model, *table).invoke(operation, {}).getValue<bool>()) yes.insert(table->name);
        }
        EXPECT_EQ(yes, words(row.yes)) << row.operation;
    }
}

TEST(Predicate, EveryClassTestOfTheSchemaIsInTheTable) {
    std::set<std::string> listed{"isDestructible", "isCOnlyStructType"};
    for (Row const& row : rows)
        listed.insert(row.operation);
    for (ClassTable const* table : classes()) {
        for (std::uint16_t i = 0; i < table->operationCount; ++i) {
            std::string const name = table->operations[i].name;
            if (name.starts_with("is")) {
                EXPECT_TRUE(listed.contains(name)) << name;
            }
        }
    }
}

TEST(Predicate, HandlesAnswerToo) {
    za::Ast ast;
    zt::Type const type = zt::ClassType::create(ast.getModel());
    EXPECT_TRUE(type.isStructType() && type.isClassType() && type.isAggregateType());
    EXPECT_FALSE(type.isUnionType());
    EXPECT_FALSE(zt::StructType::create(ast.getModel()).isClassType());
    EXPECT_THROW((void)zt::Type().isClassType(), brant::zero::DeadHandle);
    zc::Constant const number = zc::IntegerConstant::create(ast.getModel());
    EXPECT_TRUE(number.isNumeric() && number.isInteger());
    EXPECT_FALSE(number.isFloat());
}

TEST(Destructible, OnlyAnInaccessibleDestructorForbids) {
    using enum za::types::AccessSpecifierKind;
    struct MethodRow {
        za::SpecialFunctionKind kind;
        za::types::AccessSpecifierKind access;
        bool isDeleted;
        bool expected;
    };
    constexpr auto destructor = za::SpecialFunctionKind::Destructor;
    MethodRow const table[] = {
        {destructor, Public, false, true},
        {destructor, None, false, true},
        {destructor, Protected, false, false},
        {destructor, Private, false, false},
        {destructor, Public, true, false},
        {destructor, None, true, false},
        {za::SpecialFunctionKind::Constructor, Private, true, true},
        {za::SpecialFunctionKind::None, Protected, true, true},
    };
    for (bool const isClass : {false, true}) {
        for (MethodRow const& row : table) {
            za::Ast ast;
            auto const model = ast.getModel();
            zt::StructType const type =
                isClass ? zt::ClassType::create(model) : zt::StructType::create(model);
            type.getMethodsMutable().add(zt::Method::create(model));
            EXPECT_TRUE(type.isDestructible());
            zt::Method const method = zt::Method::create(model);
            method.setSpecialKind(row.kind);
            method.setAccess(row.access);
            method.setIsDeleted(row.isDeleted);
            type.getMethodsMutable().add(method);
            type.getMethodsMutable().add(zt::Method::create(model));
            EXPECT_EQ(type.isDestructible(), row.expected) << static_cast<int>(row.access) << row.isDeleted;
        }
    }
}

TEST(Destructible, EverythingElseIs) {
    Model const model = newModel();
    meta::Operation const operation = operationNamed(zt::Type::Impl::table, "isDestructible");
    for (ClassTable const* table : classes()) {
        if (table->isAbstract || !table->conformsTo(zt::Type::Impl::table)) continue;
        EXPECT_TRUE(make(model, *table).invoke(operation, {}).getValue<bool>()) << table->name;
    }
}

TEST(COnlyStruct, EachOfTheFiveTestsCounts) {
    struct Case {
        char const* what;
        void (*change)(brant::zero::Model const&, zt::StructType const&);
        bool expected;
    };
    using Model = brant::zero::Model;
    using Struct = zt::StructType;
    auto addMethod = [](Model const& model, Struct const& type, bool generated) {
        zt::Method const method = zt::Method::create(model);
        method.setIsCompilerGenerated(generated);
        type.getMethodsMutable().add(method);
    };
    static auto const method = addMethod;
    static auto const member = [](Model const& model, Struct const& type, zt::AccessSpecifierKind access) {
        zt::Member const made = zt::Member::create(model);
        made.setAccess(access);
        type.getMembersMutable().add(made);
    };
    Case const cases[] = {
        {"empty", [](Model const&, Struct const&) {}, true},
        {"a base",
         [](Model const& m, Struct const& s) { s.getBaseClassesMutable().add(zt::BaseClass::create(m)); },
         false},
        {"a friend type",
         [](Model const& m, Struct const& s) { s.getFriendAggregatesMutable().add(Struct::create(m)); },
         false},
        {"a friend function",
         [](Model const& m, Struct const& s) { s.getFriendFunsMutable().add(za::Function::create(m)); },
         false},
        {"befriended",
         [](Model const& m, Struct const& s) { s.getBefriendingAggregatesMutable().add(Struct::create(m)); },
         true},
        {"a generated method", [](Model const& m, Struct const& s) { method(m, s, true); }, true},
        {"a written method", [](Model const& m, Struct const& s) { method(m, s, false); }, false},
        {"a written method behind a generated one",
         [](Model const& m, Struct const& s) {
             method(m, s, true);
             method(m, s, false);
         },
         false},
        {"a public member",
         [](Model const& m, Struct const& s) { member(m, s, zt::AccessSpecifierKind::Public); }, true},
        {"a member without access",
         [](Model const& m, Struct const& s) { member(m, s, zt::AccessSpecifierKind::None); }, true},
        {"a protected member",
         [](Model const& m, Struct const& s) { member(m, s, zt::AccessSpecifierKind::Protected); }, false},
        {"a private member",
         [](Model const& m, Struct const& s) { member(m, s, zt::AccessSpecifierKind::Private); }, false},
        {"final, abstract, linkage",
         [](Model const&, Struct const& s) {
             s.setIsFinal(true);
             s.setIsAbstract(true);
             s.setLinkage(za::LinkageKind::ExternalCXX);
         },
         true},
    };
    for (Case const& c : cases) {
        za::Ast ast;
        for (Struct const& type :
             {Struct::create(ast.getModel()), Struct(zt::ClassType::create(ast.getModel()))}) {
            c.change(ast.getModel(), type);
            EXPECT_EQ(type.isCOnlyStructType(), c.expected) << c.what;
        }
    }
}
