/// \file
/// How values cross between the model and script arrays: one marshaler for each type.
#pragma once

#include "brant/zero/Primitive.hpp"
#include "brant/zero/Value.hpp"
#include "quorl/Factory.hpp"

#include <memory>
#include <string>
#include <vector>

namespace brant::zero::mi {

/// \returns how many values the array has; a row of characters is one text.
[[nodiscard]] inline std::size_t countValues(krelArray const& array) noexcept {
    return omIsChar(array) ? 1 : omGetNumberOfElements(array);
}

/// Turns values of one type of the metamodel into arrays and back.
///
/// An array of the wrong class, or of more than one element where one value is wanted, is reported as
/// CannotCastIncompatibleTypes with the script class name; a value of the right class that does not fit, such
/// as 2.5 for an integer, as InvalidValue. All operations are linear in the number of values.
class ZELKOR_API ValueMarshaler {
  public:
    explicit ValueMarshaler(meta::Type type) : type_(std::move(type)) {}
    ValueMarshaler(ValueMarshaler const&) = delete;
    ValueMarshaler& operator=(ValueMarshaler const&) = delete;
    virtual ~ValueMarshaler();

    [[nodiscard]] meta::Type const& getType() const noexcept { return type_; }
    /// \returns a literal: the dotted name of the script class, or how signatures spell one built-in value.
    [[nodiscard]] virtual char const* getScriptClassName() const noexcept = 0;
    /// Loads the script class of the values.
    virtual void initializeDependencies();
    [[nodiscard]] virtual bool isCorrectType(krelArray const* array) const = 0;

    /// The array of one value.
    [[nodiscard]] virtual quorl::ArrayPtr toKrelArray(Value const& value) const;
    /// \returns the one value of the array. An array without elements is InvalidValue, but a null element for
    /// a type of elements.
    [[nodiscard]] virtual Value fromKrelArray(krelArray const* array) const;
    /// A row of N values; the empty array of the class when there are none.
    [[nodiscard]] virtual quorl::ArrayPtr fromValueVector(std::vector<Value> const& values) const = 0;
    [[nodiscard]] virtual quorl::ArrayPtr fromCollection(AbstractPrimitiveCollection const& values) const;
    [[nodiscard]] virtual std::vector<Value> toValueVector(krelArray const* array) const = 0;
    /// \returns a value that owns the set of the array's values; equal ones collapse.
    [[nodiscard]] virtual Value toUnmanagedSetValue(krelArray const* array) const;
    /// \returns a value that owns the list of the array's values.
    [[nodiscard]] virtual Value toUnmanagedSequenceValue(krelArray const* array) const;

  protected:
    /// The value that an array without elements stands for.
    [[nodiscard]] virtual Value absentValue() const;
    /// \throws CannotCastIncompatibleTypes with the script class name.
    [[noreturn]] void refuse() const;

  private:
    meta::Type type_;
};

/// What the marshalers of values of a C++ type `T` have in common.
template <class T>
class AbstractTypedValueMarshaler : public ValueMarshaler {
  public:
    using ValueMarshaler::ValueMarshaler;

  protected:
    [[nodiscard]] Value toValue(T payload) const {
        return Value::own<T>(getType(), ValueFlags::One, std::move(payload));
    }
};

/// A marshaler of `T` by a policy that makes arrays of payloads and reads them:
/// `static char const* name()`, `static bool fits(krelArray const&)`,
/// `static ArrayPtr toArray(std::vector<T> const&)`, `static std::vector<T> fromArray(krelArray const&)`.
template <class T, class Policy>
class PolicyBasedValueMarshaler : public AbstractTypedValueMarshaler<T> {
  public:
    using AbstractTypedValueMarshaler<T>::AbstractTypedValueMarshaler;

    [[nodiscard]] char const* getScriptClassName() const noexcept override { return Policy::name(); }
    [[nodiscard]] bool isCorrectType(krelArray const* array) const override { return Policy::fits(*array); }
    [[nodiscard]] quorl::ArrayPtr toKrelArray(Value const& value) const override {
        return Policy::toArray({value.getValue<T>()});
    }
    [[nodiscard]] quorl::ArrayPtr fromValueVector(std::vector<Value> const& values) const override {
        std::vector<T> payloads;
        payloads.reserve(values.size());
        for (Value const& value : values)
            payloads.push_back(value.getValue<T>());
        return Policy::toArray(payloads);
    }
    [[nodiscard]] std::vector<Value> toValueVector(krelArray const* array) const override {
        if (countValues(*array) == 0) return {};
        if (!Policy::fits(*array)) this->refuse();
        std::vector<Value> values;
        for (auto&& payload : Policy::fromArray(*array))
            values.push_back(this->toValue(std::move(payload)));
        return values;
    }
};

/// \returns how signatures spell the type: one value, or several.
/// \throws NoSuchType when scripts do not know the type.
[[nodiscard]] ZELKOR_API std::string spellingOf(meta::Type const& type, bool many);

} // namespace brant::zero::mi
