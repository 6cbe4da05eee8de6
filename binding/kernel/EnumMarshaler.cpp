#include "brant/zero/mi/EnumMarshaler.hpp"

#include <algorithm>

namespace brant::zero::mi {

using quorl::InternedName;

std::vector<std::int32_t> literalNumbers(krelArray const& array, char const* scriptName) {
    if (countValues(array) == 0) return {};
    InternedName const className = quorl::internal::makeInterned(scriptName);
    quorl::ArrayPtr converted;
    krelArray const* literals = &array;
    if (!omIsOfClass(array, className)) {
        auto const* const conversion =
            quorl::QuorlTypeRepository::getInstance().getConversion("any", className.text());
        bool const isText = omIsChar(array) || omIsString(array);
        if (!isText || conversion == nullptr)
            quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(className.text());
        converted = conversion->convert(array);
        literals = converted.get();
    }
    std::span<std::int32_t const> const numbers = omGetNumbers<std::int32_t>(omGetUnderlyingArray(*literals));
    return {numbers.begin(), numbers.end()};
}

quorl::ArrayPtr literalArray(std::span<std::int32_t const> numbers, char const* scriptName) {
    InternedName const className = quorl::internal::makeInterned(scriptName);
    if (numbers.empty()) return omCreateQuorlEmpty(className);
    quorl::ArrayPtr const underlying = omCreateNumericMatrix<std::int32_t>(1, numbers.size());
    std::copy(numbers.begin(), numbers.end(), omGetNumbersMutable<std::int32_t>(*underlying).begin());
    return omCreateBuiltinBasedArrayFromUnderlyingArray(className, *underlying);
}

EnumValueMarshaler::EnumValueMarshaler(schema::EnumTable const& table)
    : ValueMarshaler(meta::Type(static_cast<ModelElementImpl*>(table.object))), table_(&table) {}

bool EnumValueMarshaler::isCorrectType(krelArray const* array) const {
    return omIsOfClass(*array, quorl::internal::makeInterned(table_->scriptName));
}

quorl::ArrayPtr EnumValueMarshaler::fromValueVector(std::vector<Value> const& values) const {
    std::vector<std::int32_t> numbers;
    numbers.reserve(values.size());
    for (Value const& value : values)
        numbers.push_back(static_cast<std::int32_t>(value.getEnumerationWord(*table_)));
    return literalArray(numbers, table_->scriptName);
}

std::vector<Value> EnumValueMarshaler::toValueVector(krelArray const* array) const {
    std::vector<Value> values;
    for (std::int32_t const number : literalNumbers(*array, table_->scriptName))
        values.emplace_back(getType(), static_cast<unsigned long>(static_cast<long>(number)),
                            ValueFlags::One);
    return values;
}

void MarshalerEntry::add() const {
    EmptyParentPackage::Registrar::registerTypeMarshaler(meta::Type(static_cast<ModelElementImpl*>(*type)),
                                                         make());
}

void MarshalerEntry::remove() const {
    EmptyParentPackage::Registrar::unregisterTypeMarshaler(meta::Type(static_cast<ModelElementImpl*>(*type)));
}

} // namespace brant::zero::mi
