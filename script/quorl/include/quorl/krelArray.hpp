#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "quorl/Interned.hpp"
#include "quorl/QuorlObject.hpp"

/// A value of the script: a matrix of numbers, texts, structs or objects. Opaque; read by the om functions.
/// An array owns all that is in it, except that objects of handle classes are shared by counting.
struct krelArray;

ZELKOR_API void omDestroyArray(krelArray* array) noexcept;

namespace quorl {

struct ArrayDeleter {
    void operator()(krelArray* array) const noexcept { omDestroyArray(array); }
};
/// Sole owner of an array. All functions that make arrays return one; none takes a bare pointer over.
using ArrayPtr = std::unique_ptr<krelArray, ArrayDeleter>;

enum class ArrayKind : std::uint8_t { Numeric, Char, String, Struct, Quorl, BuiltinBased };
enum class NumericType : std::uint8_t { Logical, Double, Int32, Int64, Uint32, Uint64 };

} // namespace quorl

// Elements count from 0 in column order. Functions that read what the array does not have throw WrongType
// with the name of the function; an index beyond the end throws IndexOutOfRange. All are O(1) unless told.

/// Which host mode the library was loaded in: true when the host itself guards against loading twice.
ZELKOR_API bool omGetQuorlUsingUSM() noexcept;
ZELKOR_API void omSetQuorlUsingUSM(bool usingUsm) noexcept;

/// A copy: objects of handle classes are shared, all else is copied. O(size).
ZELKOR_API quorl::ArrayPtr omDuplicateArray(krelArray const& array);

ZELKOR_API quorl::ArrayKind omGetKind(krelArray const& array) noexcept;
ZELKOR_API std::size_t omGetRows(krelArray const& array) noexcept;
ZELKOR_API std::size_t omGetColumns(krelArray const& array) noexcept;
ZELKOR_API std::size_t omGetNumberOfElements(krelArray const& array) noexcept;

/// \returns the type as signatures spell it, without " scalar": "double", "char", "struct", a class name.
ZELKOR_API std::string const& omGetTypeName(krelArray const& array);

// Numbers. T is bool, double, std::int32_t, std::int64_t, std::uint32_t or std::uint64_t.

/// A matrix of zeros.
template <class T>
ZELKOR_API quorl::ArrayPtr omCreateNumericMatrix(std::size_t rows, std::size_t columns);
template <class T>
ZELKOR_API quorl::ArrayPtr omCreateNumericScalar(T value);
ZELKOR_API bool omIsNumeric(krelArray const& array) noexcept;
/// Throws WrongType unless the array is numeric.
ZELKOR_API quorl::NumericType omGetNumericType(krelArray const& array);
template <class T>
ZELKOR_API std::span<T const> omGetNumbers(krelArray const& array);
template <class T>
ZELKOR_API std::span<T> omGetNumbersMutable(krelArray& array);
/// \returns the same numbers in another type, or null when one of them has no exact counterpart there. O(n).
ZELKOR_API quorl::ArrayPtr omConvertNumbers(krelArray const& array, quorl::NumericType type);

// Texts. A character array is one row of bytes and is taken for UTF-8 where it meets a string; a string
// array has a UTF-16 text in each element. Neither is checked when it is made.

ZELKOR_API quorl::ArrayPtr omCreateCharArray(std::string_view utf8);
ZELKOR_API quorl::ArrayPtr omCreateStringScalar(std::u16string_view utf16);
ZELKOR_API quorl::ArrayPtr omCreateStringMatrix(std::size_t rows, std::size_t columns);
ZELKOR_API bool omIsChar(krelArray const& array) noexcept;
ZELKOR_API bool omIsString(krelArray const& array) noexcept;
ZELKOR_API std::string const& omGetChars(krelArray const& array);
ZELKOR_API std::u16string const& omGetString(krelArray const& array, std::size_t index);
ZELKOR_API void omSetString(krelArray& array, std::size_t index, std::u16string_view text);

// Structs: each element has a value, or null, for each field.

/// Throws DuplicateName when a field comes twice.
ZELKOR_API quorl::ArrayPtr omCreateStructMatrix(std::size_t rows, std::size_t columns,
                                                std::span<std::string const> fields);
ZELKOR_API bool omIsStruct(krelArray const& array) noexcept;
ZELKOR_API std::vector<std::string> const& omGetFields(krelArray const& array);
/// \returns the value, owned by the array, or null when none was set. Throws NoSuchField. O(fields).
ZELKOR_API krelArray const* omGetField(krelArray const& array, std::size_t index, std::string_view field);
ZELKOR_API void omSetField(krelArray& array, std::size_t index, std::string_view field,
                           quorl::ArrayPtr value);

// Class arrays.

/// An array of the class with no elements (0 by 0).
ZELKOR_API quorl::ArrayPtr omCreateQuorlEmpty(quorl::InternedName className);
/// Null places, each to be filled by omSetArrayElement. The class may be orvane.mixin.Heterogeneous, whose
/// arrays take objects of any class.
ZELKOR_API quorl::ArrayPtr omCreateQuorlMatrix(quorl::InternedName className, std::size_t rows,
                                               std::size_t columns);
ZELKOR_API quorl::ArrayPtr omCreateQuorlScalar(quorl::ObjectRef object);
/// True for class arrays of both kinds: of objects, and over a built-in array.
ZELKOR_API bool omIsQuorl(krelArray const& array) noexcept;
/// \returns the class of a class array, the empty name for any other.
ZELKOR_API quorl::InternedName omGetClassName(krelArray const& array) noexcept;
/// True when the class of the array is `className` or derives from it; false for arrays without a class.
/// O(depth).
ZELKOR_API bool omIsOfClass(krelArray const& array, quorl::InternedName className);
/// \returns the object, null for a place that was never filled.
ZELKOR_API quorl::QuorlObject* omGetArrayElement(krelArray const& array, std::size_t index);
/// Values are copied, objects of handle classes shared. Throws WrongType when the object is not of the class.
ZELKOR_API void omSetArrayElement(krelArray& array, std::size_t index, quorl::ObjectRef const& object);
/// The same from an array of one object.
ZELKOR_API void omSetArrayElement(krelArray& array, std::size_t index, krelArray const& scalar);
/// Gives the array the nearest class that all its objects share; without one it stays as it is.
/// Throws InvalidHandle when a place is empty. O(n * depth).
ZELKOR_API void omSetClassOfHeterogeneousArray(krelArray& array);

/// A class array over a numeric one, as enumerations have it. Takes a copy. Throws WrongType.
ZELKOR_API quorl::ArrayPtr omCreateBuiltinBasedArrayFromUnderlyingArray(quorl::InternedName className,
                                                                        krelArray const& underlying);
/// \returns the numeric array, owned by `array`.
ZELKOR_API krelArray const& omGetUnderlyingArray(krelArray const& array);
ZELKOR_API std::size_t omGetNumberOfElementsInUnderlyingArray(krelArray const& array);
