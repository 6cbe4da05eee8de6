#include "ArrayData.hpp"

#include <cmath>
#include <limits>
#include <utility>

using namespace quorl;
using namespace quorl::detail;

namespace {

/// \returns false when `value` has no exact counterpart in To.
template <class To, class From>
bool convertExactly(From value, To& result) {
    if constexpr (std::is_same_v<To, bool>) {
        if (value != From(0) && value != From(1)) return false;
        result = value != From(0);
        return true;
    } else if constexpr (std::is_same_v<To, double>) {
        result = static_cast<double>(value);
        if constexpr (std::is_same_v<From, double> || sizeof(From) < sizeof(double)) return true;
        // The way back of a number that was rounded up to 2^n does not fit, and must not be tried.
        if (result >= std::ldexp(1.0, std::numeric_limits<From>::digits)) return false;
        return static_cast<From>(result) == value;
    } else if constexpr (std::is_same_v<From, double>) {
        double const above = std::ldexp(1.0, std::numeric_limits<To>::digits);
        double const lowest = std::is_signed_v<To> ? -above : 0.0;
        if (!(value >= lowest && value < above) || std::trunc(value) != value) return false;
        result = static_cast<To>(value);
        return true;
    } else if constexpr (std::is_same_v<From, bool>) {
        result = static_cast<To>(value);
        return true;
    } else {
        result = static_cast<To>(value);
        return std::in_range<To>(value);
    }
}

template <class To>
ArrayPtr convertTo(krelArray const& array, Numbers const& numbers) {
    return std::visit(
        [&](auto const& from) -> ArrayPtr {
            ArrayPtr made = omCreateNumericMatrix<To>(array.rows, array.columns);
            std::span<To> const to = omGetNumbersMutable<To>(*made);
            for (std::size_t i = 0; i < from.size(); ++i)
                if (!convertExactly(from[i], to[i])) return nullptr;
            return made;
        },
        numbers);
}

template <class T>
std::string_view spelling() {
    return spellingOf(NumericType(Numbers(NumbersOf<T>()).index()));
}

} // namespace

std::string_view quorl::detail::spellingOf(NumericType type) noexcept {
    static constexpr std::string_view names[] = {"logical", "double", "int32", "int64", "uint32", "uint64"};
    return names[std::size_t(type)];
}

template <class T>
ArrayPtr omCreateNumericMatrix(std::size_t rows, std::size_t columns) {
    return makeArray(rows, columns, Numbers(NumbersOf<T>(countOf(rows, columns), T())));
}

template <class T>
ArrayPtr omCreateNumericScalar(T value) {
    return makeArray(1, 1, Numbers(NumbersOf<T>(1, value)));
}

bool omIsNumeric(krelArray const& array) noexcept {
    return omGetKind(array) == ArrayKind::Numeric;
}

NumericType omGetNumericType(krelArray const& array) {
    return NumericType(partOf<Numbers>(array, "omGetNumericType", "number").index());
}

template <class T>
std::span<T const> omGetNumbers(krelArray const& array) {
    auto const* const numbers =
        std::get_if<NumbersOf<T>>(&partOf<Numbers>(array, "omGetNumbers", spelling<T>()));
    if (numbers == nullptr) raise<messages::WrongType>("omGetNumbers", spelling<T>(), omGetTypeName(array));
    return {numbers->data(), numbers->size()};
}

template <class T>
std::span<T> omGetNumbersMutable(krelArray& array) {
    std::span<T const> const numbers = omGetNumbers<T>(array);
    return {const_cast<T*>(numbers.data()), numbers.size()};
}

ArrayPtr omConvertNumbers(krelArray const& array, NumericType type) {
    Numbers const& numbers = partOf<Numbers>(array, "omConvertNumbers", "number");
    switch (type) {
    case NumericType::Logical:
        return convertTo<bool>(array, numbers);
    case NumericType::Double:
        return convertTo<double>(array, numbers);
    case NumericType::Int32:
        return convertTo<std::int32_t>(array, numbers);
    case NumericType::Int64:
        return convertTo<std::int64_t>(array, numbers);
    case NumericType::Uint32:
        return convertTo<std::uint32_t>(array, numbers);
    case NumericType::Uint64:
        return convertTo<std::uint64_t>(array, numbers);
    }
    return nullptr;
}

#define QUORL_INSTANTIATE(T)                                                                                 \
    template ZELKOR_API ArrayPtr omCreateNumericMatrix<T>(std::size_t, std::size_t);                         \
    template ZELKOR_API ArrayPtr omCreateNumericScalar<T>(T);                                                \
    template ZELKOR_API std::span<T const> omGetNumbers<T>(krelArray const&);                                \
    template ZELKOR_API std::span<T> omGetNumbersMutable<T>(krelArray&);
QUORL_INSTANTIATE(bool)
QUORL_INSTANTIATE(double)
QUORL_INSTANTIATE(std::int32_t)
QUORL_INSTANTIATE(std::int64_t)
QUORL_INSTANTIATE(std::uint32_t)
QUORL_INSTANTIATE(std::uint64_t)
#undef QUORL_INSTANTIATE
