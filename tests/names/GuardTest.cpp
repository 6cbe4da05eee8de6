// Endless, deep and exponentially long names end in text; long ones that end by themselves are written in
// full.

#include "names/NameSupport.hpp"

#include <gtest/gtest.h>

using namespace testnames;

namespace {

constexpr std::size_t deep = 100000;

std::string repeated(std::string const& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    while (count-- > 0)
        result += text;
    return result;
}

TEST(Cycles, OfClassesAndTheirArgumentsAreCut) {
    Maker m;
    auto const a = m.make<zt::ClassType>("A");
    m.with(a, {m.typeArgument(a)});
    EXPECT_EQ(a.getFullyQualifiedName(), "A<A<#unknown#>>");
    EXPECT_EQ(print(m.pointer(a), "p"), "A<A<#unknown#>> * p");
    EXPECT_EQ(a.getTemplateArgs()[0].getFullyQualifiedName(false), "A<A<#unknown#>>");

    auto const b = m.make<zt::ClassType>("B");
    auto const c = m.make<zt::ClassType>("C");
    m.with(b, {m.typeArgument(m.pointer(c)), m.typeArgument(m.integer())});
    m.with(c, {m.typeArgument(b)});
    EXPECT_EQ(b.getFullyQualifiedName(), "B<C<B<#unknown#>> *, int>");
    // A class twice in one list is no cycle.
    auto const d = m.make<zt::ClassType>("D");
    auto const e = m.with(m.make<zt::ClassType>("E"), {m.typeArgument(m.integer())});
    m.with(d, {m.typeArgument(e), m.typeArgument(e)});
    EXPECT_EQ(d.getFullyQualifiedName(), "D<E<int>, E<int>>");
}

TEST(Cycles, OfTypesAreCut) {
    Maker m;
    auto const pointer = m.pointer({});
    pointer.setType(pointer);
    EXPECT_EQ(print(pointer, "p").substr(0, 11), "#unknown# *");
    EXPECT_LT(print(pointer, "p").size(), 40u);

    auto const alias = m.alias("A", {});
    alias.setType(m.qualified("c", alias));
    EXPECT_EQ(print(alias, "x"), "A x");
    EXPECT_EQ(print(alias, "x", true).substr(0, 15), "#unknown# const");
    // Typedefs are written by name below an attribute, so this one ends by itself.
    alias.setType(m.pointer(m.over<zt::TypeAttrType>(alias)));
    EXPECT_EQ(print(alias, "x", true), "A * x");

    auto const function = m.function(m.voidType());
    function.getParamTypesMutable().add(m.pointer(function));
    EXPECT_EQ(print(function), "void /* FunctionType */ (void /* FunctionType */ (#unknown#))");
    auto const result = m.function({});
    result.setRetType(m.pointer(result));
    EXPECT_EQ(print(result), "#unknown# /* FunctionType */ (void)");
}

TEST(Cycles, OfTemplatesAndTheirPrototypesAreCut) {
    Maker m;
    auto const made = m.make<za::Template>("T");
    auto const prototype = m.make<zt::ClassType>("C", m.inside(made));
    made.setProtoTypeInstantiation(prototype);
    for (za::Symbol const& symbol : {za::Symbol(made), za::Symbol(prototype)}) {
        std::string const name = symbol.getFullyQualifiedName();
        EXPECT_TRUE(name.starts_with("#unnamed#::") && name.ends_with("::C")) << name;
        EXPECT_LT(name.size(), 40u);
    }
    EXPECT_EQ(made.generateSignature(), print(prototype));

    auto const first = m.make<za::Template>("First");
    auto const second = m.make<za::Template>("Second");
    first.setProtoTypeInstantiation(second);
    second.setProtoTypeInstantiation(first);
    EXPECT_EQ(first.getFullyQualifiedName(), "#unnamed#");
    EXPECT_EQ(second.generateSignature(), "#unnamed#<#UnknownTemplateArgList#>");
}

TEST(Deep, LayersAreWrittenInFull) {
    Maker m;
    zt::Type type = m.integer();
    for (std::size_t i = 0; i < deep; ++i)
        type = m.pointer(type);
    EXPECT_EQ(print(type), "int" + repeated(" *", deep));

    type = m.integer();
    for (std::size_t i = 0; i < deep; ++i)
        type = m.pointer(m.array(type, {2}));
    EXPECT_EQ(print(type, "p"),
              "int " + repeated("(* ", deep) + "p" + repeated(")", deep) + repeated("[2]", deep));

    type = m.integer();
    for (std::size_t i = 0; i < deep; ++i)
        type = m.alias("A", type);
    EXPECT_EQ(print(type, "x", true), "int x");
}

TEST(Deep, ScopesAreWrittenInFull) {
    Maker m;
    za::Scope scope = m.root();
    for (std::size_t i = 0; i < deep; ++i)
        scope = m.space("n", scope);
    std::string const expected = repeated("n::", deep) + "v";
    EXPECT_EQ(m.variable("v", m.integer(), scope).getFullyQualifiedName(), expected);

    scope = m.root();
    for (std::size_t i = 0; i < deep / 2; ++i)
        scope = m.inside(m.make<za::Function>("n", m.inside(m.make<zt::ClassType>("n", scope))));
    EXPECT_EQ(m.variable("v", m.integer(), scope).getFullyQualifiedName(), expected);
}

TEST(Deep, ListsAreCutAtTheirNesting) {
    constexpr std::size_t limit = 512;
    Maker m;
    zt::Type type = m.integer();
    std::vector<zt::Type> levels;
    for (std::size_t i = 0; i < deep; ++i) {
        type = m.with(m.make<zt::ClassType>("A"), {m.typeArgument(type)});
        levels.push_back(type);
    }
    EXPECT_EQ(levels[limit - 1].getFullyQualifiedName(),
              repeated("A<", limit) + "int" + repeated(">", limit));
    std::string const cut = repeated("A<", limit + 1) + "#unknown#" + repeated(">", limit + 1);
    EXPECT_EQ(levels[limit].getFullyQualifiedName(), cut);
    EXPECT_EQ(type.getFullyQualifiedName(), cut);
    EXPECT_EQ(type.generateSignature(), cut);

    type = m.integer();
    for (std::size_t i = 0; i < deep; ++i)
        type = m.function(m.voidType(), {type});
    EXPECT_NE(print(type).find("(#unknown#)"), std::string::npos);

    za::TemplateArg argument = m.typeArgument(m.integer());
    for (std::size_t i = 0; i < deep; ++i)
        argument = m.typeArgument(m.with(m.alias("V", m.make<zt::NullPtrType>()), {argument}));
    EXPECT_NE(argument.getFullyQualifiedName(false).find("V<#unknown#>"), std::string::npos);
}

TEST(Sharing, DoesNotSpellExponentialTexts) {
    Maker m;
    zt::Type type = m.integer();
    for (int i = 0; i < 100; ++i)
        type = m.with(m.make<zt::ClassType>("A"), {m.typeArgument(type), m.typeArgument(type)});
    std::string const text = type.getFullyQualifiedName();
    EXPECT_LT(text.size(), std::size_t{5} << 20);
    EXPECT_GT(text.size(), std::size_t{1} << 20);
    EXPECT_NE(text.find("#unknown#"), std::string::npos);

    // Every class refers to all: the number of paths is the factorial of theirs.
    std::vector<zt::ClassType> all;
    for (int i = 0; i < 12; ++i)
        all.push_back(m.make<zt::ClassType>("C"));
    for (zt::ClassType const& owner : all)
        for (zt::ClassType const& other : all)
            m.with(owner, {m.typeArgument(other)});
    EXPECT_LT(all[0].getFullyQualifiedName().size(), std::size_t{5} << 20);

    // Long lists at every depth stop with the rest.
    type = m.integer();
    for (int i = 0; i < 3; ++i) {
        auto const function = m.function(m.voidType());
        for (int j = 0; j < 2000; ++j)
            function.getParamTypesMutable().add(type);
        type = function;
    }
    EXPECT_LT(print(type).size(), std::size_t{5} << 20);
}

// Text of what is not there would be wrong, so the kernel's refusal to open a placeholder passes through.
TEST(Placeholders, ThatDoNotResolveAreReported) {
    Maker m;
    auto const placeholder = [&](brant::zero::meta::Class const& metaClass) {
        brant::zero::ProxyId const id{{}, u"00000000-0000-4000-8000-000000000001", nullptr};
        return m.model.createProxy(metaClass, id);
    };
    auto const aggregate = zt::ClassType::cast(placeholder(zt::ClassType::metaClass()));
    auto const function = za::Function::cast(placeholder(za::Function::metaClass()));
    ASSERT_TRUE(aggregate && function);
    EXPECT_ANY_THROW((void)aggregate.getIsTemplate());
    EXPECT_ANY_THROW((void)function.getIsTemplate());
    EXPECT_ANY_THROW((void)aggregate.getFullyQualifiedName());
    EXPECT_ANY_THROW((void)print(m.pointer(aggregate), "p"));
    EXPECT_ANY_THROW((void)function.generateSignature());
    EXPECT_EQ(print(zt::PointerType::cast(placeholder(zt::PointerType::metaClass())), "p"), "#unknown# * p");
}

TEST(Handles, SayWhyTheyCannotBeNamed) {
    Maker m;
    EXPECT_THROW((void)za::Symbol().getFullyQualifiedName(), brant::zero::DeadHandle);
    auto const type = m.integer();
    type.destroy();
    EXPECT_THROW((void)type.generateSignature(), brant::zero::DeadHandle);
    EXPECT_EQ(print(type, "x"), "#unknown# x");
}

} // namespace
