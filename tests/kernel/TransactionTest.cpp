// Levels: how they nest and end, what an abandoned one brings back, and identities.

#include "kernel/Stage.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace testmodel;

namespace {

class TransactionTest : public testing::Test, protected Stage {};

std::u16string nameAfter(std::initializer_list<bool> commits) {
    // Each level sets the name to its depth; the innermost ends first.
    Model const model = newModel();
    za::Macro const macro = za::Macro::create(model);
    macro.setName(u"0");
    std::vector<Transaction> levels;
    for (std::size_t depth = 1; depth <= commits.size(); ++depth) {
        levels.push_back(model.beginTransaction());
        macro.setName(std::u16string(1, char16_t(u'0' + depth)));
    }
    for (auto commit = std::rbegin(commits); commit != std::rend(commits); ++commit) {
        if (*commit)
            levels.back().commit();
        else
            levels.back().rollback();
        levels.pop_back();
    }
    return macro.getName();
}

HandleState stateOf(std::function<void()> const& use) {
    try {
        use();
    } catch (DeadHandle const& dead) {
        return dead.getState();
    }
    return HandleState::Alive;
}

} // namespace

TEST_F(TransactionTest, AnInnerLevelEndsIntoTheOneAroundIt) {
    struct Case {
        std::initializer_list<bool> commits; // outermost first
        char16_t const* name;
    } const cases[] = {{{true}, u"1"},
                       {{false}, u"0"},
                       {{true, true}, u"2"},
                       {{true, false}, u"1"},
                       {{false, true}, u"0"},
                       {{false, false}, u"0"},
                       {{true, true, false}, u"2"},
                       {{true, false, true}, u"1"},
                       {{false, true, true}, u"0"}};
    for (Case const& one : cases)
        EXPECT_EQ(nameAfter(one.commits), one.name);
}

TEST_F(TransactionTest, EndsOnceAndInnermostFirst) {
    {
        Transaction level = model.beginTransaction();
        macro.setName(u"a");
        level.commit();
        level.commit(); // nothing
        level.rollback();
        EXPECT_EQ(macro.getName(), u"a");
    }
    Transaction outer = model.beginTransaction();
    {
        Transaction inner = model.beginTransaction();
        EXPECT_THROW(outer.commit(), std::logic_error);
        macro.setName(u"b");
        inner.commit();
    }
    outer.commit();
    EXPECT_EQ(macro.getName(), u"b");
}

TEST_F(TransactionTest, AStaleLevelTouchesNoLaterOne) {
    Transaction outer = model.beginTransaction();
    auto stale = std::make_unique<Transaction>(model.beginTransaction());
    auto forgotten = std::make_unique<Transaction>(model.beginTransaction());
    outer.rollback();
    Transaction next = model.beginTransaction();
    Transaction second = model.beginTransaction();
    macro.setName(u"a");
    EXPECT_THROW(stale->commit(), std::logic_error);
    stale.reset(); // ends nothing
    forgotten->rollback();
    EXPECT_EQ(macro.getName(), u"a");
    second.commit();
    next.commit();
    EXPECT_EQ(macro.getName(), u"a");
}

TEST_F(TransactionTest, MovedLevelsKeepTheirWork) {
    Transaction first = model.beginTransaction();
    macro.setName(u"a");
    Transaction second = std::move(first);
    first.commit(); // owns nothing any more
    second.rollback();
    EXPECT_EQ(macro.getName(), u"");
}

TEST_F(TransactionTest, AnAbandonedLevelBringsBackWhatItDestroyed) {
    function.setScope(scope);
    scope.getSymbolsMutable().add(one);
    one.setName("v");
    boost::uuids::uuid const identity = one.uuid();
    std::string const before = dump(model);
    {
        Transaction const level = model.beginTransaction();
        function.destroy();
        for (ModelElement const& gone : {ModelElement(function), ModelElement(scope), ModelElement(one)})
            EXPECT_FALSE(gone);
        EXPECT_EQ(model.findElement(identity), nullptr);
        // The identity is free meanwhile.
        za::Macro const other = za::Macro::create(model, identity);
        EXPECT_EQ(model.findElement(identity), other);
    }
    EXPECT_TRUE(function && scope && one);
    EXPECT_EQ(one.getName(), "v");
    EXPECT_EQ(model.findElement(identity), one);
    EXPECT_EQ(firstDifference(before, dump(model)), "");
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(TransactionTest, DeadHandlesSayWhy) {
    za::Macro const null;
    za::Macro destroyed;
    za::Macro rolledBack;
    za::Macro orphan;
    {
        Model const model = newModel();
        destroyed = za::Macro::create(model);
        destroyed.destroy();
        orphan = za::Macro::create(model);
        Transaction const level = model.beginTransaction();
        rolledBack = za::Macro::create(model);
        EXPECT_TRUE(rolledBack);
    }
    struct Case {
        za::Macro const& macro;
        HandleState state;
        char const* said;
    } const cases[] = {{null, HandleState::Null, "null"},
                       {destroyed, HandleState::Destroyed, "destroyed"},
                       {rolledBack, HandleState::RolledBack, "transaction"},
                       {orphan, HandleState::ModelGone, "model"}};
    for (Case const& one : cases) {
        EXPECT_FALSE(one.macro);
        EXPECT_EQ(one.macro == null, one.state == HandleState::Null);
        EXPECT_EQ(std::hash<za::Macro>()(one.macro) == 0, one.state == HandleState::Null);
        EXPECT_EQ(za::Macro::cast(one.macro), nullptr);
        std::function<void()> const uses[] = {
            [&] { static_cast<void>(one.macro.getName()); },
            [&] { one.macro.setName(u"x"); },
            [&] { static_cast<void>(one.macro.uuid()); },
            [&] { static_cast<void>(one.macro.getModel()); },
            [&] { static_cast<void>(one.macro.getMetaClass()); },
            [&] { static_cast<void>(one.macro.container()); },
            [&] { static_cast<void>(one.macro.isProxy()); },
            [&] { one.macro.destroy(); },
            [&] { static_cast<void>(one.macro.getDefPos()); },
            [&] { static_cast<void>(one.macro.getDeclPos()); },
            [&] { static_cast<void>(one.macro.hasPropertyValue(za::Macro::name().getProperty())); },
            [&] { static_cast<void>(one.macro.getPropertyValue(za::Macro::name().getProperty())); },
            [&] { one.macro.setPropertyValue(za::Macro::name().getProperty(), Value()); },
        };
        for (auto const& use : uses)
            EXPECT_EQ(stateOf(use), one.state);
        EXPECT_NE(std::string(DeadHandle(one.state).what()).find(one.said), std::string::npos);
    }
    Model const gone;
    EXPECT_FALSE(gone);
    EXPECT_THROW(static_cast<void>(gone.beginTransaction()), DeadHandle);
    EXPECT_EQ(failureOf([&] { za::Macro::create(gone); }), "CannotCreateWithoutModel");
}

TEST_F(TransactionTest, ACollectionOfADeadElementRefusesChanges) {
    auto& symbols = scope.getSymbolsMutable();
    scope.destroy();
    EXPECT_EQ(stateOf([&] { symbols.add(one); }), HandleState::Destroyed);
    EXPECT_EQ(one.container(), nullptr);
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(TransactionTest, IdentitiesAreChosenOnce) {
    Model const model = newModel();
    za::Macro const fresh = za::Macro::create(model);
    EXPECT_EQ(fresh.uuid().version(), boost::uuids::uuid::version_random_number_based);
    boost::uuids::uuid const chosen = ElementImpl::generateNewUuid();
    za::Macro const first = za::Macro::create(model, chosen);
    EXPECT_EQ(first.uuid(), chosen);
    std::function<void()> const again[] = {
        [&] { za::Macro::create(model, chosen); }, [&] { za::Scope::create(model, chosen); },
        [&] { za::Macro::Builder(model).create(chosen); },
        [&] { za::Function::create(model).createIntoScope(za::Scope::Builder(), chosen); }};
    for (auto const& attempt : again) {
        std::size_t const size = model.size();
        EXPECT_EQ(failureOf(attempt), "UniquenessConstraint");
        EXPECT_LE(model.size(), size + 1);
        EXPECT_EQ(model.findElement(chosen), first);
    }
    EXPECT_TRUE(za::Macro::create(newModel(), chosen)); // another model has its own
    first.destroy();
    EXPECT_EQ(za::Macro::create(model, chosen).uuid(), chosen);
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(TransactionTest, IdentitiesAreFreeAgainAfterARollback) {
    Model const model = newModel();
    boost::uuids::uuid const chosen = ElementImpl::generateNewUuid();
    for (int i = 0; i < 3; ++i) {
        Transaction const level = model.beginTransaction();
        za::Macro::create(model, chosen);
        EXPECT_EQ(failureOf([&] { za::Macro::create(model, chosen); }), "UniquenessConstraint");
    }
    EXPECT_EQ(model.findElement(chosen), nullptr);
    EXPECT_TRUE(za::Macro::create(model, chosen));
}

TEST_F(TransactionTest, TopLevelElementsKeepTheirOrder) {
    Model const model = newModel();
    za::Scope const holder = za::Scope::create(model);
    std::vector<za::Variable> variables;
    for (int i = 0; i < 6; ++i)
        variables.push_back(za::Variable::create(model));
    auto const order = [&] {
        std::vector<ModelElement> elements = model.getTopLevelElements();
        return elements;
    };
    std::vector<ModelElement> const before = order();
    {
        Transaction const level = model.beginTransaction();
        holder.getSymbolsMutable().add(variables[1]);
        holder.getSymbolsMutable().add(variables[5]);
        variables[3].destroy();
        za::Macro::create(model);
        holder.getSymbolsMutable().remove(variables[1]); // last now
        EXPECT_NE(order(), before);
    }
    EXPECT_EQ(order(), before);
    holder.getSymbolsMutable().add(variables[0]);
    holder.getSymbolsMutable().remove(variables[0]);
    EXPECT_EQ(order().back(), variables[0]);
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(TransactionTest, AFrozenModelChangesOnlyWhileThawed) {
    Model::Freezer const freezer(model);
    std::string const before = dump(model);
    EXPECT_THROW(macro.setName(u"x"), std::logic_error);
    EXPECT_THROW(macro.destroy(), std::logic_error);
    EXPECT_THROW(macro.getDeclPosMutable().clear(), std::logic_error);
    EXPECT_EQ(dump(model), before);
    {
        Model::Thawer const outer = freezer.thaw();
        { Model::Thawer const inner = freezer.thaw(); }
        macro.setName(u"y");
    }
    EXPECT_EQ(macro.getName(), u"y");
    EXPECT_THROW(macro.setName(u"x"), std::logic_error);
}

TEST_F(TransactionTest, APlaceholderComesBackWhenItsTargetVanishes) {
    boost::uuids::uuid const chosen = ElementImpl::generateNewUuid();
    std::u16string text;
    for (char const unit : toString(chosen))
        text += static_cast<char16_t>(unit);
    za::Template const proxy(model.createProxy(za::Template::metaClass(), {u"", text, nullptr}).get());
    function.setAssocTemplate(proxy);
    {
        Transaction const level = model.beginTransaction();
        za::Template const target = za::Template::create(model, chosen);
        EXPECT_EQ(function.getAssocTemplate(), target);
    }
    EXPECT_TRUE(function.getAssocTemplate());
    EXPECT_EQ(function.getAssocTemplate(), proxy);
    za::Template const target = za::Template::create(model, chosen);
    EXPECT_EQ(function.getAssocTemplate(), target);
}
