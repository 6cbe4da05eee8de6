// Qualified names of scopes, symbols and arguments.

#include "names/NameSupport.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace testnames;
using za::TemplateArgKind;

namespace {

struct Row {
    char const* what;
    std::function<std::string(Maker&)> name;
    char const* expected;
};

class QualifiedNames : public testing::TestWithParam<Row> {};

TEST_P(QualifiedNames, AreBuiltFromTheOutermostScope) {
    Maker m;
    EXPECT_EQ(GetParam().name(m), GetParam().expected) << GetParam().what;
}

/// Names of the cases below: namespace `ns` under the root with class `Foo`.
struct Home {
    explicit Home(Maker& m)
        : root(m.root()), ns(m.space("ns", root)), foo(m.make<zt::ClassType>("Foo", ns)) {}
    za::Scope root;
    za::Namespace ns;
    zt::ClassType foo;
};

template <class T>
std::string name(T const& element) {
    return element.getFullyQualifiedName();
}

std::vector<za::TemplateArg> packList(Maker& m) {
    return {m.typeArgument(m.integer()), m.packMark(), m.typeArgument(m.param("Ts"))};
}

zt::EnumType color(Maker& m, za::Scope const& scope, bool scoped) {
    auto type = m.make<zt::EnumType>("Color", scope);
    type.setIsScopedEnum(scoped);
    return type;
}

std::string enumerator(Maker& m, zt::EnumType const& type) {
    return m.valueArgument(m.number("0", type, "RED")).getFullyQualifiedName(false);
}

// clang-format off
Row const scopes[] = {
    {"plain block in a namespace", [](Maker& m) { return name(m.block(m.space("ns"))); }, ""},
    {"unnamed in a namespace", [](Maker& m) { return name(m.space("", Home(m).ns)); }, "ns::"},
    {"in an unnamed one in a namespace", [](Maker& m) { return name(m.space("x", m.space("", Home(m).ns))); }, "ns::::x"},
    {"unnamed at the root", [](Maker& m) { return name(m.space("", m.root())); }, ""},
    {"in an unnamed one at the root", [](Maker& m) { return name(m.space("x", m.space("", m.root()))); }, "x"},
    {"inline, alias and std have no effect", [](Maker& m) { auto n = m.space("v1", Home(m).ns); n.setIsInline(true); n.setIsStd(true); n.setAlias(m.space("other")); return name(n); }, "ns::v1"},
    {"block in a function", [](Maker& m) { return name(m.variable("v", m.integer(), m.block(m.inside(m.make<za::Function>("f"))))); }, "v"},
    {"namespace in a class", [](Maker& m) { return name(m.space("n", m.inside(Home(m).foo))); }, "ns::Foo::n"},
};

Row const symbols[] = {
    {"class with arguments", [](Maker& m) { return name(m.with(Home(m).foo, {m.typeArgument(m.integer()), m.valueArgument(m.number("3"))})); }, "ns::Foo<int, 3>"},
    {"method in a scope only", [](Maker& m) { return name(m.make<zt::Method>("bar", Home(m).ns)); }, "bar"},
    {"method of a class made from a template", [](Maker& m) { Home h(m); m.with(h.foo, {m.typeArgument(m.integer())}); return name(m.methodOf(h.foo, m.make<zt::Method>("bar"))); }, "ns::Foo<int>::bar"},
    {"method template", [](Maker& m) { return name(m.methodOf(Home(m).foo, m.with(m.make<zt::Method>("bar"), {m.typeArgument(m.charType())}))); }, "ns::Foo::bar<char>"},
    {"member in a scope only", [](Maker& m) { return name(m.make<zt::Member>("m", Home(m).ns)); }, "m"},
    {"variable in a function", [](Maker& m) { return name(m.variable("v", {}, m.inside(m.make<za::Function>("f", Home(m).ns)))); }, "ns::f::v"},
    {"unnamed variable alone", [](Maker& m) { return name(m.variable("", {})); }, ""},
    {"function with arguments", [](Maker& m) { return name(m.with(m.make<za::Function>("f", Home(m).ns), {m.typeArgument(m.integer())})); }, "ns::f<int>"},
    {"function with arguments at the root", [](Maker& m) { return name(m.with(m.make<za::Function>("f", m.root()), {m.typeArgument(m.integer())})); }, "f<int>"},
    {"function with arguments and no owner", [](Maker& m) { return name(m.with(m.make<za::Function>("f"), {m.typeArgument(m.integer())})); }, "f"},
    {"local of a function made from a template", [](Maker& m) { return name(m.variable("v", {}, m.inside(m.with(m.make<za::Function>("f", Home(m).ns), {m.typeArgument(m.integer())})))); }, "ns::f<int>::v"},
    {"unnamed enumeration", [](Maker& m) { return name(m.make<zt::EnumType>()); }, "#unnamed#"},
    {"qualified type in a scope", [](Maker& m) { return name(m.in(Home(m).ns, m.qualified("c", m.integer()))); }, "ns::#unnamed#"},
    {"member of an unnamed struct", [](Maker& m) { return name(m.memberOf(m.make<zt::StructType>("", Home(m).ns), "m")); }, "ns::#unnamed#::m"},
    {"alias with arguments", [](Maker& m) { return name(m.with(m.alias("vec", m.integer(), Home(m).ns), {m.typeArgument(m.floating(FloatKind::Single))})); }, "ns::vec<float>"},
    {"template parameter in a scope", [](Maker& m) { return name(m.param("T", true, Home(m).ns)); }, "T"},
    {"template with prototype", [](Maker& m) { Home h(m); auto t = m.make<za::Template>("Tm", m.space("other")); t.setProtoTypeInstantiation(m.with(h.foo, {m.typeArgument(m.param("T"))})); return name(t); }, "ns::Foo<typename T>"},
    {"symbol in a template with prototype", [](Maker& m) { Home h(m); auto t = m.make<za::Template>("Tm"); t.setProtoTypeInstantiation(h.foo); return name(m.variable("v", {}, m.inside(t))); }, "ns::Foo::v"},
    {"template whose prototype is gone", [](Maker& m) { Home h(m); auto t = m.make<za::Template>("Tm"); t.setProtoTypeInstantiation(h.foo); h.foo.destroy(); return name(t); }, "Tm"},
};

Row const lists[] = {
    {"pack, with its marker left out", [](Maker& m) { return name(m.with(m.make<zt::ClassType>("Foo"), packList(m))); }, "Foo<int, typename ... Ts>"},
    {"pack in a namespace", [](Maker& m) { return name(m.with(Home(m).foo, packList(m))); }, "ns::Foo<int, typename ... Ts>"},
    {"pack of an alias", [](Maker& m) { return name(m.with(m.alias("Foo", m.integer()), packList(m))); }, "Foo<int, ..., typename Ts>"},
    {"marker alone, alias", [](Maker& m) { return name(m.with(m.alias("Foo", {}), {m.packMark()})); }, "Foo<...>"},
    {"marker first", [](Maker& m) { return name(m.with(Home(m).foo, {m.packMark(), m.typeArgument(m.param("T")), m.typeArgument(m.param("U"))})); }, "ns::Foo<typename ... T, typename U>"},
    {"marker before what does not heed it", [](Maker& m) { return name(m.with(Home(m).foo, {m.packMark(), m.typeArgument(m.integer()), m.typeArgument(m.param("U"))})); }, "ns::Foo<int, typename U>"},
    {"nested", [](Maker& m) { auto bar = m.with(m.make<zt::ClassType>("Bar"), {m.typeArgument(m.integer())}); return name(m.with(m.make<zt::ClassType>("Foo"), {m.typeArgument(bar)})); }, "Foo<Bar<int>>"},
    {"blanks are kept between arguments", [](Maker& m) { return name(m.with(m.make<zt::ClassType>("A  B"), {m.typeArgument(m.make<zt::OpaqueType>("C  D")), m.valueArgument(m.number("1  2"))})); }, "A  B<C D, 1  2>"},
    {"blanks collapse where a type is printed", [](Maker& m) { auto inner = m.with(m.make<zt::ClassType>("A  B"), {m.valueArgument(m.number("1  2"))}); return name(m.with(m.make<zt::ClassType>("X  Y"), {m.typeArgument(inner)})); }, "X  Y<A B<1 2>>"},
};

Row const arguments[] = {
    {"typedef is expanded", [](Maker& m) { return m.typeArgument(m.alias("A", m.integer())).getFullyQualifiedName(false); }, "int"},
    {"parameter", [](Maker& m) { return m.typeArgument(m.param("T")).getFullyQualifiedName(false); }, "typename T"},
    {"parameter behind a mark", [](Maker& m) { return m.typeArgument(m.param("T")).getFullyQualifiedName(true); }, "typename ... T"},
    {"pack parameter", [](Maker& m) { return m.typeArgument(m.param("T", true)).getFullyQualifiedName(false); }, "typename T"},
    {"pointer to pack parameter", [](Maker& m) { return m.typeArgument(m.pointer(m.param("T", true))).getFullyQualifiedName(true); }, "T ... *"},
    {"type that prints nothing", [](Maker& m) { return m.typeArgument(m.make<zt::Type>("X")).getFullyQualifiedName(true); }, "T"},
    {"no value behind a mark", [](Maker& m) { return m.valueArgument({}).getFullyQualifiedName(true); }, "#UnknownType# ... N"},
    {"empty number", [](Maker& m) { return m.valueArgument(m.number("")).getFullyQualifiedName(false); }, ""},
    {"bare numeric constant", [](Maker& m) { auto c = m.constant<zc::NumericConstant>({}); c.setValue("1.5"); return m.valueArgument(c).getFullyQualifiedName(false); }, "1.5"},
    {"number of a typedef of an enumeration", [](Maker& m) { return m.valueArgument(m.number("7", m.alias("A", color(m, {}, false)), "RED")).getFullyQualifiedName(false); }, "7"},
    {"enumerator in a namespace", [](Maker& m) { return enumerator(m, color(m, Home(m).ns, false)); }, "ns::RED"},
    {"scoped enumerator in a namespace", [](Maker& m) { return enumerator(m, color(m, Home(m).ns, true)); }, "ns::Color::RED"},
    {"enumerator in a class", [](Maker& m) { return enumerator(m, color(m, m.inside(m.make<zt::ClassType>("C")), false)); }, "C::Color::RED"},
    {"enumerator without scope", [](Maker& m) { return enumerator(m, color(m, {}, false)); }, "Color::RED"},
    {"enumerator of an unnamed enumeration", [](Maker& m) { return enumerator(m, m.make<zt::EnumType>("", m.root())); }, "#unnamed#::RED"},
    {"enumerator in an unnamed namespace", [](Maker& m) { return enumerator(m, color(m, m.space("", m.root()), false)); }, "RED"},
    {"float of an enumeration", [](Maker& m) { auto c = m.constant<zc::FloatConstant>(color(m, Home(m).ns, false), "F"); return m.valueArgument(c).getFullyQualifiedName(false); }, "ns::F"},
    {"address of unknown kind", [](Maker& m) { return m.valueArgument(m.address(za::AddressKind::Unknown, "foo")).getFullyQualifiedName(false); }, "#UnknownAddress#"},
    {"address without text", [](Maker& m) { return m.valueArgument(m.address(za::AddressKind::Variable, "")).getFullyQualifiedName(true); }, "#UnknownAddress#"},
    {"other constant", [](Maker& m) { return m.valueArgument(m.constant<zc::TemplateParamConstant>(m.alias("A", m.integer()), "N")).getFullyQualifiedName(true); }, "int N"},
    {"other constant of a type that prints nothing", [](Maker& m) { return m.valueArgument(m.constant<zc::StringConstant>(m.make<zt::Type>(), "N")).getFullyQualifiedName(false); }, "#UnknownType# N"},
    {"bare constant", [](Maker& m) { return m.valueArgument(m.constant<zc::Constant>(m.make<zt::Type>())).getFullyQualifiedName(false); }, "#UnknownType#"},
    {"mark behind a mark", [](Maker& m) { return m.packMark().getFullyQualifiedName(true); }, "..."},
    {"template", [](Maker& m) { return m.argument(TemplateArgKind::TemplateTemplate, "Tmpl").getFullyQualifiedName(false); }, "#Unsupported# Tmpl"},
    {"kind without literal", [](Maker& m) { return m.argument(static_cast<TemplateArgKind>(50), "X").getFullyQualifiedName(false); }, "#Unsupported# X"},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Scopes, QualifiedNames, testing::ValuesIn(scopes));
INSTANTIATE_TEST_SUITE_P(Symbols, QualifiedNames, testing::ValuesIn(symbols));
INSTANTIATE_TEST_SUITE_P(Lists, QualifiedNames, testing::ValuesIn(lists));
INSTANTIATE_TEST_SUITE_P(Arguments, QualifiedNames, testing::ValuesIn(arguments));

} // namespace
