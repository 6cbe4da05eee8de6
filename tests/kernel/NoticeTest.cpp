// What a commit tells its subscribers, and what they may do.

#include "kernel/Stage.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace testmodel;

namespace {

std::vector<ModelElement> elementsOf(Value const& old) {
    return old.collection()->asReferences()->getAllValuesAndProxies();
}

/// \returns the properties of an element that the commits of a call reported, in order and with blanks
/// between.
std::string changesOf(ModelElement const& element, std::function<void()> const& call) {
    std::string properties;
    Subscription const subscription = element.getModel().onCommit([&](CommitNotice const& notice) {
        for (ElementChange const& entry : notice.changed)
            for (meta::Property const& property : entry.properties())
                if (entry.element() == element)
                    properties.append(properties.empty() ? "" : " ").append(Core::rowOf(property).name);
    });
    call();
    return properties;
}

using Names = std::vector<std::string>;

} // namespace

TEST(Notice, WhatEndsAsItWasIsNoChange) {
    struct Case {
        char const* element;
        char const* before;
        char const* change;
        char const* expected;
    } const cases[] = {
        {"macro", "", "macro.Name = a; macro.Name = ''", ""},
        {"macro", "", "macro.Name = ''", ""},
        {"macro", "", "macro.IsUndef = true; macro.Name = a", "Name IsUndef"},
        {"scope", "", "scope.Symbols = one; scope.Symbols -= one", ""},
        {"scope", "scope.Symbols = one", "scope.Symbols -= one; scope.Symbols = one", ""},
        {"scope", "scope.Symbols = two; scope.Symbols = one", "scope.Symbols -= one; scope.Symbols = one",
         "Symbols"}, // two and more are not compared
        {"function", "function.Comments = c", "function.Comments -= c; function.Comments = c", "Comments"},
        {"function", "", "function.Comments = c; function.Comments -= c", ""},
        {"function", "", "function.Scope = scope; function.Scope = null", ""},
        {"function", "function.Scope = scope", "function.Scope = second", "Scope"},
        {"function", "function.AssocTemplate = lost", "function.AssocTemplate = assoc", "AssocTemplate"},
        {"one", "scope.Symbols = one", "one.OwningScope = null; one.OwningScope = scope", ""},
        {"one", "scope.Symbols = one", "function.Params = one", "OwningScope OwningFunPrototype"},
        {"one", "scope.Symbols = one", "function.Params = one; second.Symbols = one", "OwningScope"},
    };
    for (Case const& each : cases) {
        Stage s;
        s.does(each.before);
        auto const change = [&] {
            Transaction level = s.model.beginTransaction();
            s.does(each.change);
            {
                Transaction const abandoned = s.model.beginTransaction();
                s.macro.setText(u"never");
            }
            level.commit();
        };
        EXPECT_EQ(changesOf(s.named(each.element), change), each.expected)
            << each.before << ", " << each.change;
    }
}

TEST(Notice, TellsTheCreatedTheChangedAndTheDestroyed) {
    Stage s;
    s.one.setName("old");
    s.scope.getSymbolsMutable().add(s.one);
    boost::uuids::uuid const gone = s.one.uuid();
    ModelElement made;
    int calls = 0;
    Subscription const subscription = s.model.onCommit([&](CommitNotice const& notice) {
        ++calls;
        ASSERT_EQ(notice.created.size(), 1u);
        EXPECT_EQ(notice.created[0], made);
        ASSERT_EQ(notice.destroyed.size(), 1u);
        ElementChange const& end = notice.destroyed[0];
        EXPECT_EQ(end.uuid(), gone);
        EXPECT_FALSE(end.element());
        EXPECT_EQ(end.getMetaClass(), za::Variable::metaClass());
        EXPECT_EQ(end.oldValue(za::Variable::name().getProperty()).getValue<std::string>(), "old");
        EXPECT_EQ(end.oldValue(za::Variable::owningScope().getProperty()).getValue<ModelElement>(), s.scope);
        ASSERT_EQ(notice.changed.size(), 1u);
        EXPECT_EQ(notice.changed[0].element(), s.scope);
        EXPECT_EQ(elementsOf(notice.changed[0].oldValue(za::Scope::symbols().getProperty())),
                  std::vector<ModelElement>{s.one});
        // Both ends agree.
        EXPECT_FALSE(s.scope.hasSymbols());
        EXPECT_EQ(violationOf(s.model), "");
    });
    Transaction level = s.model.beginTransaction();
    made = za::Macro::create(s.model);
    za::Macro::create(s.model).destroy(); // never was
    s.one.setName("later");
    s.one.destroy();
    level.commit();
    EXPECT_EQ(calls, 1);
}

// What the collection's own operations leave of the old content, its random walk looks at.
TEST(Notice, OldCollectionsAreThoseOfTheStart) {
    std::pair<char const*, std::function<void(Stage&)>> const cases[] = {
        {"destroy a member", [](Stage& s) { s.one.destroy(); }},
        {"move a member away", [](Stage& s) { s.second.getSymbolsMutable().add(s.one); }},
        {"by a view", [](Stage& s) { s.scope.getVarsMutable().clear(); }},
    };
    for (auto const& [what, change] : cases) {
        SCOPED_TRACE(what);
        Stage s;
        s.scope.getSymbolsMutable().add(s.one);
        s.scope.getSymbolsMutable().add(s.two);
        int calls = 0;
        Subscription const subscription = s.model.onCommit([&](CommitNotice const& notice) {
            for (ElementChange const& entry : notice.changed)
                if (entry.element() == s.scope && calls++ == 0) {
                    // Writing first: the old value is that of the commit all the same.
                    s.scope.getSymbolsMutable().clear();
                    s.scope.getSymbolsMutable().add(s.three);
                    EXPECT_EQ(elementsOf(entry.oldValue(za::Scope::symbols().getProperty())),
                              (std::vector<ModelElement>{s.one, s.two}));
                    EXPECT_EQ(entry.oldValue(za::Scope::annotations().getProperty()).flags(),
                              ValueFlags::Absent);
                    throw std::runtime_error("enough");
                }
        });
        EXPECT_EQ(failureOf([&, &change = change] { change(s); }), "enough");
        EXPECT_GE(calls, 1);
    }
}

TEST(Notice, TheOldValueIsThatBeforeTheFirstOfSeveralChanges) {
    Stage s;
    s.macro.setName(u"start");
    s.function.setScope(s.scope);
    auto const twice = [&](auto first, auto second) {
        Transaction outer = s.model.beginTransaction();
        first();
        Transaction inner = s.model.beginTransaction();
        second();
        inner.commit();
        outer.commit();
    };
    auto const name = reported(
        s.macro, [&] { twice([&] { s.macro.setName(u"between"); }, [&] { s.macro.setName(u"end"); }); });
    EXPECT_EQ(name.at("Name").getValue<std::u16string>(), u"start");
    auto const reference = reported(
        s.function, [&] { twice([&] { s.function.setScope(s.second); }, [&] { s.function.setScope({}); }); });
    EXPECT_EQ(reference.at("Scope").getValue<ModelElement>(), s.scope);
    auto const inner = reported(s.macro, [&] { twice([] {}, [&] { s.macro.setName(u"later"); }); });
    EXPECT_EQ(inner.at("Name").getValue<std::u16string>(), u"end");
}

TEST(Notice, ALoneSetterIsACommitAndAnEmptyOneIsNone) {
    Stage s;
    int calls = 0;
    Subscription const subscription = s.model.onCommit([&](CommitNotice const&) { ++calls; });
    s.macro.setName(u"a");
    EXPECT_EQ(calls, 1);
    s.macro.setName(u"a");
    s.model.beginTransaction().commit();
    {
        Transaction level = s.model.beginTransaction();
        s.macro.setName(u"b");
        s.macro.setName(u"a");
        level.commit();
    }
    {
        Transaction const level = s.model.beginTransaction();
        s.macro.setName(u"b");
    }
    EXPECT_EQ(calls, 1);
}

TEST(Notice, AThrowReachesTheCommitterAfterAllCallbacks) {
    Stage s;
    std::vector<int> calls;
    Subscription const first = s.model.onCommit([&](CommitNotice const&) {
        calls.push_back(1);
        throw std::runtime_error("first");
    });
    Subscription const second = s.model.onCommit([&](CommitNotice const&) {
        calls.push_back(2);
        throw std::runtime_error("second");
    });
    EXPECT_EQ(failureOf([&] { s.macro.setName(u"a"); }), "first");
    EXPECT_EQ(calls, (std::vector<int>{1, 2}));
    EXPECT_EQ(s.macro.getName(), u"a");
    EXPECT_EQ(failureOf([&] {
                  Transaction level = s.model.beginTransaction();
                  s.scope.getSymbolsMutable().add(s.one);
                  level.commit();
              }),
              "first");
    EXPECT_EQ(s.one.getOwningScope(), s.scope);
    EXPECT_EQ(failureOf([&] { s.scope.getSymbolsMutable().add(s.two); }), "first");
    EXPECT_EQ(s.two.getOwningScope(), s.scope);
    // No level was left open.
    s.model.beginTransaction().rollback();
    EXPECT_EQ(s.macro.getName(), u"a");
}

TEST(Notice, CommitsInsideACallbackAreDeliveredAfterwards) {
    Stage s;
    std::vector<std::string> log;
    Subscription const writer = s.model.onCommit([&](CommitNotice const& notice) {
        log.push_back("writer " + std::to_string(notice.created.size()));
        if (notice.created.empty()) za::Macro::create(s.model);
        log.emplace_back("writer ends");
    });
    Subscription const reader = s.model.onCommit([&](CommitNotice const& notice) {
        log.push_back("reader " + std::to_string(notice.created.size()));
    });
    s.macro.setName(u"a");
    EXPECT_EQ(log, (Names{"writer 0", "writer ends", "reader 0", "writer 1", "writer ends", "reader 1"}));
}

TEST(Notice, ASubscriptionEndsWhenItIsDropped) {
    Stage s;
    int calls = 0;
    Subscription first = s.model.onCommit([&](CommitNotice const&) { ++calls; });
    Subscription second = std::move(first);
    s.macro.setName(u"a");
    EXPECT_EQ(calls, 1);
    second = Subscription();
    s.macro.setName(u"b");
    EXPECT_EQ(calls, 1);
    // A callback may drop itself and others.
    Subscription third;
    Subscription fourth;
    third = s.model.onCommit([&](CommitNotice const&) {
        ++calls;
        third.cancel();
        fourth.cancel();
    });
    fourth = s.model.onCommit([&](CommitNotice const&) { calls += 100; });
    s.macro.setName(u"c");
    s.macro.setName(u"d");
    EXPECT_EQ(calls, 2);
    Subscription outlives;
    {
        Model const model = newModel();
        outlives = model.onCommit([](CommitNotice const&) {});
    }
}

TEST(Notice, ACallbackMayDestroyWhatChanged) {
    Stage s;
    Names log;
    Subscription const subscription = s.model.onCommit([&](CommitNotice const& notice) {
        for (ElementChange const& change : notice.changed) {
            log.push_back("changed");
            if (change.element()) change.element().destroy();
            for (meta::Property const& property : change.properties())
                static_cast<void>(change.oldValue(property));
        }
        for (ElementChange const& change : notice.destroyed)
            log.push_back("destroyed " + std::to_string(change.element() == s.scope));
    });
    s.scope.getSymbolsMutable().add(s.one);
    EXPECT_FALSE(s.scope);
    EXPECT_FALSE(s.one);
    EXPECT_EQ(violationOf(s.model), "");
    EXPECT_EQ(log.front(), "changed");
    EXPECT_NE(std::find(log.begin(), log.end(), "destroyed 1"), log.end());
}

TEST(Notice, TheLastModelHandleMayGoInsideACallback) {
    auto model = std::make_unique<Model>(newModel());
    za::Macro const macro = za::Macro::create(*model);
    Subscription const subscription = model->onCommit([&](CommitNotice const&) { model.reset(); });
    macro.setName(u"a");
    EXPECT_EQ(model, nullptr);
    EXPECT_FALSE(macro);
}
