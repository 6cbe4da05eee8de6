#include "brant/zero/meta/StandardTypes.hpp"

#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <memory>
#include <mutex>

namespace brant::zero::meta {

PrimitiveType internal::getPrimitiveTypeFromMetaRegistry(std::u16string const& name) {
    MetaRegistry& registry = MetaRegistry::getInstance();
    // Another thread may be adding a package.
    std::lock_guard const lock(registry.mutex());
    PrimitiveType type = registry.getPrimitiveType(name);
    if (!type) reportException(brant0::messages::NoSuchType(name));
    return type;
}

Type const& StandardType::find() const {
    auto found = std::make_unique<Type const>(internal::getPrimitiveTypeFromMetaRegistry(name_));
    Type const* known = nullptr;
    if (type_.compare_exchange_strong(known, found.get(), std::memory_order_acq_rel)) known = found.release();
    return *known;
}

constinit StandardType const StandardTypes::stringMeta(u"String");
constinit StandardType const StandardTypes::stdstringMeta(u"StdString");
constinit StandardType const StandardTypes::booleanMeta(u"Boolean");
constinit StandardType const StandardTypes::integerMeta(u"Integer");
constinit StandardType const StandardTypes::integer64Meta(u"Integer64");
constinit StandardType const StandardTypes::uinteger64Meta(u"UInteger64");
constinit StandardType const StandardTypes::unlimitedNaturalMeta(u"UnlimitedNatural");
constinit StandardType const StandardTypes::realMeta(u"Real");

Type const& StandardTypes::of(schema::ValueKind kind) {
    switch (kind) {
    case schema::ValueKind::Boolean:
        return boolean();
    case schema::ValueKind::Integer:
        return integer();
    case schema::ValueKind::UnlimitedNatural:
        return unlimitedNatural();
    case schema::ValueKind::Integer64:
        return integer64();
    case schema::ValueKind::UInteger64:
        return uInteger64();
    case schema::ValueKind::Real:
        return real();
    case schema::ValueKind::StdString:
        return stdString();
    default:
        return string();
    }
}

} // namespace brant::zero::meta

namespace brant::zero {

ElementImpl const* value::primitiveType(schema::ValueKind kind) {
    return meta::StandardTypes::of(kind).get();
}

} // namespace brant::zero
