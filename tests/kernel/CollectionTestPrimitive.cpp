// Collections of plain values.

#include "kernel/CollectionSupport.hpp"

#include <algorithm>
#include <ranges>

namespace shop {
namespace {

template <class T>
std::vector<T> valuesOf(PrimitiveSequence<T> const& collection) {
    return {collection.begin(), collection.end()};
}

class PrimitiveTest : public CollectionTest {
  protected:
    template <class T>
    static Value value(char const* type, T const& payload) {
        return Value::own<T>(meta::requireType(type), ValueFlags::One, payload);
    }
    static Value text(std::string const& payload) { return value("StdString", payload); }
    static Value number(int payload) { return value("Integer", payload); }
    static Value colour(Colour payload) { return value("shop.Colour", payload); }

    using Texts = std::vector<std::string>;
    using Ints = std::vector<int>;
};

static_assert(std::ranges::contiguous_range<PrimitiveSequence<std::string> const>);
static_assert(sizeof(InlineCollection<PrimitiveSequence<std::string>, Shelf::Impl::table, Notes>) ==
              2 * sizeof(void*));

template <class T>
class PrimitiveWalk : public PrimitiveTest {};
using WalkTypes = testing::Types<std::string, int>;
TYPED_TEST_SUITE(PrimitiveWalk, WalkTypes);

TYPED_TEST(PrimitiveWalk, AgreesWithAVectorAcrossRollbacksAndInOldValues) {
    using T = TypeParam;
    constexpr bool isUnique = std::is_same_v<T, int>;
    Row const row = isUnique ? Numbers : Notes;
    auto const pool = [](std::size_t i) {
        if constexpr (isUnique)
            return static_cast<int>(i) - 5;
        else
            return "a text that is too long for a small buffer " + std::to_string(i);
    };
    auto& sequence = static_cast<PrimitiveSequence<T>&>(Core::collection(*this->shelf.get(), rowOf(row)));
    Walk<std::vector<T>> walk(this->shelf, row, 11, [](AbstractOwnedCollection const& values) {
        return valuesOf(static_cast<PrimitiveSequence<T> const&>(values));
    });
    walk.run(3000, [&] {
        std::vector<T>& expected = walk.expected;
        T const value = pool(walk.below(20));
        auto const found = std::find(expected.begin(), expected.end(), value);
        bool const isRefused = isUnique && found != expected.end(); // without a word
        std::size_t const at = walk.below(expected.size() + 1);
        auto const place = expected.begin() + static_cast<std::ptrdiff_t>(at);
        EXPECT_EQ(sequence.contains(value), found != expected.end());
        switch (walk.below(6)) {
        case 0:
        case 1: {
            auto const inserted = sequence.insert(at, value);
            EXPECT_EQ(inserted - sequence.begin(), (isRefused ? found : place) - expected.begin());
            if (!isRefused) expected.insert(place, value);
            break;
        }
        case 2:
            if (place == expected.end()) break;
            sequence.erase(at);
            expected.erase(place);
            break;
        case 3:
            if (place == expected.end()) break;
            sequence.assign(at, value);
            if (!isRefused) *place = value;
            break;
        case 4:
            sequence.remove(value);
            if (found != expected.end()) expected.erase(found);
            break;
        default:
            if (walk.below(30) != 0) break;
            sequence.clear();
            expected.clear();
        }
    });
}

TEST_F(PrimitiveTest, AValueOfTheSequenceItselfMayBeGiven) {
    for (char const* text : {"a", "c", "b"})
        notes.add(text);
    notes.push_back(notes[1]);
    notes.insert(notes.begin(), notes[3]);
    EXPECT_EQ(valuesOf(notes), Texts({"c", "a", "c", "b", "c"}));
    notes.remove(notes[0]);
    EXPECT_EQ(*notes.erase(0), "c");
    EXPECT_EQ(notes.at(1), "b");
    EXPECT_THROW((void)notes.at(3), std::out_of_range);
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
    EXPECT_EQ(notes.getAllValues().front().getValue<std::string>(), "c");
    EXPECT_EQ(notes.getAllValues().front().getType(), notes.getCollectionType());
    notes.genericRemove(text("absent"));
    notes.genericRemove(text("c"));
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(notes.getCollectionType(), meta::requireType("StdString"));
    // A second value of a unique one is ignored in silence.
    for (int each : {1, 2, 3})
        numbers.push_back(each);
    numbers.genericReplace(number(2), 1);
    numbers.genericReplace(number(3), 0);
    numbers.genericInsert(number(1), 2);
    numbers.genericAdd(number(1));
    EXPECT_EQ(valuesOf(numbers), Ints({1, 2, 3}));
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
    ShopPackage::getInstance();
    Standalone<PrimitiveSequence<Colour>> list(shelf.get(), rowOf(Notes));
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
    Standalone<PrimitiveSet<Colour>> set(shelf.get(), rowOf(Notes));
    set.genericAdd(colour(Colour::Blue));
    for (Colour const each : {Colour::Red, Colour::Infrared, Colour::Red})
        set.add(each);
    std::vector<Colour> const sorted = {Colour::Infrared, Colour::Red, Colour::Blue};
    EXPECT_EQ(std::vector<Colour>(set.begin(), set.end()), sorted);
    EXPECT_EQ(set.getAllValues()[0].getValue<Colour>(), Colour::Infrared);
    EXPECT_EQ(static_cast<AbstractPrimitiveCollection&>(set).getGenericInterface(), nullptr);
    EXPECT_EQ(set.getKind(), AbstractPrimitiveCollection::Kind::Set);
    auto transaction = model.beginTransaction();
    set.erase(Colour::Red);
    set.genericRemove(colour(Colour::Green));
    set.add(Colour::Green);
    set.clear();
    set.insert(Colour::Green);
    transaction.rollback();
    EXPECT_EQ(std::vector<Colour>(set.begin(), set.end()), sorted);
    EXPECT_TRUE(set.contains(Colour::Blue));
    Standalone<PrimitiveSet<Colour>> copy(nullptr, rowOf(Notes));
    copy.copyContents(set);
    EXPECT_EQ(copy.size(), 3u);
}

TEST_F(PrimitiveTest, OnlyWhatChangesIsTold) {
    int told = 0;
    auto const subscription = model.onCommit([&](CommitNotice const&) { ++told; });
    notes.push_back("a");
    notes.genericRemove(text("absent"));
    numbers.push_back(1);
    numbers.push_back(1);
    EXPECT_EQ(told, 2);
    notes.assign(0, "b");
    notes.clear();
    EXPECT_EQ(told, 4);
}

TEST_F(PrimitiveTest, StepsOfAnElementMadeInTheAbandonedLevelAreDropped) {
    // Some are recorded, in an inner level, and some are not: they must not be taken back one by one.
    auto outer = model.beginTransaction();
    Shelf const fresh = Shelf::create(model);
    {
        auto inner = model.beginTransaction();
        for (int i = 0; i < 20; ++i)
            fresh.getNotesMutable().push_back("x");
        inner.commit();
    }
    fresh.getNotesMutable().clear();
    fresh.getNotesMutable().push_back("y");
    outer.rollback();
    EXPECT_FALSE(fresh);
    EXPECT_EQ(model.size(), 1u);
}

} // namespace
} // namespace shop
