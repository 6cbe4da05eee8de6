#include "ArrayData.hpp"

#include <algorithm>
#include <new>

using namespace quorl;
using namespace quorl::detail;

namespace {

bool usingUsmFlag = false;

std::string const& nameOf(std::string_view text) {
    return internal::makeInterned(text).text();
}

struct Copy {
    krelArray::Data operator()(Structs const& from) const {
        Structs copy{from.fields, {}};
        copy.values.reserve(from.values.size());
        for (ArrayPtr const& value : from.values)
            copy.values.push_back(value == nullptr ? nullptr : omDuplicateArray(*value));
        return copy;
    }
    krelArray::Data operator()(Objects const& from) const {
        Objects copy{{}, from.className};
        copy.objects.reserve(from.objects.size());
        for (ObjectRef const& object : from.objects)
            copy.objects.push_back(object == nullptr ? nullptr : object->copyForAssignment());
        return copy;
    }
    krelArray::Data operator()(BuiltinBased const& from) const {
        return BuiltinBased{omDuplicateArray(*from.underlying), from.className};
    }
    template <class T>
    krelArray::Data operator()(T const& from) const {
        return from;
    }
};

std::size_t placeOf(Structs const& structs, std::size_t index, std::size_t size, std::string_view field) {
    checkIndex(index, size);
    auto const found = std::find(structs.fields.begin(), structs.fields.end(), field);
    if (found == structs.fields.end()) raise<messages::NoSuchField>(field);
    return index * structs.fields.size() + std::size_t(found - structs.fields.begin());
}

} // namespace

std::size_t quorl::detail::countOf(std::size_t rows, std::size_t columns) {
    std::size_t count = 0;
    if (__builtin_mul_overflow(rows, columns, &count)) throw std::bad_alloc();
    return count;
}

bool omGetQuorlUsingUSM() noexcept {
    return usingUsmFlag;
}

void omSetQuorlUsingUSM(bool usingUsm) noexcept {
    usingUsmFlag = usingUsm;
}

void omDestroyArray(krelArray* array) noexcept {
    delete array;
}

ArrayPtr omDuplicateArray(krelArray const& array) {
    return makeArray(array.rows, array.columns, std::visit(Copy(), array.data));
}

ArrayKind omGetKind(krelArray const& array) noexcept {
    return ArrayKind(array.data.index());
}
std::size_t omGetRows(krelArray const& array) noexcept {
    return array.rows;
}
std::size_t omGetColumns(krelArray const& array) noexcept {
    return array.columns;
}
std::size_t omGetNumberOfElements(krelArray const& array) noexcept {
    return array.rows * array.columns;
}

std::string const& omGetTypeName(krelArray const& array) {
    switch (omGetKind(array)) {
    case ArrayKind::Numeric:
        return nameOf(spellingOf(omGetNumericType(array)));
    case ArrayKind::Char:
        return nameOf("char");
    case ArrayKind::String:
        return nameOf("QuorlFactoryString");
    case ArrayKind::Struct:
        return nameOf("struct");
    case ArrayKind::Quorl:
    case ArrayKind::BuiltinBased:
        break;
    }
    return omGetClassName(array).text();
}

ArrayPtr omCreateCharArray(std::string_view utf8) {
    return makeArray(1, utf8.size(), std::string(utf8));
}

ArrayPtr omCreateStringScalar(std::u16string_view utf16) {
    return makeArray(1, 1, std::vector<std::u16string>(1, std::u16string(utf16)));
}

ArrayPtr omCreateStringMatrix(std::size_t rows, std::size_t columns) {
    return makeArray(rows, columns, std::vector<std::u16string>(countOf(rows, columns)));
}

bool omIsChar(krelArray const& array) noexcept {
    return omGetKind(array) == ArrayKind::Char;
}

bool omIsString(krelArray const& array) noexcept {
    return omGetKind(array) == ArrayKind::String;
}

std::string const& omGetChars(krelArray const& array) {
    return partOf<std::string>(array, "omGetChars", "char");
}

std::u16string const& omGetString(krelArray const& array, std::size_t index) {
    auto const& texts = partOf<std::vector<std::u16string>>(array, "omGetString", "QuorlFactoryString");
    checkIndex(index, texts.size());
    return texts[index];
}

void omSetString(krelArray& array, std::size_t index, std::u16string_view text) {
    auto& texts = partOf<std::vector<std::u16string>>(array, "omSetString", "QuorlFactoryString");
    checkIndex(index, texts.size());
    texts[index] = text;
}

ArrayPtr omCreateStructMatrix(std::size_t rows, std::size_t columns, std::span<std::string const> fields) {
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (std::find(fields.begin(), fields.begin() + std::ptrdiff_t(i), fields[i]) !=
            fields.begin() + std::ptrdiff_t(i))
            raise<messages::DuplicateName>("struct", fields[i]);
    Structs structs{{fields.begin(), fields.end()}, {}};
    structs.values.resize(countOf(countOf(rows, columns), fields.size()));
    return makeArray(rows, columns, std::move(structs));
}

bool omIsStruct(krelArray const& array) noexcept {
    return omGetKind(array) == ArrayKind::Struct;
}

std::vector<std::string> const& omGetFields(krelArray const& array) {
    return partOf<Structs>(array, "omGetFields", "struct").fields;
}

krelArray const* omGetField(krelArray const& array, std::size_t index, std::string_view field) {
    auto const& structs = partOf<Structs>(array, "omGetField", "struct");
    return structs.values[placeOf(structs, index, omGetNumberOfElements(array), field)].get();
}

void omSetField(krelArray& array, std::size_t index, std::string_view field, ArrayPtr value) {
    auto& structs = partOf<Structs>(array, "omSetField", "struct");
    structs.values[placeOf(structs, index, omGetNumberOfElements(array), field)] = std::move(value);
}
