/// \file
/// The marshalers of enumerations and value types.
#pragma once

#include "brant/zero/Enumeration.hpp"
#include "brant/zero/mi/EmptyParentPackage.hpp"

namespace brant::zero::mi {

/// \returns the numbers of an array of the enumeration: its own array as it is, texts by the names of
/// literals; empty for an array without elements. \throws CannotCastIncompatibleTypes with the script class
/// name for anything else and for a text that names no literal.
[[nodiscard]] ZELKOR_API std::vector<std::int32_t> literalNumbers(krelArray const& array,
                                                                  char const* scriptName);
/// A row of literals from their numbers; the empty array of the class when there are none.
[[nodiscard]] ZELKOR_API quorl::ArrayPtr literalArray(std::span<std::int32_t const> numbers,
                                                      char const* scriptName);

/// The marshaler of an enumeration, by its table: the numbers are all that it needs to know.
class ZELKOR_API EnumValueMarshaler : public ValueMarshaler {
  public:
    explicit EnumValueMarshaler(schema::EnumTable const& table);

    [[nodiscard]] char const* getScriptClassName() const noexcept override { return table_->scriptName; }
    [[nodiscard]] bool isCorrectType(krelArray const* array) const override;
    [[nodiscard]] quorl::ArrayPtr fromValueVector(std::vector<Value> const& values) const override;
    [[nodiscard]] std::vector<Value> toValueVector(krelArray const* array) const override;

  private:
    schema::EnumTable const* table_;
};

template <SchemaEnumeration E>
class PolicyBasedEnumValueMarshaler final : public EnumValueMarshaler {
  public:
    PolicyBasedEnumValueMarshaler() : EnumValueMarshaler(EnumerationTraits<E>::table) {}
};

/// How arrays hold a value type: objects of its script class.
template <SchemaDatatype T>
struct DatatypePolicy {
    static char const* name() { return T::table.scriptName; }
    static bool fits(krelArray const& array) {
        return omIsOfClass(array, quorl::internal::makeInterned(name()));
    }
    static quorl::ArrayPtr toArray(std::vector<T> const& values) {
        quorl::InternedName const className = quorl::internal::makeInterned(name());
        if (values.empty()) return omCreateQuorlEmpty(className);
        quorl::ArrayPtr array = omCreateQuorlMatrix(className, 1, values.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            quorl::ArrayPtr const one =
                omCreateQuorlScalar(quorl::QuorlObject::allocate(quorl::QuorlClass::requireClass(className)));
            quorl::factory::CopyableDataTypeClassInfo<T>::construct(*one, values[i]);
            omSetArrayElement(*array, i, *one);
        }
        return array;
    }
    static std::vector<T> fromArray(krelArray const& array) {
        std::vector<T> values;
        for (std::size_t i = 0; i < omGetNumberOfElements(array); ++i) {
            quorl::QuorlObject const* const object = omGetArrayElement(array, i);
            if (object == nullptr) quorl::raise<quorl::messages::InvalidHandle>();
            values.push_back(*static_cast<T const*>(quorl::factory::impl::validateSelfPointer(*object)));
        }
        return values;
    }
};

template <SchemaDatatype T>
class DatatypeValueMarshaler final : public PolicyBasedValueMarshaler<T, DatatypePolicy<T>> {
  public:
    DatatypeValueMarshaler()
        : PolicyBasedValueMarshaler<T, DatatypePolicy<T>>(
              meta::Type(static_cast<ModelElementImpl*>(T::table.object))) {}
};

template <class M>
std::unique_ptr<ValueMarshaler> makeMarshaler() {
    return std::make_unique<M>();
}

/// One type of a schema and what makes its marshaler. \requires the assembled package of the schema.
struct ZELKOR_API MarshalerEntry {
    ElementImpl* const* type;
    std::unique_ptr<ValueMarshaler> (*make)();

    void add() const;
    void remove() const;
};

} // namespace brant::zero::mi
