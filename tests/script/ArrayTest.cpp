// Every operation of arrays, on every kind of array; what leaks or is freed twice shows under the sanitizers.

#include "HostSample.hpp"

#include <limits>

using namespace hostsample;

namespace {

ArrayPtr structArray() {
    std::string const fields[] = {"Name", "Inner"};
    ArrayPtr array = omCreateStructMatrix(1, 2, fields);
    omSetField(*array, 0, "Name", omCreateCharArray("first"));
    omSetField(*array, 0, "Name", omCreateCharArray("the value that takes the place of the first"));
    omSetField(*array, 1, "Inner", omDuplicateArray(*array));
    return array;
}

ArrayPtr pointScalar(double x) {
    ArrayPtr const number = omCreateNumericScalar(x);
    return construct(zooClass("Point"), inputsOf(number));
}

ArrayPtr strings() {
    ArrayPtr array = omCreateStringMatrix(2, 1);
    omSetString(*array, 1, u"\xd800 alone");
    return array;
}

ArrayPtr moods() {
    ArrayPtr numbers = omCreateNumericMatrix<std::int32_t>(1, 2);
    omGetNumbersMutable<std::int32_t>(*numbers)[1] = 10;
    zooClass("Mood");
    return omCreateBuiltinBasedArrayFromUnderlyingArray(zooName("Mood"), *numbers);
}

struct Kind {
    char const* type;
    ArrayKind kind;
    std::size_t rows, columns;
    std::function<ArrayPtr()> make;
};

std::vector<Kind> kinds() {
    return {
        {"logical", ArrayKind::Numeric, 1, 1, [] { return omCreateNumericScalar(true); }},
        {"double", ArrayKind::Numeric, 2, 3, [] { return omCreateNumericMatrix<double>(2, 3); }},
        {"int32", ArrayKind::Numeric, 1, 0, [] { return omCreateNumericMatrix<std::int32_t>(1, 0); }},
        {"int64", ArrayKind::Numeric, 3, 1, [] { return omCreateNumericMatrix<std::int64_t>(3, 1); }},
        {"uint32", ArrayKind::Numeric, 1, 1, [] { return omCreateNumericScalar<std::uint32_t>(7); }},
        {"uint64", ArrayKind::Numeric, 1, 1, [] { return omCreateNumericScalar<std::uint64_t>(7); }},
        {"char", ArrayKind::Char, 1, 3, [] { return omCreateCharArray("a\xc3\xa4"); }},
        {"QuorlFactoryString", ArrayKind::String, 2, 1, strings},
        {"struct", ArrayKind::Struct, 1, 2, structArray},
        {"test.zoo.Dog", ArrayKind::Quorl, 0, 0,
         [] {
             zooClass("Dog");
             return omCreateQuorlEmpty(zooName("Dog"));
         }},
        {"test.zoo.Point", ArrayKind::Quorl, 1, 1, [] { return pointScalar(2); }},
        {"test.zoo.Mood", ArrayKind::BuiltinBased, 1, 2, moods},
    };
}

} // namespace

TEST(Array, KnowsWhatItIsAndSoDoesItsCopy) {
    for (Kind const& kind : kinds()) {
        SCOPED_TRACE(kind.type);
        ArrayPtr original = kind.make();
        ArrayPtr const copy = omDuplicateArray(*original);
        original.reset(); // the copy must not lean on it
        EXPECT_EQ(omGetTypeName(*copy), kind.type);
        EXPECT_EQ(omGetKind(*copy), kind.kind);
        EXPECT_EQ(omGetRows(*copy), kind.rows);
        EXPECT_EQ(omGetColumns(*copy), kind.columns);
        EXPECT_EQ(omGetNumberOfElements(*copy), kind.rows * kind.columns);
        EXPECT_EQ(omIsNumeric(*copy), kind.kind == ArrayKind::Numeric);
        EXPECT_EQ(omIsChar(*copy), kind.kind == ArrayKind::Char);
        EXPECT_EQ(omIsString(*copy), kind.kind == ArrayKind::String);
        EXPECT_EQ(omIsStruct(*copy), kind.kind == ArrayKind::Struct);
        EXPECT_EQ(omIsQuorl(*copy), kind.kind == ArrayKind::Quorl || kind.kind == ArrayKind::BuiltinBased);
        EXPECT_EQ(omGetClassName(*copy).text(), omIsQuorl(*copy) ? kind.type : "");
    }
}

TEST(Array, RefusesWhatItDoesNotHave) {
    struct Operation {
        char const* what;
        ArrayKind serves;
        std::function<void(krelArray&)> run;
    } const operations[] = {
        {"numeric type", ArrayKind::Numeric, [](krelArray& a) { omGetNumericType(a); }},
        {"convert", ArrayKind::Numeric, [](krelArray& a) { omConvertNumbers(a, NumericType::Double); }},
        {"chars", ArrayKind::Char, [](krelArray& a) { omGetChars(a); }},
        {"string", ArrayKind::String, [](krelArray& a) { omGetString(a, 0); }},
        {"set string", ArrayKind::String, [](krelArray& a) { omSetString(a, 0, u"x"); }},
        {"fields", ArrayKind::Struct, [](krelArray& a) { omGetFields(a); }},
        {"field", ArrayKind::Struct, [](krelArray& a) { omGetField(a, 0, "Name"); }},
        {"set field", ArrayKind::Struct, [](krelArray& a) { omSetField(a, 0, "Name", nullptr); }},
        {"set class", ArrayKind::Quorl, [](krelArray& a) { omSetClassOfHeterogeneousArray(a); }},
        {"underlying", ArrayKind::BuiltinBased, [](krelArray& a) { omGetUnderlyingArray(a); }},
        {"count", ArrayKind::BuiltinBased, [](krelArray& a) { omGetNumberOfElementsInUnderlyingArray(a); }},
    };
    for (Kind const& kind : kinds())
        for (Operation const& operation : operations) {
            SCOPED_TRACE(std::string(kind.type) + " " + operation.what);
            ArrayPtr const array = kind.make();
            EXPECT_EQ(failureOf([&] { operation.run(*array); }),
                      kind.kind == operation.serves ? "" : "Orvane:class:WrongType");
        }
    EXPECT_EQ(failureOf([] { omGetNumbers<double>(*omCreateNumericScalar(true)); }),
              "Orvane:class:WrongType");
}

TEST(Array, RefusesPlacesAndFieldsThatAreNotThere) {
    ArrayPtr const records = structArray();
    ArrayPtr const texts = strings();
    ArrayPtr const point = pointScalar(1);
    std::string const twice[] = {"A", "B", "A"};
    EXPECT_EQ(failureOf([&] { omGetField(*records, 2, "Name"); }), "Orvane:class:IndexOutOfRange");
    EXPECT_EQ(failureOf([&] { omGetField(*records, 0, "name"); }), "Orvane:class:NoSuchField");
    EXPECT_EQ(failureOf([&] { omSetField(*records, 0, "x", omCreateNumericScalar(1.0)); }),
              "Orvane:class:NoSuchField");
    EXPECT_EQ(failureOf([&] { omGetString(*texts, 2); }), "Orvane:class:IndexOutOfRange");
    EXPECT_EQ(failureOf([&] { omGetArrayElement(*point, 1); }), "Orvane:class:IndexOutOfRange");
    EXPECT_EQ(failureOf([&] { omSetArrayElement(*point, 1, *point); }), "Orvane:class:IndexOutOfRange");
    EXPECT_EQ(failureOf([&] { omCreateStructMatrix(1, 1, twice); }), "Orvane:class:DuplicateName");
    EXPECT_THROW(omCreateNumericMatrix<double>(std::size_t(1) << 40, std::size_t(1) << 40), std::bad_alloc);
}

TEST(Array, CopiesAreDeepInStructsAndValuesAndSharedInHandles) {
    ArrayPtr const records = structArray();
    ArrayPtr const copy = omDuplicateArray(*records);
    omSetField(*records, 0, "Name", omCreateCharArray("changed"));
    EXPECT_EQ(omGetChars(*omGetField(*copy, 0, "Name")), "the value that takes the place of the first");
    EXPECT_EQ(omGetField(*copy, 0, "Inner"), nullptr);
    EXPECT_EQ(omGetTypeName(*omGetField(*copy, 1, "Inner")), "struct");

    ArrayPtr const point = pointScalar(2);
    ArrayPtr const pointCopy = omDuplicateArray(*point);
    setProperty(*point, "X", *omCreateNumericScalar(5.0));
    EXPECT_EQ(omGetNumbers<double>(*getProperty(*pointCopy, "X"))[0], 2.0);

    Animal animal;
    zooClass("Dog");
    ArrayPtr dog = omCreateQuorlScalar(factory::basic::BindingRegistry::announce(&animal, zooName("Dog")));
    ArrayPtr const dogCopy = omDuplicateArray(*dog);
    EXPECT_EQ(omGetArrayElement(*dog, 0), omGetArrayElement(*dogCopy, 0));
    dog.reset();
    EXPECT_EQ(animal.handles, 1);
}

TEST(Array, NumbersChangeTypeOnlyWithoutLoss) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::uint64_t mostUnsigned = std::numeric_limits<std::uint64_t>::max();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        ArrayPtr from;
        NumericType to;
        bool exact;
    } const cases[] = {
        {omCreateNumericScalar(3.0), NumericType::Int32, true},
        {omCreateNumericScalar(3.5), NumericType::Int32, false},
        {omCreateNumericScalar(nan), NumericType::Int64, false},
        {omCreateNumericScalar(nan), NumericType::Logical, false},
        {omCreateNumericScalar(-1.0), NumericType::Uint64, false},
        {omCreateNumericScalar(2147483648.0), NumericType::Int32, false},
        {omCreateNumericScalar(-2147483648.0), NumericType::Int32, true},
        {omCreateNumericScalar(9223372036854775808.0), NumericType::Int64, false},
        {omCreateNumericScalar(-9223372036854775808.0), NumericType::Int64, true},
        {omCreateNumericScalar(18446744073709551616.0), NumericType::Uint64, false},
        {omCreateNumericScalar(most), NumericType::Double, false},
        {omCreateNumericScalar(mostUnsigned), NumericType::Double, false},
        {omCreateNumericScalar(mostUnsigned), NumericType::Int64, false},
        {omCreateNumericScalar(std::numeric_limits<std::int64_t>::min()), NumericType::Double, true},
        {omCreateNumericScalar<std::int32_t>(-1), NumericType::Uint32, false},
        {omCreateNumericScalar<std::int32_t>(-1), NumericType::Double, true},
        {omCreateNumericScalar<std::int32_t>(2), NumericType::Logical, false},
        {omCreateNumericScalar<std::int64_t>(1), NumericType::Logical, true},
        {omCreateNumericScalar(true), NumericType::Uint64, true},
        {omCreateNumericMatrix<double>(0, 3), NumericType::Int32, true},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(&each - cases);
        ArrayPtr const made = omConvertNumbers(*each.from, each.to);
        ASSERT_EQ(made != nullptr, each.exact);
        if (!each.exact) continue;
        EXPECT_EQ(omGetNumericType(*made), each.to);
        EXPECT_EQ(omGetColumns(*made), omGetColumns(*each.from));
        // The way back shows that the number is the same one.
        ArrayPtr const back = omConvertNumbers(*made, omGetNumericType(*each.from));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(omGetTypeName(*back), omGetTypeName(*each.from));
    }
    EXPECT_EQ(omGetNumbers<std::int64_t>(*omConvertNumbers(*cases[8].from, NumericType::Int64))[0],
              std::numeric_limits<std::int64_t>::min());
}

TEST(Array, ClassArraysTakeObjectsOfTheirClass) {
    Animal first, second, third;
    zooClass("Puppy");
    using factory::basic::BindingRegistry;
    ObjectRef const dog = BindingRegistry::announce(&first, zooName("Dog"));
    ObjectRef const puppy = BindingRegistry::announce(&second, zooName("Puppy"));
    ObjectRef const cat = BindingRegistry::announce(&third, zooName("Cat"));
    ArrayPtr const point = pointScalar(1);
    ObjectRef const value = omGetArrayElement(*point, 0);
    struct Case {
        std::vector<ObjectRef> objects;
        char const* shared;
    } const cases[] = {
        {{dog}, "test.zoo.Dog"},
        {{puppy, dog}, "test.zoo.Dog"},
        {{dog, puppy, cat}, "test.zoo.Animal"},
        {{puppy, puppy}, "test.zoo.Puppy"},
        {{dog, value}, "orvane.mixin.Heterogeneous"},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(each.shared);
        ArrayPtr const array =
            omCreateQuorlMatrix(internal::makeInterned("orvane.mixin.Heterogeneous"), 1, each.objects.size());
        EXPECT_EQ(failureOf([&] { omSetClassOfHeterogeneousArray(*array); }), "Orvane:class:InvalidHandle");
        EXPECT_EQ(omGetArrayElement(*array, 0), nullptr);
        for (std::size_t i = 0; i < each.objects.size(); ++i)
            omSetArrayElement(*array, i, each.objects[i]);
        omSetClassOfHeterogeneousArray(*array);
        EXPECT_EQ(omGetClassName(*array).text(), each.shared);
        EXPECT_EQ(omIsOfClass(*array, zooName("Animal")), std::string(each.shared).starts_with("test.zoo."));
    }
    ArrayPtr const dogs = omCreateQuorlMatrix(zooName("Dog"), 1, 1);
    EXPECT_EQ(failureOf([&] { omSetArrayElement(*dogs, 0, cat); }), "Orvane:class:WrongType");
    EXPECT_EQ(failureOf([&] { omSetArrayElement(*dogs, 0, nullptr); }), "Orvane:class:InvalidHandle");
    EXPECT_EQ(failureOf([&] { omSetArrayElement(*dogs, 0, *omCreateQuorlEmpty(zooName("Dog"))); }),
              "Orvane:class:WrongType");
    EXPECT_EQ(failureOf([] { omCreateQuorlEmpty(zooName("Unicorn")); }), "Orvane:class:NoSuchClass");
    EXPECT_EQ(failureOf([] { omCreateQuorlScalar(nullptr); }), "Orvane:class:InvalidHandle");
}

TEST(Array, OnlyEnumerationsStandOnNumbers) {
    ArrayPtr const array = moods();
    EXPECT_EQ(omGetNumberOfElementsInUnderlyingArray(*array), 2u);
    EXPECT_EQ(omGetNumbers<std::int32_t>(omGetUnderlyingArray(*array))[1], 10);
    ArrayPtr const wrong = omCreateNumericScalar(1.0);
    EXPECT_EQ(failureOf([&] { omCreateBuiltinBasedArrayFromUnderlyingArray(zooName("Mood"), *wrong); }),
              "Orvane:class:WrongType");
    EXPECT_EQ(failureOf([&] { omCreateBuiltinBasedArrayFromUnderlyingArray(zooName("Dog"), *wrong); }),
              "Orvane:class:BadClass");
}

TEST(Array, TextsCrossBothEncodingsOrAreRefused) {
    struct Case {
        ArrayPtr value;
        std::optional<std::string> chars;
        std::optional<std::u16string> string;
    } const cases[] = {
        {omCreateCharArray("a\xc3\xa4"), "a\xc3\xa4", u"a\u00e4"},
        {omCreateCharArray("\xff"), "\xff", std::nullopt},
        {omCreateCharArray(std::string_view("a\0b", 3)), std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
        {omCreateStringScalar(u"\u20ac"), "\xe2\x82\xac", u"\u20ac"},
        {omCreateStringScalar(u"\xd800"), std::nullopt, u"\xd800"},
        {omCreateStringMatrix(1, 2), std::nullopt, std::nullopt},
        {omCreateNumericScalar(1.0), std::nullopt, std::nullopt},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(&each - cases);
        std::optional<std::string> chars;
        std::optional<std::u16string> string;
        std::string const first = failureOf([&] { chars = factory::extractChars(*each.value); });
        std::string const second = failureOf([&] { string = factory::extractString(*each.value); });
        EXPECT_EQ(chars, each.chars);
        EXPECT_EQ(string, each.string);
        EXPECT_EQ(first, each.chars ? "" : "brant0:messages:InvalidValue");
        EXPECT_EQ(second, each.string ? "" : "brant0:messages:InvalidValue");
    }
}
