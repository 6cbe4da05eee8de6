// Declarations in one line.

#include "names/NameSupport.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace testnames;

namespace {

struct Row {
    char const* what;
    std::function<za::Symbol(Maker&)> symbol;
    char const* expected;
};

class Signatures : public testing::TestWithParam<Row> {};

TEST_P(Signatures, SpellTheDeclaration) {
    Maker m;
    EXPECT_EQ(GetParam().symbol(m).generateSignature(), GetParam().expected) << GetParam().what;
}

za::Function twoParameters(Maker& m) {
    return m.declare("f", m.integer(), {m.variable("a", m.integer()), m.variable("b", m.charType())},
                     m.space("ns"));
}

za::Function noParameters(Maker& m, zt::Type const& result) {
    return m.declare("f", result, {}, m.space("ns"));
}

zt::Method bar(Maker& m, zt::Type const& result) {
    return m.methodOf(m.make<zt::ClassType>("Foo", m.space("ns")), m.declare<zt::Method>("bar", result));
}

za::Function prototype(Maker& m) {
    auto const t = m.param("T");
    return m.with(m.declare("f", t, {m.variable("x", t)}, m.space("ns")), {m.typeArgument(t)});
}

// clang-format off
Row const functions[] = {
    {"parameters", [](Maker& m) { return twoParameters(m); }, "int ns::f(int a, char b)"},
    {"inline", [](Maker& m) { auto f = twoParameters(m); f.setIsInline(true); return f; }, "inline int ns::f(int a, char b)"},
    {"variadic", [](Maker& m) { auto f = m.declare("f", m.integer(), {m.variable("a", m.integer())}, m.space("ns")); f.setIsVariadic(true); return f; }, "int ns::f(int a, ...)"},
    {"variadic without parameters", [](Maker& m) { auto f = noParameters(m, m.integer()); f.setIsVariadic(true); return f; }, "int ns::f(void)"},
    {"type of another class", [](Maker& m) { auto f = m.make<za::Function>("f"); f.setType(m.integer()); return f; }, "f(void)"},
    {"parameter without type", [](Maker& m) { return m.declare("f", m.integer(), {m.variable("a", {}), m.variable("", {})}); }, "int f(#unknown# a, #unknown#)"},
    {"pointer to const", [](Maker& m) { return m.declare("f", m.integer(), {m.variable("p", m.pointer(m.qualified("c", m.charType())))}, m.space("ns")); }, "int ns::f(char const * p)"},
    {"typedefs are kept", [](Maker& m) { return m.declare("f", m.alias("R", m.integer()), {m.variable("a", m.alias("A", m.integer(), m.space("n")))}); }, "R f(n::A a)"},
    {"result is a pointer to function", [](Maker& m) { return noParameters(m, m.pointer(m.function(m.integer()))); }, "int /* FunctionType */ (void) ns::f(void)"},
    {"result is a pack", [](Maker& m) { return noParameters(m, m.param("T", true)); }, "T...  ns::f(void)"},
    {"made from a template", [](Maker& m) { return m.with(twoParameters(m), {m.typeArgument(m.integer())}); }, "int ns::f<int>(int a, char b)"},
    {"pack suppresses the ellipsis", [](Maker& m) { auto f = m.declare("g", m.voidType(), {m.pack("args", m.param("Ts", true)), m.variable("x", m.integer())}, m.space("ns")); f.setIsVariadic(true); return f; }, "void ns::g(Ts ... args, int x)"},
    {"what leaves no trace", [](Maker& m) { auto f = noParameters(m, m.integer()); f.setNumOptionalParams(2); f.setIsCompilerGenerated(true); f.setStorageClass(za::StorageClassKind::Static); f.setLinkage(za::LinkageKind::Internal); f.setSpecialKind(za::SpecialFunctionKind::Operator); return f; }, "int ns::f(void)"},
    {"blanks of names are kept", [](Maker& m) { return m.declare("operator  new", m.make<zt::OpaqueType>("A  B"), {m.variable("x  y", m.integer())}); }, "A B operator  new(int x y)"},
};

Row const methods[] = {
    {"virtual inline const", [](Maker& m) { auto b = bar(m, m.voidType()); b.setIsVirtual(true); b.setIsInline(true); b.setIsThisConst(true); return b; }, "virtual inline void ns::Foo::bar(void) const"},
    {"deleted const", [](Maker& m) { auto b = bar(m, m.voidType()); b.setIsDeleted(true); b.setIsThisConst(true); return b; }, "void ns::Foo::bar(void) const = deleted"},
    {"what leaves no trace", [](Maker& m) { auto b = bar(m, m.voidType()); b.setIsAbstract(true); b.setIsFinal(true); b.setAccess(zt::AccessSpecifierKind::Private); return b; }, "void ns::Foo::bar(void)"},
    {"no owner", [](Maker& m) { auto b = m.declare<zt::Method>("bar", m.voidType(), {}, m.space("ns")); b.setIsVirtual(true); return b; }, "virtual void bar(void)"},
};

Row const others[] = {
    {"unnamed variable without type", [](Maker& m) { return m.variable("", {}); }, "#unknown#"},
    {"pack", [](Maker& m) { return m.pack("args", m.param("Ts", true)); }, "Ts ... args"},
    {"pack of a plain type", [](Maker& m) { return m.pack("args", m.param("Ts")); }, "Ts ... args"},
    {"pack of references", [](Maker& m) { return m.pack("args", m.rvalue(m.param("Ts", true))); }, "Ts && ... args"},
    {"unnamed pack", [](Maker& m) { return m.pack("", m.param("Ts", true)); }, "Ts ... "},
    {"template with prototype", [](Maker& m) { auto t = m.make<za::Template>("Foo", m.space("other")); t.setProtoTypeInstantiation(prototype(m)); return t; }, "T ns::f<typename T>(T x)"},
    {"exported template with prototype", [](Maker& m) { auto t = m.make<za::Template>("Foo"); t.setIsExported(true); t.setProtoTypeInstantiation(prototype(m)); return t; }, "exported T ns::f<typename T>(T x)"},
    {"template of a template", [](Maker& m) { auto inner = m.make<za::Template>("In"); inner.setIsExported(true); auto t = m.make<za::Template>("Foo"); t.setIsExported(true); t.setProtoTypeInstantiation(inner); return t; }, "exported exported In<#UnknownTemplateArgList#>"},
    {"class template with prototype", [](Maker& m) { auto t = m.make<za::Template>("Foo"); t.setProtoTypeInstantiation(m.with(m.make<zt::ClassType>("Foo", m.space("ns")), {m.typeArgument(m.param("T"))})); return t; }, "ns::Foo<typename T>"},
    {"type", [](Maker& m) { return m.integer(); }, "int"},
    {"typedef", [](Maker& m) { return m.alias("size_t", m.integer(), m.space("std")); }, "std::size_t"},
    {"unnamed struct", [](Maker& m) { return m.make<zt::StructType>("", m.root()); }, " /* StructType */"},
    {"bare type", [](Maker& m) { return m.make<zt::Type>("X"); }, ""},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Functions, Signatures, testing::ValuesIn(functions));
INSTANTIATE_TEST_SUITE_P(Methods, Signatures, testing::ValuesIn(methods));
INSTANTIATE_TEST_SUITE_P(Others, Signatures, testing::ValuesIn(others));

} // namespace
