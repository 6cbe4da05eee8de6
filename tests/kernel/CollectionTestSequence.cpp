// The ordered collection of elements: typed and reflective operations, containment, placeholders, rollback.

#include "kernel/CollectionSupport.hpp"

#include <algorithm>
#include <iterator>
#include <ranges>

namespace shop {
namespace {

using SequenceTest = CollectionTest;

static_assert(std::ranges::random_access_range<ElementSequence<Item> const>);
static_assert(std::ranges::sized_range<ElementSequence<Item> const>);
static_assert(sizeof(InlineCollection<ElementSequence<Item>, Shelf::Impl::table, 0>) == 2 * sizeof(void*));

struct Kind {
    char const* name;
    Row row;
    bool isUnique;
};

class SequenceWalk : public SequenceTest, public testing::WithParamInterface<Kind> {};
INSTANTIATE_TEST_SUITE_P(AllKinds, SequenceWalk,
                         testing::Values(Kind{"owned", Items, true}, Kind{"ownedRepeating", Parts, false},
                                         Kind{"plain", Links, false}, Kind{"plainUnique", Marks, true}),
                         [](auto const& kind) { return std::string(kind.param.name); });

TEST_P(SequenceWalk, AgreesWithAVectorAcrossRollbacks) {
    auto& sequence =
        static_cast<ElementSequence<Item>&>(Core::collection(*shelf.get(), rowOf(GetParam().row)));
    bool const isUnique = GetParam().isUnique;
    bool const isOwner = rowOf(GetParam().row).contained();
    std::vector<Item> const pool = letters(u"abcdefghijklmnopqrstuvwxyz");
    Walk<Names> walk(shelf, GetParam().row, 20, [](AbstractOwnedCollection const& members) {
        return namesOf(static_cast<ElementSequence<Item> const&>(members).getAllValues());
    });
    walk.run(6000, [&] {
        Item const& picked = pool[walk.below(pool.size())];
        Names& expected = walk.expected;
        auto const found = std::find(expected.begin(), expected.end(), picked.getName());
        bool const present = found != expected.end();
        std::size_t const at = walk.below(expected.size() + 1);
        auto const place = expected.begin() + static_cast<std::ptrdiff_t>(at);
        // An owning sequence loses an element's container with the first occurrence: pick fresh ones there.
        bool const addable = !present || (!isUnique && !isOwner);
        switch (walk.below(8)) {
        case 0:
            if (!addable && !isUnique) break;
            sequence.add(picked);
            if (addable) expected.push_back(picked.getName());
            break;
        case 1: {
            if (!addable && !isUnique) break;
            auto const inserted = sequence.insert(at, picked);
            EXPECT_EQ(inserted - sequence.begin(),
                      addable ? static_cast<std::ptrdiff_t>(at) : found - expected.begin());
            if (addable) expected.insert(place, picked.getName());
            break;
        }
        case 2:
            sequence.remove(picked);
            if (present) expected.erase(found);
            break;
        case 3:
            if (place == expected.end()) break;
            sequence.erase(at);
            expected.erase(place);
            break;
        case 4:
            if (place == expected.end() || !addable) break;
            sequence.assign(at, picked);
            *place = picked.getName();
            break;
        case 5: {
            if (!isUnique) break;
            std::size_t const target = walk.below(expected.size() + 3); // behind the end is the end
            sequence.genericEnsureAt(picked, target);
            if (present)
                std::iter_swap(found, expected.begin() +
                                          static_cast<std::ptrdiff_t>(std::min(target, expected.size() - 1)));
            else
                expected.insert(expected.begin() +
                                    static_cast<std::ptrdiff_t>(std::min(target, expected.size())),
                                picked.getName());
            break;
        }
        case 6:
            if (expected.end() - place < 2) break;
            sequence.erase(sequence.begin() + static_cast<std::ptrdiff_t>(at),
                           sequence.begin() + static_cast<std::ptrdiff_t>(at + 2));
            expected.erase(place, place + 2);
            break;
        default:
            if (walk.below(20) != 0) break;
            sequence.clear();
            expected.clear();
        }
        auto const first = std::find(expected.begin(), expected.end(), picked.getName());
        EXPECT_EQ(sequence.contains(picked), first != expected.end());
        if (first != expected.end()) {
            EXPECT_EQ(sequence.genericIndexOf(picked), first - expected.begin());
        }
        EXPECT_EQ(picked.container(), isOwner && first != expected.end() ? shelf : ModelElement());
        EXPECT_TRUE(picked);
    });
    expectSound();
}

TEST_F(SequenceTest, NullAndDeadHandlesAreNotAdded) {
    Item const dead = item(u"dead");
    dead.destroy();
    for (Item const& none : {Item(), dead}) {
        items.add(none);
        links.add(none);
        EXPECT_EQ(items.insert(0, none), items.end());
        items.genericAdd(none);
        items.genericInsert(none, 0);
        items.genericEnsureAt(none, 0);
        items.remove(none);
    }
    EXPECT_TRUE(items.empty());
    EXPECT_TRUE(links.empty());
}

TEST_F(SequenceTest, AnOwnerOfRepeatedElementsLosesThemWithTheFirst) {
    auto const made = letters(u"abcd");
    for (Item const& each : {made[0], made[1], made[0]})
        parts.add(each);
    parts.remove(made[0]);
    EXPECT_EQ(namesOf(parts), Names({u"b", u"a"}));
    EXPECT_EQ(made[0].container(), nullptr);
    EXPECT_EQ(made[1].container(), shelf);
    parts.add(made[2]);
    parts.add(made[3]);
    parts.assign(3, made[1]); // a member already: both stay findable
    EXPECT_EQ(namesOf(parts), Names({u"b", u"a", u"c", u"b"}));
    EXPECT_EQ(parts.genericIndexOf(made[1]), 0u);
    EXPECT_FALSE(parts.contains(made[3]));
}

TEST_F(SequenceTest, RefusedChangesLeaveNothingBehind) {
    Shelf const wrong = Shelf::create(model);
    Model const elsewhere = Model::create({}, {}, DefaultWorkQueueFactory());
    Item const foreign = Item::create(elsewhere);
    auto const made = letters(u"ab");
    for (Item const& each : made)
        items.add(each);
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericAdd(wrong); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericInsert(wrong, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericEnsureAt(wrong, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericReplace(wrong, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericRemove(wrong); });
    expectReport<m::CannotCreateCrossModelAssociation>([&] { items.add(foreign); });
    expectReport<m::CannotCreateCrossModelAssociation>([&] { links.add(foreign); });
    expectReport<m::CannotAddSecondObject>([&] { items.assign(0, made[1]); });
    expectReport<m::CannotAddSecondObject>([&] { items.genericReplace(made[1], 0); });
    expectReport<m::CannotAddNonExistentObject>([&] { items.assign(0, Item()); });
    items.genericReplace(Item(), 0); // reflection takes it for nothing to do
    EXPECT_FALSE(items.genericContains(wrong));
    EXPECT_EQ(items.genericIndexOf(wrong), ~std::uint32_t{0});
    EXPECT_EQ(namesOf(items), Names({u"a", u"b"}));
    EXPECT_TRUE(links.empty());
    EXPECT_EQ(foreign.container(), nullptr);
    EXPECT_EQ(items.getCollectionType(), Item::metaClass());
    EXPECT_EQ(items.getCollectionProperty(), propertyOf(Items));
    expectSound();
}

TEST_F(SequenceTest, BasicClearTellsNobody) {
    Item const a = item(u"a");
    items.add(a);
    auto transaction = model.beginTransaction();
    items.genericBasicClear();
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(a.container(), shelf);
    transaction.rollback();
    EXPECT_EQ(namesOf(items), Names({u"a"}));
}

TEST_F(SequenceTest, WithoutAnOwnerEveryOperationWorksAndTellsNobody) {
    auto const made = letters(u"abc");
    Item const placeholder = proxy(made[2].uuid());
    int commits = 0;
    auto const subscription = model.onCommit([&](CommitNotice const&) { ++commits; });
    for (Row const row : {Items, Parts, Links}) {
        Standalone<ElementSequence<Item>> alone(nullptr, rowOf(row));
        alone.add(made[0]);
        alone.genericInsert(made[1], 0);
        alone.add(placeholder);
        alone.resolveAll();
        alone.resolveLocal();
        EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&alone, made[2]));
        EXPECT_EQ(alone.getAllValuesAndProxies(), (std::vector<ModelElement>{made[1], made[0], placeholder}));
        alone.remove(made[1]);
        alone.genericEnsureAt(made[1], 1);
        alone.genericReplace(made[2], 2);
        EXPECT_EQ(namesOf(alone), Names({u"a", u"b", u"c"}));
        alone.genericRemoveAt(0);
        EXPECT_EQ(namesOf(alone), Names({u"b", u"c"}));
        alone.genericClear();
        EXPECT_TRUE(alone.empty());
    }
    EXPECT_EQ(commits, 0);
    // With one, it leaves the containment tree alone all the same.
    Standalone<ElementSequence<Item>> alone(shelf.get(), rowOf(Items));
    alone.add(made[0]);
    alone.add(made[0]);
    EXPECT_EQ(namesOf(alone), Names({u"a"}));
    EXPECT_TRUE(items.empty());
    for (Item const& each : made)
        EXPECT_EQ(each.container(), nullptr);
}

TEST_F(SequenceTest, TypedRangesWorkWithTheLibrary) {
    for (Item const& each : letters(u"dcba"))
        items.add(each);
    auto const found =
        std::find_if(items.begin(), items.end(), [](Item const& i) { return i.getName() == u"b"; });
    EXPECT_EQ(found - items.begin(), 2);
    EXPECT_EQ(found->getName(), u"b");
    EXPECT_EQ(items.begin()[3].getName(), u"a");
    EXPECT_EQ(items.at(1).getName(), u"c");
    EXPECT_THROW((void)items.at(4), std::out_of_range);
    // Backwards through the iterators; clang 14 cannot compile the views of libstdc++ 12.
    std::vector<Item> const copy(std::make_reverse_iterator(items.end()),
                                 std::make_reverse_iterator(items.begin()));
    EXPECT_EQ(namesOf(copy), Names({u"a", u"b", u"c", u"d"}));
}

TEST_F(SequenceTest, ManyInsertsAtOnePlaceStayFindable) {
    std::vector<Item> made;
    for (int i = 0; i < 400; ++i) {
        made.push_back(item(u"x"));
        items.insert(std::min<std::size_t>(items.size(), 3), made.back());
    }
    for (std::uint32_t i = 0; i < items.size(); ++i)
        ASSERT_EQ(items.genericIndexOf(items[i]), i);
    std::shuffle(made.begin(), made.end(), std::mt19937(4));
    for (Item const& each : made)
        items.remove(each);
    EXPECT_TRUE(items.empty());
}

TEST_F(SequenceTest, AKeptChangeOutlivesTheElementsOfItsTransaction) {
    std::vector<ElementChange> kept;
    auto subscription = model.onCommit([&](CommitNotice const& notice) { kept = notice.changed; });
    auto transaction = model.beginTransaction();
    Shelf fresh = Shelf::create(model);
    for (Item const& each : letters(u"ab")) {
        links.add(each);
        fresh.getLinksMutable().add(each);
    }
    fresh.getLinksMutable().erase(0);
    fresh.getLinksMutable().clear();
    transaction.commit();
    subscription.cancel();
    fresh.destroy();
    fresh = Shelf();
    links.clear();
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].element(), shelf);
    // The old content was never asked for while the callback ran.
    EXPECT_TRUE(kept[0].oldValue(propertyOf(Links)).isEmpty());
    kept.clear();
}

TEST_F(SequenceTest, LookingUpTakesPlaceholdersAsTheyStandAndRemovingResolves) {
    auto const made = letters(u"ab");
    Item const placeholder = proxy(made[0].uuid());
    links.add(placeholder);
    links.add(made[1]);
    for (Item const& absent : {made[0], Item(), placeholder}) {
        EXPECT_FALSE(links.contains(absent));
        EXPECT_FALSE(links.genericContains(absent));
    }
    EXPECT_EQ(links.genericIndexOf(made[0]), ~std::uint32_t{0});
    EXPECT_EQ(links.genericIndexOf(placeholder), 0u);
    EXPECT_EQ(links.getAllValuesAndProxies().front(), placeholder);
    links.remove(made[0]);
    EXPECT_EQ(namesOf(links), Names({u"b"}));
    links.add(proxy(made[0].uuid()));
    EXPECT_EQ(links[1], made[0]);
    EXPECT_TRUE(links.contains(made[0]));
}

TEST_F(SequenceTest, PlaceholdersWithoutTargetAreLeftOutOfTheValues) {
    Item const a = item(u"a");
    Item const lost = proxy(generateUuid());
    Item const external = proxy(a.uuid(), true);
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

TEST_F(SequenceTest, APlaceholderIsMemberButNoChild) {
    auto const made = letters(u"ab");
    Item const placeholder = proxy(made[0].uuid());
    Item const lost = proxy(generateUuid());
    items.add(placeholder);
    items.add(lost);
    EXPECT_EQ(items[0], placeholder); // what it owns is in it already: reading takes nobody in
    EXPECT_EQ(made[0].container(), nullptr);
    items.assign(0, made[1]);
    EXPECT_EQ(made[1].container(), shelf);
    items.assign(0, placeholder);
    EXPECT_EQ(made[1].container(), nullptr);
    expectSound();
    items.erase(0);
    items.insert(0, made[0]);
    EXPECT_EQ(items.getAllValuesAndProxies(), (std::vector<ModelElement>{made[0], lost}));
    items.clear();
    EXPECT_EQ(made[0].container(), nullptr);
    expectSound();
}

} // namespace
} // namespace shop
