// Collections of plain values.

#include "CollectionSupport.hpp"

#include <algorithm>
#include <random>
#include <ranges>

namespace shop {
namespace {

class PrimitiveTest : public testing::Test {
  protected:
    static Value text(std::string const& value) {
        return Value::own<std::string>(meta::requireType("StdString"), ValueFlags::One, value);
    }
    static Value number(int value) {
        return Value::own<int>(meta::requireType("Integer"), ValueFlags::One, value);
    }
    static Value colour(Colour value) {
        return Value::own<Colour>(meta::requireType("shop.Colour"), ValueFlags::One, value);
    }
    template <class Collection>
    static auto valuesOf(Collection const& collection) {
        return std::vector<typename Collection::value_type>(collection.begin(), collection.end());
    }

    Model model = createModel();
    Shelf shelf = Shelf::create(model);
    PrimitiveSequence<std::string>& notes = shelf->notes;
    PrimitiveSequence<int>& numbers = shelf->numbers; // unique
    using Texts = std::vector<std::string>;
    using Numbers = std::vector<int>;
};

static_assert(std::ranges::contiguous_range<PrimitiveSequence<std::string> const>);
static_assert(sizeof(InlineCollection<PrimitiveSequence<std::string>, Shelf::Impl::table, Shelf::Notes>) ==
              2 * sizeof(void*));

TEST_F(PrimitiveTest, SequencesKeepOrderAndRepeat) {
    notes.push_back("a");
    notes.add("b");
    notes.push_back("a");
    notes.insert(1, "c");
    EXPECT_EQ(valuesOf(notes), Texts({"a", "c", "b", "a"}));
    notes.push_back(notes[1]); // a value of the sequence itself
    notes.insert(notes.begin(), notes[4]);
    EXPECT_EQ(valuesOf(notes), Texts({"c", "a", "c", "b", "a", "c"}));
    notes.remove(notes[0]);
    EXPECT_EQ(*notes.erase(0), "c");
    notes.assign(0, "x");
    EXPECT_EQ(valuesOf(notes), Texts({"x", "b", "a", "c"}));
    EXPECT_TRUE(notes.contains("b"));
    EXPECT_FALSE(notes.contains("y"));
    EXPECT_EQ(notes.at(1), "b");
    EXPECT_THROW((void)notes.at(4), std::out_of_range);
    notes.clear();
    EXPECT_TRUE(notes.empty());
}

TEST_F(PrimitiveTest, UniqueOnesIgnoreASecondValueWithoutAWord) {
    for (int value : {1, 2, 3, 2})
        numbers.push_back(value);
    EXPECT_EQ(numbers.insert(0, 3) - numbers.begin(), 2);
    numbers.assign(0, 2);
    numbers.genericReplace(number(2), 1);
    numbers.genericReplace(number(3), 0);
    numbers.genericInsert(number(1), 2);
    numbers.genericAdd(number(1));
    EXPECT_EQ(valuesOf(numbers), Numbers({1, 2, 3}));
    numbers.genericReplace(number(9), 1);
    EXPECT_EQ(valuesOf(numbers), Numbers({1, 9, 3}));
}

TEST_F(PrimitiveTest, ReflectionReadsAndWritesValues) {
    EXPECT_EQ(notes.getKind(), AbstractPrimitiveCollection::Kind::Sequence);
    GenericPrimitiveSequenceInterface& face =
        *static_cast<AbstractPrimitiveCollection&>(notes).getGenericInterface();
    notes.genericAdd(text("a"));
    face.genericInsert(text("b"), 0);
    EXPECT_EQ(face.genericAt(0).getValue<std::string>(), "b");
    EXPECT_EQ(face.genericIndexOf(text("a")), 1u);
    EXPECT_EQ(face.genericIndexOf(text("x")), ~std::uint32_t{0});
    face.genericReplace(text("c"), 1);
    face.genericRemoveAt(0);
    EXPECT_EQ(valuesOf(notes), Texts({"c"}));
    EXPECT_EQ(notes.getAllValues().front().getValue<std::string>(), "c");
    EXPECT_EQ(notes.getAllValues().front().getType(), notes.getCollectionType());
    notes.genericRemove(text("absent"));
    notes.genericRemove(text("c"));
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(notes.getCollectionType(), meta::requireType("StdString"));
}

TEST_F(PrimitiveTest, ValuesOfAnotherTypeAreRefusedBeforeAnyChange) {
    notes.push_back("a");
    Value const absent{ValueMeta(meta::requireType("StdString"), ValueFlags::Absent)};
    for (Value const& wrong : {number(1), absent}) {
        expectReport<m::CannotCastIncompatibleTypes>([&] { notes.genericAdd(wrong); });
        expectReport<m::CannotCastIncompatibleTypes>([&] { notes.genericRemove(wrong); });
        expectReport<m::CannotCastIncompatibleTypes>([&] { notes.genericInsert(wrong, 0); });
        expectReport<m::CannotCastIncompatibleTypes>([&] { notes.genericReplace(wrong, 0); });
        expectReport<m::CannotCastIncompatibleTypes>([&] { (void)notes.genericIndexOf(wrong); });
    }
    EXPECT_EQ(valuesOf(notes), Texts({"a"}));
    // One value without a payload stands for the default.
    notes.genericAdd(Value{ValueMeta(meta::requireType("StdString"), ValueFlags::One)});
    EXPECT_EQ(valuesOf(notes), Texts({"a", ""}));
}

TEST_F(PrimitiveTest, EnumerationsTravelAsSignExtendedWords) {
    Standalone<PrimitiveSequence<Colour>> list(shelf.get(), Shelf::Impl::rows[Shelf::Notes]);
    ShopPackage::getInstance();
    list.genericAdd(colour(Colour::Infrared));
    list.push_back(Colour::Blue);
    EXPECT_EQ(list.genericAt(0).getValue<Colour>(), Colour::Infrared);
    EXPECT_EQ(*static_cast<unsigned long const*>(list.getAllValues()[0].data()), ~0ul);
    EXPECT_EQ(list.genericIndexOf(colour(Colour::Blue)), 1u);
    expectReport<m::CannotCastIncompatibleTypes>([&] { list.genericAdd(number(1)); });
    EXPECT_EQ(list.getCollectionType(), meta::requireType("shop.Colour"));
}

TEST_F(PrimitiveTest, SetsAreSortedByNumberAndHaveNoPositions) {
    ShopPackage::getInstance();
    Standalone<PrimitiveSet<Colour>> set(shelf.get(), Shelf::Impl::rows[Shelf::Notes]);
    set.genericAdd(colour(Colour::Blue));
    set.add(Colour::Red);
    set.insert(Colour::Infrared);
    set.add(Colour::Red);
    EXPECT_EQ(valuesOf(set), std::vector<Colour>({Colour::Infrared, Colour::Red, Colour::Blue}));
    EXPECT_EQ(set.getAllValues()[0].getValue<Colour>(), Colour::Infrared);
    EXPECT_EQ(static_cast<AbstractPrimitiveCollection&>(set).getGenericInterface(), nullptr);
    EXPECT_EQ(set.getKind(), AbstractPrimitiveCollection::Kind::Set);
    auto transaction = model.beginTransaction();
    set.erase(Colour::Red);
    set.genericRemove(colour(Colour::Green));
    set.add(Colour::Green);
    set.clear();
    set.add(Colour::Green);
    transaction.rollback();
    EXPECT_EQ(valuesOf(set), std::vector<Colour>({Colour::Infrared, Colour::Red, Colour::Blue}));
    EXPECT_TRUE(set.contains(Colour::Blue));
    Standalone<PrimitiveSet<Colour>> copy(nullptr, Shelf::Impl::rows[Shelf::Notes]);
    copy.copyContents(set);
    EXPECT_EQ(copy.size(), 3u);
}

/// \returns the properties of the shelf that a commit reported.
TEST_F(PrimitiveTest, ChangesAreToldAsTheFrameOfEachKindSays) {
    int told = 0;
    auto const subscription = model.onCommit([&](CommitNotice const&) { ++told; });
    auto expectTold = [&](bool expected, auto change) {
        int const before = told;
        change();
        EXPECT_EQ(told - before, expected ? 1 : 0);
    };
    expectTold(true, [&] { notes.push_back("a"); });
    expectTold(false, [&] { notes.genericRemove(text("absent")); });
    expectTold(true, [&] { numbers.push_back(1); });
    expectTold(false, [&] { numbers.push_back(1); });
    expectTold(true, [&] { notes.assign(0, "b"); });
    expectTold(true, [&] { notes.clear(); });
}

TEST_F(PrimitiveTest, StepsOfAnElementMadeInTheAbandonedLevelAreDropped) {
    // Some are recorded, in an inner level, and some are not: they must not be taken back one by one.
    auto outer = model.beginTransaction();
    Shelf const fresh = Shelf::create(model);
    {
        auto inner = model.beginTransaction();
        for (int i = 0; i < 20; ++i)
            fresh->notes.push_back("x");
        inner.commit();
    }
    fresh->notes.clear();
    fresh->notes.push_back("y");
    outer.rollback();
    EXPECT_FALSE(fresh);
    EXPECT_EQ(model.size(), 1u);
}

template <class T>
struct PoolOf;
template <>
struct PoolOf<std::string> {
    static std::string at(std::size_t i) {
        return "a text that is too long for a small buffer " + std::to_string(i);
    }
    static PrimitiveSequence<std::string>& collection(Shelf const& shelf) { return shelf->notes; }
    static constexpr Shelf::Row row = Shelf::Notes;
    static constexpr bool unique = false;
};
template <>
struct PoolOf<int> {
    static int at(std::size_t i) { return static_cast<int>(i) - 5; }
    static PrimitiveSequence<int>& collection(Shelf const& shelf) { return shelf->numbers; }
    static constexpr Shelf::Row row = Shelf::Numbers;
    static constexpr bool unique = true;
};

template <class T>
class PrimitiveWalk : public PrimitiveTest {};
using WalkTypes = testing::Types<std::string, int>;
TYPED_TEST_SUITE(PrimitiveWalk, WalkTypes);

TYPED_TEST(PrimitiveWalk, AgreesWithAVectorAcrossRollbacksAndInOldValues) {
    using Pool = PoolOf<TypeParam>;
    Shelf const shelf = this->shelf;
    PrimitiveSequence<TypeParam>& sequence = Pool::collection(shelf);
    std::vector<TypeParam> expected;
    std::vector<TypeParam> committed;
    auto const subscription = this->model.onCommit([&](CommitNotice const& notice) {
        for (ElementChange const& change : notice.changed) {
            Value const old = change.oldValue(Shelf::property(Pool::row));
            auto const* collection = static_cast<PrimitiveSequence<TypeParam> const*>(old.collection());
            ASSERT_NE(collection, nullptr);
            EXPECT_EQ(this->valuesOf(*collection), committed);
        }
        committed = this->valuesOf(sequence);
    });
    OpenLevels<std::vector<TypeParam>> levels(this->model);
    std::mt19937 random(11);
    auto below = [&random](std::size_t bound) { return random() % bound; };
    for (int step = 0; step < 3000; ++step) {
        TypeParam const value = Pool::at(below(20));
        bool const refused =
            Pool::unique && std::find(expected.begin(), expected.end(), value) != expected.end();
        std::size_t const at = below(expected.size() + 1);
        auto const position = expected.begin() + static_cast<std::ptrdiff_t>(at);
        switch (below(8)) {
        case 0:
        case 1:
            sequence.insert(at, value);
            if (!refused) expected.insert(position, value);
            break;
        case 2:
            if (at < expected.size()) {
                sequence.erase(at);
                expected.erase(position);
            }
            break;
        case 3:
            if (at < expected.size()) {
                sequence.assign(at, value);
                if (!refused) *position = value;
            }
            break;
        case 4:
            sequence.remove(value);
            if (auto found = std::find(expected.begin(), expected.end(), value); found != expected.end())
                expected.erase(found);
            break;
        case 5:
            if (below(30) == 0) {
                sequence.clear();
                expected.clear();
            }
            break;
        case 6:
            levels.begin(expected);
            break;
        default:
            levels.end(below(3) != 0, expected);
        }
        ASSERT_EQ(this->valuesOf(sequence), expected) << "after step " << step;
    }
}

} // namespace
} // namespace shop
