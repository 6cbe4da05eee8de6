/// \file
/// Elements, models and the script objects that stand for them.
#pragma once

#include "brant/zero/mi/ValueMarshaler.hpp"

#include <span>

namespace brant::zero::mi {

/// The script class of models.
inline constexpr char modelClassName[] = "brant.zero.Model";

/// \returns the script object of the element, made if there is none, of the element's own class. The element
/// may be dead: its object fails with InvalidHandle on every use. O(1). \requires a handle that is not null.
[[nodiscard]] ZELKOR_API quorl::ObjectRef announceElement(ModelElement const& element);
[[nodiscard]] ZELKOR_API quorl::ObjectRef announceModel(Model const& model);
/// \returns an array of the one object, or the empty array of the class for a null handle.
[[nodiscard]] ZELKOR_API quorl::ArrayPtr toArray(ModelElement const& element,
                                                 schema::ClassTable const& declared);
[[nodiscard]] ZELKOR_API quorl::ArrayPtr toArray(Model const& model);
/// \returns a row of the objects, of the nearest class that they share; the empty array of the declared class
/// when there are none.
[[nodiscard]] ZELKOR_API quorl::ArrayPtr toArray(std::span<ModelElement const> elements,
                                                 schema::ClassTable const& declared);

/// \returns the elements of the array. \throws CannotCastIncompatibleTypes when an object is not of the
/// class, InvalidHandle when a place is empty or an element is gone.
[[nodiscard]] ZELKOR_API std::vector<ModelElement> elementsOf(krelArray const& array,
                                                              schema::ClassTable const& wanted);
/// \returns the one element, null for an array without elements. \throws as `elementsOf`, and
/// CannotCastIncompatibleTypes for more than one.
[[nodiscard]] ZELKOR_API ModelElement elementOf(krelArray const& array, schema::ClassTable const& wanted);
/// \returns the model in element 0, or a null handle when there is none. \throws CannotCastIncompatibleTypes
/// when the array is of another class.
[[nodiscard]] ZELKOR_API Model modelOf(krelArray const& array);
/// \returns the element that a call or a property is about. \throws InvalidHandle when it is none or gone.
[[nodiscard]] ZELKOR_API ModelElement& selfOf(krelArray const& array);

/// The marshaler of the elements of one class and its subclasses.
class ZELKOR_API ElementMarshaler final : public ValueMarshaler {
  public:
    ElementMarshaler(meta::Type type, schema::ClassTable const& table)
        : ValueMarshaler(std::move(type)), table_(&table) {}

    [[nodiscard]] char const* getScriptClassName() const noexcept override { return table_->scriptName; }
    [[nodiscard]] bool isCorrectType(krelArray const* array) const override;
    [[nodiscard]] quorl::ArrayPtr toKrelArray(Value const& value) const override;
    [[nodiscard]] Value fromKrelArray(krelArray const* array) const override;
    [[nodiscard]] quorl::ArrayPtr fromValueVector(std::vector<Value> const& values) const override;
    [[nodiscard]] std::vector<Value> toValueVector(krelArray const* array) const override;
    [[nodiscard]] Value toUnmanagedSetValue(krelArray const* array) const override;
    [[nodiscard]] Value toUnmanagedSequenceValue(krelArray const* array) const override;

  private:
    [[nodiscard]] Value toValue(ModelElement const& element) const;

    schema::ClassTable const* table_;
};

} // namespace brant::zero::mi
