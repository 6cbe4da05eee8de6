// Builders: what they hold, what they make, and what they leave behind when they fail.

#include "kernel/Stage.hpp"

#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <stdexcept>

using namespace testmodel;

namespace {

class BuilderTest : public testing::Test, protected Stage {};

std::unique_ptr<za::Variable::Builder> variable(std::string name) {
    auto builder = std::make_unique<za::Variable::Builder>();
    builder->setName(std::move(name));
    return builder;
}

/// A chain of builders, the outermost first; `downward` says from which end it is put together.
template <class Give>
std::unique_ptr<za::Scope::Builder> chain(std::size_t depth, bool downward, Give give) {
    auto outermost = std::make_unique<za::Scope::Builder>();
    za::Scope::Builder* at = outermost.get();
    for (std::size_t i = 0; i < depth; ++i) {
        auto next = std::make_unique<za::Scope::Builder>();
        za::Scope::Builder* const below = next.get();
        if (downward) {
            give(*at, std::move(next));
            at = below;
        } else {
            give(*next, std::move(outermost));
            outermost = std::move(next);
        }
    }
    return outermost;
}

} // namespace

TEST_F(BuilderTest, TheGivenBitCounts) {
    Model const model = newModel();
    za::Function::Builder builder(model);
    EXPECT_EQ(builder.setProperties().size(), za::Function::Impl::table.count);
    EXPECT_TRUE(builder.setProperties().none());
    builder.addParams(variable("p")).clearParams().addComments(u"c").clearComments();
    PropertyRow const& params = Core::rowOf(za::Function::params().getProperty());
    EXPECT_TRUE(builder.isGiven(params.index));
    EXPECT_EQ(builder.setProperties().count(), 2u);
    za::Function const function = builder.create();
    EXPECT_FALSE(function.hasParams());
    EXPECT_FALSE(function.hasComments());
    // Reflection reaches the rungs of the superclasses.
    za::Macro::Builder macro(model);
    std::unique_ptr<Builder> position = std::make_unique<za::source::SourcePosition::Builder>();
    macro.setOrAdd(za::Macro::defPos().getProperty(), position);
    EXPECT_TRUE(macro.isGiven(1));
    EXPECT_TRUE(macro.create().getDefPos());
}

TEST_F(BuilderTest, WhatItDoesNotTakeStaysWithTheCaller) {
    Model const model = newModel();
    struct Case {
        char const* what;
        meta::Property property;
        std::unique_ptr<Builder> sub;
        char const* failure;
    };
    Case cases[] = {
        {"wrong class", za::Function::params().getProperty(), std::make_unique<za::Macro::Builder>(),
         "CannotAddIncompatibleTypes"},
        {"plain reference", za::Function::assocTemplate().getProperty(),
         std::make_unique<za::Template::Builder>(), "NoSuchProperty"},
        {"property of another class", za::Macro::name().getProperty(), std::make_unique<za::Macro::Builder>(),
         "NoSuchProperty"},
        {"container end", za::Function::owningScope().getProperty(), std::make_unique<za::Scope::Builder>(),
         "NoSuchProperty"},
        {"null", za::Function::params().getProperty(), nullptr, "NoSuchProperty"},
        {"no property", meta::Property(), std::make_unique<za::Variable::Builder>(), "NoSuchProperty"},
    };
    for (Case& one : cases) {
        za::Function::Builder builder(model);
        Builder* const given = one.sub.get();
        EXPECT_EQ(failureOf([&] { builder.setOrAdd(one.property, one.sub); }), one.failure) << one.what;
        EXPECT_EQ(one.sub.get(), given) << one.what;
        EXPECT_TRUE(builder.setProperties().none()) << one.what;
    }
    za::Function::Builder builder(model);
    EXPECT_EQ(failureOf([&] { builder.setOrAdd(za::Function::params().getProperty(), Value()); }),
              "NoSuchProperty");
    EXPECT_TRUE(builder.setProperties().none());
}

TEST_F(BuilderTest, AValueWithoutItsBitIsNotGiven) {
    struct Quiet : za::Macro::Impl::BuilderBase<Quiet> {
        [[nodiscard]] ClassTable const& classTable() const noexcept override {
            return za::Macro::Impl::table;
        }
        void whisper() {
            doSetName(u"unheard");
            doSetText(u"heard");
            given<Quiet>(Core::rowOf(za::Macro::text().getProperty()).index);
        }
    } builder;
    builder.setModel(newModel());
    builder.whisper();
    za::Macro const macro = za::Macro::cast(builder.createElement());
    EXPECT_EQ(macro.getName(), u"");
    EXPECT_EQ(macro.getText(), u"heard");
}

TEST_F(BuilderTest, MakesContentsInPropertyOrderEachSubtreeWhole) {
    Model const model = newModel();
    auto const position = [] { return std::make_unique<za::source::SourcePosition::Builder>(); };
    auto scope = std::make_unique<za::Scope::Builder>();
    scope->addSymbols(variable("local"));
    auto body = std::make_unique<za::source::SourceRange::Builder>();
    body->setEnd(position()).setStart(position());
    za::Function::Builder builder(model);
    // Given in another order than they are made.
    builder.addDeclPos(position()).setDefPos(position());
    builder.addAnnotations(std::make_unique<za::codeinsight::PtrInfo::Builder>());
    builder.addTemplateArgs(std::make_unique<za::TemplateArg::Builder>());
    builder.addParams(variable("p")).setScope(std::move(scope)).setBodyPosition(std::move(body));
    builder.setName("f").addComments({u"one", u"two"});
    builder.addBefriendingAggregates(za::types::ClassType::create(model));
    std::vector<std::string> order;
    std::set<boost::uuids::uuid> identities;
    Subscription const subscription = model.onCommit([&](CommitNotice const& notice) {
        for (ModelElement const& element : notice.created) {
            PropertyRow const* const held = element.get()->containmentRow();
            order.emplace_back(held == nullptr ? "top" : held->name);
            identities.insert(element.uuid());
        }
        EXPECT_TRUE(notice.changed.empty()); // what is given at birth is no change
    });
    za::Function const function = builder.create();
    EXPECT_EQ(function.getName(), "f");
    EXPECT_EQ(function.getComments().size(), 2u);
    EXPECT_EQ(function.getParams()[0].getName(), "p");
    EXPECT_EQ(function.getParams()[0].getOwningFunPrototype(), function);
    EXPECT_EQ(function.getScope().getSymbols()[0].getOwningScope(), function.getScope());
    EXPECT_EQ(violationOf(model), "");
    // What was not given has the default of the schema, not zero.
    EXPECT_EQ(function.getSpecialKind(), za::Function::create(newModel()).getSpecialKind());
    EXPECT_NE(static_cast<int>(function.getSpecialKind()), 0);
    EXPECT_EQ(order,
              (std::vector<std::string>{"top", "BodyPosition", "Start", "End", "Scope", "Symbols", "Params",
                                        "TemplateArgs", "Annotations", "DefPos", "DeclPos"}));
    EXPECT_EQ(identities.size(), order.size());
}

TEST_F(BuilderTest, ReachedTwiceInOneOrchestrationMakesOneElement) {
    Model const model = newModel();
    za::Macro::Builder outer(model);
    za::Macro::Builder builder(model);
    {
        Builder::Orchestrator orchestrator(&outer);
        EXPECT_EQ(orchestrator.getCreatedElement(&builder), nullptr);
        orchestrator.addBuilder(&builder);
        ModelElement const first = builder.doCreate(false, {});
        EXPECT_EQ(builder.doCreate(false, {}), first);
        EXPECT_EQ(orchestrator.getCreatedElement(&builder), first);
        EXPECT_EQ(model.size(), 1u);
        za::Macro::Builder another(model);
        Builder::Orchestrator second(&another);
        EXPECT_THROW(second.addBuilder(&builder), std::logic_error);
        EXPECT_EQ(orchestrator.getCreatedElement(&builder), first);
    }
    EXPECT_EQ(model.size(), 0u);
    EXPECT_NE(builder.create(), builder.create());
}

TEST_F(BuilderTest, ASecondSingleBuilderEndsTheFirst) {
    struct Witness : za::Scope::Impl::BuilderBase<Witness> {
        explicit Witness(bool& ended) : ended_(ended) {}
        ~Witness() override { ended_ = true; }
        [[nodiscard]] ClassTable const& classTable() const noexcept override {
            return za::Scope::Impl::table;
        }
        using Element = za::Scope;
        bool& ended_;
    };
    bool ended = false;
    za::Function::Builder builder(newModel());
    builder.setScope(std::make_unique<Witness>(ended));
    EXPECT_FALSE(ended);
    builder.setScope(std::make_unique<za::Scope::Builder>());
    EXPECT_TRUE(ended);
}

TEST_F(BuilderTest, AFailureLeavesNothing) {
    Model const other = newModel();
    std::function<void()> const attempts[] = {
        [&] { za::Function::Builder(model).setName("f").create(macro.uuid()); },
        [&] { za::Function::Builder(model).setAssocTemplate(za::Template::create(other)).create(); },
        [&] {
            auto param = variable("p");
            param->setType(za::types::VoidType::create(other));
            za::Function::Builder(model).addParams(variable("ok")).addParams(std::move(param)).create();
        },
        [&] {
            auto first = std::make_unique<za::source::SourceFile::Builder>();
            auto second = std::make_unique<za::source::SourceFile::Builder>();
            first->setPath(u"/same");
            second->setPath(u"/same");
            za::Project::Builder(model).addFiles(std::move(first)).addFiles(std::move(second)).create();
        },
    };
    std::string const before = dump(model);
    for (auto const& attempt : attempts) {
        EXPECT_NE(failureOf(attempt), "");
        EXPECT_EQ(firstDifference(before, dump(model)), "");
    }
    EXPECT_EQ(failureOf([] { za::Macro::Builder().create(); }), "CannotCreateWithoutModel");
}

TEST_F(BuilderTest, CreateIntoPutsTheElementInPlaceOrNowhere) {
    boost::uuids::uuid const chosen = ElementImpl::generateNewUuid();
    za::Scope const scope = function.createIntoScope(za::Scope::Builder(), chosen);
    EXPECT_EQ(scope.uuid(), chosen);
    EXPECT_EQ(function.getScope(), scope);
    za::Variable::Builder named;
    named.setName("v");
    za::Symbol const symbol = scope.createIntoSymbols(named);
    EXPECT_EQ(symbol.getOwningScope(), scope);
    za::source::SourceFile::Builder file;
    file.setPath(u"/a");
    project.createIntoFiles(file);
    std::string const before = dump(model);
    EXPECT_EQ(failureOf([&] { project.createIntoFiles(file); }), "UniquenessConstraint");
    EXPECT_EQ(firstDifference(before, dump(model)), "");
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(BuilderTest, WithoutCascadeNothingIsAnnounced) {
    Model const model = newModel();
    za::Function::Builder builder(model);
    builder.setName("f").addParams(variable("p"));
    std::size_t created = 0;
    Subscription const subscription =
        model.onCommit([&](CommitNotice const& notice) { created += notice.created.size(); });
    za::Function const function = za::Function::cast(builder.doCreate(true, {}));
    EXPECT_EQ(created, 0u);
    EXPECT_EQ(function.getName(), "f");
    EXPECT_FALSE(function.hasParams());
}

TEST_F(BuilderTest, NestingHasALimitFromBothEnds) {
    std::size_t const limit = Builder::nestingLimit;
    auto const typed = [](za::Scope::Builder& outer, std::unique_ptr<za::Scope::Builder> inner) {
        outer.addNamespaces(std::move(inner));
    };
    auto const generic = [](za::Scope::Builder& outer, std::unique_ptr<za::Scope::Builder> inner) {
        std::unique_ptr<Builder> sub = std::move(inner);
        outer.setOrAdd(za::Scope::namespaces().getProperty(), sub);
    };
    for (bool const downward : {false, true}) {
        EXPECT_NO_THROW(chain(limit, downward, typed));
        EXPECT_THROW(chain(limit + 1, downward, typed), std::length_error);
        EXPECT_NO_THROW(chain(limit, downward, generic));
        EXPECT_THROW(chain(limit + 1, downward, generic), std::length_error);
    }
    Model const model = newModel();
    auto deepest = chain(limit, true, typed);
    deepest->setModel(model);
    za::Scope const made = deepest->create();
    EXPECT_TRUE(made);
    EXPECT_EQ(model.size(), limit + 1);
}

TEST_F(BuilderTest, WhatWasMadeSilentlyTakesPartInTransactions) {
    Model const model = newModel();
    za::Macro const macro = za::Macro::cast(za::Macro::Builder(model).setName(u"a").doCreate(true, {}));
    {
        Transaction const level = model.beginTransaction();
        macro.setName(u"b");
    }
    EXPECT_EQ(macro.getName(), u"a");
    za::Macro gone;
    {
        Transaction const level = model.beginTransaction();
        gone = za::Macro::cast(za::Macro::Builder(model).doCreate(true, {}));
        EXPECT_TRUE(gone);
    }
    EXPECT_FALSE(gone);
    EXPECT_EQ(model.size(), 1u);
}
