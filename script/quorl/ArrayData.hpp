#pragma once

// What is inside of an array; for the sources of this folder only.

#include <boost/container/small_vector.hpp>
#include <variant>

#include "quorl/Errors.hpp"
#include "quorl/krelArray.hpp"

namespace quorl::detail {

// One number lies in the array itself: most reads of a script are of one.
template <class T>
using NumbersOf = boost::container::small_vector<T, 1>;

// In the order of NumericType.
using Numbers = std::variant<NumbersOf<bool>, NumbersOf<double>, NumbersOf<std::int32_t>,
                             NumbersOf<std::int64_t>, NumbersOf<std::uint32_t>, NumbersOf<std::uint64_t>>;

struct Structs {
    std::vector<std::string> fields;
    std::vector<ArrayPtr> values; ///< element after element, each with all fields
};

struct Objects {
    std::vector<ObjectRef> objects;
    InternedName className;
};

struct BuiltinBased {
    ArrayPtr underlying;
    InternedName className;
};

inline constexpr std::string_view heterogeneousName = "orvane.mixin.Heterogeneous";

std::string_view spellingOf(NumericType type) noexcept;

} // namespace quorl::detail

struct krelArray {
    // In the order of ArrayKind.
    using Data = std::variant<quorl::detail::Numbers, std::string, std::vector<std::u16string>,
                              quorl::detail::Structs, quorl::detail::Objects, quorl::detail::BuiltinBased>;

    std::size_t rows = 0;
    std::size_t columns = 0;
    Data data;
};

namespace quorl::detail {

inline ArrayPtr makeArray(std::size_t rows, std::size_t columns, krelArray::Data data) {
    return ArrayPtr(new krelArray{rows, columns, std::move(data)});
}

template <class T, class Array>
auto& partOf(Array& array, std::string_view where, std::string_view needed) {
    auto* const part = std::get_if<T>(&array.data);
    if (part == nullptr) raise<messages::WrongType>(where, needed, omGetTypeName(array));
    return *part;
}

inline void checkIndex(std::size_t index, std::size_t size) {
    if (index >= size) raise<messages::IndexOutOfRange>(long(index), long(size));
}

/// \returns rows * columns. Throws std::bad_alloc when no memory can hold that many.
std::size_t countOf(std::size_t rows, std::size_t columns);

} // namespace quorl::detail
