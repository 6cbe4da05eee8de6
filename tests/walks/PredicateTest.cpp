// The questions that replace downcasts, asked of every class, and the two rules about structs.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <set>

using namespace testmodel;
namespace za = zelkor::ast;
namespace zc = zelkor::ast::constants;
namespace zt = zelkor::ast::types;

namespace {

meta::Operation operationNamed(ClassTable const& table, std::string const& name) {
    table.metaClass();
    for (std::uint16_t i = 0; i < table.operationCount; ++i)
        if (table.operations[i].name == name)
            return meta::Operation(static_cast<ModelElementImpl*>(table.operations[i].object));
    throw std::out_of_range(name);
}

/// \returns the class that an operation such as isVoidType or isNumeric asks for; null for another operation.
ClassTable const* classAskedFor(std::string const& operation) {
    for (ClassTable const* table : classes())
        if (operation == "is" + std::string(table->name) ||
            operation + "Constant" == "is" + std::string(table->name))
            return table;
    return nullptr;
}

} // namespace

TEST(Predicate, IsTrueForTheClassThatItNamesAndItsSubclasses) {
    Model const model = newModel();
    std::set<std::string> others;
    std::size_t asked = 0;
    for (ClassTable const* owner : classes())
        for (std::uint16_t i = 0; i < owner->operationCount; ++i) {
            std::string const name = owner->operations[i].name;
            ClassTable const* const wanted = classAskedFor(name);
            if (wanted == nullptr && name.starts_with("is")) others.insert(name);
            if (wanted == nullptr) continue;
            for (ClassTable const* table : classes())
                if (!table->isAbstract && table->conformsTo(*owner)) {
                    Value const answer = make(model, *table).invoke(operationNamed(*owner, name), {});
                    EXPECT_EQ(answer.getValue<bool>(), table->conformsTo(*wanted))
                        << name << " of " << table->name;
                }
            ++asked;
        }
    EXPECT_EQ(asked, 40u);
    EXPECT_EQ(others, (std::set<std::string>{"isCOnlyStructType", "isDestructible"}));
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
    using brant::zero::Model;
    using Struct = zt::StructType;
    using enum zt::AccessSpecifierKind;
    static auto const addMethod = [](Model const& model, Struct const& type, bool isGenerated) {
        zt::Method const method = zt::Method::create(model);
        method.setIsCompilerGenerated(isGenerated);
        type.getMethodsMutable().add(method);
    };
    static auto const addMember = [](Model const& model, Struct const& type, zt::AccessSpecifierKind access) {
        zt::Member const made = zt::Member::create(model);
        made.setAccess(access);
        type.getMembersMutable().add(made);
    };
    struct Case {
        char const* what;
        bool expected;
        void (*change)(Model const&, Struct const&);
    } const cases[] = {
        {"empty", true, [](Model const&, Struct const&) {}},
        {"a base", false,
         [](Model const& m, Struct const& s) { s.createIntoBaseClasses(zt::BaseClass::Builder(m)); }},
        {"a friend type", false,
         [](Model const& m, Struct const& s) { s.getFriendAggregatesMutable().add(Struct::create(m)); }},
        {"a friend function", false,
         [](Model const& m, Struct const& s) { s.getFriendFunsMutable().add(za::Function::create(m)); }},
        {"befriended", true,
         [](Model const& m, Struct const& s) { s.getBefriendingAggregatesMutable().add(Struct::create(m)); }},
        {"a generated method", true, [](Model const& m, Struct const& s) { addMethod(m, s, true); }},
        {"a written method", false, [](Model const& m, Struct const& s) { addMethod(m, s, false); }},
        {"one behind a generated one", false,
         [](Model const& m, Struct const& s) { addMethod(m, s, true), addMethod(m, s, false); }},
        {"a public member", true, [](Model const& m, Struct const& s) { addMember(m, s, Public); }},
        {"a member without access", true, [](Model const& m, Struct const& s) { addMember(m, s, None); }},
        {"a protected member", false, [](Model const& m, Struct const& s) { addMember(m, s, Protected); }},
        {"a private member", false, [](Model const& m, Struct const& s) { addMember(m, s, Private); }},
        {"final and abstract", true,
         [](Model const&, Struct const& s) { s.setIsFinal(true), s.setIsAbstract(true); }},
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
