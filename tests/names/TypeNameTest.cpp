// Declarations of types: the worked table, and the odd parts.

#include "names/NameSupport.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

using namespace testnames;

namespace {

constexpr bool plain = false;
constexpr bool skip = true;

struct Row {
    char const* what;
    std::function<zt::Type(Maker&)> type;
    char const* declared;
    bool skipTypedefs;
    char const* expected;
};

class TypeNames : public testing::TestWithParam<Row> {};

TEST_P(TypeNames, PrintAs) {
    Maker m;
    EXPECT_EQ(print(GetParam().type(m), GetParam().declared, GetParam().skipTypedefs), GetParam().expected)
        << GetParam().what;
}

zt::Type classPointer(Maker& m) {
    auto type = m.over<zt::PointerToMemberType>(m.integer());
    return type;
}

// clang-format off
Row const layers[] = {
    {"int with a name", [](Maker& m) { return m.integer(); }, "x", plain, "int x"},
    {"int", [](Maker& m) { return m.integer(); }, "", plain, "int"},
    {"const", [](Maker& m) { return m.qualified("c", m.integer()); }, "x", plain, "int const x"},
    {"const volatile", [](Maker& m) { return m.qualified("cv", m.integer()); }, "", plain, "int const volatile"},
    {"all qualifiers", [](Maker& m) { return m.qualified("cvr", m.integer()); }, "x", plain, "int const volatile restrict x"},
    {"volatile restrict", [](Maker& m) { return m.qualified("vr", m.integer()); }, "", plain, "int volatile restrict"},
    {"restrict pointer", [](Maker& m) { return m.qualified("r", m.pointer(m.integer())); }, "p", plain, "int * restrict p"},
    {"no printed qualifier", [](Maker& m) { return m.qualified("q", m.integer()); }, "x", plain, "int x"},
    {"no printed qualifier, no name", [](Maker& m) { return m.qualified("q", m.integer()); }, "", plain, "int"},
    {"no printed qualifier below a pointer", [](Maker& m) { return m.pointer(m.qualified("", m.integer())); }, "p", plain, "int * p"},
    {"pointer", [](Maker& m) { return m.pointer(m.integer()); }, "p", plain, "int * p"},
    {"pointer to pointer", [](Maker& m) { return m.pointer(m.pointer(m.integer())); }, "", plain, "int * *"},
    {"pointer to member", [](Maker& m) { return classPointer(m); }, "p", plain, "int * p"},
    {"const pointer to const", [](Maker& m) { return m.qualified("c", m.pointer(m.qualified("c", m.charType()))); }, "p", plain, "char const * const p"},
    {"reference", [](Maker& m) { return m.reference(m.integer()); }, "r", plain, "int & r"},
    {"bare reference class", [](Maker& m) { return m.over<zt::ReferenceType>(m.integer()); }, "r", plain, "int & r"},
    {"rvalue reference", [](Maker& m) { return m.rvalue(m.integer()); }, "", plain, "int &&"},
    {"rvalue reference with a name", [](Maker& m) { return m.rvalue(m.pointer(m.integer())); }, "r", plain, "int * && r"},
    {"array", [](Maker& m) { return m.array(m.integer(), {3, 4}); }, "a", plain, "int a[3][4]"},
    {"array, nothing declared", [](Maker& m) { return m.array(m.integer(), {3}); }, "", plain, "int[3]"},
    {"array of unknown size", [](Maker& m) { return m.array(m.integer(), {0}); }, "a", plain, "int a[]"},
    {"array of negative size", [](Maker& m) { return m.array(m.integer(), {-2, 5}); }, "a", plain, "int a[][5]"},
    {"array without dimensions", [](Maker& m) { return m.array(m.integer(), {}); }, "a", plain, "int a"},
    {"array of array", [](Maker& m) { return m.array(m.array(m.integer(), {4}), {3}); }, "a", plain, "int a[4][3]"},
    {"array of pointer", [](Maker& m) { return m.array(m.pointer(m.integer()), {3}); }, "a", plain, "int * a[3]"},
    {"pointer to array, nothing declared", [](Maker& m) { return m.pointer(m.array(m.integer(), {3})); }, "", plain, "int (*)[3]"},
    {"rvalue reference to vector", [](Maker& m) { return m.rvalue(m.vector(m.integer(), 2)); }, "r", plain, "int (&& r)[2]"},
    {"pointer to pointer to array", [](Maker& m) { return m.pointer(m.pointer(m.array(m.integer(), {3}))); }, "p", plain, "int (* * p)[3]"},
    {"pointer to array of pointer to array", [](Maker& m) { return m.pointer(m.array(m.pointer(m.array(m.integer(), {2})), {3})); }, "p", plain, "int (* (* p))[2][3]"},
    {"pointer to const array", [](Maker& m) { return m.pointer(m.qualified("c", m.array(m.integer(), {3}))); }, "p", plain, "int const * p[3]"},
    {"pointer to named array", [](Maker& m) { return m.pointer(m.alias("A", m.array(m.integer(), {3}))); }, "p", skip, "int * p[3]"},
    {"vector of negative width", [](Maker& m) { return m.vector(m.integer(), -1); }, "", plain, "int[]"},
    {"pointer to vector", [](Maker& m) { return m.pointer(m.vector(m.integer(), 4)); }, "p", plain, "int (* p)[4]"},
    {"bare typeref", [](Maker& m) { return m.over<zt::TyperefType>(m.integer()); }, "x", plain, "int x"},
    {"declared text with blanks", [](Maker& m) { return m.integer(); }, "  a \t\n b  ", plain, "int a b "},
    {"declared text of one blank", [](Maker& m) { return m.integer(); }, " ", plain, "int "},
    {"vertical tab, form feed, return", [](Maker& m) { return m.integer(); }, "a\v\f\rb", plain, "int a b"},
    {"non-breaking blank", [](Maker& m) { return m.integer(); }, "a\xC2\xA0\x85 b", plain, "int a\xC2\xA0\x85 b"},
};

Row const functions[] = {
    {"function drops its name", [](Maker& m) { return m.function(m.integer(), {m.charType(), m.integer()}); }, "f", plain, "int /* FunctionType */ (char, int)"},
    {"pointer to function", [](Maker& m) { return m.pointer(m.function(m.integer())); }, "fp", plain, "int /* FunctionType */ (void)"},
    {"reference to const pointer to function", [](Maker& m) { return m.reference(m.qualified("c", m.pointer(m.function(m.integer())))); }, "fp", plain, "int /* FunctionType */ (void)"},
    {"array of pointers to function", [](Maker& m) { return m.array(m.pointer(m.function(m.integer())), {3}); }, "fps", plain, "int /* FunctionType */ (void)[3]"},
    {"variadic without parameters", [](Maker& m) { return m.function(m.integer(), {}, true); }, "", plain, "int /* FunctionType */ (void)"},
    {"returns a pointer to array", [](Maker& m) { return m.function(m.pointer(m.array(m.integer(), {3}))); }, "", plain, "int (* /* FunctionType */ (void))[3]"},
    {"returns a pointer to function", [](Maker& m) { return m.function(m.pointer(m.function(m.charType(), {m.integer()})), {m.voidType()}); }, "", plain, "char /* FunctionType */ (int)"},
    {"with a name", [](Maker& m) { return m.in(m.root(), m.function(m.integer()), "F"); }, "", plain, "int F /* FunctionType */ (void)"},
    {"owned by a namespace", [](Maker& m) { return m.in(m.space("ns"), m.function(m.integer())); }, "", plain, "int ns:: /* FunctionType */ (void)"},
    {"parameters keep skipping typedefs", [](Maker& m) { return m.function(m.alias("R", m.integer()), {m.alias("A", m.pointer(m.charType()))}); }, "", skip, "int /* FunctionType */ (char *)"},
    {"parameters behind an attribute", [](Maker& m) { return m.over<zt::TypeAttrType>(m.function(m.alias("R", m.integer()), {m.alias("A", m.charType())})); }, "", skip, "R /* FunctionType */ (A)"},
    {"the same parameter twice", [](Maker& m) { auto i = m.integer(); return m.function(i, {i, i}); }, "", plain, "int /* FunctionType */ (int, int)"},
    {"parameter is a function", [](Maker& m) { return m.function(m.voidType(), {m.pointer(m.function(m.integer(), {m.charType()}))}); }, "", plain, "void /* FunctionType */ (int /* FunctionType */ (char))"},
};

Row const named[] = {
    {"typedef of typedef", [](Maker& m) { return m.alias("A", m.alias("B", m.integer())); }, "x", skip, "int x"},
    {"typedef of typedef of an operator", [](Maker& m) { return m.alias("A", m.alias("B", m.over<zt::TypeOpType>(m.integer()))); }, "x", skip, "B x"},
    {"typedef of attribute", [](Maker& m) { return m.alias("A", m.over<zt::TypeAttrType>(m.integer())); }, "x", skip, "A x"},
    {"typedef of nullptr_t", [](Maker& m) { return m.alias("nullptr_t", m.make<zt::NullPtrType>()); }, "x", skip, "nullptr_t x"},
    {"typedef of const nullptr_t", [](Maker& m) { return m.alias("N", m.qualified("c", m.make<zt::NullPtrType>())); }, "x", skip, "nullptr const x"},
    {"typedef of bare typeref", [](Maker& m) { return m.alias("A", m.over<zt::TyperefType>(m.alias("B", m.integer()))); }, "x", skip, "B x"},
    {"operator over typedef", [](Maker& m) { return m.over<zt::TypeOpType>(m.alias("A", m.integer())); }, "x", skip, "A x"},
    {"pointer below an attribute", [](Maker& m) { return m.over<zt::TypeAttrType>(m.pointer(m.alias("A", m.integer()))); }, "x", skip, "A * x"},
    {"const typedef, skipped", [](Maker& m) { return m.qualified("c", m.alias("A", m.pointer(m.integer()))); }, "x", skip, "int * const x"},
    {"typedef without base, skipped", [](Maker& m) { return m.alias("A", {}); }, "x", skip, "#unknown# x"},
    {"unnamed struct", [](Maker& m) { return m.make<zt::StructType>("", m.root()); }, "s", plain, " /* StructType */ s"},
    {"unnamed union", [](Maker& m) { return m.make<zt::UnionType>("", m.space("ns")); }, "u", plain, "ns:: /* UnionType */ u"},
    {"unnamed bare aggregate", [](Maker& m) { return m.make<zt::AggregateType>(); }, "a", plain, " /* ClassType */ a"},
    {"class in an unnamed struct", [](Maker& m) { return m.make<zt::ClassType>("C", m.inside(m.make<zt::StructType>("", m.space("ns")))); }, "c", plain, "ns::::C c"},
    {"unnamed argument of a class", [](Maker& m) { return m.with(m.make<zt::ClassType>("C"), {m.typeArgument(m.make<zt::StructType>())}); }, "", plain, "C< /* StructType */>"},
    {"nameless pointer typedef in a class", [](Maker& m) { return m.with(m.make<zt::ClassType>("C"), {m.typeArgument(m.alias("", m.make<zt::NullPtrType>()))}); }, "", plain, "C<>"},
    {"marker as a name", [](Maker& m) { return m.make<zt::EnumType>("a#unnamed##unn#unnamed#amed#b"); }, "", plain, "a#unnamed#b"},
    {"marker as a typedef's name", [](Maker& m) { return m.alias("", m.integer()); }, "x", plain, "#unnamed# x"},
    {"pack", [](Maker& m) { return m.param("T", true); }, "args", plain, "T ... args"},
    {"pack, nothing declared", [](Maker& m) { return m.param("T", true); }, "", plain, "T... "},
    {"pack that is marked", [](Maker& m) { return m.param("T", true); }, "a ...", plain, "T a ..."},
    {"array of pack", [](Maker& m) { return m.array(m.param("T", true), {2}); }, "", plain, "T... [2]"},
    {"unnamed pack", [](Maker& m) { return m.param("", true); }, "x", plain, "typename ... T"},
    {"unnamed parameter", [](Maker& m) { return m.pointer(m.param("")); }, "x", plain, "typename T"},
    {"array of unnamed parameter", [](Maker& m) { return m.array(m.param(""), {2}); }, "x", plain, "typename T[2]"},
    {"opaque", [](Maker& m) { return m.make<zt::OpaqueType>("va_list", m.space("ns")); }, "x", plain, "va_list x"},
    {"unnamed opaque", [](Maker& m) { return m.make<zt::OpaqueType>(); }, "x", plain, "/* OpaqueType */ x"},
    {"error", [](Maker& m) { return m.make<zt::ErrorType>("E"); }, "x", plain, "/* ErrorType */ x"},
    {"void", [](Maker& m) { return m.make<zt::VoidType>("V"); }, "", plain, "void"},
    {"bool", [](Maker& m) { return m.make<zt::BooleanType>("B"); }, "b", plain, "bool b"},
    {"nullptr with a name", [](Maker& m) { return m.make<zt::NullPtrType>("std::nullptr_t"); }, "n", plain, "std::nullptr_t n"},
    {"bare based type", [](Maker& m) { return m.over<zt::BasedType>(m.integer()); }, "x", plain, ""},
    {"bare numeric type", [](Maker& m) { return m.make<zt::QuasiNumericType>("X"); }, "x", plain, ""},
    {"array of bare type", [](Maker& m) { return m.array(m.make<zt::Type>(), {3}); }, "x", plain, "[3]"},
    {"nothing, nothing declared", [](Maker&) { return zt::Type(); }, "", plain, "#unknown#"},
    {"destroyed base", [](Maker& m) { auto i = m.integer(); auto p = m.pointer(i); i.destroy(); return p; }, "p", plain, "#unknown# * p"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Layers, TypeNames, testing::ValuesIn(layers));
INSTANTIATE_TEST_SUITE_P(Functions, TypeNames, testing::ValuesIn(functions));
INSTANTIATE_TEST_SUITE_P(Named, TypeNames, testing::ValuesIn(named));

TEST(NumberWords, FollowKindAndSignApart) {
    struct {
        IntegerKind kind;
        char const* whenSigned;
        char const* whenUnsigned;
    } const rows[] = {
        {IntegerKind::Char, "char", "char"},
        {IntegerKind::SignedChar, "signed char", "unsigned char"},
        {IntegerKind::UnsignedChar, "char", "unsigned char"},
        {IntegerKind::SignedShort, "short", "unsigned short"},
        {IntegerKind::UnsignedShort, "short", "unsigned short"},
        {IntegerKind::SignedInt, "int", "unsigned int"},
        {IntegerKind::UnsignedInt, "int", "unsigned int"},
        {IntegerKind::SignedLong, "long", "unsigned long"},
        {IntegerKind::UnsignedLong, "long", "unsigned long"},
        {IntegerKind::SignedShortLong, "short long", "unsigned short long"},
        {IntegerKind::UnsignedShortLong, "short long", "unsigned short long"},
        {IntegerKind::SignedLongLong, "long long", "unsigned long long"},
        {IntegerKind::UnsignedLongLong, "long long", "unsigned long long"},
        {IntegerKind::SignedInt128, "__int128_t", "__int128_t"},
        {IntegerKind::UnsignedInt128, "__uint128_t", "__uint128_t"},
        {IntegerKind::Wchar, "wchar_t", "wchar_t"},
        {IntegerKind::Char16, "char16_t", "char16_t"},
        {IntegerKind::Char32, "char32_t", "char32_t"},
        {static_cast<IntegerKind>(99), "", "unsigned "},
    };
    Maker m;
    for (auto const& row : rows) {
        EXPECT_EQ(print(m.integer(row.kind, true)), row.whenSigned);
        EXPECT_EQ(print(m.integer(row.kind, false)), row.whenUnsigned);
    }
    std::pair<FloatKind, char const*> const floats[] = {
        {FloatKind::Half, "short float x"},  {FloatKind::Single, "float x"},
        {FloatKind::Double, "double x"},     {FloatKind::LongDouble, "long double x"},
        {FloatKind::Float80, "__float80 x"}, {FloatKind::Float128, "__float128 x"},
        {static_cast<FloatKind>(77), " x"},
    };
    for (auto const& [kind, expected] : floats)
        EXPECT_EQ(print(m.floating(kind), "x"), expected);
}

// The hand-written scans against the expressions they stand for.
TEST(TextPatterns, AreThoseOfRegularExpressions) {
    Maker m;
    auto const type = m.make<zt::OpaqueType>("O");
    auto const enumeration = m.make<zt::EnumType>("E");
    std::string const pieces[] = {
        " ", "  ",        "\t",       "\n",   "\r",    "\v",   "\f",       "a",
        "#", "#unnamed#", "unnamed#", "#unn", "amed#", "\x80", "\xC2\xA0", std::string(1, '\0'),
        "::"};
    std::regex const blanks("\\s+");
    std::regex const marker("#unnamed#");
    std::uint32_t seed = 1;
    for (int round = 0; round < 4000; ++round) {
        std::string text;
        for (int length = round % 12; length > 0; --length) {
            seed = seed * 1664525u + 1013904223u;
            text += pieces[(seed >> 16) % std::size(pieces)];
        }
        if (text.empty()) continue;
        type.setName(text);
        EXPECT_EQ(print(type, text), std::regex_replace(text + " " + text, blanks, " "));
        enumeration.setName(text);
        EXPECT_EQ(print(enumeration), std::regex_replace(std::regex_replace(text, marker, ""), blanks, " "));
    }
}

} // namespace
