/// \file
/// The script class of a value type.
#pragma once

#include "brant/zero/Enumeration.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/mi/Methods.hpp"
#include "quorl/Factory.hpp"

#include <functional>

namespace brant::zero::mi {

/// How the fields of a value type are reached without its C++ type.
struct DatatypeAccess {
    Value (*toValue)(meta::Type const& type, void const* body);
    void (*assign)(void* body, Value const& value);
};

/// A field of a value type.
class ZELKOR_API DatatypeProperty final : public quorl::QuorlPropInfo {
  public:
    DatatypeProperty(schema::DatatypeTable const& table, schema::PropertyRow const& row,
                     DatatypeAccess access);

    [[nodiscard]] std::string_view getTypeName() const override { return typeName_; }
    [[nodiscard]] bool isReadOnly() const override { return false; }
    [[nodiscard]] quorl::ArrayPtr getQuorlArray(quorl::QuorlObject& self) const override;
    void setQuorlArray(quorl::QuorlObject& self, krelArray const& value) const override;
    [[nodiscard]] schema::PropertyRow const& getRow() const noexcept { return *row_; }

  private:
    schema::DatatypeTable const* table_;
    schema::PropertyRow const* row_;
    DatatypeAccess access_;
    std::string typeName_;
};

/// Adds a constructor without inputs, the fields, and the operators `eq`, `ne` and `lt`.
ZELKOR_API void initializeDatatype(quorl::QuorlClass& quorlClass, schema::DatatypeTable const& table,
                                   DatatypeAccess access, PlainMethod::Body construct,
                                   PlainMethod::Body equal, PlainMethod::Body unequal,
                                   PlainMethod::Body less);

/// The script class of the value type `T`, whose objects are copied as a whole.
template <class T>
class Brant0DatatypeWrapper : public quorl::factory::CopyableDataTypeClassInfo<T> {
  public:
    Brant0DatatypeWrapper() : quorl::factory::CopyableDataTypeClassInfo<T>(T::table.scriptName) {}

    void initializeClass(quorl::QuorlClass* quorlClass) override {
        initializeDatatype(*quorlClass, T::table, {&toValue, &assign}, &construct, &compare<std::equal_to<T>>,
                           &compare<std::not_equal_to<T>>, &compare<std::less<T>>);
    }

  private:
    static Value toValue(meta::Type const& type, void const* body) {
        return Value::own<T>(type, ValueFlags::One, *static_cast<T const*>(body));
    }
    static void assign(void* body, Value const& value) { *static_cast<T*>(body) = value.getValue<T>(); }
    static void construct(quorl::Outputs& outputs, quorl::Inputs) {
        quorl::factory::CopyableDataTypeClassInfo<T>::construct(*outputs[0], T());
    }
    static T const& bodyOf(krelArray const& array) {
        quorl::QuorlObject const* const object =
            omGetNumberOfElements(array) == 1 ? omGetArrayElement(array, 0) : nullptr;
        if (object == nullptr) quorl::raise<quorl::messages::InvalidHandle>();
        return *static_cast<T const*>(quorl::factory::impl::validateSelfPointer(*object));
    }
    template <class Comparison>
    static void compare(quorl::Outputs& outputs, quorl::Inputs inputs) {
        outputs.push_back(omCreateNumericScalar<bool>(Comparison()(bodyOf(*inputs[0]), bodyOf(*inputs[1]))));
    }
};

} // namespace brant::zero::mi
