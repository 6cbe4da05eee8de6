#include "brant/zero/mi/ValueMarshaler.hpp"

#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/PropertySerializer.hpp"
#include "brant/zero/mi/MetaMarshalerRegistry.hpp"

namespace brant::zero::mi {

ValueMarshaler::~ValueMarshaler() = default;

void ValueMarshaler::initializeDependencies() {
    std::string_view const name = getScriptClassName();
    if (name.find('.') != std::string_view::npos) quorl::QuorlClass::getClass(name);
}

quorl::ArrayPtr ValueMarshaler::toKrelArray(Value const& value) const {
    return fromValueVector({value});
}

Value ValueMarshaler::fromKrelArray(krelArray const* array) const {
    if (countValues(*array) == 0) return absentValue();
    std::vector<Value> values = toValueVector(array);
    if (values.size() != 1) refuse();
    return std::move(values[0]);
}

quorl::ArrayPtr ValueMarshaler::fromCollection(AbstractPrimitiveCollection const& values) const {
    return fromValueVector(values.getAllValues());
}

namespace {

/// Makes a collection of the values by whoever knows the C++ type behind `type`.
template <class Combine>
Value combine(meta::Type const& type, Combine const& combine) {
    auto& registry = meta::PropertySerializerRegistry::getInstance();
    if (auto const* const datatype = registry.getDatatypeSerializer(type)) return combine(*datatype);
    if (auto const* const serializer = registry.getPropertySerializer(type)) return combine(*serializer);
    reportException(brant0::messages::NoSuchType(meta::qualifiedName(type)));
}

} // namespace

Value ValueMarshaler::toUnmanagedSetValue(krelArray const* array) const {
    return combine(type_, [&](auto const& serializer) {
        return serializer.combineAsUnmanagedSetValue(type_, toValueVector(array));
    });
}

Value ValueMarshaler::toUnmanagedSequenceValue(krelArray const* array) const {
    return combine(type_, [&](auto const& serializer) {
        return serializer.combineAsUnmanagedSequenceValue(type_, toValueVector(array));
    });
}

Value ValueMarshaler::absentValue() const {
    quorl::raise<brant0::messages::InvalidValue>();
}

void ValueMarshaler::refuse() const {
    quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(std::string(getScriptClassName()));
}

std::string spellingOf(meta::Type const& type, bool many) {
    if (meta::Class const cls = meta::Class::cast(type)) return cls.getScriptName();
    if (auto const* const names = meta::MetaRegistry::getInstance().names(type)) return names->script;
    std::string spelling =
        MetaMarshalerRegistry::getInstance().getPropertyMarshaler(type).getScriptClassName();
    if (!many) return spelling;
    if (spelling == "char") return "QuorlFactoryString"; // an array of characters holds one text
    std::size_t const tail = spelling.rfind(" scalar");
    return tail == std::string::npos ? spelling : spelling.substr(0, tail);
}

} // namespace brant::zero::mi
