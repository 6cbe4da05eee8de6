/// \file
/// How arrays hold the primitives.
#pragma once

#include "brant/zero/mi/ValueMarshaler.hpp"

#include <algorithm>
#include <concepts>

namespace brant::zero::mi {

template <class T>
constexpr quorl::NumericType numericTypeOf() {
    if constexpr (std::same_as<T, bool>) return quorl::NumericType::Logical;
    if constexpr (std::same_as<T, double>) return quorl::NumericType::Double;
    if constexpr (std::same_as<T, int>) return quorl::NumericType::Int32;
    if constexpr (std::same_as<T, unsigned int>) return quorl::NumericType::Uint32;
    if constexpr (std::same_as<T, long>) return quorl::NumericType::Int64;
    if constexpr (std::same_as<T, unsigned long>) return quorl::NumericType::Uint64;
}

/// Numbers of any numeric type are taken if no digit is lost.
template <class T>
struct NumberPolicy {
    static char const* name() { return quorl::factory::ValueTraits<T>::typeName; }
    static bool fits(krelArray const& array) { return omIsNumeric(array); }
    static quorl::ArrayPtr toArray(std::vector<T> const& values) {
        quorl::ArrayPtr array = omCreateNumericMatrix<T>(values.empty() ? 0 : 1, values.size());
        std::copy(values.begin(), values.end(), omGetNumbersMutable<T>(*array).begin());
        return array;
    }
    static std::vector<T> fromArray(krelArray const& array) {
        quorl::ArrayPtr const converted = omConvertNumbers(array, numericTypeOf<T>());
        if (converted == nullptr) quorl::raise<brant0::messages::InvalidValue>();
        std::span<T const> const numbers = omGetNumbers<T>(*converted);
        return {numbers.begin(), numbers.end()};
    }
};

/// Texts come as strings or as one row of characters.
struct TextPolicy {
    static bool fits(krelArray const& array) { return omIsString(array) || omIsChar(array); }
    static quorl::ArrayPtr toArray(std::vector<std::u16string> const& values);
    static std::vector<std::u16string> fromArray(krelArray const& array);
};

struct StringPolicy : TextPolicy {
    static char const* name() { return quorl::factory::ValueTraits<std::u16string>::typeName; }
};

/// One byte text is a row of characters. Several are strings, so they must be UTF-8: InvalidValue otherwise.
struct StdStringPolicy : TextPolicy {
    static char const* name() { return quorl::factory::ValueTraits<std::string>::typeName; }
    static quorl::ArrayPtr toArray(std::vector<std::string> const& values);
    static std::vector<std::string> fromArray(krelArray const& array);
};

/// Tells a single byte text from a list with one byte text in it.
class StdStringMarshaler final : public PolicyBasedValueMarshaler<std::string, StdStringPolicy> {
  public:
    using PolicyBasedValueMarshaler::PolicyBasedValueMarshaler;
    [[nodiscard]] quorl::ArrayPtr toKrelArray(Value const& value) const override {
        return omCreateCharArray(value.getValue<std::string>());
    }
};

} // namespace brant::zero::mi
