#include "PrimitiveSerializers.hpp"

#include "brant/zero/Text.hpp"
#include "brant/zero/meta/PrimitiveText.hpp"
#include "brant/zero/meta/StandardTypes.hpp"

#include <optional>
#include <typeinfo>

namespace brant::zero::meta {

namespace {

template <class T>
class PrimitiveSerializer final : public DefaultPropertySerializer<T> {
  public:
    /// \throws boost::bad_lexical_cast for bytes that are no UTF-8: they have no text form.
    [[nodiscard]] std::u16string toText(T const& value) const override {
        if constexpr (std::same_as<T, std::u16string>)
            return value;
        else if constexpr (std::same_as<T, std::string>)
            return wide(value);
        else {
            std::string text;
            appendText(text, value);
            return wide(text);
        }
    }
    [[nodiscard]] T fromText(std::u16string const& text, Type const&) const override {
        if constexpr (std::same_as<T, std::u16string>)
            return text;
        else {
            std::string narrow;
            if (!appendUtf8(narrow, text)) throw boost::bad_lexical_cast(typeid(std::u16string), typeid(T));
            if constexpr (std::same_as<T, std::string>)
                return narrow;
            else {
                T value{};
                if (parseText(narrow, value) != std::errc())
                    throw boost::bad_lexical_cast(typeid(std::u16string), typeid(T));
                return value;
            }
        }
    }

  private:
    static std::u16string wide(std::string const& text) {
        std::optional<std::u16string> result = toUtf16(text);
        if (!result) throw boost::bad_lexical_cast(typeid(T), typeid(std::u16string));
        return *std::move(result);
    }
};

template <class T>
PropertySerializer const* theSerializer() {
    static auto const* serializer = new PrimitiveSerializer<T>;
    return serializer;
}

struct Entry {
    StandardType const& type;
    PropertySerializer const* (*serializer)();
};

} // namespace

PropertySerializer const* internal::primitiveSerializer(Type const& type) {
    static constexpr Entry entries[] = {
        {StandardTypes::stringMeta, &theSerializer<std::u16string>},
        {StandardTypes::stdstringMeta, &theSerializer<std::string>},
        {StandardTypes::booleanMeta, &theSerializer<bool>},
        {StandardTypes::integerMeta, &theSerializer<int>},
        {StandardTypes::integer64Meta, &theSerializer<long>},
        {StandardTypes::uinteger64Meta, &theSerializer<unsigned long>},
        {StandardTypes::unlimitedNaturalMeta, &theSerializer<unsigned int>},
        {StandardTypes::realMeta, &theSerializer<double>},
    };
    for (Entry const& entry : entries)
        if (type == entry.type.get()) return entry.serializer();
    return nullptr;
}

} // namespace brant::zero::meta
