// Every operation of the schema, called by reflection: what can be called answers as its schema says, the
// others refuse.

#include "model/ModelSupport.hpp"

#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <iostream>

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

struct Found {
    ClassTable const* owner;
    schema::OperationRow const* row;
    meta::Operation object;
    std::string name;
};

std::vector<Found> const& operations() {
    static std::vector<Found> const all = [] {
        std::vector<Found> found;
        for (ClassTable const* table : classes()) {
            for (std::uint16_t i = 0; i < table->operationCount; ++i) {
                schema::OperationRow const& row = table->operations[i];
                found.push_back({table, &row, meta::Operation(static_cast<ModelElementImpl*>(row.object)),
                                 std::string(table->shortName) + "." + row.name});
            }
        }
        return found;
    }();
    return all;
}

bool hasOutput(schema::OperationRow const& row) {
    for (std::uint16_t i = 0; i < row.argumentCount; ++i)
        if (!row.arguments[i].isInput) return true;
    return false;
}

/// A value that no operation takes where it can be called.
Value real() {
    return Value::own<double>(meta::MetaRegistry::getInstance().getPrimitiveType(u"Real"), ValueFlags::One,
                              1.5);
}

} // namespace

TEST(Invoke, FiftyFiveOperationsCanBeCalled) {
    std::size_t callable = 0;
    for (Found const& operation : operations()) {
        EXPECT_EQ(operation.row->callable, !operation.row->isStatic && !hasOutput(*operation.row))
            << operation.name;
        callable += operation.row->callable;
    }
    EXPECT_EQ(operations().size(), 71u);
    EXPECT_EQ(callable, 55u);
}

TEST(Invoke, TheOthersRefuseWhateverTheArguments) {
    Model const model = newModel();
    std::size_t refused = 0;
    for (Found const& operation : operations()) {
        if (operation.row->callable) continue;
        EXPECT_EQ(operation.row->invoker, nullptr) << operation.name;
        ModelElement const element = make(model, *operation.owner);
        for (std::size_t count = 0; count <= operation.row->argumentCount + 1u; ++count) {
            std::vector<Value> const arguments(count, real());
            EXPECT_EQ(failureOf([&] { (void)element.invoke(operation.object, arguments); }), "InvalidValue")
                << operation.name;
        }
        ++refused;
    }
    EXPECT_EQ(refused, 16u);
}

TEST(Invoke, ArgumentsAreCountedAndTheirTypesChecked) {
    Model const model = newModel();
    std::size_t checked = 0;
    std::size_t withoutBody = 0;
    for (Found const& operation : operations()) {
        if (!operation.row->callable) continue;
        if (operation.row->invoker == nullptr) {
            ++withoutBody;
            continue;
        }
        SCOPED_TRACE(operation.name);
        ModelElement const element = make(model, *operation.owner);
        std::size_t const count = operation.row->argumentCount;
        for (std::size_t wrong = 0; wrong <= count + 2; ++wrong) {
            if (wrong == count) continue;
            std::vector<Value> const arguments(wrong, real());
            EXPECT_EQ(failureOf([&] { (void)element.invoke(operation.object, arguments); }), "InvalidValue");
        }
        std::string const failure =
            failureOf([&] { (void)element.invoke(operation.object, std::vector<Value>(count, real())); });
        EXPECT_EQ(failure, count == 0 ? "" : "CannotCastIncompatibleTypes");
        ++checked;
    }
    std::cout << "operations called: " << checked << ", still without a body: " << withoutBody << '\n';
    EXPECT_EQ(checked + withoutBody, 55u);
    EXPECT_GE(checked, 49u);
}

TEST(Invoke, AnswersHaveTheDeclaredType) {
    Model const model = newModel();
    std::size_t checked = 0;
    for (Found const& operation : operations()) {
        if (operation.row->invoker == nullptr || operation.row->argumentCount != 0) continue;
        for (ClassTable const* table : classes()) {
            if (table->isAbstract || !table->conformsTo(*operation.owner)) continue;
            Value const answer = make(model, *table).invoke(operation.object, {});
            EXPECT_EQ(answer.flags(), ValueFlags::One) << operation.name;
            EXPECT_EQ(answer.getType(), operation.object.getType()) << operation.name;
            ++checked;
        }
    }
    EXPECT_GT(checked, 49u);
}

TEST(Invoke, RefusesElementsOfOtherClasses) {
    Model const model = newModel();
    std::size_t checked = 0;
    for (Found const& operation : operations()) {
        for (ClassTable const* table : classes()) {
            if (table->isAbstract || table->conformsTo(*operation.owner)) continue;
            ModelElement const element = make(model, *table);
            std::vector<Value> const arguments(operation.row->argumentCount, real());
            ASSERT_EQ(failureOf([&] { (void)element.invoke(operation.object, arguments); }), "InvalidValue")
                << operation.name << " on " << table->shortName;
            ++checked;
        }
    }
    EXPECT_GT(checked, 71u);
    EXPECT_EQ(failureOf([&] { (void)make(model, *classes()[0]).invoke(meta::Operation(), {}); }),
              "InvalidValue");
}

TEST(Invoke, GivesWhatTheTypedCallGives) {
    za::Ast ast;
    auto const number = za::constants::IntegerConstant::fromSignedInteger(ast.getModel(), -9);
    auto call = [&](ModelElement const& element, std::string const& name) {
        for (Found const& operation : operations())
            if (operation.name == name) return element.invoke(operation.object, {});
        throw std::out_of_range(name);
    };
    EXPECT_EQ(call(number, "constants.IntegerConstant.getSignedInteger").getValue<long>(), -9);
    EXPECT_EQ(call(number, "constants.IntegerConstant.getUnsignedInteger").getValue<unsigned long>(), 0u);
    EXPECT_FALSE(call(number, "constants.IntegerConstant.fitsUnsignedInteger").getValue<bool>());
    EXPECT_EQ(call(number, "constants.NumericConstant.toByteString").getValue<std::string>(), "-9");
    EXPECT_TRUE(call(number, "constants.Constant.isNumeric").getValue<bool>());
    auto const function = za::Function::create(ast.getModel());
    function.setName("f");
    EXPECT_EQ(call(function, "Symbol.generateSignature").getValue<std::string>(), "f(void)");
    auto const real = za::constants::FloatConstant::fromDouble(ast.getModel(), 0.5);
    EXPECT_EQ(call(real, "constants.FloatConstant.getDouble").getValue<double>(), 0.5);
}
