// Views: the members of another collection that are of one class.

#include "CollectionSupport.hpp"
#include "brant/zero/Text.hpp"

namespace shop {
namespace {

class ViewTest : public testing::Test {
  protected:
    /// Items for small letters, gadgets for capitals.
    void fill(std::u16string const& names) {
        for (char16_t name : names) {
            std::u16string const text(1, name);
            shelf->items.add(name < u'a' ? Gadget::create(model, text) : Item::create(model, text));
        }
    }

    Model model = createModel();
    Shelf shelf = Shelf::create(model);
    ElementSequence<Item>& items = shelf->items;
    SubsettedElementSet<Gadget, ElementSequence<Item>>& gadgets = shelf->gadgets;
};

static_assert(std::ranges::forward_range<SubsettedElementSet<Gadget, ElementSequence<Item>> const>);
static_assert(sizeof(InlineCollection<SubsettedElementSet<Gadget, ElementSequence<Item>>, Shelf::Impl::table,
                                      Shelf::Gadgets>) == 2 * sizeof(void*));

TEST_F(ViewTest, ShowsTheMembersOfItsClassInTheParentsOrder) {
    struct Case {
        std::u16string filled;
        Names shown;
    };
    for (Case const& each : {Case{u"", {}}, Case{u"abc", {}}, Case{u"A", {u"A"}},
                             Case{u"aAbBC", {u"A", u"B", u"C"}}, Case{u"ABa", {u"A", u"B"}}}) {
        items.clear();
        fill(each.filled);
        EXPECT_EQ(namesOf(gadgets), each.shown);
        EXPECT_EQ(namesOf(gadgets.getAllValues()), each.shown);
        EXPECT_EQ(gadgets.size(), each.shown.size());
        EXPECT_EQ(gadgets.genericSize(), each.shown.size());
        EXPECT_EQ(gadgets.empty(), each.shown.empty());
    }
}

TEST_F(ViewTest, AddingAppendsToTheParent) {
    fill(u"ab");
    gadgets.add(Gadget::create(model, u"G"));
    gadgets.genericAdd(Gadget::create(model, u"H"));
    gadgets.add(Gadget());
    EXPECT_EQ(namesOf(items), Names({u"a", u"b", u"G", u"H"}));
    EXPECT_EQ(items[2].container(), shelf);
    EXPECT_TRUE(gadgets.contains(items[2]));
    EXPECT_FALSE(gadgets.contains(items[0]));
}

TEST_F(ViewTest, AWrongClassIsRefusedAndTheParentKeepsItsContent) {
    fill(u"aA");
    Item const plain = Item::create(model, u"plain");
    expectReport<m::CannotAddIncompatibleObjectSubset>([&] { gadgets.add(plain); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { gadgets.genericAdd(plain); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { gadgets.genericEnsureAt(plain, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { gadgets.genericRemove(items[0]); });
    EXPECT_FALSE(gadgets.genericContains(plain));
    EXPECT_EQ(namesOf(items), Names({u"a", u"A"}));
    EXPECT_EQ(plain.container(), nullptr);
}

TEST_F(ViewTest, RemovingTakesOutOfTheParent) {
    fill(u"aAB");
    Gadget const gone(items[1].get());
    gadgets.remove(gone);
    EXPECT_EQ(namesOf(items), Names({u"a", u"B"}));
    EXPECT_EQ(gone.container(), nullptr);
    gadgets.genericRemove(items[1]);
    EXPECT_EQ(namesOf(items), Names({u"a"}));
}

TEST_F(ViewTest, ClearingLeavesTheOtherMembers) {
    fill(u"aAbBCcDd");
    auto transaction = model.beginTransaction();
    gadgets.clear();
    EXPECT_EQ(namesOf(items), Names({u"a", u"b", u"c", u"d"}));
    EXPECT_TRUE(gadgets.empty());
    for (std::uint32_t i = 0; i < items.size(); ++i)
        EXPECT_EQ(items.genericIndexOf(items[i]), i);
    transaction.rollback();
    EXPECT_EQ(namesOf(items), Names({u"a", u"A", u"b", u"B", u"C", u"c", u"D", u"d"}));
    for (std::uint32_t i = 0; i < items.size(); ++i)
        EXPECT_EQ(items.genericIndexOf(items[i]), i);
    gadgets.genericBasicClear();
    EXPECT_EQ(items.size(), 8u);
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(ViewTest, AFilterRestrictsReadingAndAdding) {
    fill(u"ABAC");
    gadgets.setFilter([](Gadget const& gadget) { return gadget.getName() != u"A"; });
    EXPECT_EQ(namesOf(gadgets), Names({u"B", u"C"}));
    EXPECT_FALSE(gadgets.contains(items[0]));
    Gadget const rejected = Gadget::create(model, u"A");
    expectReport<m::CannotAddIncompatibleObjectSubset>([&] { gadgets.add(rejected); });
    expectReport<m::CannotAddIncompatibleObjectSubset>([&] { gadgets.genericAdd(rejected); });
    EXPECT_EQ(items.size(), 4u);
    gadgets.clear();
    EXPECT_EQ(namesOf(items), Names({u"A", u"A"}));
    gadgets.setFilter({});
    EXPECT_EQ(gadgets.size(), 2u);
}

TEST_F(ViewTest, PlaceholdersAreTheParents) {
    Gadget const target = Gadget::create(model, u"G");
    ProxyId const id{u"", toUtf16(toString(target.uuid())).value(), nullptr};
    items.add(Item(model.createProxy(Gadget::metaClass(), id).get()));
    EXPECT_EQ(gadgets.size(), 1u);
    gadgets.replaceProxy(target, 0);
    EXPECT_EQ(items.getAllValuesAndProxies().front(), target);
    EXPECT_EQ(target.container(), shelf);
    EXPECT_EQ(namesOf(gadgets), Names({u"G"}));
}

TEST_F(ViewTest, WhatRestoresStatePassesItBy) {
    fill(u"aA");
    Gadget const gadget(items[1].get());
    Gadget const target = Gadget::create(model, u"G");
    ProxyId const id{u"", toUtf16(toString(target.uuid())).value(), nullptr};
    items.add(Item(model.createProxy(Gadget::metaClass(), id).get()));
    auto const before = items.getAllValuesAndProxies();
    shelf.get()->_basicAdd(&gadgets, Gadget::create(model, u"B"));
    shelf.get()->_basicRemove(&gadgets, gadget);
    shelf.get()->_basicCopyValues(&gadgets, &gadgets);
    shelf.get()->_basicClear(&gadgets);
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&gadgets, target));
    EXPECT_EQ(items.getAllValuesAndProxies(), before);
}

TEST_F(ViewTest, OwnsNothing) {
    fill(u"aA");
    EXPECT_EQ(gadgets.getCollectionType(), Gadget::metaClass());
    EXPECT_EQ(gadgets.getOpposite(), nullptr);
    EXPECT_TRUE(shelf.hasPropertyValue(Shelf::property(Shelf::Gadgets)));
    Item const gadget = items[1];
    shelf.destroy();
    EXPECT_FALSE(gadget);
    EXPECT_EQ(model.size(), 0u);
}

} // namespace
} // namespace shop
