// Placeholders among the members of an ordered collection.

#include "TestSchema.hpp"

#include <gtest/gtest.h>

namespace shop {
namespace {

class SequencePlaceholderTest : public testing::Test {
  protected:
    Item item(std::u16string const& name) { return Item::create(model, name); }

    Model model = createModel();
    Shelf shelf = Shelf::create(model);
    ElementSequence<Item>& items = shelf->items;
    ElementSequence<Item>& links = shelf->links;
};

TEST_F(SequencePlaceholderTest, LookingUpTakesSlotsAsTheyStandAndRemovingResolves) {
    std::vector<Item> const made = {item(u"a"), item(u"b")};
    Item const proxy = createProxy(model, made[0].uuid());
    links.add(proxy);
    links.add(made[1]);
    EXPECT_FALSE(links.contains(made[0]));
    EXPECT_FALSE(links.genericContains(made[0]));
    EXPECT_FALSE(links.contains(Item()));
    EXPECT_FALSE(links.contains(proxy));
    EXPECT_FALSE(links.genericContains(proxy));
    EXPECT_EQ(links.genericIndexOf(made[0]), ~std::uint32_t{0});
    EXPECT_EQ(links.genericIndexOf(proxy), 0u);
    EXPECT_EQ(links.getAllValuesAndProxies().front(), proxy);
    links.remove(made[0]);
    EXPECT_EQ(namesOf(links), Names({u"b"}));
    links.add(createProxy(model, made[0].uuid()));
    EXPECT_EQ(links[1], made[0]);
    EXPECT_TRUE(links.contains(made[0]));
}

TEST_F(SequencePlaceholderTest, PlaceholdersWithoutTargetAreLeftOutOfTheValues) {
    Item const a = item(u"a");
    Item const lost = createProxy(model, generateUuid());
    Item const external = createProxy(model, a.uuid(), true);
    for (Item const& each : {lost, a, external})
        links.add(each);
    links.resolveLocal();
    links.resolveAll();
    EXPECT_EQ(links.size(), 3u);
    EXPECT_EQ(links.genericSize(), 3u);
    EXPECT_EQ(links.getAllValues(), std::vector<ModelElement>{a});
    EXPECT_EQ(links.getAllValuesAndProxies(), (std::vector<ModelElement>{lost, a, external}));
    EXPECT_EQ(links.genericAt(0), lost);
    // Telling that one has become real is no change.
    Model::Freezer const freezer(model);
    links.replaceProxy(a, 2);
    EXPECT_EQ(links.getAllValuesAndProxies(), (std::vector<ModelElement>{lost, a, a}));
}

TEST_F(SequencePlaceholderTest, APlaceholderIsMemberButNoChild) {
    std::vector<Item> const made = {item(u"a"), item(u"b")};
    Item const proxy = createProxy(model, made[0].uuid());
    Item const lost = createProxy(model, generateUuid());
    items.add(proxy);
    items.add(lost);
    EXPECT_EQ(items[0], proxy); // what it owns is in it already: reading takes nobody in
    EXPECT_EQ(made[0].container(), nullptr);
    items.assign(0, made[1]);
    EXPECT_EQ(made[1].container(), shelf);
    items.assign(0, proxy);
    EXPECT_EQ(made[1].container(), nullptr);
    EXPECT_FALSE(model.verify().has_value());
    items.erase(0);
    items.insert(0, made[0]);
    EXPECT_EQ(items.getAllValuesAndProxies(), (std::vector<ModelElement>{made[0], lost}));
    items.clear();
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(made[0].container(), nullptr);
    EXPECT_FALSE(model.verify().has_value());
}

} // namespace
} // namespace shop
