#include "brant/zero/meta/PropertySerializer.hpp"

#include "PrimitiveSerializers.hpp"
#include "brant/zero/meta/Enum.hpp"
#include "brant/zero/meta/EnumLiteral.hpp"

#include <mutex>

namespace brant::zero::meta {

PropertySerializer::~PropertySerializer() = default;

boost::optional<std::u16string> PropertySerializer::serializeOptionalValue(Value const&) const {
    return {};
}

Value PropertySerializer::toOptionalValue(Value const& value) const {
    return value;
}

void PropertySerializer::releaseValue(Value&&, Type const&) const {}

DatatypeSerializer::~DatatypeSerializer() = default;

boost::optional<Value> DatatypeSerializer::fromOptionalValue(Value const&) const {
    return {};
}

Value DatatypeSerializer::toOptionalValue(Value const& value) const {
    return value;
}

std::u16string internal::literalName(Enum const& type, std::int64_t number) {
    for (EnumLiteral const& literal : type.getLiterals())
        if (literal.getValue() == number) return literal.getName();
    return {};
}

std::int64_t internal::literalNumber(Enum const& type, std::u16string const& name) {
    EnumLiteral const literal = type.getLiterals()[name];
    if (!literal) throw boost::bad_lexical_cast(typeid(std::u16string), typeid(EnumLiteral));
    return literal.getValue();
}

PropertySerializerRegistry& PropertySerializerRegistry::getInstance() {
    static auto* registry = new PropertySerializerRegistry;
    return *registry;
}

void PropertySerializerRegistry::registerPropertySerializer(Type const& type,
                                                            std::unique_ptr<PropertySerializer> serializer,
                                                            std::string const& key) {
    std::lock_guard const lock(mutex_);
    serializers_.insert_or_assign({type.get(), key}, std::move(serializer));
}

void PropertySerializerRegistry::registerDatatypeSerializer(DataType const& type,
                                                            std::unique_ptr<DatatypeSerializer> serializer) {
    std::lock_guard const lock(mutex_);
    datatypes_.insert_or_assign(type.get(), std::move(serializer));
}

PropertySerializer const* PropertySerializerRegistry::getPropertySerializer(Type const& type,
                                                                            std::string const& key) const {
    {
        std::shared_lock const lock(mutex_);
        auto const found = serializers_.find({type.get(), key});
        if (found != serializers_.end()) return found->second.get();
    }
    // Outside the lock: telling whether the type is a primitive may have to wait for a package that is being
    // assembled.
    return key.empty() ? internal::primitiveSerializer(type) : nullptr;
}

DatatypeSerializer const* PropertySerializerRegistry::getDatatypeSerializer(Type const& type) const {
    std::shared_lock const lock(mutex_);
    auto const found = datatypes_.find(type.get());
    return found == datatypes_.end() ? nullptr : found->second.get();
}

} // namespace brant::zero::meta
