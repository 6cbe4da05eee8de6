// The value type of the model and its enumerations, as values, in text and in the registries.

#include "zelkor/ast/FinderOptions.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/PropertySerializer.hpp"
#include "brant/zero/meta/StandardTypes.hpp"
#include "zelkor/ast/Function.hpp"
#include "zelkor/ast/MetaPackageZelkor_ast.hpp"
#include "zelkor/ast/Scope.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

namespace za = zelkor::ast;
namespace messages = brant0::messages;
using namespace brant::zero;
using za::FinderOptions;
using za::NameFinderKind;

meta::Type datatype() {
    za::MetaPackageZelkor_ast::getInstance();
    return meta::MetaRegistry::getInstance().getType(u"zelkor.ast.FinderOptions");
}

meta::DatatypeSerializer const& serializer() {
    auto const* found = meta::PropertySerializerRegistry::getInstance().getDatatypeSerializer(datatype());
    if (found == nullptr) throw std::logic_error("the options have no serializer");
    return *found;
}

Value valueOf(FinderOptions const& options) {
    return Value::own<FinderOptions>(datatype(), ValueFlags::One, options);
}

/// Each field with its setter and getter, in the order that comparison and hash go by.
struct Switch {
    char16_t const* name;
    bool initial;
    FinderOptions& (FinderOptions::*set)(bool) noexcept;
    bool (FinderOptions::*get)() const noexcept;
};
Switch const switches[] = {
    {u"IncludeSubScopes", true, &FinderOptions::setIncludeSubScopes, &FinderOptions::getIncludeSubScopes},
    {u"IncludeDerivedClasses", true, &FinderOptions::setIncludeDerivedClasses,
     &FinderOptions::getIncludeDerivedClasses},
    {u"IncludeStdNs", false, &FinderOptions::setIncludeStdNs, &FinderOptions::getIncludeStdNs},
    {u"IncludeSystemHeaders", false, &FinderOptions::setIncludeSystemHeaders,
     &FinderOptions::getIncludeSystemHeaders},
    {u"IncludeTemplateScope", false, &FinderOptions::setIncludeTemplateScope,
     &FinderOptions::getIncludeTemplateScope},
    {u"IncludeAggregateScope", true, &FinderOptions::setIncludeAggregateScope,
     &FinderOptions::getIncludeAggregateScope},
};

// ---- the value

TEST(FinderOptions, TheFirstDifferenceDecidesTheOrder) {
    FinderOptions low;
    for (Switch const& field : switches)
        (low.*field.set)(false);
    low.setNameResolutionStrategy(static_cast<NameFinderKind>(-1));
    // Ascending: a later field weighs less than any earlier one.
    std::vector<FinderOptions> ascending = {
        low, FinderOptions(low).setNameResolutionStrategy(NameFinderKind::Name),
        FinderOptions(low).setNameResolutionStrategy(NameFinderKind::FullyQualifiedName)};
    for (std::size_t i = std::size(switches); i-- > 0;) {
        FinderOptions next = low;
        (next.*switches[i].set)(true);
        ascending.push_back(next);
        for (std::size_t j = i + 1; j < std::size(switches); ++j)
            (next.*switches[j].set)(true);
        next.setNameResolutionStrategy(NameFinderKind::FullyQualifiedName);
        ascending.push_back(next);
    }
    for (std::size_t i = 0; i < ascending.size(); ++i)
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            FinderOptions const& a = ascending[i];
            FinderOptions const& b = ascending[j];
            EXPECT_EQ(a.compareWith(b), int(i > j) - int(i < j)) << i << " and " << j;
            EXPECT_EQ(a == b, i == j);
            EXPECT_EQ(a != b, i != j);
            EXPECT_EQ(a < b, i < j);
        }
}

TEST(FinderOptions, HashIsFixed) {
    std::hash<FinderOptions> const hash;
    EXPECT_EQ(hash(FinderOptions()), 0x23b93093c5c59a80ul);
    EXPECT_EQ(hash(FinderOptions()
                       .setIncludeSubScopes(false)
                       .setIncludeStdNs(true)
                       .setIncludeTemplateScope(true)
                       .setIncludeAggregateScope(false)
                       .setNameResolutionStrategy(NameFinderKind::Name)),
              0xdcec01d7cb62d240ul);
    EXPECT_EQ(hash(FinderOptions().setNameResolutionStrategy(static_cast<NameFinderKind>(-1))),
              0x37c18d59900ad69dul);
    std::unordered_set<FinderOptions> const set = {FinderOptions(), FinderOptions(),
                                                   FinderOptions().setIncludeStdNs(true)};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(valueOf({}).hash(), hash(FinderOptions()));
}

// ---- as a record of fields

TEST(FinderOptionsSerializer, ReadsAndWritesEachField) {
    FinderOptions const options = FinderOptions().setNameResolutionStrategy(NameFinderKind::Signature);
    Value const value = valueOf(options);
    auto const& fields = datatype().getProperties();
    ASSERT_EQ(fields.size(), std::size(switches) + 1);
    for (std::size_t i = 0; i < std::size(switches); ++i) {
        Switch const& field = switches[i];
        meta::Property const property = fields[i];
        EXPECT_EQ(property.getName(), field.name);
        EXPECT_EQ(serializer().getPropertyValue(value, property),
                  Value::createPrimitiveValue(property, field.initial));
        FinderOptions expected = options;
        (expected.*field.set)(!field.initial);
        Value const flipped = Value::createPrimitiveValue(property, !field.initial);
        Value const changed = serializer().setPropertyValue(value, property, flipped);
        EXPECT_EQ(changed.getValue<FinderOptions>(), expected);
        for (Switch const& other : switches)
            EXPECT_EQ((expected.*other.get)(), other.initial != (&other == &field));
        EXPECT_EQ(expected.getNameResolutionStrategy(), NameFinderKind::Signature);
        EXPECT_EQ(value.getValue<FinderOptions>(), options) << "the value itself stays";
        // A truth value without payload is false.
        Value const none(ValueMeta(property.getType(), ValueFlags::One));
        (expected.*field.set)(false);
        EXPECT_EQ(serializer().setPropertyValue(value, property, none).getValue<FinderOptions>(), expected);
    }
    meta::Property const strategy = fields[std::size(switches)];
    EXPECT_EQ(strategy.getName(), u"NameResolutionStrategy");
    EXPECT_EQ(serializer().getPropertyValue(value, strategy).getValue<NameFinderKind>(),
              NameFinderKind::Signature);
    Value const name = Value::createPrimitiveValue(strategy, NameFinderKind::Name);
    EXPECT_EQ(serializer().setPropertyValue(value, strategy, name).getValue<FinderOptions>(),
              FinderOptions(options).setNameResolutionStrategy(NameFinderKind::Name));
}

TEST(FinderOptionsSerializer, RefusesOtherFieldsAndValues) {
    Value const value = valueOf({});
    meta::Property const own = datatype().getProperties()[0];
    meta::Property const strategy = datatype().getProperties()[6];
    meta::Property const foreign = za::Function::metaClass().getProperties()[0];
    Value const yes = Value::createPrimitiveValue(own, true);
    for (meta::Property const& property : {foreign, meta::Property()}) {
        std::u16string const name = property ? property.getName() : std::u16string();
        try {
            (void)serializer().getPropertyValue(value, property);
            FAIL() << "nothing was thrown";
        } catch (MessageException<messages::NoSuchProperty> const& error) {
            auto const& arguments = error.GetBaseMsgIDObj().getArguments();
            ASSERT_EQ(arguments.size(), 2u);
            EXPECT_EQ(std::get<std::u16string>(arguments[0]), name);
            EXPECT_EQ(std::get<std::u16string>(arguments[1]), u"zelkor.ast.FinderOptions");
        }
        EXPECT_THROW((void)serializer().setPropertyValue(value, property, yes),
                     MessageException<messages::NoSuchProperty>);
    }
    using Incompatible = MessageException<messages::CannotCastIncompatibleTypes>;
    Value const number = Value::own(meta::StandardTypes::integer(), ValueFlags::One, 1);
    Value const absent(ValueMeta(own.getType(), ValueFlags::Absent));
    EXPECT_THROW((void)serializer().setPropertyValue(value, own, number), Incompatible);
    EXPECT_THROW((void)serializer().setPropertyValue(value, own, absent), Incompatible);
    EXPECT_THROW((void)serializer().setPropertyValue(value, strategy, yes), Incompatible);
    EXPECT_THROW((void)serializer().setPropertyValue(yes, own, yes), Incompatible);
    EXPECT_THROW((void)serializer().getPropertyValue(yes, own), Incompatible);
}

TEST(FinderOptionsSerializer, DefaultsAreThoseOfTheSchema) {
    Value const value = serializer().createDefaultValue();
    EXPECT_EQ(value.getValue<FinderOptions>(), FinderOptions());
    auto const& registry = meta::PropertySerializerRegistry::getInstance();
    for (meta::Property const& field : datatype().getProperties()) {
        meta::PropertySerializer const* const text = registry.getPropertySerializer(field.getType());
        ASSERT_NE(text, nullptr);
        EXPECT_TRUE(field.getHasDefaultValue());
        EXPECT_EQ(serializer().getPropertyValue(value, field),
                  text->parseValue(field.getDefaultValue(), field.getType()))
            << ::testing::PrintToString(field.getName());
    }
}

TEST(FinderOptionsSerializer, CombinesValues) {
    FinderOptions const a;
    FinderOptions const b = FinderOptions().setIncludeSubScopes(false);
    std::vector<Value> const values = {valueOf(a), valueOf(b), valueOf(a)};
    Value const list = serializer().combineAsUnmanagedSequenceValue(datatype(), values);
    EXPECT_EQ(list.getValue<std::vector<FinderOptions>>(), (std::vector{a, b, a}));
    EXPECT_EQ(list.extract(), values);
    Value const set = serializer().combineAsUnmanagedSetValue(datatype(), values);
    EXPECT_EQ(set.extract(), (std::vector{valueOf(b), valueOf(a)})) << "false comes before true";
    EXPECT_FALSE(serializer().fromOptionalValue(values[0]));
    EXPECT_EQ(serializer().toOptionalValue(values[0]), values[0]);
    Value const absent = serializer().createEmptyOptionalValue();
    EXPECT_EQ(absent.flags(), ValueFlags::Absent);
    EXPECT_FALSE(absent.getValue<boost::optional<FinderOptions>>());
}

// ---- registration

/// \returns the collection that the registry makes for a property of another class: only the order counts.
std::unique_ptr<AbstractOwnedCollection> collectionOf(meta::Type const& type, bool ordered) {
    meta::Class const cls = ordered ? za::Function::metaClass() : za::Scope::metaClass();
    for (meta::Property const& property : cls.getProperties())
        if (property.getName() == (ordered ? u"Comments" : u"Types"))
            return meta::MetaRegistry::getInstance().collectionFactory(type)(nullptr, property);
    throw std::logic_error("the schema lacks the property");
}

TEST(Registration, TheValueTypeHasNamesAndCollections) {
    meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
    meta::Type const type = datatype();
    auto const* names = registry.names(type);
    ASSERT_NE(names, nullptr);
    EXPECT_EQ(names->native, "zelkor::ast::FinderOptions");
    EXPECT_EQ(names->script, "internal.zelkor.ast.FinderOptions");
    EXPECT_EQ(names->third, "");
    EXPECT_FALSE(registry.builderFactory(type));
    auto const sequence = collectionOf(type, true);
    auto* const values = dynamic_cast<PrimitiveSequence<FinderOptions>*>(sequence.get());
    ASSERT_NE(values, nullptr);
    values->push_back(FinderOptions().setIncludeStdNs(true));
    values->push_back(FinderOptions());
    EXPECT_EQ(values->genericAt(0).getValue<FinderOptions>(), FinderOptions().setIncludeStdNs(true));
    EXPECT_EQ(values->genericIndexOf(valueOf({})), 1u);
    EXPECT_NE(dynamic_cast<PrimitiveSet<FinderOptions>*>(collectionOf(type, false).get()), nullptr);
}

TEST(Registration, EachEnumerationHasThreeTextForms) {
    auto const& serializers = meta::PropertySerializerRegistry::getInstance();
    std::set<meta::PropertySerializer const*> different;
    for (meta::NamedElement const& object : za::MetaPackageZelkor_ast::getInstance().objects()) {
        meta::Enum const type = meta::Enum::cast(object);
        for (char const* key : {"", "ID", "PublicID"})
            if (meta::PropertySerializer const* text =
                    type ? serializers.getPropertySerializer(type, key) : nullptr) {
                different.insert(text);
                for (meta::EnumLiteral const& literal : type.getLiterals())
                    EXPECT_EQ(text->serializeValue(text->parseValue(literal.getName(), type)),
                              literal.getName());
            }
    }
    EXPECT_EQ(different.size(), 3u * 14);
    meta::Type const kind = meta::MetaRegistry::getInstance().getType(u"zelkor.ast.TemplateKind");
    EXPECT_EQ(collectionOf(kind, true)->getCollectionType(), kind);
    EXPECT_EQ(collectionOf(kind, false)->getCollectionType(), kind);
}

} // namespace
