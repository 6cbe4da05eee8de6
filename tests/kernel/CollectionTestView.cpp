// Views: the members of another collection that are of one class.

#include "brant/zero/Text.hpp"
#include "kernel/CollectionSupport.hpp"

namespace shop {
namespace {

class ViewTest : public CollectionTest {
  protected:
    /// Gadgets for capitals, items for small letters.
    void fill(std::u16string const& names) {
        for (Item const& each : letters(names))
            items.add(each);
    }
    Gadget gadget(std::u16string const& name) { return Gadget::cast(item(name)); }
    Item gadgetProxy(Gadget const& target) {
        ProxyId const id{u"", toUtf16(toString(target.uuid())).value(), nullptr};
        return Item(model.createProxy(Gadget::metaClass(), id).get());
    }
};

static_assert(std::ranges::forward_range<SubsettedElementSet<Gadget, ElementSequence<Item>> const>);
static_assert(sizeof(InlineCollection<SubsettedElementSet<Gadget, ElementSequence<Item>>, Shelf::Impl::table,
                                      Gadgets>) == 2 * sizeof(void*));

TEST_F(ViewTest, ShowsTheMembersOfItsClassInTheParentsOrder) {
    std::pair<std::u16string, Names> const cases[] = {
        {u"", {}}, {u"abc", {}}, {u"A", {u"A"}}, {u"aAbBC", {u"A", u"B", u"C"}}, {u"ABa", {u"A", u"B"}}};
    for (auto const& [filled, shown] : cases) {
        items.clear();
        fill(filled);
        EXPECT_EQ(namesOf(gadgets), shown);
        EXPECT_EQ(namesOf(gadgets.getAllValues()), shown);
        EXPECT_EQ(gadgets.size(), shown.size());
        EXPECT_EQ(gadgets.genericSize(), shown.size());
        EXPECT_EQ(gadgets.empty(), shown.empty());
    }
}

TEST_F(ViewTest, WhatIsDoneToItIsDoneToItsParent) {
    fill(u"aAb");
    gadgets.add(gadget(u"G"));
    gadgets.genericAdd(gadget(u"H"));
    gadgets.add(Gadget());
    EXPECT_EQ(namesOf(items), Names({u"a", u"A", u"b", u"G", u"H"}));
    EXPECT_EQ(items[3].container(), shelf);
    EXPECT_TRUE(gadgets.contains(items[3]));
    EXPECT_FALSE(gadgets.contains(items[0]));
    auto transaction = model.beginTransaction();
    gadgets.remove(Gadget::cast(items[3]));
    gadgets.genericRemove(items[1]);
    EXPECT_EQ(namesOf(items), Names({u"a", u"b", u"H"}));
    fill(u"CcD");
    gadgets.clear();
    EXPECT_EQ(namesOf(items), Names({u"a", u"b", u"c"}));
    for (bool const abandoned : {false, true}) {
        if (abandoned) transaction.rollback();
        for (std::uint32_t i = 0; i < items.size(); ++i)
            EXPECT_EQ(items.genericIndexOf(items[i]), i);
    }
    EXPECT_EQ(namesOf(items), Names({u"a", u"A", u"b", u"G", u"H"}));
    gadgets.genericBasicClear();
    EXPECT_EQ(items.size(), 5u);
    expectSound();
}

TEST_F(ViewTest, AWrongClassIsRefusedAndTheParentKeepsItsContent) {
    fill(u"aA");
    Item const plain = item(u"plain");
    expectReport<m::CannotAddIncompatibleObjectSubset>([&] { gadgets.add(plain); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { gadgets.genericAdd(plain); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { gadgets.genericEnsureAt(plain, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { gadgets.genericRemove(items[0]); });
    EXPECT_FALSE(gadgets.genericContains(plain));
    EXPECT_EQ(namesOf(items), Names({u"a", u"A"}));
    EXPECT_EQ(plain.container(), nullptr);
}

TEST_F(ViewTest, AFilterRestrictsReadingAndAdding) {
    fill(u"ABAC");
    gadgets.setFilter([](Gadget const& gadget) { return gadget.getName() != u"A"; });
    EXPECT_EQ(namesOf(gadgets), Names({u"B", u"C"}));
    EXPECT_FALSE(gadgets.contains(items[0]));
    Gadget const rejected = gadget(u"A");
    expectReport<m::CannotAddIncompatibleObjectSubset>([&] { gadgets.add(rejected); });
    expectReport<m::CannotAddIncompatibleObjectSubset>([&] { gadgets.genericAdd(rejected); });
    EXPECT_EQ(items.size(), 4u);
    gadgets.clear();
    EXPECT_EQ(namesOf(items), Names({u"A", u"A"}));
    gadgets.setFilter({});
    EXPECT_EQ(gadgets.size(), 2u);
}

TEST_F(ViewTest, PlaceholdersAndRestoredStateAreTheParents) {
    fill(u"aA");
    Gadget const target = gadget(u"G");
    items.add(gadgetProxy(target));
    EXPECT_EQ(gadgets.size(), 2u);
    auto const before = items.getAllValuesAndProxies();
    shelf.get()->_basicAdd(&gadgets, gadget(u"B"));
    shelf.get()->_basicRemove(&gadgets, items[1]);
    shelf.get()->_basicCopyValues(&gadgets, &gadgets);
    shelf.get()->_basicClear(&gadgets);
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&gadgets, target));
    EXPECT_EQ(items.getAllValuesAndProxies(), before);
    gadgets.replaceProxy(target, 2);
    EXPECT_EQ(items.getAllValuesAndProxies().back(), target);
    EXPECT_EQ(target.container(), shelf);
    EXPECT_EQ(gadgets.getCollectionType(), Gadget::metaClass());
    EXPECT_EQ(gadgets.getOpposite(), nullptr);
    EXPECT_TRUE(shelf.hasPropertyValue(propertyOf(Gadgets)));
}

} // namespace
} // namespace shop
