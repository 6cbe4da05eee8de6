// The end of elements: order, what refers to them, depth, and models that end as a whole.

#include "kernel/Stage.hpp"

#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"

#include <boost/optional/optional.hpp>
#include <gtest/gtest.h>

#include <optional>

using namespace testmodel;

namespace {

class DestructionTest : public testing::Test, protected Stage {};

constexpr std::size_t deep = 1000000;

/// Scopes nested in each other, built from the outside in.
za::Scope nest(Model const& model, std::size_t depth) {
    Transaction level = model.beginTransaction();
    za::Scope const outermost = za::Scope::create(model);
    za::Scope at = outermost;
    for (std::size_t i = 1; i < depth; ++i) {
        za::Scope const next = za::Scope::create(model);
        at.getNamespacesMutable().add(next);
        at = next;
    }
    level.commit();
    return outermost;
}

} // namespace

TEST_F(DestructionTest, ReportsChildrenBeforeTheirOwnersInPropertyOrder) {
    Model const model = newModel();
    za::Function const function = za::Function::create(model);
    auto const body = za::source::SourceRange::create(model);
    za::Scope const scope = za::Scope::create(model);
    za::Variable const local = za::Variable::create(model);
    za::Variable const first = za::Variable::create(model);
    za::Variable const second = za::Variable::create(model);
    auto const definition = za::source::SourcePosition::create(model);
    function.setDefPos(definition);
    function.getParamsMutable().add(first);
    function.getParamsMutable().add(second);
    function.setScope(scope);
    scope.getSymbolsMutable().add(local);
    function.setBodyPosition(body);
    za::Template const referred = za::Template::create(model);
    function.setAssocTemplate(referred);
    std::vector<boost::uuids::uuid> order;
    Subscription const subscription = model.onCommit([&](CommitNotice const& notice) {
        for (ElementChange const& change : notice.destroyed)
            order.push_back(change.uuid());
    });
    std::vector<boost::uuids::uuid> expected;
    for (ModelElement const& element :
         {ModelElement(body), ModelElement(local), ModelElement(scope), ModelElement(first),
          ModelElement(second), ModelElement(definition), ModelElement(function)})
        expected.push_back(element.uuid());
    function.destroy();
    EXPECT_EQ(order, expected);
    EXPECT_TRUE(referred);
    EXPECT_EQ(model.size(), 1u);
}

TEST_F(DestructionTest, ReferencesFromOthersReadAsDead) {
    function.setAssocTemplate(assoc);
    function.getBefriendingAggregatesMutable().add(cls);
    assoc.destroy();
    cls.destroy();
    EXPECT_FALSE(function.getAssocTemplate());
    EXPECT_FALSE(function.hasAssocTemplate());
    EXPECT_FALSE(function.getAssocTemplate()); // and again
    ASSERT_EQ(function.getBefriendingAggregates().size(), 1u);
    za::types::AggregateType const dead = function.getBefriendingAggregates()[0];
    EXPECT_FALSE(dead);
    EXPECT_EQ(violationOf(model), "");
    function.getBefriendingAggregatesMutable().add(dead); // counts as null
    EXPECT_EQ(function.getBefriendingAggregates().size(), 1u);
    function.getBefriendingAggregatesMutable().remove(dead);
    EXPECT_TRUE(function.getBefriendingAggregates().empty());
}

TEST_F(DestructionTest, RepeatedAndLeftOverEntriesGoWithTheirOwner) {
    Model const model = newModel();
    za::Function const function = za::Function::create(model);
    za::Function const other = za::Function::create(model);
    za::TemplateArg const twice = za::TemplateArg::create(model);
    za::TemplateArg const moved = za::TemplateArg::create(model);
    for (za::TemplateArg const& arg : {twice, twice, moved, moved})
        function.getTemplateArgsMutable().add(arg);
    other.getTemplateArgsMutable().add(moved);
    std::string const before = dump(model);
    {
        Transaction const level = model.beginTransaction();
        function.destroy();
        EXPECT_FALSE(twice);
        EXPECT_TRUE(moved); // its owner is another one
        EXPECT_EQ(moved.container(), other);
        EXPECT_EQ(violationOf(model), "");
    }
    EXPECT_EQ(firstDifference(before, dump(model)), "");
    function.destroy();
    EXPECT_FALSE(twice);
    EXPECT_TRUE(moved);
    EXPECT_EQ(model.size(), 2u);
}

TEST_F(DestructionTest, PlaceholdersAmongTheContentsAreLeftAlone) {
    Model const model = newModel();
    za::Scope const scope = za::Scope::create(model);
    ModelElement const proxy = model.createProxy(za::Variable::metaClass(), {u"", u"nowhere", nullptr});
    scope.getSymbolsMutable().genericAdd(proxy);
    scope.destroy();
    EXPECT_TRUE(proxy);
    EXPECT_TRUE(proxy.isProxy());
    EXPECT_EQ(model.size(), 0u);
}

TEST_F(DestructionTest, OfWhatTheSameTransactionMadeLeavesNothing) {
    std::string const before = dump(model);
    for (bool const commit : {false, true}) {
        Transaction level = model.beginTransaction();
        za::Variable const variable = za::Variable::create(model);
        scope.getSymbolsMutable().add(variable);
        variable.destroy();
        EXPECT_FALSE(variable);
        if (commit) level.commit();
        EXPECT_EQ(failureOf([&] { static_cast<void>(variable.getName()); }).empty(), false);
    }
    EXPECT_EQ(firstDifference(before, dump(model)), "");
}

TEST_F(DestructionTest, AModelThatEndsBreaksCycles) {
    std::vector<za::Function> handles;
    {
        Model const model = newModel();
        za::Function const a = za::Function::create(model);
        za::types::ClassType const type = za::types::ClassType::create(model);
        za::Variable const v = za::Variable::create(model);
        a.setType(type);
        a.getBefriendingAggregatesMutable().add(type);
        type.getFriendFunsMutable().add(a);
        v.setType(type);
        type.setOwningScope(za::Scope::create(model));
        handles.push_back(a);
    }
    EXPECT_FALSE(handles[0]);
    EXPECT_EQ(handles[0].get()->refCount(), 1u); // nothing but this handle
}

TEST_F(DestructionTest, InvalidateCallsTheHookOncePerCollection) {
    static std::vector<void*> seen;
    seen.clear();
    za::Function function;
    {
        Model const model = newModel();
        function = za::Function::create(model);
        ElementImpl::m_callback = [](ElementImpl*, void* collection) { seen.push_back(collection); };
        function.get()->invalidate();
        ElementImpl::m_callback = nullptr;
    }
    auto const* body = function.get();
    std::vector<void*> expected;
    for (char const* name :
         {"Params", "TemplateArgs", "Annotations", "Comments", "BefriendingAggregates", "DeclPos"})
        for (PropertyRow const* row : propertiesOf(za::Function::Impl::table))
            if (std::string(row->name) == name)
                expected.push_back(const_cast<AbstractOwnedCollection*>(&Core::collection(*body, *row)));
    EXPECT_EQ(seen, expected);
}

TEST_F(DestructionTest, HandlesMadeWhileAnElementIsFreedDoNotFreeItAgain) {
    static int freed;
    static std::uint32_t count;
    freed = 0;
    struct Witness final : za::Macro::Impl {
        using za::Macro::Impl::Impl;
        ~Witness() override {
            ModelElement const handle(this);
            ModelElement const copy = handle;
            count = refCount();
            ++freed;
        }
    };
    ClassTable table = za::Macro::Impl::table;
    table.construct = [](ModelImpl* model, boost::uuids::uuid const& uuid) -> ModelElementImpl* {
        return new Witness(Model(model), uuid);
    };
    Model const model = newModel();
    ModelElement element = Core::create(table, model, {});
    element.destroy();
    EXPECT_EQ(freed, 0);
    element = nullptr;
    EXPECT_EQ(freed, 1);
    EXPECT_EQ(count, ElementImpl::REFCOUNT_DELETING);
}

TEST_F(DestructionTest, ReferencesOfOneElementAreDroppedWithUpkeepOrWithout) {
    auto const refer = [&] {
        function.setAssocTemplate(assoc);
        function.getBefriendingAggregatesMutable().add(cls);
    };
    auto const expectOnlyWhatIsOwned = [&] {
        EXPECT_FALSE(function.hasAssocTemplate());
        EXPECT_FALSE(function.hasBefriendingAggregates());
        EXPECT_EQ(function.getScope(), scope);
        EXPECT_EQ(function.getParams().size(), 1u);
        EXPECT_EQ(violationOf(model), "");
    };
    function.setScope(scope);
    function.getParamsMutable().add(one);
    refer();
    auto const told = reported(function, [&] { function.get()->disassociateIncoming(); });
    EXPECT_EQ(told.size(), 2u);
    EXPECT_EQ(told.at("AssocTemplate").getValue<ModelElement>(), assoc);
    EXPECT_TRUE(told.contains("BefriendingAggregates"));
    expectOnlyWhatIsOwned();
    refer();
    boost::optional<ProxyId> unused;
    EXPECT_TRUE(
        reported(function, [&] { function.get()->convertReferencesToProxies(true, unused); }).empty());
    EXPECT_FALSE(unused);
    expectOnlyWhatIsOwned();
    auto const proxy = placeholderFor<za::Function>(model, ElementImpl::generateNewUuid());
    EXPECT_EQ(failureOf([&] { proxy.get()->disassociateIncoming(); }), "CannotModifyProxy");
    // The other way round: what is owned goes, what is referred to stays.
    refer();
    function.get()->doDestroy(false, false);
    EXPECT_FALSE(scope);
    EXPECT_FALSE(one);
    EXPECT_FALSE(function.hasScope());
    EXPECT_FALSE(function.hasParams());
    EXPECT_EQ(function.getAssocTemplate(), assoc);
    EXPECT_TRUE(function.hasBefriendingAggregates());
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(DestructionTest, AMillionNestedScopes) {
    Model const model = newModel();
    za::Scope const outermost = nest(model, deep);
    EXPECT_EQ(model.size(), deep);
    EXPECT_EQ(violationOf(model), "");
    {
        Transaction const level = model.beginTransaction();
        outermost.destroy();
        EXPECT_EQ(model.size(), 0u);
    }
    EXPECT_EQ(model.size(), deep);
    EXPECT_TRUE(outermost);
    EXPECT_EQ(violationOf(model), "");
    outermost.destroy();
    EXPECT_EQ(model.size(), 0u);
    {
        Transaction const level = model.beginTransaction();
        nest(model, deep);
    }
    EXPECT_EQ(model.size(), 0u);
    // A model that ends with all of it.
    nest(newModel(), deep);
}
