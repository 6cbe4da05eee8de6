/// \file
/// The script class of an enumeration.
#pragma once

#include "brant/zero/Enumeration.hpp"
#include "quorl/Factory.hpp"
#include "quorl/QuorlPackage.hpp"

namespace brant::zero::mi {

/// Turns texts into literals by their names: a row of characters into one, an array of strings into as many.
/// \throws CannotCastIncompatibleTypes with the class name for other values and for unknown names.
class ZELKOR_API FromAnyAsStringTypeConverter final : public quorl::QuorlConversion {
  public:
    FromAnyAsStringTypeConverter(quorl::InternedName className, schema::EnumTable const& enumeration)
        : className_(className), enumeration_(&enumeration) {}
    [[nodiscard]] quorl::ArrayPtr convert(krelArray const& value) const override;

  private:
    quorl::InternedName className_;
    schema::EnumTable const* enumeration_;
};

/// A literal: its name, its class, its number, and a script value made at the first request.
class ZELKOR_API EnumValueInfo final : public quorl::QuorlEnumInfo {
  public:
    using QuorlEnumInfo::QuorlEnumInfo;
};
template <class E>
using Brant0EnumValueInfo = EnumValueInfo;

/// Makes a value of the enumeration from one, or from the name of a literal.
class ZELKOR_API EnumConstructor final : public quorl::QuorlMethodInfo {
  public:
    explicit EnumConstructor(quorl::InternedName className);
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override;

  private:
    quorl::InternedName className_;
};
template <class E>
using Ctor = EnumConstructor;

/// A script class made from the table of an enumeration, over 32-bit integers.
class ZELKOR_API EnumWrapperInfo : public quorl::factory::QuorlFactoryClassInfo {
  public:
    /// The table outlives the object.
    explicit EnumWrapperInfo(schema::EnumTable const& table);

    void initializeClass(quorl::QuorlClass* quorlClass) override;
    [[nodiscard]] schema::EnumTable const& getTable() const noexcept { return *table_; }

  private:
    schema::EnumTable const* table_;
};

/// The script class of `E`.
template <class E>
class Brant0EnumWrapper : public EnumWrapperInfo {
  public:
    Brant0EnumWrapper() : EnumWrapperInfo(EnumerationTraits<E>::table) {}
};

/// Adds the class to the package and lets the name of a literal stand wherever one is wanted. Conversions of
/// an earlier load give way.
ZELKOR_API void addEnumeration(quorl::QuorlPackage& package, std::unique_ptr<EnumWrapperInfo> info);

} // namespace brant::zero::mi
