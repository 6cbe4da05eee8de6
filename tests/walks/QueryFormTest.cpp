// What queries are as values: text, mistakes, laziness, storing, and models that are not tidy.

#include "walks/QuerySample.hpp"

#include "zelkor/ast/query.hpp"

#include <boost/uuid/uuid_io.hpp>
#include <gtest/gtest.h>

#include <iterator>
#include <ranges>
#include <sstream>
#include <stdexcept>

using namespace querytest;
namespace zs = zelkor::ast::source;
using brant::zero::query::toText;
using F = za::Function;
using V = za::Variable;

namespace {

template <class Call>
std::string complaintOf(Call const& call) {
    try {
        (void)call();
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "none";
}

// What the compiler must refuse.
template <class L, class R>
concept Equatable = requires(L const& l, R const& r) {
    l == r;
};
template <class L, class R>
concept Ordered = requires(L const& l, R const& r) {
    l < r;
};
template <class A, class B>
concept Connectable = requires(A const& a, B const& b) {
    a&& b;
};
using NameTerm = decltype(F::name());
using FlagTerm = decltype(F::isInline());
using CountTerm = decltype(F::numOptionalParams());
using KindTerm = decltype(F::storageClass());
using TypeTerm = decltype(F::type());
static_assert(Equatable<FlagTerm, bool> && !Equatable<FlagTerm, int> && !Ordered<FlagTerm, bool>);
static_assert(Equatable<NameTerm, char[4]> && Ordered<NameTerm, std::string> &&
              !Equatable<NameTerm, std::u16string>);
static_assert(Equatable<CountTerm, long> && Ordered<CountTerm, unsigned> && !Equatable<CountTerm, bool>);
static_assert(Equatable<KindTerm, za::StorageClassKind> && !Ordered<KindTerm, za::StorageClassKind>);
static_assert(!Equatable<KindTerm, za::LinkageKind> && !Equatable<KindTerm, int>);
static_assert(Equatable<TypeTerm, zt::Type> && !Equatable<TypeTerm, bool> && !Ordered<TypeTerm, zt::Type>);
static_assert(!Connectable<FlagTerm, FlagTerm>);
static_assert(std::ranges::input_range<za::Query<F>>);
static_assert(std::copyable<za::Query<F>>);

} // namespace

TEST(QueryText, SaysWhatWasComposed) {
    za::Ast ast;
    auto const scope = za::Scope::create(ast.getModel());
    auto const inlined = F::isInline() == true;
    auto const getter = F::name().startsWith("get");
    auto const many = F::params().count() > 3u;
    struct Row {
        std::string text;
        std::string expected;
    };
    std::string const id = boost::uuids::to_string(scope.uuid());
    Row const rows[] = {
        {toText(inlined), "Function.IsInline == true"},
        {toText(F::name() == "a\"b\\\n"), R"(Function.Name == "a\"b\\\x0a")"},
        {toText(za::Symbol::name() != "x"), R"(Symbol.Name != "x")"},
        {toText(zs::SourceFile::path() <= u"\u00e4"), "source.SourceFile.Path <= u\"\xc3\xa4\""},
        {toText(zs::SourcePosition::line() >= 7), "source.SourcePosition.Line >= 7"},
        {toText(F::storageClass() == za::StorageClassKind::Static),
         "Function.StorageClass == StorageClassKind.Static"},
        {toText(F::storageClass() == static_cast<za::StorageClassKind>(99)),
         "Function.StorageClass == StorageClassKind(99)"},
        {toText(F::name().endsWith("x") && F::name().contains("y") && F::name().matches("z.*")),
         R"(Function.Name.endsWith("x") && Function.Name.contains("y") && Function.Name.matches("z.*"))"},
        {toText(inlined && (getter || many)),
         R"(Function.IsInline == true && (Function.Name.startsWith("get") || Function.Params.count() > 3))"},
        {toText((inlined && getter) || many),
         R"(Function.IsInline == true && Function.Name.startsWith("get") || Function.Params.count() > 3)"},
        {toText(!(inlined || getter)), R"(!(Function.IsInline == true || Function.Name.startsWith("get")))"},
        {toText(F::params().none() || F::params().any(V::type().is<zt::PointerType>())),
         "Function.Params.none() || Function.Params.any(Variable.Type.is(types.PointerType))"},
        {toText(F::params().all(V::name() == "a" || V::name() == "b")),
         R"(Function.Params.all(Variable.Name == "a" || Variable.Name == "b"))"},
        {toText(F::params().count(V::type().isNull()) == 1),
         "Function.Params.count(Variable.Type == null) == 1"},
        {toText(F::defPos().then(zs::SourcePosition::file()).then(zs::SourceFile::isInclude()) == true),
         "Function.DefPos.then(source.SourcePosition.File.then(source.SourceFile.IsInclude)) == true"},
        {toText(V::type().as<zt::PointerType>().then(zt::PointerType::type()).isExactly<zt::VoidType>()),
         "Variable.Type.as(types.PointerType).then(types.PointerType.Type).isExactly(types.VoidType)"},
        {toText(F::owningScope() == scope), "Function.OwningScope == Scope " + id},
        {toText(F::owningScope() != za::Scope()), "Function.OwningScope != null"},
        {toText(za::isA<zt::Type>() &&
                za::satisfies<za::Symbol>("odd", [](za::Symbol const&) { return true; })),
         "isA(types.Type) && [odd]"},
        {za::query<F>(scope).toText(), "Function"},
        {za::query<F>(scope).exactly().where(inlined).where(getter).toText(),
         R"(Function exactly where Function.IsInline == true && Function.Name.startsWith("get"))"},
        {za::query<F>(scope).where(inlined || getter).where(many).toText(),
         R"(Function where (Function.IsInline == true || Function.Name.startsWith("get")) && Function.Params.count() > 3)"},
    };
    for (Row const& row : rows)
        EXPECT_EQ(row.text, row.expected);
    std::ostringstream out;
    out << za::query<F>(scope).where(inlined) << '|' << inlined;
    EXPECT_EQ(out.str(), "Function where Function.IsInline == true|Function.IsInline == true");
}

TEST(QueryMistake, IsToldWhenTheConditionIsMade) {
    EXPECT_EQ(complaintOf([] { return F::params().is<V>(); }),
              "Function.Params refers to many elements; ask any(), all(), none() or count() of it");
    EXPECT_NE(complaintOf([] { return F::params().then(V::name()); }), "none");
    EXPECT_NE(complaintOf([] { return F::params().isNull(); }), "none");
    EXPECT_NE(complaintOf([] { return F::params() == V(); }), "none");
    EXPECT_NE(complaintOf([] { return F::name().matches("("); }).find("'('"), std::string::npos);
    EXPECT_NE(complaintOf([] { return F::name().matches("(a)\\1"); }), "none") << "a back reference";
    EXPECT_NE(complaintOf([] { return za::Pattern(std::string(5000, 'a')); }), "none");
    EXPECT_EQ(complaintOf([] { return F::type().is<zt::PointerType>(); }), "none");
}

TEST(QueryMistake, BoundTermsAreCheckedAgainstTheQuery) {
    Sample const sample(2);
    auto const model = sample.ast.getModel();
    auto const query = za::query<F>(model).where(
        [](F::Constrainables const& f) { return f.IsInline == true && f.Params.any(V::name() == "x"); });
    EXPECT_EQ(
        query.toVector(),
        za::query<F>(model).where(F::isInline() == true && F::params().any(V::name() == "x")).toVector());
    EXPECT_EQ(query.toText(),
              R"(Function where Function.IsInline == true && Function.Params.any(Variable.Name == "x"))");
    EXPECT_GT(query.count(), 0u);
    struct Asked : brant::zero::query::AbstractQuery {
    } asked;
    F::Constrainables const terms({asked, brant::zero::query::SearchClassMatchMode::ClassAndSubclasses});
    EXPECT_EQ(complaintOf([&] { return za::query<V>(model).where(terms.IsInline == true); }),
              "a condition about Function cannot be asked of elements of class Variable");
    EXPECT_EQ(complaintOf([&] { return F::params().any(terms.IsInline == true); }),
              "a condition about Function cannot be asked of elements of class Variable");
    EXPECT_EQ(complaintOf([&] { return terms.IsInline == true && V::initVal().isNull(); }),
              "a condition about Function cannot be asked of elements of class Variable");
    EXPECT_EQ(complaintOf([&] { return za::query<zt::Method>(model).where(terms.IsInline == true); }),
              "none");
}

TEST(QueryValue, LooksNoFurtherThanAsked) {
    Sample const sample(4);
    std::size_t asked = 0;
    auto const query = za::query<F>(sample.ast.getModel()).where(za::satisfies<F>("counted", [&](F const&) {
        ++asked;
        return true;
    }));
    EXPECT_EQ(asked, 0u);
    (void)query.first();
    EXPECT_EQ(asked, 1u);
    auto at = query.begin();
    EXPECT_EQ(asked, 2u);
    ++at;
    EXPECT_EQ(asked, 3u);
    std::size_t const all = query.count();
    EXPECT_EQ(asked, 3u + all);
    EXPECT_GT(all, 10u);
}

TEST(QueryValue, CanBeKeptAndComposedAtRunTime) {
    Sample const sample(5);
    auto const model = sample.ast.getModel();
    std::vector<za::Condition<F>> const conditions{F::isInline() == true,
                                                   za::Symbol::name().startsWith("get"), F::params().any()};
    za::Condition<F> all = conditions[0];
    for (auto const& condition : conditions)
        all = all && condition;
    auto const expected =
        za::query<F>(model).where(F::isInline() == true && F::name().startsWith("get") && F::params().any());
    auto const query = za::query<F>(model).where(all);
    EXPECT_EQ(query.toVector(), expected.toVector());
    EXPECT_GT(query.count(), 0u);
    EXPECT_EQ(toText(all),
              R"(Function.IsInline == true && Function.IsInline == true && Symbol.Name.startsWith("get") && )"
              "Function.Params.any()");
    F const f = F::create(model);
    EXPECT_FALSE(all.test(f));
    f.setIsInline(true);
    EXPECT_TRUE(conditions[0].test(f));
    auto const copy = query;
    EXPECT_EQ(copy.count(), query.count());
    auto iterator = copy.begin();
    auto const moved = std::move(iterator);
    EXPECT_EQ(*moved, query.first());
    EXPECT_EQ(moved->getName(), query.first().getName());
}

TEST(QueryValue, SeesTheModelAsItIs) {
    za::Ast ast;
    auto const scope = za::Scope::create(ast.getModel());
    auto const query = za::query<F>(scope).where(F::name() == "f");
    EXPECT_FALSE(query.exists());
    auto const f = F::create(ast.getModel());
    scope.getSymbolsMutable().add(f);
    auto tx = ast.getModel().beginTransaction();
    f.setName("f");
    EXPECT_EQ(query.first(), f);
    tx.rollback();
    EXPECT_EQ(query.first(), nullptr);
    scope.destroy();
    EXPECT_THROW((void)query.begin(), brant::zero::DeadHandle);
    EXPECT_THROW((void)za::query<F>(za::Scope()).count(), brant::zero::DeadHandle);
}

TEST(QueryValue, DeepModelsAreALoop) {
    za::Ast ast;
    auto tx = ast.getModel().beginTransaction();
    za::Scope const top = za::Namespace::create(ast.getModel());
    za::Scope at = top;
    for (int i = 0; i < 100'000; ++i) {
        za::Scope const inner = za::Namespace::create(ast.getModel());
        at.getNamespacesMutable().add(za::Namespace::cast(inner));
        at = inner;
    }
    at.getSymbolsMutable().add(F::create(ast.getModel()));
    tx.commit();
    EXPECT_EQ(za::query<za::Namespace>(top).count(), 100'000u);
    EXPECT_EQ(za::query<F>(ast.getModel()).first().getOwningScope(), at);
}

TEST(QueryValue, UntidyCollectionsGiveEachElementOnce) {
    za::Ast ast;
    auto const model = ast.getModel();
    auto const a = za::Scope::create(model);
    auto const b = za::Scope::create(model);
    auto const constant = za::constants::IntegerConstant::create(model);
    auto const other = za::constants::IntegerConstant::create(model);
    for (auto const& each : {constant, other, constant})
        a.getConstantsMutable().add(each);
    b.getConstantsMutable().add(other);
    ASSERT_EQ(a.getConstants().size(), 2u) << "one of them twice";
    using C = za::constants::Constant;
    EXPECT_EQ(za::query<C>(a).toVector(), (std::vector<C>{constant}));
    EXPECT_EQ(za::query<C>(model).toVector(), (std::vector<C>{constant, other}));
}

TEST(QueryValue, DeadReferencesAndPlaceholders) {
    za::Ast ast;
    auto const model = ast.getModel();
    auto const variable = V::create(model);
    auto const pointer = zt::PointerType::create(model);
    variable.setType(pointer);
    auto const isPointer = za::query<V>(model).where(V::type().is<zt::PointerType>());
    auto const isNull = za::query<V>(model).where(V::type().isNull());
    EXPECT_TRUE(isPointer.exists());
    pointer.destroy();
    EXPECT_FALSE(isPointer.exists());
    EXPECT_TRUE(isNull.exists());
    brant::zero::ProxyId id;
    id.element = u"00000000-0000-4000-8000-000000000001";
    variable.setType(zt::Type::cast(model.createProxy(zt::PointerType::metaClass(), id)));
    EXPECT_TRUE(isPointer.exists()) << "a placeholder counts as what it stands for";
    EXPECT_EQ(za::query<zt::PointerType>(model).count(), 0u) << "but it is no element of the model";
}

TEST(QueryPattern, LongTextsTakeNoStack) {
    za::Ast ast;
    auto const f = F::create(ast.getModel());
    f.setName(std::string(200'000, 'a'));
    EXPECT_TRUE(za::query<F>(ast.getModel()).where(F::name().matches("(a|b)*")).exists());
    EXPECT_FALSE(za::query<F>(ast.getModel()).where(F::name().matches("(a|b)*c")).exists());
    f.setName(std::string(40, 'a'));
    EXPECT_FALSE(za::query<F>(ast.getModel()).where(F::name().matches("(a*)*b")).exists())
        << "no exponential time";
}

TEST(QueryPattern, MatchesTheWholeText) {
    struct Row {
        char const* pattern;
        char16_t const* text;
        bool expected;
    };
    Row const rows[] = {
        {"", u"", true},          {"", u"a", false},        {"a", u"ab", false},
        {".*b", u"ab", true},     {"\\s+x", u" \tx", true}, {"[[:alpha:]]+", u"ab", true},
        {"a{2,3}", u"aaa", true}, {"a?b", u"b", true},      {"a{2,3}", u"aaaa", false},
    };
    for (Row const& row : rows)
        EXPECT_EQ(za::Pattern(row.pattern).matches(row.text), row.expected) << row.pattern;
    EXPECT_TRUE(za::Pattern("\xc3\xa4").matches(std::u16string(u"\u00e4"))) << "UTF-16 is matched as UTF-8";
    EXPECT_EQ(za::Pattern("a+").text(), "a+");
}
