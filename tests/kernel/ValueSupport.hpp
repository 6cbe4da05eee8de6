/// \file
/// An enumeration of the tests' own, and properties of many types, among the meta objects of the process.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/StandardTypes.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace climate {

/// No literal is 0, one number has two names, some are negative.
enum class Weather : int { Storm = -3, Blizzard = -3, Frost = -1, Sun = 7 };

struct Literal {
    char16_t const* name;
    int number;
};
inline constexpr Literal literals[] = {{u"Storm", -3}, {u"Blizzard", -3}, {u"Frost", -1}, {u"Sun", 7}};

} // namespace climate

template <>
struct brant::zero::EnumerationTraits<climate::Weather> {
    static inline schema::EnumTable const table = {
        .name = "Weather",
        .qualifiedName = "climate.Weather",
        .nativeName = "climate::Weather",
        .scriptName = "internal.climate.Weather",
        .identity = "",
        .literals = nullptr,
        .literalCount = 0,
        .registerType = nullptr,
        .object = nullptr,
    };
};

namespace climate {

namespace zero = brant::zero;
namespace meta = brant::zero::meta;

/// The meta objects, made once per process.
struct Metamodel {
    meta::Enum weather;
    meta::Enum other; ///< an enumeration that no C++ type stands for

    static Metamodel const& get() {
        static auto const* instance = new Metamodel;
        return *instance;
    }
    /// \returns a property of that type, single unless told otherwise.
    static meta::Property property(meta::Type const& type, int multiplicity = 1, bool ordered = true) {
        meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
        auto const thawer = registry.freezer().thaw();
        meta::Property property = meta::Property::create(registry.metaModel());
        property.setType(type);
        property.setMultiplicity(multiplicity);
        property.setIsOrdered(ordered);
        return property;
    }

  private:
    Metamodel() {
        meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
        auto const thawer = registry.freezer().thaw();
        zero::Model const& model = registry.metaModel();
        meta::Package package = meta::Package::create(model);
        package.setName(u"climate");
        weather = enumeration(package, u"Weather");
        other = enumeration(package, u"Other");
        for (Literal const& literal : literals) {
            meta::EnumLiteral object = meta::EnumLiteral::create(model);
            object.setName(literal.name);
            object.setValue(literal.number);
            object.setParentEnum(weather);
        }
        zero::EnumerationTraits<Weather>::table.object = weather.get();
    }
    static meta::Enum enumeration(meta::Package const& package, char16_t const* name) {
        meta::Enum type = meta::Enum::create(package.getModel());
        type.setName(name);
        type.setOwningPackage(package);
        return type;
    }
};

/// Runs `action`, which must report the type of this name as incompatible.
template <class Action>
testing::AssertionResult refuses(std::u16string const& type, Action action) {
    try {
        action();
    } catch (zero::MessageException<brant0::messages::CannotCastIncompatibleTypes> const& error) {
        auto const& arguments = error.GetBaseMsgIDObj().getArguments();
        if (arguments.size() == 1 && arguments[0] == tamber::core::except::MessageArgument(type))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "another type was named: " << error.what();
    }
    return testing::AssertionFailure() << "nothing was thrown";
}

} // namespace climate
