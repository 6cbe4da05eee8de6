#include "ValueSupport.hpp"

#include "brant/zero/Exceptions.hpp"

#include <limits>
#include <map>

namespace {

using namespace brant::zero;
using climate::Metamodel;
using climate::refuses;
using climate::Weather;
using meta::StandardTypes;

template <class T>
Value one(meta::Type const& type, T const& payload) {
    return Value::own<T>(type, ValueFlags::One, payload);
}
Value without(meta::Type const& type) {
    return Value(ValueMeta(type, ValueFlags::One));
}
Value absent(meta::Type const& type) {
    return Value(ValueMeta(type, ValueFlags::Absent));
}

class ValueTest : public testing::Test {
  protected:
    Model model = Model::create({}, {}, DefaultWorkQueueFactory());
    meta::Enum weather = Metamodel::get().weather;
};

// ---- reading: who may read what

template <class T>
void read(Value const& value) {
    (void)value.getValue<T>();
}

std::map<std::string, void (*)(Value const&)> const readers = {
    {"bool", read<bool>},
    {"int", read<int>},
    {"unsigned", read<unsigned int>},
    {"long", read<long>},
    {"ulong", read<unsigned long>},
    {"double", read<double>},
    {"string", read<std::string>},
    {"u16string", read<std::u16string>},
    {"optional int", read<boost::optional<int>>},
    {"vector int", read<std::vector<int>>},
    {"Weather", read<Weather>},
    {"optional Weather", read<boost::optional<Weather>>},
    {"vector Weather", read<std::vector<Weather>>},
    {"set Weather", read<std::set<Weather>>},
    {"ModelElement", read<ModelElement>},
    {"Type", read<meta::Type>},
    {"Class", read<meta::Class>},
    {"Enum", read<meta::Enum>},
    {"vector ModelElement", read<std::vector<ModelElement>>},
    {"vector Type", read<std::vector<meta::Type>>},
    {"vector Enum", read<std::vector<meta::Enum>>},
};

struct Row {
    char const* name;
    Value value;
    std::u16string type;
    std::set<std::string> readableAs;
};

void checkReading(std::vector<Row> const& rows) {
    for (Row const& row : rows) {
        std::set<std::string> readable;
        for (auto const& [reader, read] : readers) {
            SCOPED_TRACE(std::string(row.name) + " read as " + reader);
            if (!row.readableAs.contains(reader)) {
                EXPECT_TRUE(refuses(row.type, [&, read = read] { read(row.value); }));
                continue;
            }
            EXPECT_NO_THROW(read(row.value));
            readable.insert(reader);
        }
        EXPECT_EQ(readable, row.readableAs) << "no reader is called so";
    }
}

TEST_F(ValueTest, ReadsPrimitivesAsThatVeryPrimitive) {
    meta::Type const& integer = StandardTypes::integer();
    checkReading({
        {"bool", one(StandardTypes::boolean(), true), u"Boolean", {"bool"}},
        {"int", one(integer, -1), u"Integer", {"int", "optional int"}},
        {"unsigned", one(StandardTypes::unlimitedNatural(), 1u), u"UnlimitedNatural", {"unsigned"}},
        {"long", one(StandardTypes::integer64(), 1l), u"Integer64", {"long"}},
        {"ulong", one(StandardTypes::uInteger64(), 1ul), u"UInteger64", {"ulong"}},
        {"double", one(StandardTypes::real(), 0.5), u"Real", {"double"}},
        {"string", one(StandardTypes::stdString(), std::string("a")), u"StdString", {"string"}},
        {"u16string", one(StandardTypes::string(), std::u16string(u"a")), u"String", {"u16string"}},
        {"ints", Value::ownContainer(integer, std::vector<int>{1}), u"Integer", {"vector int"}},
        {"absent int", absent(integer), u"Integer", {"optional int"}},
        {"int without payload", without(integer), u"Integer", {"int", "optional int"}},
        {"nothing", Value(), u"no type", {}},
    });
}

TEST_F(ValueTest, ReadsEnumerationsAsThatVeryEnumeration) {
    meta::Type const other = Metamodel::get().other;
    meta::Enum const holder = meta::Enum::create(model);
    Value const list = Value::refer(Metamodel::property(weather, 2, true), holder.getProperties());
    Value const set = Value::refer(Metamodel::property(weather, 2, false), holder.getProperties());
    auto const listOf = [](meta::Type const& type) {
        return Value::ownContainer(type, std::vector{Weather::Sun});
    };
    std::u16string const name = u"climate.Weather";
    checkReading({
        {"enumeration", one(weather, Weather::Sun), name, {"Weather", "optional Weather"}},
        {"without payload", without(weather), name, {"Weather", "optional Weather"}},
        {"absent", absent(weather), name, {"optional Weather"}},
        {"another enumeration", one(other, Weather::Sun), u"climate.Other", {}},
        {"list", listOf(weather), name, {"vector Weather"}},
        {"empty list", Value::ownContainer(weather, std::vector<Weather>()), name, {"vector Weather"}},
        {"set", Value::ownContainer(weather, std::set{Weather::Sun}), name, {"set Weather"}},
        {"empty set", Value::ownContainer(weather, std::set<Weather>()), name, {"set Weather"}},
        {"another list", listOf(other), u"climate.Other", {}},
        {"live list", list, name, {}},
        {"live set", set, name, {}},
    });
}

TEST_F(ValueTest, ReadsElementsAsTheirClassAndItsSuperclasses) {
    meta::Enum const element = meta::Enum::create(model);
    AbstractOwnedCollection const& live = element.getProperties();
    meta::Type const enumClass = meta::Enum::metaClass();
    meta::Type const classClass = meta::Class::metaClass();
    meta::Type const typeClass = meta::Type::metaClass();
    meta::Class withoutTable;
    {
        meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
        auto const thawer = registry.freezer().thaw();
        withoutTable = meta::Class::create(registry.metaModel());
        withoutTable.setName(u"Handmade");
        withoutTable.setSuperclass(meta::Enum::metaClass());
    }
    ModelElement const null;
    std::u16string const package = u"brant.zero.meta.";
    std::set<std::string> const enums = {"ModelElement", "Type", "Enum"};
    std::set<std::string> const classes = {"ModelElement", "Type", "Class"};
    Value const emptyList = Value::ownContainer(typeClass, std::vector<meta::Type>());
    checkReading({
        {"element", one<ModelElement>(enumClass, element), package + u"Enum", enums},
        {"of a class without table", one(withoutTable, null), u"Handmade", enums},
        {"of a class that is a class", one<ModelElement>(classClass, withoutTable), package + u"Class",
         classes},
        {"null", one(typeClass, null), package + u"Type", {"ModelElement", "Type"}},
        {"absent", absent(classClass), package + u"Class", classes},
        {"list",
         Value::ownContainer(enumClass, std::vector{element}),
         package + u"Enum",
         {"vector ModelElement", "vector Type", "vector Enum"}},
        {"empty list", emptyList, package + u"Type", {"vector ModelElement", "vector Type"}},
        {"live list", Value::refer(Core::propertyOf(&live.row()), live), package + u"Property", {}},
        {"element of the root class",
         one<ModelElement>(ModelElement::metaClass(), element),
         u"brant.zero.ModelElement",
         {"ModelElement"}},
    });
}

// ---- payloads

template <class T>
void comesBack(meta::Type const& type, std::vector<T> const& payloads) {
    meta::Property const property = Metamodel::property(type);
    for (T const& payload : payloads) {
        Value const value = Value::createPrimitiveValue(property, payload);
        EXPECT_EQ(value.getValue<T>(), payload);
        EXPECT_EQ(value.getType(), type);
        EXPECT_EQ(value.getProperty(), nullptr);
        EXPECT_EQ(value.flags(), ValueFlags::One);
        EXPECT_TRUE(value.isManaged());
        EXPECT_EQ(value.collection(), nullptr);
        EXPECT_TRUE(value.extract().empty());
    }
    EXPECT_EQ(without(type).getValue<T>(), T{}) << "no payload reads as the default";
}

template <class T>
std::vector<T> extremes() {
    return {T{0}, T{1}, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
}

TEST_F(ValueTest, PayloadsComeBack) {
    comesBack<bool>(StandardTypes::boolean(), {false, true});
    comesBack<int>(StandardTypes::integer(), extremes<int>());
    comesBack<unsigned int>(StandardTypes::unlimitedNatural(), extremes<unsigned int>());
    comesBack<long>(StandardTypes::integer64(), extremes<long>());
    comesBack<unsigned long>(StandardTypes::uInteger64(), extremes<unsigned long>());
    comesBack<double>(StandardTypes::real(), {-0.5, 1e300, std::numeric_limits<double>::infinity()});
    comesBack<std::string>(StandardTypes::stdString(), {"", std::string("a\0\xff", 3)});
    comesBack<std::u16string>(StandardTypes::string(), {u"", std::u16string(u"a\0\xd800", 3)});
    comesBack<Weather>(weather, {Weather::Storm, Weather::Sun, static_cast<Weather>(-2147483647 - 1)});
}

TEST_F(ValueTest, APropertyOfAnotherTypeTakesNoPrimitive) {
    EXPECT_TRUE(refuses(u"Integer64", [] {
        (void)Value::createPrimitiveValue(Metamodel::property(StandardTypes::integer64()), 1);
    }));
    EXPECT_TRUE(refuses(u"climate.Other", [] {
        (void)Value::createPrimitiveValue(Metamodel::property(Metamodel::get().other), Weather::Sun);
    }));
}

TEST_F(ValueTest, AnEnumerationIsASignExtendedWord) {
    schema::EnumTable const& table = EnumerationTraits<Weather>::table;
    Value const storm = one(weather, Weather::Storm);
    EXPECT_EQ(*static_cast<unsigned long const*>(storm.data()), 0xfffffffffffffffdul);
    EXPECT_EQ(storm.getEnumerationWord(table), 0xfffffffffffffffdul);
    EXPECT_EQ(Value(weather, 0xabcd00000007ul, ValueFlags::One).getValue<Weather>(), Weather::Sun)
        << "only the low half counts";
    EXPECT_TRUE(storm.getValue<boost::optional<Weather>>() == Weather::Storm);
    EXPECT_FALSE(absent(weather).getValue<boost::optional<Weather>>());
    EXPECT_EQ(without(weather).getEnumerationWord(table), 0u);
    EXPECT_TRUE(refuses(u"climate.Other",
                        [&] { (void)one(Metamodel::get().other, Weather::Sun).getEnumerationWord(table); }));
    EXPECT_TRUE(refuses(u"climate.Weather", [&] { (void)absent(weather).getEnumerationWord(table); }));
}

TEST_F(ValueTest, AnUnknownEnumerationIsNotTheTypeOfAValueWithoutType) {
    schema::EnumTable unknown = EnumerationTraits<Weather>::table;
    unknown.object = nullptr; // its package is not assembled
    Value const value(meta::Type(), 7, ValueFlags::One);
    EXPECT_TRUE(refuses(u"no type", [&] { (void)value.getEnumerationWord(unknown); }));
}

TEST_F(ValueTest, AnElementHasItsOwnClassAsType) {
    meta::Property const typeProperty = Metamodel::property(meta::Type::metaClass());
    meta::Enum const element = meta::Enum::create(model);
    Value const value = Value::createElementValue<meta::Type>(typeProperty, element);
    EXPECT_EQ(value.getType(), meta::Enum::metaClass());
    EXPECT_EQ(value.getProperty(), nullptr);
    EXPECT_EQ(value.getValue<meta::Enum>(), element);
    EXPECT_EQ(value.getValue<ModelElement>(), element);

    Value const null = Value::createElementValue<meta::Type>(typeProperty, nullptr);
    EXPECT_EQ(null.getType(), meta::Type::metaClass());
    EXPECT_FALSE(null.isEmpty());
    EXPECT_EQ(null.getValue<meta::Type>(), nullptr);
    EXPECT_EQ(Value(ValueMeta(meta::Type::metaClass(), ValueFlags::Absent)).getValue<meta::Type>(), nullptr);
    EXPECT_TRUE(refuses(u"brant.zero.meta.Type",
                        [&] { (void)Value::createElementValue<meta::Enum>(typeProperty, nullptr); }));
}

TEST_F(ValueTest, AnElementValueKeepsTheMemoryOfADestroyedElement) {
    meta::Enum element = meta::Enum::create(model);
    Value const value = Value::createElementValue(Metamodel::property(meta::Enum::metaClass()), element);
    element.destroy();
    ModelElementImpl const* const body = element.get();
    element = nullptr;
    meta::Enum const read = value.getValue<meta::Enum>();
    EXPECT_FALSE(read);
    EXPECT_EQ(read.get(), body);
    EXPECT_THROW((void)read.getName(), DeadHandle);
}

// ---- copies

TEST_F(ValueTest, CopiesAreDeepAndMovesLeaveNothing) {
    std::string const text(100, 'x');
    Value source = Value::own(StandardTypes::stdString(), ValueFlags::One, text);
    Value const copy = source;
    EXPECT_NE(copy.data(), source.data());
    EXPECT_EQ(copy.getValue<std::string>(), text);

    void const* const payload = source.data();
    Value moved = std::move(source);
    EXPECT_EQ(moved.data(), payload);
    EXPECT_TRUE(source.isEmpty()); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source.collection(), nullptr);

    Value list = Value::ownContainer(weather, std::vector{Weather::Sun});
    list = moved;
    EXPECT_EQ(list.getValue<std::string>(), text);
    EXPECT_TRUE(list.extract().empty()) << "the new payload has no members";
    list = Value::ownContainer(weather, std::vector{Weather::Sun, Weather::Frost});
    Value const same = list;
    EXPECT_EQ(same.extract().size(), 2u);
    EXPECT_FALSE(same.isManaged());
    list = *&list;
    EXPECT_EQ(list, same);
}

TEST_F(ValueTest, ReferencesAreCountedOnce) {
    meta::Enum const element = meta::Enum::create(model);
    std::uint32_t const before = element.get()->refCount();
    {
        Value const value = Value::own<ModelElement>(meta::Enum::metaClass(), ValueFlags::One, element);
        Value const copy = value;
        Value const list = Value::ownContainer(meta::Enum::metaClass(), std::vector{element, element});
        EXPECT_EQ(element.get()->refCount(), before + 4);
    }
    EXPECT_EQ(element.get()->refCount(), before);
}

// ---- live collections

TEST_F(ValueTest, ALiveCollectionIsReferredTo) {
    meta::Enum const element = meta::Enum::create(model);
    AbstractOwnedCollection const& live = element.getLiterals();
    meta::Property const property = Core::propertyOf(&live.row());
    Value const value = Value::refer(property, live);
    EXPECT_EQ(value.collection(), &live);
    EXPECT_EQ(value.getProperty(), property);
    EXPECT_EQ(value.getType(), meta::EnumLiteral::metaClass());
    EXPECT_EQ(value.flags(), ValueFlags::Map);
    EXPECT_TRUE(value.isManaged());
    EXPECT_TRUE(value.extract().empty());
    Value copy = value;
    EXPECT_EQ(copy.collection(), &live);
    Value const moved = std::move(copy);
    EXPECT_EQ(moved.collection(), &live);
    EXPECT_EQ(copy.collection(), nullptr); // NOLINT(bugprone-use-after-move)
}

TEST_F(ValueTest, ShapeFollowsFromTheProperty) {
    struct {
        int multiplicity;
        bool ordered;
        ValueFlags flags;
    } const rows[] = {{1, true, ValueFlags::One},
                      {2, true, ValueFlags::Sequence},
                      {2, false, ValueFlags::Set},
                      {6, false, ValueFlags::Map}};
    for (auto const& row : rows) {
        meta::Property const property = Metamodel::property(weather, row.multiplicity, row.ordered);
        ValueMeta const value(property);
        EXPECT_EQ(value.flags(), row.flags) << row.multiplicity << row.ordered;
        EXPECT_EQ(value.getType(), weather);
        EXPECT_EQ(value.getProperty(), property);
        EXPECT_TRUE(value.isManaged());
    }
}

// ---- owned containers

TEST_F(ValueTest, OwnedContainersHandOutTheirMembers) {
    std::vector const list{Weather::Sun, Weather::Storm, Weather::Sun};
    Value const value = Value::ownContainer(weather, list);
    EXPECT_FALSE(value.isManaged());
    EXPECT_EQ(value.flags(), ValueFlags::Sequence);
    EXPECT_EQ(value.getValue<std::vector<Weather>>(), list);
    EXPECT_EQ(value.extract(), (std::vector{one(weather, Weather::Sun), one(weather, Weather::Storm),
                                            one(weather, Weather::Sun)}));

    Value const set = Value::ownContainer(weather, std::set{Weather::Sun, Weather::Storm, Weather::Frost});
    EXPECT_EQ(set.extract(), (std::vector{one(weather, Weather::Storm), one(weather, Weather::Frost),
                                          one(weather, Weather::Sun)}))
        << "negative numbers come first";
    EXPECT_EQ(set.getValue<std::set<Weather>>().size(), 3u);

    meta::Enum const element = meta::Enum::create(model);
    Value const elements =
        Value::ownContainer(meta::Type::metaClass(), std::vector<meta::Type>{element, nullptr});
    std::vector<Value> const members = elements.extract();
    ASSERT_EQ(members.size(), 2u);
    EXPECT_EQ(members[0].getType(), meta::Enum::metaClass());
    EXPECT_EQ(members[0].getValue<meta::Enum>(), element);
    EXPECT_EQ(members[1].getType(), meta::Type::metaClass());
    EXPECT_EQ(members[1].getValue<meta::Type>(), nullptr);
    EXPECT_EQ(elements.getValue<std::vector<ModelElement>>(), (std::vector<ModelElement>{element, nullptr}));

    Value const flags = Value::ownContainer(StandardTypes::boolean(), std::vector<bool>{true, false});
    ASSERT_EQ(flags.extract().size(), 2u);
    EXPECT_TRUE(flags.extract()[0].getValue<bool>());
}

// ---- equality and hash

TEST_F(ValueTest, EqualityIsOfTypeAndPayload) {
    meta::Enum const a = meta::Enum::create(model);
    meta::Enum const b = meta::Enum::create(model);
    meta::Type const& integer = StandardTypes::integer();
    meta::Type const typeClass = meta::Type::metaClass();
    auto const element = [](meta::Type const& type, ModelElement const& value) {
        return Value::own<ModelElement>(type, ValueFlags::One, value);
    };
    // Values of one group are equal, values of different groups are not.
    std::vector<std::vector<Value>> const groups = {
        {Value::own(integer, ValueFlags::One, 7), Value::own(integer, ValueFlags::One, 7)},
        {Value::own(integer, ValueFlags::One, 8)},
        {Value::own(StandardTypes::integer64(), ValueFlags::One, 7l)},
        {Value::own(StandardTypes::uInteger64(), ValueFlags::One, 7ul)},
        {one(weather, Weather::Sun), Value(weather, 7, ValueFlags::One)},
        {one(Metamodel::get().other, Weather::Sun)},
        {Value::own(StandardTypes::real(), ValueFlags::One, 0.0),
         Value::own(StandardTypes::real(), ValueFlags::One, -0.0)},
        {Value::own(StandardTypes::stdString(), ValueFlags::One, std::string("a")),
         Value::own(StandardTypes::stdString(), ValueFlags::One, std::string("a"))},
        {Value::own(StandardTypes::stdString(), ValueFlags::One, std::string("a\0", 2))},
        {Value::own(StandardTypes::string(), ValueFlags::One, std::u16string(u"a"))},
        {element(meta::Enum::metaClass(), a), element(typeClass, a)},
        {element(meta::Enum::metaClass(), b)},
        {element(meta::Enum::metaClass(), nullptr), element(typeClass, nullptr)},
        {Value::ownContainer(weather, std::vector{Weather::Sun}),
         Value::ownContainer(weather, std::vector{Weather::Sun})},
        {Value::ownContainer(weather, std::set{Weather::Sun})},
        {Value::ownContainer(integer, std::vector{7})},
        {Value::ownContainer(weather, std::vector<Weather>())},
        {Value::ownContainer(weather, std::set<Weather>())},
        {Value(ValueMeta(integer, ValueFlags::Absent)), Value(ValueMeta(integer, ValueFlags::Absent))},
        {Value(ValueMeta(integer, ValueFlags::One))},
        {Value(), Value()},
        {Value::refer(Core::propertyOf(&a.getProperties().row()), a.getProperties()),
         Value::refer(Core::propertyOf(&a.getProperties().row()), a.getProperties())},
        {Value::refer(Core::propertyOf(&b.getProperties().row()), b.getProperties())},
    };
    for (std::size_t i = 0; i < groups.size(); ++i)
        for (std::size_t j = 0; j < groups.size(); ++j)
            for (Value const& x : groups[i])
                for (Value const& y : groups[j]) {
                    EXPECT_EQ(x == y, i == j) << "groups " << i << " and " << j;
                    EXPECT_TRUE(i != j || x.hash() == y.hash()) << "group " << i;
                }
    double const nan = std::numeric_limits<double>::quiet_NaN();
    Value const notANumber = Value::own(StandardTypes::real(), ValueFlags::One, nan);
    EXPECT_FALSE(notANumber == Value(notANumber));
}

TEST_F(ValueTest, HashesAreThoseOfThePayload) {
    auto const hashOf = [](auto payload) {
        return Value::own(StandardTypes::integer(), ValueFlags::One, payload).hash();
    };
    EXPECT_EQ(hashOf(true), 1u);
    EXPECT_EQ(hashOf(-1), ~0ul);
    EXPECT_EQ(hashOf(0xffffffffu), 0xfffffffful);
    EXPECT_EQ(hashOf(-2l), ~0ul - 1);
    EXPECT_EQ(hashOf(~0ul), ~0ul);
    EXPECT_EQ(hashOf(-0.0), 0u);
    EXPECT_EQ(hashOf(1.5), std::hash<double>()(1.5)) << "the library's own hash of the bytes";
    EXPECT_EQ(hashOf(std::string("translation unit")), std::hash<std::string>()("translation unit"));
    EXPECT_EQ(hashOf(std::u16string(u"\xd800 unit")), std::hash<std::u16string>()(u"\xd800 unit"));
    EXPECT_EQ(hashOf(Weather::Storm), ~0ul - 2);
    EXPECT_EQ(hashOf(ModelElement()), 0u);
    EXPECT_EQ(Value(ValueMeta(StandardTypes::integer(), ValueFlags::One)).hash(), 0u);

    EXPECT_EQ(Value::ownContainer(StandardTypes::integer(), std::vector{1, 2, 3}).hash(),
              0xc731b9530f415a0cul);
    EXPECT_EQ(Value::ownContainer(weather, std::set{Weather::Sun, Weather::Storm}).hash(),
              0x6c874ad83b75f71bul);
    EXPECT_EQ(Value::ownContainer(meta::Type::metaClass(), std::vector<meta::Type>{nullptr}).hash(),
              0xe6546b64ul);
    EXPECT_EQ(Value::ownContainer(weather, std::vector<Weather>()).hash(), 0u);
    EXPECT_EQ(Value::ownContainer(weather, std::set<Weather>()).hash(), 0u);
}

TEST_F(ValueTest, ElementsOfOneIdentityHashAlikeAndDiffer) {
    Model const second = Model::create({}, {}, DefaultWorkQueueFactory());
    boost::uuids::uuid const identity = ElementImpl::generateNewUuid();
    meta::Type const type = meta::Enum::metaClass();
    Value const a = Value::own<ModelElement>(type, ValueFlags::One, meta::Enum::create(model, identity));
    Value const b = Value::own<ModelElement>(type, ValueFlags::One, meta::Enum::create(second, identity));
    EXPECT_EQ(a.hash(), b.hash());
    EXPECT_EQ(a.hash(), services::hashers::Brant0Hasher<boost::uuids::uuid>()(identity));
    EXPECT_FALSE(a == b);
}

TEST(ValueOperations, TreatANullPayloadAsNone) {
    int const seven = 7;
    EXPECT_EQ(Value::genericCloner<int>(nullptr), nullptr);
    EXPECT_EQ(Value::genericHasher<std::string>(nullptr), 0u);
    EXPECT_TRUE(Value::genericComparator<int>(nullptr, nullptr));
    EXPECT_FALSE(Value::genericComparator<int>(&seven, nullptr));
    EXPECT_FALSE(Value::genericComparator<int>(nullptr, &seven));
    Value::genericDeleter<std::string>(nullptr);
    void* const clone = Value::genericCloner<int>(&seven);
    EXPECT_TRUE(Value::genericComparator<int>(clone, &seven));
    Value::genericDeleter<int>(clone);
}

} // namespace
