// The primitive types, and the text forms of primitives and enumerations.

#include "ValueSupport.hpp"

#include "brant/zero/meta/PrimitiveText.hpp"
#include "brant/zero/meta/PropertySerializer.hpp"

#include <bit>
#include <cmath>
#include <limits>
#include <locale>
#include <map>
#include <random>
#include <thread>

namespace {

using namespace brant::zero;
using climate::Metamodel;
using climate::refuses;
using climate::Weather;
using meta::PropertySerializer;
using meta::PropertySerializerRegistry;
using meta::StandardTypes;

// ---- the types

TEST(StandardTypesTest, AreTheRegisteredObjects) {
    std::map<std::u16string, meta::StandardType const*> const types = {
        {u"String", &StandardTypes::stringMeta},
        {u"StdString", &StandardTypes::stdstringMeta},
        {u"Boolean", &StandardTypes::booleanMeta},
        {u"Integer", &StandardTypes::integerMeta},
        {u"Integer64", &StandardTypes::integer64Meta},
        {u"UInteger64", &StandardTypes::uinteger64Meta},
        {u"Real", &StandardTypes::realMeta},
        {u"UnlimitedNatural", &StandardTypes::unlimitedNaturalMeta},
    };
    for (auto const& [name, type] : types) {
        EXPECT_EQ(type->get().getName(), name);
        EXPECT_EQ(type->get(), meta::MetaRegistry::getInstance().getPrimitiveType(name));
        meta::Type const& converted = *type;
        EXPECT_EQ(&converted, &type->get()) << "found once";
    }
    for (char16_t const* name : {u"", u"string", u"Float"})
        EXPECT_THROW((void)meta::internal::getPrimitiveTypeFromMetaRegistry(name),
                     MessageException<brant0::messages::NoSuchType>);
}

TEST(StandardTypesTest, AreFoundFromManyThreads) {
    static meta::StandardType const fresh(u"Integer");
    std::vector<meta::Type const*> found(8);
    std::vector<std::thread> threads;
    for (meta::Type const*& slot : found)
        threads.emplace_back([&slot] { slot = &fresh.get(); });
    for (std::thread& thread : threads)
        thread.join();
    for (meta::Type const* type : found)
        EXPECT_EQ(type, found.front());
    EXPECT_EQ(*found.front(), StandardTypes::integer());
}

// ---- numbers and truth values

constexpr std::errc good{};
using Texts = std::vector<std::string_view>;

template <class T>
void checkParsing(std::vector<std::pair<std::string_view, T>> const& rows, Texts const& tooBig,
                  Texts const& malformed) {
    for (auto const& [text, expected] : rows) {
        T value = expected == T{} ? T(1) : T{};
        EXPECT_EQ(meta::parseText(text, value), good) << '"' << text << '"';
        EXPECT_EQ(value, expected) << '"' << text << '"';
    }
    for (auto const& [texts, error] : {std::pair(&tooBig, std::errc::result_out_of_range),
                                       std::pair(&malformed, std::errc::invalid_argument)})
        for (std::string_view const text : *texts) {
            T value = T(1);
            EXPECT_EQ(meta::parseText(text, value), error) << '"' << text << '"';
            EXPECT_EQ(value, T(1)) << '"' << text << '"';
        }
}

TEST(PrimitiveText, IsReadStrictly) {
    double const infinite = std::numeric_limits<double>::infinity();
    checkParsing<bool>({{"true", true}, {"false", false}}, {}, {"", "True", "1", "true "});
    checkParsing<int>(
        {{"-2147483648", std::numeric_limits<int>::min()}, {"2147483647", 2147483647}, {"0", 0}},
        {"2147483648", "-2147483649", "99999999999999999999"},
        {"", "-", "+1", " 1", "1 ", "1.0", "0x10", "1e3", "99999999999999999999x"});
    checkParsing<unsigned int>({{"4294967295", 4294967295u}}, {"4294967296"}, {"-1"});
    checkParsing<long>({{"-9223372036854775808", std::numeric_limits<long>::min()}}, {"9223372036854775808"},
                       {});
    checkParsing<unsigned long>({{"18446744073709551615", ~0ul}}, {"18446744073709551616"}, {});
    checkParsing<double>(
        {{"-1.5", -1.5}, {"1e300", 1e300}, {"5e-324", 5e-324}, {"inf", infinite}, {"-inf", -infinite}},
        {"1e400", "-1e400"}, {"", "INF", "infinity", "nan(1)", "-nan", "1,5", "0x1p3"});
    double value = 0;
    EXPECT_EQ(meta::parseText("nan", value), good);
    EXPECT_TRUE(std::isnan(value));
}

template <class T>
std::string textOf(T value) {
    std::string text = "<";
    meta::appendText(text, value);
    return text + ">";
}

struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(PrimitiveText, IsWrittenTheSameEverywhere) {
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    EXPECT_EQ(textOf(true), "<true>");
    EXPECT_EQ(textOf(false), "<false>");
    EXPECT_EQ(textOf(std::numeric_limits<int>::min()), "<-2147483648>");
    EXPECT_EQ(textOf(4294967295u), "<4294967295>");
    EXPECT_EQ(textOf(std::numeric_limits<long>::min()), "<-9223372036854775808>");
    EXPECT_EQ(textOf(~0ul), "<18446744073709551615>");
    EXPECT_EQ(textOf(0.1), "<0.1>");
    EXPECT_EQ(textOf(-0.0), "<-0>");
    EXPECT_EQ(textOf(-std::numeric_limits<double>::infinity()), "<-inf>");
    EXPECT_EQ(textOf(-std::numeric_limits<double>::quiet_NaN()), "<nan>");
    std::locale::global(before);
}

TEST(PrimitiveText, OfAnyRealReadsBackBitForBit) {
    std::mt19937_64 random(2024);
    int finite = 0;
    for (int i = 0; i < 20000; ++i) {
        double const value = std::bit_cast<double>(random());
        if (std::isnan(value)) continue;
        ++finite;
        std::string text;
        meta::appendText(text, value);
        double back = 0;
        ASSERT_EQ(meta::parseText(text, back), good) << text;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(value)) << text;
    }
    EXPECT_GT(finite, 19000);
}

// ---- serializers of the primitives

PropertySerializer const& serializerOf(meta::Type const& type) {
    PropertySerializer const* const serializer =
        PropertySerializerRegistry::getInstance().getPropertySerializer(type);
    if (serializer == nullptr) throw std::logic_error("the type has no serializer");
    return *serializer;
}

template <class T>
void checkSerializer(meta::Type const& type, T payload, std::u16string const& text,
                     std::vector<std::u16string> const& bad) {
    SCOPED_TRACE(::testing::PrintToString(text));
    PropertySerializer const& serializer = serializerOf(type);
    Value const value = Value::own<T>(type, ValueFlags::One, payload);
    EXPECT_EQ(serializer.serializeValue(value), text);
    EXPECT_EQ(serializer.parseValue(text, type), value);
    EXPECT_TRUE(serializer.parseOptionalValue(text, type).template getValue<boost::optional<T>>() == payload);
    EXPECT_EQ(serializer.createDefaultValue(type).template getValue<T>(), T{});
    EXPECT_EQ(serializer.createEmptyOptionalValue(type), Value(ValueMeta(type, ValueFlags::Absent)));
    EXPECT_EQ(serializer.toOptionalValue(value), value);
    EXPECT_EQ(
        serializer.combineAsUnmanagedSequenceValue(type, {value, value}).template getValue<std::vector<T>>(),
        (std::vector<T>{payload, payload}));
    EXPECT_EQ(serializer.combineAsUnmanagedSetValue(type, {value, value}).template getValue<std::set<T>>(),
              std::set<T>{payload});
    for (std::u16string const& wrong : bad)
        EXPECT_THROW((void)serializer.parseValue(wrong, type), boost::bad_lexical_cast)
            << ::testing::PrintToString(wrong);
    meta::Type const& another =
        type == StandardTypes::string() ? StandardTypes::boolean() : StandardTypes::string();
    EXPECT_THROW((void)serializer.parseValue(text, another),
                 MessageException<brant0::messages::CannotCastIncompatibleTypes>);
    EXPECT_THROW((void)serializer.serializeValue(Value(ValueMeta(another, ValueFlags::One))),
                 MessageException<brant0::messages::CannotCastIncompatibleTypes>);
}

TEST(PrimitiveSerializers, WriteAndReadTheTextForms) {
    std::u16string const lone(1, char16_t(0xd800));
    checkSerializer<bool>(StandardTypes::boolean(), true, u"true", {u"", u"yes"});
    checkSerializer<int>(StandardTypes::integer(), -12, u"-12", {u"", u"2147483648", u"1\u0660"});
    checkSerializer<unsigned int>(StandardTypes::unlimitedNatural(), 12u, u"12", {u"-1", u"4294967296"});
    checkSerializer<long>(StandardTypes::integer64(), -5000000000l, u"-5000000000", {u"x", lone});
    checkSerializer<unsigned long>(StandardTypes::uInteger64(), ~0ul, u"18446744073709551615", {u"-1"});
    checkSerializer<double>(StandardTypes::real(), 0.25, u"0.25", {u"1e999", u"quarter"});
    checkSerializer<std::string>(StandardTypes::stdString(), "na\xc3\xafve ", u"na\u00efve ", {lone});
    checkSerializer<std::u16string>(StandardTypes::string(), u" na\u00efve", u" na\u00efve", {});
}

TEST(PrimitiveSerializers, RefuseBytesWithoutText) {
    Value const bytes = Value::own(StandardTypes::stdString(), ValueFlags::One, std::string("\xff"));
    EXPECT_THROW((void)serializerOf(StandardTypes::stdString()).serializeValue(bytes),
                 boost::bad_lexical_cast);
    std::u16string const lone(1, char16_t(0xd800));
    Value const text = Value::own(StandardTypes::string(), ValueFlags::One, lone);
    EXPECT_EQ(serializerOf(StandardTypes::string()).serializeValue(text), lone)
        << "UTF-16 goes through as it is";
}

// ---- serializers of enumerations

class EnumSerializerTest : public testing::Test {
  protected:
    meta::Enum type = Metamodel::get().weather;
    meta::EnumPropertySerializerAsName<Weather> serializer{type};

    Value value(int number) const {
        return Value::own<Weather>(type, ValueFlags::One, static_cast<Weather>(number));
    }
};

TEST_F(EnumSerializerTest, WritesTheFirstNameOfTheNumber) {
    EXPECT_EQ(serializer.serializeValue(value(7)), u"Sun");
    EXPECT_EQ(serializer.serializeValue(value(-1)), u"Frost");
    EXPECT_EQ(serializer.serializeValue(value(-3)), u"Blizzard") << "names come in order of the alphabet";
    EXPECT_EQ(serializer.serializeValue(value(4)), u"");
    EXPECT_EQ(serializer.serializeValue(Value(ValueMeta(type, ValueFlags::One))), u"");
    EXPECT_FALSE(serializer.serializeOptionalValue(value(7)));
    EXPECT_TRUE(refuses(u"climate.Other", [&] {
        (void)serializer.serializeValue(Value(Metamodel::get().other, 7, ValueFlags::One));
    }));
}

TEST_F(EnumSerializerTest, ReadsExactNamesOnly) {
    EXPECT_EQ(serializer.parseValue(u"Storm", type), value(-3));
    EXPECT_TRUE(serializer.parseOptionalValue(u"Sun", type).getValue<boost::optional<Weather>>() ==
                Weather::Sun);
    for (char16_t const* text : {u"", u"storm", u" Storm", u"Storm ", u"-3", u"Rain"}) {
        EXPECT_THROW((void)serializer.parseValue(text, type), boost::bad_lexical_cast)
            << ::testing::PrintToString(text);
        EXPECT_THROW((void)serializer.parseOptionalValue(text, type), boost::bad_lexical_cast);
    }
    EXPECT_TRUE(
        refuses(u"climate.Other", [&] { (void)serializer.parseValue(u"Sun", Metamodel::get().other); }));
}

TEST_F(EnumSerializerTest, MakesZeroAndAbsence) {
    Value const zero = serializer.createDefaultValue(type);
    EXPECT_EQ(zero, value(0));
    EXPECT_FALSE(zero.isEmpty());
    EXPECT_EQ(serializer.serializeValue(zero), u"");
    Value const absent = serializer.createEmptyOptionalValue(type);
    EXPECT_EQ(absent.flags(), ValueFlags::Absent);
    EXPECT_TRUE(absent.isEmpty());
    EXPECT_TRUE(absent.isManaged());
    EXPECT_FALSE(absent.getValue<boost::optional<Weather>>());
}

TEST_F(EnumSerializerTest, CombinesValues) {
    std::vector<Value> const values = {value(7), value(-3), value(7),
                                       Value(ValueMeta(type, ValueFlags::One))};
    Value const list = serializer.combineAsUnmanagedSequenceValue(type, values);
    EXPECT_EQ(list.extract(), (std::vector{value(7), value(-3), value(7), value(0)}));
    EXPECT_FALSE(list.isManaged());
    Value const set = serializer.combineAsUnmanagedSetValue(type, values);
    EXPECT_EQ(set.extract(), (std::vector{value(-3), value(0), value(7)}));
    EXPECT_EQ(set.flags(), ValueFlags::Set);

    Value const empty = serializer.combineAsUnmanagedSequenceValue(type, {});
    EXPECT_EQ(empty.flags(), ValueFlags::Sequence);
    EXPECT_FALSE(empty.isEmpty());
    EXPECT_TRUE(empty.getValue<std::vector<Weather>>().empty());

    std::vector<Value> const mixed = {value(7), Value(Metamodel::get().other, 7, ValueFlags::One)};
    EXPECT_TRUE(
        refuses(u"climate.Other", [&] { (void)serializer.combineAsUnmanagedSequenceValue(type, mixed); }));
    EXPECT_TRUE(refuses(u"climate.Other", [&] { (void)serializer.combineAsUnmanagedSetValue(type, mixed); }));
}

// ---- the registry

TEST_F(EnumSerializerTest, AreFoundByTypeAndKey) {
    using Serializer = meta::EnumPropertySerializerAsName<Weather>;
    PropertySerializerRegistry& registry = PropertySerializerRegistry::getInstance();
    EXPECT_EQ(registry.getPropertySerializer(Metamodel::get().other), nullptr);
    EXPECT_EQ(registry.getPropertySerializer(meta::Type()), nullptr);
    EXPECT_EQ(registry.getPropertySerializer(meta::Enum::metaClass()), nullptr);
    EXPECT_EQ(registry.getPropertySerializer(StandardTypes::integer(), "ID"), nullptr);
    EXPECT_EQ(registry.getDatatypeSerializer(type), nullptr);

    registry.registerPropertySerializer(type, std::make_unique<Serializer>(type), "");
    registry.registerPropertySerializer(type, std::make_unique<Serializer>(type), "ID");
    PropertySerializer const* const plain = registry.getPropertySerializer(type);
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->serializeValue(value(7)), u"Sun");
    EXPECT_NE(registry.getPropertySerializer(type, "ID"), nullptr);
    EXPECT_NE(registry.getPropertySerializer(type, "ID"), plain);
    EXPECT_EQ(registry.getPropertySerializer(type, "PublicID"), nullptr);
}

} // namespace
