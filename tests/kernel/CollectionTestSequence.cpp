// The ordered collection of elements: typed and reflective operations, containment, positions, rollback.

#include "CollectionSupport.hpp"

#include <algorithm>
#include <iterator>
#include <random>
#include <ranges>

namespace shop {
namespace {

class SequenceTest : public testing::Test {
  protected:
    Item item(std::u16string const& name) { return Item::create(model, name); }
    /// One item for each letter.
    std::vector<Item> letters(std::u16string const& names) {
        std::vector<Item> result;
        for (char16_t name : names)
            result.push_back(item(std::u16string(1, name)));
        return result;
    }

    Model model = createModel();
    Shelf shelf = Shelf::create(model);
    ElementSequence<Item>& items = shelf->items;
    ElementSequence<Item>& parts = shelf->parts;
    ElementSequence<Item>& links = shelf->links;
    ElementSequence<Item>& marks = shelf->marks;
};

static_assert(std::ranges::random_access_range<ElementSequence<Item> const>);
static_assert(std::ranges::sized_range<ElementSequence<Item> const>);
static_assert(sizeof(InlineCollection<ElementSequence<Item>, Shelf::Impl::table, 0>) == 2 * sizeof(void*));

TEST_F(SequenceTest, AddingContainsAndTellsTheOtherEnd) {
    Item const a = item(u"a");
    items.add(a);
    EXPECT_EQ(namesOf(items), Names({u"a"}));
    EXPECT_EQ(a.container(), shelf);
    EXPECT_EQ(a.getShelf(), shelf);
    EXPECT_TRUE(items.contains(a));
    EXPECT_EQ(model.getTopLevelElements().size(), 1u);
    EXPECT_FALSE(model.verify().has_value());
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
    }
    EXPECT_TRUE(items.empty());
    EXPECT_TRUE(links.empty());
}

TEST_F(SequenceTest, AUniqueOneTakesAnElementOnceAndKeepsItsPlace) {
    auto const made = letters(u"abc");
    for (Item const& each : made)
        items.add(each);
    items.add(made[0]);
    EXPECT_EQ((items.insert(2, made[0]) - items.begin()), 0);
    EXPECT_EQ(namesOf(items), Names({u"a", u"b", u"c"}));
}

TEST_F(SequenceTest, OthersTakeAnElementTwiceAndLoseTheFirstOne) {
    auto const made = letters(u"ab");
    for (ElementSequence<Item>* sequence : {&links, &parts}) {
        sequence->add(made[0]);
        sequence->add(made[1]);
        sequence->add(made[0]);
        EXPECT_EQ(namesOf(*sequence), Names({u"a", u"b", u"a"}));
        sequence->remove(made[0]);
        EXPECT_EQ(namesOf(*sequence), Names({u"b", u"a"}));
    }
    // The container is gone with the first occurrence, and the one that is left owns nothing.
    EXPECT_EQ(made[0].container(), nullptr);
    EXPECT_EQ(made[1].container(), shelf);
}

TEST_F(SequenceTest, AddingMovesFromAnotherHolder) {
    auto const made = letters(u"abc");
    Shelf const other = Shelf::create(model);
    for (Item const& each : made)
        other->items.add(each);
    items.add(made[1]);
    EXPECT_EQ(namesOf(other->items), Names({u"a", u"c"}));
    EXPECT_EQ(namesOf(items), Names({u"b"}));
    parts.insert(0, made[1]);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(made[1].containmentFeature(), Shelf::property(Shelf::Parts));
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(SequenceTest, RemovingAndErasingLetGoButNeverDestroy) {
    auto const made = letters(u"abcdef");
    for (Item const& each : made)
        items.add(each);
    items.remove(made[2]);
    EXPECT_EQ(*items.erase(0), made[1]);
    EXPECT_EQ(items.erase(items.begin() + 1, items.begin() + 3), items.begin() + 1);
    EXPECT_EQ(namesOf(items), Names({u"b", u"f"}));
    items.remove(made[2]);
    items.remove(Item());
    EXPECT_EQ(items.size(), 2u);
    items.clear();
    EXPECT_TRUE(items.empty());
    for (Item const& each : made) {
        EXPECT_TRUE(each);
        EXPECT_EQ(each.container(), nullptr);
    }
    EXPECT_EQ(model.getTopLevelElements().size(), 7u);
}

TEST_F(SequenceTest, DeadEntriesOfPlainReferencesCanBeRemoved) {
    auto const made = letters(u"ab");
    links.add(made[0]);
    links.add(made[1]);
    made[0].destroy();
    EXPECT_EQ(namesOf(links), Names({u"-", u"b"}));
    links.remove(made[0]);
    EXPECT_EQ(namesOf(links), Names({u"b"}));
}

TEST_F(SequenceTest, ReplacementsSwapTheOwnedElement) {
    auto const made = letters(u"abc");
    items.add(made[0]);
    items.add(made[1]);
    items.assign(0, made[2]);
    EXPECT_EQ(namesOf(items), Names({u"c", u"b"}));
    EXPECT_EQ(made[0].container(), nullptr);
    EXPECT_EQ(made[2].container(), shelf);
    items.assign(items.begin(), made[2]);
    expectReport<m::CannotAddSecondObject>([&] { items.assign(0, made[1]); });
    expectReport<m::CannotAddSecondObject>([&] { items.genericReplace(made[1], 0); });
    expectReport<m::CannotAddNonExistentObject>([&] { items.assign(0, Item()); });
    items.genericReplace(Item(), 0);
    EXPECT_EQ(namesOf(items), Names({u"c", u"b"}));
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(SequenceTest, AReplacementByAMemberOfARepeatingOneKeepsBothFindable) {
    auto const made = letters(u"abcd");
    for (Item const& each : made)
        parts.add(each);
    parts.assign(3, made[1]);
    EXPECT_EQ(namesOf(parts), Names({u"a", u"b", u"c", u"b"}));
    EXPECT_EQ(parts.genericIndexOf(made[1]), 1u);
    for (Item const& each : {made[0], made[1], made[2]})
        EXPECT_TRUE(parts.contains(each));
    EXPECT_FALSE(parts.contains(made[3]));
}

TEST_F(SequenceTest, ReflectionChecksTheClass) {
    Shelf const wrong = Shelf::create(model);
    items.add(item(u"a"));
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericAdd(wrong); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericInsert(wrong, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericEnsureAt(wrong, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericReplace(wrong, 0); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { items.genericRemove(wrong); });
    EXPECT_FALSE(items.genericContains(wrong));
    EXPECT_EQ(items.genericIndexOf(wrong), ~std::uint32_t{0});
    EXPECT_EQ(items.size(), 1u);
    EXPECT_EQ(items.getCollectionType(), Item::metaClass());
    EXPECT_EQ(items.getCollectionProperty(), Shelf::property(Shelf::Items));
}

TEST_F(SequenceTest, EnsuringAPlaceExchanges) {
    auto const made = letters(u"abcd");
    for (Item const& each : {made[0], made[1], made[2]})
        items.add(each);
    items.genericEnsureAt(made[2], 0);
    EXPECT_EQ(namesOf(items), Names({u"c", u"b", u"a"}));
    items.genericEnsureAt(made[3], 1);
    EXPECT_EQ(namesOf(items), Names({u"c", u"d", u"b", u"a"}));
    items.genericEnsureAt(made[3], 99);
    EXPECT_EQ(namesOf(items), Names({u"c", u"a", u"b", u"d"}));
    for (std::uint32_t i = 0; i < 4; ++i)
        EXPECT_EQ(items.genericIndexOf(items[i]), i);
}

TEST_F(SequenceTest, RefusedChangesLeaveNothingBehind) {
    Model const otherModel = createModel();
    Item const foreign = Item::create(otherModel, u"foreign");
    expectReport<m::CannotCreateCrossModelAssociation>([&] { items.add(foreign); });
    expectReport<m::CannotCreateCrossModelAssociation>([&] { links.add(foreign); });
    EXPECT_TRUE(items.empty());
    EXPECT_TRUE(links.empty());
    EXPECT_EQ(foreign.container(), nullptr);
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
    Item const proxy = createProxy(model, made[2].uuid());
    int commits = 0;
    auto const subscription = model.onCommit([&](CommitNotice const&) { ++commits; });
    for (Shelf::Row row : {Shelf::Items, Shelf::Parts, Shelf::Links}) {
        Standalone<ElementSequence<Item>> alone(nullptr, Shelf::Impl::rows[row]);
        alone.add(made[0]);
        alone.genericInsert(made[1], 0);
        alone.add(proxy);
        alone.resolveAll();
        alone.resolveLocal();
        EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&alone, made[2]));
        EXPECT_EQ(alone.getAllValuesAndProxies(), (std::vector<ModelElement>{made[1], made[0], proxy}));
        EXPECT_TRUE(alone.contains(made[0]));
        alone.remove(made[1]);
        alone.genericEnsureAt(made[1], 1);
        alone.genericReplace(made[2], 2);
        EXPECT_EQ(namesOf(alone), Names({u"a", u"b", u"c"}));
        alone.remove(made[1]);
        alone.genericRemoveAt(0);
        EXPECT_EQ(namesOf(alone), Names({u"c"}));
        alone.genericClear();
        EXPECT_TRUE(alone.empty());
    }
    EXPECT_EQ(commits, 0);
    for (Item const& each : made)
        EXPECT_EQ(each.container(), nullptr);
}

TEST_F(SequenceTest, TypedRangesWorkWithTheLibrary) {
    for (Item const& each : letters(u"dcba"))
        items.add(each);
    auto const found =
        std::find_if(items.begin(), items.end(), [](Item const& i) { return i.getName() == u"b"; });
    ASSERT_NE(found, items.end());
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

TEST_F(SequenceTest, DestroyingAMemberTakesItOut) {
    auto const made = letters(u"abc");
    for (Item const& each : made)
        items.add(each);
    auto transaction = model.beginTransaction();
    made[1].destroy();
    EXPECT_EQ(namesOf(items), Names({u"a", u"c"}));
    transaction.rollback();
    EXPECT_EQ(namesOf(items), Names({u"a", u"b", u"c"}));
    EXPECT_TRUE(made[1]);
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(SequenceTest, WhatWasMadeAndDestroyedInAnAbandonedTransactionStaysGone) {
    auto transaction = model.beginTransaction();
    Item const a = item(u"a");
    items.add(a);
    a.destroy();
    transaction.rollback();
    EXPECT_FALSE(a);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(model.size(), 1u);
    EXPECT_FALSE(model.findElement(shelf.uuid()) == nullptr);
}

TEST_F(SequenceTest, OneThatStandsAloneLeavesTheContainmentTreeAlone) {
    Item const a = item(u"a");
    Standalone<ElementSequence<Item>> alone(shelf.get(), Shelf::Impl::rows[Shelf::Items]);
    alone.add(a);
    alone.add(a);
    EXPECT_EQ(namesOf(alone), Names({u"a"}));
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(a.container(), nullptr);
    alone.clear();
    EXPECT_TRUE(alone.empty());
}

// Random walks against a plain vector, with nested levels that are kept or abandoned.

struct Walk {
    char const* name;
    Shelf::Row row;
    bool repeats;
};

class SequenceWalk : public SequenceTest, public testing::WithParamInterface<Walk> {};

TEST_P(SequenceWalk, AgreesWithAVectorAcrossRollbacks) {
    auto& sequence = static_cast<ElementSequence<Item>&>(
        Core::collection(*shelf.get(), Shelf::Impl::rows[GetParam().row]));
    bool const repeats = GetParam().repeats;
    std::vector<Item> const pool = letters(u"abcdefghijklmnopqrstuvwxyz");
    std::vector<Item> expected;
    OpenLevels<std::vector<Item>> levels(model);
    std::mt19937 random(20);
    auto below = [&random](std::size_t bound) { return random() % bound; };
    for (int step = 0; step < 6000; ++step) {
        Item const& picked = pool[below(pool.size())];
        bool const present = std::find(expected.begin(), expected.end(), picked) != expected.end();
        // An owning sequence loses an element's container with the first occurrence: pick fresh ones there.
        bool const addable = !present || (repeats && !Shelf::Impl::rows[GetParam().row].contained());
        switch (below(10)) {
        case 0:
        case 1:
            if (addable) {
                sequence.add(picked);
                expected.push_back(picked);
            }
            break;
        case 2:
            if (addable) {
                std::size_t const at = below(expected.size() + 1);
                sequence.insert(at, picked);
                expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(at), picked);
            }
            break;
        case 3:
            sequence.remove(picked);
            if (present) expected.erase(std::find(expected.begin(), expected.end(), picked));
            break;
        case 4:
            if (!expected.empty()) {
                std::size_t const at = below(expected.size());
                sequence.erase(at);
                expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(at));
            }
            break;
        case 5:
            if (!expected.empty() && addable) {
                std::size_t const at = below(expected.size());
                sequence.assign(at, picked);
                expected[at] = picked;
            }
            break;
        case 6:
            if (!expected.empty() && !repeats && present) {
                std::size_t const at = below(expected.size());
                sequence.genericEnsureAt(picked, at);
                std::iter_swap(std::find(expected.begin(), expected.end(), picked),
                               expected.begin() + static_cast<std::ptrdiff_t>(at));
            }
            break;
        case 7:
            if (expected.size() > 3) {
                std::size_t const first = below(expected.size() - 2);
                sequence.erase(sequence.begin() + static_cast<std::ptrdiff_t>(first),
                               sequence.begin() + static_cast<std::ptrdiff_t>(first + 2));
                expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(first),
                               expected.begin() + static_cast<std::ptrdiff_t>(first + 2));
            } else if (below(20) == 0) {
                sequence.clear();
                expected.clear();
            }
            break;
        case 8:
            levels.begin(expected);
            break;
        default:
            levels.end(below(2) == 0, expected);
        }
        ASSERT_EQ(namesOf(sequence), namesOf(expected)) << "after step " << step;
        ASSERT_EQ(sequence.contains(picked), std::count(expected.begin(), expected.end(), picked) > 0);
        if (!expected.empty()) {
            auto const first =
                std::find(expected.begin(), expected.end(), expected.back()) - expected.begin();
            ASSERT_EQ(sequence.genericIndexOf(expected.back()), first);
        }
    }
    levels.abandonAll();
    if (auto const violation = model.verify()) ADD_FAILURE() << violation->rule << ": " << violation->detail;
}

INSTANTIATE_TEST_SUITE_P(AllKinds, SequenceWalk,
                         testing::Values(Walk{"owned", Shelf::Items, false},
                                         Walk{"ownedRepeating", Shelf::Parts, true},
                                         Walk{"plain", Shelf::Links, true},
                                         Walk{"plainUnique", Shelf::Marks, false}),
                         [](auto const& walk) { return std::string(walk.param.name); });

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
        fresh->links.add(each);
    }
    fresh->links.erase(0);
    fresh->links.clear();
    transaction.commit();
    subscription.cancel();
    fresh.destroy();
    fresh = Shelf();
    links.clear();
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].element(), shelf);
    // The old content was never asked for while the callback ran.
    EXPECT_TRUE(kept[0].oldValue(Shelf::property(Shelf::Links)).isEmpty());
    kept.clear();
}

TEST_F(SequenceTest, CommitsReportTheOldContent) {
    auto const made = letters(u"abcdef");
    for (Item const& each : made)
        items.add(each);
    for (Item const& each : made)
        links.add(each);
    int notices = 0;
    auto const subscription = model.onCommit([&](CommitNotice const& notice) {
        ++notices;
        for (ElementChange const& change : notice.changed) {
            if (change.element() != shelf) continue;
            for (Shelf::Row row : {Shelf::Items, Shelf::Links}) {
                Value const old = change.oldValue(Shelf::property(row));
                ASSERT_NE(old.collection(), nullptr);
                EXPECT_EQ(namesOf(old.collection()->asReferences()->getAllValues()),
                          Names({u"a", u"b", u"c", u"d", u"e", u"f"}));
            }
        }
    });
    auto transaction = model.beginTransaction();
    for (ElementSequence<Item>* sequence : {&items, &links}) {
        sequence->erase(2);
        sequence->erase(sequence->begin(), sequence->begin() + 2);
        sequence->insert(1, made[0]);
        sequence->assign(0, item(u"x"));
        sequence->clear();
        sequence->add(made[3]);
    }
    transaction.commit();
    EXPECT_EQ(notices, 1);
}

} // namespace
} // namespace shop
