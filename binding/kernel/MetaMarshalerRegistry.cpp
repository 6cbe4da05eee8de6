#include "brant/zero/mi/MetaMarshalerRegistry.hpp"

#include "PrimitiveMarshalers.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Class.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/StandardTypes.hpp"
#include "brant/zero/mi/ElementMarshaler.hpp"

namespace brant::zero::mi {

quorl::ArrayPtr TextPolicy::toArray(std::vector<std::u16string> const& values) {
    quorl::ArrayPtr array = omCreateStringMatrix(values.empty() ? 0 : 1, values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        omSetString(*array, i, values[i]);
    return array;
}

std::vector<std::u16string> TextPolicy::fromArray(krelArray const& array) {
    if (omIsChar(array)) return {quorl::factory::extractString(array)};
    std::vector<std::u16string> texts;
    for (std::size_t i = 0; i < omGetNumberOfElements(array); ++i)
        texts.push_back(omGetString(array, i));
    return texts;
}

quorl::ArrayPtr StdStringPolicy::toArray(std::vector<std::string> const& values) {
    std::vector<std::u16string> texts(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!appendUtf16(texts[i], values[i])) quorl::raise<brant0::messages::InvalidValue>();
    return TextPolicy::toArray(texts);
}

std::vector<std::string> StdStringPolicy::fromArray(krelArray const& array) {
    if (omIsChar(array)) return {omGetChars(array)};
    std::vector<std::string> texts(omGetNumberOfElements(array));
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (!appendUtf8(texts[i], omGetString(array, i))) quorl::raise<brant0::messages::InvalidValue>();
    return texts;
}

MetaMarshalerRegistry& MetaMarshalerRegistry::getInstance() {
    static auto& registry = *new MetaMarshalerRegistry;
    return registry;
}

MetaMarshalerRegistry::MetaMarshalerRegistry() {
    auto const add = [&]<class M>(std::type_identity<M>, meta::Type const& type) {
        registerTypeMarshaler(type, std::make_unique<M>(type));
    };
    auto const number = [&]<class T>(T, meta::Type const& type) {
        add(std::type_identity<PolicyBasedValueMarshaler<T, NumberPolicy<T>>>(), type);
    };
    number(false, meta::StandardTypes::boolean());
    number(0, meta::StandardTypes::integer());
    number(0u, meta::StandardTypes::unlimitedNatural());
    number(0l, meta::StandardTypes::integer64());
    number(0ul, meta::StandardTypes::uInteger64());
    number(0.0, meta::StandardTypes::real());
    add(std::type_identity<PolicyBasedValueMarshaler<std::u16string, StringPolicy>>(),
        meta::StandardTypes::string());
    add(std::type_identity<StdStringMarshaler>(), meta::StandardTypes::stdString());
}

ValueMarshaler const& MetaMarshalerRegistry::getPropertyMarshaler(meta::Type const& type) {
    auto found = marshalers_.find(type.get());
    if (found == marshalers_.end()) {
        schema::ClassTable const* const table = meta::tableOf(meta::Class::cast(type));
        if (table == nullptr)
            reportException(
                brant0::messages::NoSuchType(type ? meta::qualifiedName(type) : std::u16string()));
        registerTypeMarshaler(type, std::make_unique<ElementMarshaler>(type, *table));
        found = marshalers_.find(type.get());
    }
    Entry& entry = found->second;
    if (!entry.isReady) {
        entry.isReady = true; // loading a class may lead back here
        try {
            entry.marshaler->initializeDependencies();
        } catch (...) {
            entry.isReady = false;
            throw;
        }
    }
    return *entry.marshaler;
}

void MetaMarshalerRegistry::registerTypeMarshaler(meta::Type const& type,
                                                  std::unique_ptr<ValueMarshaler> marshaler) {
    marshalers_[type.get()] = {std::move(marshaler), false};
}

void MetaMarshalerRegistry::unregisterTypeMarshaler(meta::Type const& type) {
    marshalers_.erase(type.get());
}

} // namespace brant::zero::mi
