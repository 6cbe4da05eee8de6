// Numbers read from text and written to it: ranges, what is ignored, and what is lost on purpose.

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <limits>
#include <optional>

namespace za = zelkor::ast;
namespace zc = zelkor::ast::constants;

namespace {

constexpr long smallest = std::numeric_limits<long>::min();
constexpr long largest = std::numeric_limits<long>::max();
constexpr unsigned long most = std::numeric_limits<unsigned long>::max();
constexpr std::optional<long> no;
constexpr std::optional<unsigned long> none;

struct IntegerRow {
    std::string text;
    std::optional<long> asSigned;
    std::optional<unsigned long> asUnsigned;
};

IntegerRow const integers[] = {
    {"", no, none},
    {"-", no, none},
    {"0", 0, 0ul},
    {"-0", 0, none},
    {"42", 42, 42ul},
    {"-1", -1, none},
    {"--1", no, none},
    {"+1", no, none},
    {" 7", no, none},
    {"7 ", 7, 7ul},
    {"12abc", 12, 12ul},
    {"abc", no, none},
    {"0x10", 0, 0ul},
    {"010", 10, 10ul},
    {"1.9", 1, 1ul},
    {"1e3", 1, 1ul},
    {"1'000", 1, 1ul},
    {std::string("3\0"
                 "4",
                 3),
     3, 3ul},
    {"00000000000000000000000000000005", 5, 5ul},
    {"9223372036854775807", largest, 9223372036854775807ul},
    {"9223372036854775808", no, 9223372036854775808ul},
    {"-9223372036854775808", smallest, none},
    {"-9223372036854775809", no, none},
    {"18446744073709551615", no, most},
    {"18446744073709551616", no, none},
    {"-18446744073709551616", no, none},
    {"99999999999999999999999999999999999999", no, none},
};

/// \returns a constant whose text was stored directly.
template <class Constant>
Constant constantOf(za::Ast const& ast, std::string const& text) {
    Constant const constant = Constant::create(ast.getModel());
    constant.setValue(text);
    return constant;
}

} // namespace

TEST(IntegerText, ReadsWithinItsRange) {
    za::Ast ast;
    for (IntegerRow const& row : integers) {
        SCOPED_TRACE(row.text);
        auto const constant = constantOf<zc::IntegerConstant>(ast, row.text);
        long asSigned = -77;
        EXPECT_EQ(constant.toSignedInteger(&asSigned), row.asSigned.has_value());
        EXPECT_EQ(asSigned, row.asSigned.value_or(-77)) << "left alone when it does not fit";
        EXPECT_EQ(constant.toSignedInteger(nullptr), row.asSigned.has_value());
        EXPECT_EQ(constant.fitsSignedInteger(), row.asSigned.has_value());
        EXPECT_EQ(constant.getSignedInteger(), row.asSigned.value_or(0));
        unsigned long asUnsigned = 77;
        EXPECT_EQ(constant.toUnsignedInteger(&asUnsigned), row.asUnsigned.has_value());
        EXPECT_EQ(asUnsigned, row.asUnsigned.value_or(77));
        EXPECT_EQ(constant.toUnsignedInteger(nullptr), row.asUnsigned.has_value());
        EXPECT_EQ(constant.fitsUnsignedInteger(), row.asUnsigned.has_value());
        EXPECT_EQ(constant.getUnsignedInteger(), row.asUnsigned.value_or(0));
        EXPECT_EQ(constant.toByteString(), row.text);
    }
}

TEST(DoubleText, ReadsAsTheCLibraryDoes) {
    double const infinite = std::numeric_limits<double>::infinity();
    std::optional<double> const bad;
    struct DoubleRow {
        std::string text;
        std::optional<double> value;
    };
    DoubleRow const table[] = {
        {"", bad},
        {" ", bad},
        {"abc", bad},
        {"-", bad},
        {"1.5", 1.5},
        {"-1.5e-3", -0.0015},
        {"+1", 1.0},
        {" \t\n7", 7.0},
        {"1.5abc", 1.5},
        {"0x10", 16.0},
        {"0x1p-2", 0.25},
        {"inf", infinite},
        {"-INFINITY", -infinite},
        {"1e308", 1e308},
        {"1e999", bad},
        {"-1e999", bad},
        {"1e-999", bad},
        {"1e-310", bad}, // a subnormal number is not exact
        {"0e-999", 0.0},
        {"2.2250738585072014e-308", std::numeric_limits<double>::min()},
        {"0.1", 0.1},
    };
    za::Ast ast;
    for (DoubleRow const& row : table) {
        SCOPED_TRACE(row.text);
        auto const constant = constantOf<zc::FloatConstant>(ast, row.text);
        double value = -77;
        errno = EDOM;
        EXPECT_EQ(constant.toDouble(&value), row.value.has_value());
        EXPECT_EQ(errno, EDOM) << "the caller's";
        EXPECT_EQ(value, row.value.value_or(-77));
        EXPECT_EQ(constant.toDouble(nullptr), row.value.has_value());
        EXPECT_EQ(constant.fitsDouble(), row.value.has_value());
        if (row.value) {
            EXPECT_EQ(constant.getDouble(), *row.value);
        } else {
            EXPECT_EQ(std::bit_cast<unsigned long>(constant.getDouble()), 0x7ff8000000000000ul);
        }
    }
    auto const notANumber = constantOf<zc::FloatConstant>(ast, "nan");
    EXPECT_TRUE(notANumber.fitsDouble());
    EXPECT_TRUE(std::isnan(notANumber.getDouble()));
}

TEST(NumberFactory, WritesDecimalText) {
    za::Ast ast;
    auto const model = ast.getModel();
    struct TextRow {
        zc::Constant made;
        std::string text;
    };
    TextRow const table[] = {
        {zc::IntegerConstant::fromSignedInteger(model, -1), "-1"},
        {zc::IntegerConstant::fromSignedInteger(model, smallest), "-9223372036854775808"},
        {zc::IntegerConstant::fromUnsignedInteger(model, most), "18446744073709551615"},
        {zc::IntegerConstant::fromByteString(model, "no number\n"), "no number\n"},
        {zc::Constant::fromSignedInteger(model, 0), "0"},
        {zc::Constant::fromUnsignedInteger(model, 7), "7"},
        {zc::FloatConstant::fromDouble(model, 1.5), "1.500000"},
        {zc::FloatConstant::fromDouble(model, 0.1234567), "0.123457"},
        {zc::FloatConstant::fromDouble(model, 1e-7), "0.000000"},
        {zc::FloatConstant::fromDouble(model, -0.0), "-0.000000"},
        {zc::FloatConstant::fromByteString(model, ""), ""},
        {zc::Constant::fromDouble(model, 2), "2.000000"},
    };
    for (TextRow const& row : table) {
        SCOPED_TRACE(row.text);
        auto const constant = zc::NumericConstant::cast(row.made);
        ASSERT_TRUE(constant);
        EXPECT_EQ(constant.getValue(), row.text);
        EXPECT_EQ(constant.toByteString(), row.text);
        EXPECT_EQ(constant.getName(), "");
        EXPECT_FALSE(constant.getType());
        EXPECT_FALSE(constant.uuid().is_nil());
        EXPECT_EQ(constant.getModel(), model);
    }
    EXPECT_TRUE(zc::Constant::fromDouble(model, 1).isFloat());
    EXPECT_TRUE(zc::Constant::fromSignedInteger(model, 1).isInteger());
    EXPECT_TRUE(zc::Constant::fromUnsignedInteger(model, 1).isInteger());
}

TEST(NumberFactory, HoldsTheLongestDouble) {
    za::Ast ast;
    for (double const number :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(), 1e300}) {
        auto const constant = zc::FloatConstant::fromDouble(ast.getModel(), number);
        EXPECT_TRUE(constant.getValue().ends_with(".000000"));
        EXPECT_EQ(constant.getDouble(), number);
    }
    EXPECT_EQ(zc::FloatConstant::fromDouble(ast.getModel(), 1e300).getValue().size(), 308u);
    EXPECT_EQ(zc::FloatConstant::fromDouble(ast.getModel(), 0.1234567).getDouble(), 0.123457);
    EXPECT_EQ(zc::FloatConstant::fromDouble(ast.getModel(), 1e-7).getDouble(), 0.0);
}

TEST(NumberFactory, NeedsAModel) {
    EXPECT_ANY_THROW((void)zc::IntegerConstant::fromSignedInteger(nullptr, 1));
    EXPECT_ANY_THROW((void)zc::FloatConstant::fromDouble(nullptr, 1));
}
