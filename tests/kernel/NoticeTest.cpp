// What a commit tells its subscribers, and what they may do.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <stdexcept>

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

std::string shortName(meta::Property const& property) {
    return Core::rowOf(property).name;
}

/// A model with elements to play with, and a record of its notices in words.
struct Stage {
    Model model = newModel();
    za::Macro macro = za::Macro::create(model);
    za::Function function = za::Function::create(model);
    za::Scope scope = za::Scope::create(model);
    za::Scope second = za::Scope::create(model);
    za::Variable one = za::Variable::create(model);
    za::Variable two = za::Variable::create(model);
    za::Variable three = za::Variable::create(model);
    std::vector<std::string> notices;

    /// \returns what one transaction reported about an element: its changed properties, in order.
    std::optional<std::vector<std::string>> changesOf(ModelElement const& element,
                                                      std::function<void()> const& change) {
        std::optional<std::vector<std::string>> properties;
        Subscription const subscription = model.onCommit([&](CommitNotice const& notice) {
            for (ElementChange const& entry : notice.changed)
                if (entry.element() == element) {
                    properties.emplace();
                    for (meta::Property const& property : entry.properties())
                        properties->push_back(shortName(property));
                }
        });
        Transaction level = model.beginTransaction();
        change();
        level.commit();
        return properties;
    }
};

std::vector<ModelElement> elementsOf(Value const& old) {
    return old.collection()->asReferences()->getAllValuesAndProxies();
}

using Names = std::vector<std::string>;

} // namespace

TEST(Notice, WhatEndsAsItWasIsNoChange) {
    struct Case {
        char const* what;
        std::function<void(Stage&)> prepare;
        std::function<ModelElement(Stage&)> element;
        std::function<void(Stage&)> change;
        std::optional<Names> expected;
    };
    auto macro = [](Stage& s) { return ModelElement(s.macro); };
    auto function = [](Stage& s) { return ModelElement(s.function); };
    auto scope = [](Stage& s) { return ModelElement(s.scope); };
    auto one = [](Stage& s) { return ModelElement(s.one); };
    auto nothing = [](Stage&) {};
    Case const cases[] = {
        {"attribute set and set back",
         nothing,
         macro,
         [](Stage& s) {
             s.macro.setName(u"a");
             s.macro.setName(u"");
         },
         {}},
        {"attribute set", nothing, macro,
         [](Stage& s) {
             s.macro.setName(u"a");
             s.macro.setIsUndef(true);
         },
         Names{"Name", "IsUndef"}},
        {"equal value", nothing, macro, [](Stage& s) { s.macro.setName(u""); }, {}},
        {"member added and removed",
         nothing,
         scope,
         [](Stage& s) {
             s.scope.getSymbolsMutable().add(s.one);
             s.scope.getSymbolsMutable().remove(s.one);
         },
         {}},
        {"the only member removed and added again",
         [](Stage& s) { s.scope.getSymbolsMutable().add(s.one); },
         scope,
         [](Stage& s) {
             s.scope.getSymbolsMutable().remove(s.one);
             s.scope.getSymbolsMutable().add(s.one);
         },
         {}},
        {"one of two members removed and added again",
         [](Stage& s) {
             s.scope.getSymbolsMutable().add(s.one);
             s.scope.getSymbolsMutable().add(s.two);
         },
         scope,
         [](Stage& s) {
             s.scope.getSymbolsMutable().remove(s.two);
             s.scope.getSymbolsMutable().add(s.two);
         },
         Names{"Symbols"}},
        {"list of values changed and changed back",
         [](Stage& s) { s.function.getCommentsMutable().push_back(u"c"); }, function,
         [](Stage& s) {
             s.function.getCommentsMutable().clear();
             s.function.getCommentsMutable().push_back(u"c");
         },
         Names{"Comments"}},
        {"empty list of values filled and emptied",
         nothing,
         function,
         [](Stage& s) {
             s.function.getCommentsMutable().push_back(u"c");
             s.function.getCommentsMutable().clear();
         },
         {}},
        {"reference set and set back",
         nothing,
         function,
         [](Stage& s) {
             s.function.setScope(s.scope);
             s.function.setScope({});
         },
         {}},
        {"reference moved to another", [](Stage& s) { s.function.setScope(s.scope); }, function,
         [](Stage& s) { s.function.setScope(s.second); }, Names{"Scope"}},
        {"container left and entered again",
         [](Stage& s) { s.scope.getSymbolsMutable().add(s.one); },
         one,
         [](Stage& s) {
             s.one.setOwningScope({});
             s.one.setOwningScope(s.scope);
         },
         {}},
        {"container left by one end and entered by another",
         [](Stage& s) { s.scope.getSymbolsMutable().add(s.one); }, one,
         [](Stage& s) { s.function.getParamsMutable().add(s.one); },
         Names{"OwningScope", "OwningFunPrototype"}},
        {"container passed through", [](Stage& s) { s.scope.getSymbolsMutable().add(s.one); }, one,
         [](Stage& s) {
             s.function.getParamsMutable().add(s.one);
             s.second.getSymbolsMutable().add(s.one);
         },
         Names{"OwningScope"}},
        {"inner level abandoned",
         nothing,
         macro,
         [](Stage& s) {
             Transaction const inner = s.model.beginTransaction();
             s.macro.setName(u"a");
         },
         {}},
        {"placeholder replaced by its target",
         [](Stage& s) {
             s.function.setAssocTemplate(za::Template(
                 s.model.createProxy(za::Template::metaClass(), {u"", u"nowhere", nullptr}).get()));
         },
         function, [](Stage& s) { s.function.setAssocTemplate(za::Template::create(s.model)); },
         Names{"AssocTemplate"}},
    };
    for (Case const& one_ : cases) {
        Stage stage;
        one_.prepare(stage);
        auto const found = stage.changesOf(one_.element(stage), [&] { one_.change(stage); });
        EXPECT_EQ(found, one_.expected) << one_.what;
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

TEST(Notice, OldCollectionsAreThoseOfTheStart) {
    struct Case {
        char const* what;
        std::function<void(Stage&)> change;
    } const cases[] = {
        {"add", [](Stage& s) { s.scope.getSymbolsMutable().add(s.three); }},
        {"insert in front", [](Stage& s) { s.scope.getSymbolsMutable().insert(0, s.three); }},
        {"remove", [](Stage& s) { s.scope.getSymbolsMutable().remove(s.one); }},
        {"clear", [](Stage& s) { s.scope.getSymbolsMutable().clear(); }},
        {"clear and fill",
         [](Stage& s) {
             s.scope.getSymbolsMutable().clear();
             s.scope.getSymbolsMutable().add(s.three);
         }},
        {"assign", [](Stage& s) { s.scope.getSymbolsMutable().assign(0, s.three); }},
        {"swap", [](Stage& s) { s.scope.getSymbolsMutable().genericEnsureAt(s.two, 0); }},
        {"destroy a member", [](Stage& s) { s.one.destroy(); }},
        {"move a member away", [](Stage& s) { s.second.getSymbolsMutable().add(s.one); }},
        {"view", [](Stage& s) { s.scope.getVarsMutable().clear(); }},
        {"many steps",
         [](Stage& s) {
             for (int i = 0; i < 50; ++i) {
                 s.scope.getSymbolsMutable().insert(i % 2, za::Variable::create(s.model));
                 s.scope.getSymbolsMutable().erase(std::size_t(i % 3) % s.scope.getSymbols().size());
             }
         }},
    };
    for (Case const& one : cases) {
        SCOPED_TRACE(one.what);
        Stage s;
        s.scope.getSymbolsMutable().add(s.one);
        s.scope.getSymbolsMutable().add(s.two);
        int calls = 0;
        Subscription const subscription = s.model.onCommit([&](CommitNotice const& notice) {
            for (ElementChange const& change : notice.changed)
                if (change.element() == s.scope && calls++ == 0) {
                    meta::Property const symbols = za::Scope::symbols().getProperty();
                    // Writing first: the old value is that of the commit all the same.
                    s.scope.getSymbolsMutable().clear();
                    s.scope.getSymbolsMutable().add(za::Variable::create(s.model));
                    EXPECT_EQ(elementsOf(change.oldValue(symbols)),
                              (std::vector<ModelElement>{s.one, s.two}));
                    EXPECT_EQ(change.oldValue(za::Scope::annotations().getProperty()).flags(),
                              ValueFlags::Absent);
                    throw std::runtime_error("enough");
                }
        });
        EXPECT_EQ(failureOf([&] {
                      Transaction level = s.model.beginTransaction();
                      one.change(s);
                      level.commit();
                  }),
                  "enough");
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
