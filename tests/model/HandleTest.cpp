// What handles and the collections behind them offer to code that compiles against them.

#include "kernel/Stage.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <ranges>
#include <type_traits>
#include <unordered_set>

using namespace testmodel;
using za::types::Method;

namespace {

class HandleTest : public testing::Test, protected Stage {};

static_assert(sizeof(ModelElement) == sizeof(void*));
static_assert(sizeof(za::Function) == sizeof(void*) && sizeof(Method) == sizeof(void*));
static_assert(std::is_nothrow_move_constructible_v<za::Function> &&
              std::is_copy_constructible_v<za::Function>);

template <class From, class To>
constexpr bool upcast = std::is_convertible_v<From, To> && !std::is_convertible_v<To, From>;
static_assert(upcast<Method, za::Function> && upcast<za::Function, za::Declaration>);
static_assert(upcast<za::Declaration, za::Symbol> && upcast<za::Symbol, za::source::LocatedObject>);
static_assert(upcast<za::source::LocatedObject, ModelElement>);
static_assert(!std::is_convertible_v<za::Function, za::Variable>);

template <class Range>
using Read = std::remove_reference_t<Range> const;
static_assert(std::ranges::random_access_range<Read<decltype(za::Scope().getSymbols())>>);
static_assert(std::ranges::contiguous_range<Read<decltype(za::Function().getComments())>>);
static_assert(std::ranges::bidirectional_range<Read<decltype(za::Project().getFiles())>>);
static_assert(std::ranges::forward_range<Read<decltype(za::Scope().getVars())>>);
// Reading hands out nothing that changes the model.
static_assert(std::is_const_v<std::remove_reference_t<decltype(za::Scope().getSymbols())>>);
static_assert(!std::is_const_v<std::remove_reference_t<decltype(za::Scope().getSymbolsMutable())>>);

} // namespace

TEST_F(HandleTest, IsAValueThatStandsForItsElement) {
    Model const model = newModel();
    za::Function const function = Method::create(model);
    za::Symbol const symbol = function;
    EXPECT_TRUE(symbol == function);
    EXPECT_EQ(std::hash<za::Symbol>()(symbol), std::hash<ModelElement>()(function));
    std::unordered_set<ModelElement> const set = {symbol, function, za::Scope::create(model)};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(Method::cast(symbol), function);
    EXPECT_EQ(za::Variable::cast(symbol), nullptr);
    EXPECT_EQ(za::Function::cast(nullptr), nullptr);
    function->setName("through the body");
    EXPECT_EQ(function.getName(), "through the body");
    EXPECT_EQ(symbol.getMetaClass(), Method::metaClass());
}

TEST_F(HandleTest, EachClassHasAnObjectThatStandsForIt) {
    EXPECT_EQ(&za::Function::Uuid(), &za::Function::Uuid());
    EXPECT_NE(static_cast<void const*>(&za::Function::Uuid()), static_cast<void const*>(&Method::Uuid()));
}

TEST_F(HandleTest, CollectionsKeepTheirAddressAndReadingOneChangesNothing) {
    std::string const before = dump(model);
    auto const* const params = &function.getParams();
    auto const* const comments = &function.getComments();
    auto const changes = reported(function, [&] {
        for (za::Variable const& param : function.getParams())
            ADD_FAILURE() << param.getName();
        EXPECT_EQ(function.getComments().size(), 0u);
        EXPECT_FALSE(function.getParams().contains(one));
    });
    EXPECT_TRUE(changes.empty());
    EXPECT_EQ(dump(model), before);
    function.getParamsMutable().add(one);
    function.getCommentsMutable().push_back(u"c");
    {
        Transaction const level = model.beginTransaction();
        function.getParamsMutable().clear();
        function.destroy();
    }
    EXPECT_EQ(&function.getParams(), params);
    EXPECT_EQ(&function.getComments(), comments);
    EXPECT_EQ(&function.getParamsMutable(), params);
    EXPECT_EQ(params->size(), 1u);
}

TEST_F(HandleTest, BuildersTakeListsOfElements) {
    za::Function::Builder builder(model);
    builder.addBefriendingAggregates({cls, type}).addBefriendingAggregates(cls).addComments({u"x", u"y"});
    za::Function const function = builder.create();
    auto const& friends = function.getBefriendingAggregates();
    ASSERT_EQ(friends.size(), 3u);
    EXPECT_TRUE(friends[0] == cls && friends[1] == type && friends[2] == cls);
    EXPECT_EQ(function.getComments()[1], u"y");
    za::Function const none = builder.clearBefriendingAggregates().create();
    EXPECT_FALSE(none.hasBefriendingAggregates());
}

// That each class has the terms of its properties, the tests of the generator look at.
TEST(QueryTerm, ASubclassHasItsOwnObjectForTheSameProperty) {
    EXPECT_EQ(&za::Function::name(), &za::Function::name());
    EXPECT_EQ(za::Function::name().attachment().metaClass(), za::Function::metaClass());
    EXPECT_NE(static_cast<void const*>(&za::Function::name()), static_cast<void const*>(&za::Symbol::name()));
    EXPECT_EQ(za::Function::name().getProperty(), za::Symbol::name().getProperty());
    EXPECT_EQ(za::Scope::parent().getProperty(), Core::propertyOf(&za::Scope::Impl::rows[0]));
}

TEST(QueryTerm, TermsOfARunningQueryAreMembers) {
    struct Query : query::AbstractQuery {
    } query;
    za::Function::Constrainables const terms({query, query::SearchClassMatchMode::ClassAndSubclasses});
    EXPECT_EQ(&terms.query(), &query);
    EXPECT_EQ(terms.queriedClass(), za::Function::metaClass());
    EXPECT_EQ(&terms.Scope.attachment().query(), &terms);
    EXPECT_EQ(terms.Name.getProperty(), za::Function::name().getProperty());
}
