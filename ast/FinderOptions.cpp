#include "zelkor/ast/FinderOptions.hpp"

#include "Primitive.ipp"
#include "brant/zero/Hash.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/DatatypeSerializer.hpp"
#include "brant/zero/meta/EnumerationSupport.hpp"

#include <cstdint>
#include <iterator>

namespace zelkor::ast {

using ::brant::zero::Value;
namespace meta = ::brant::zero::meta;

constinit bool FinderOptions::*const FinderOptions::switches[6] = {
    &FinderOptions::includeSubScopes_,     &FinderOptions::includeDerivedClasses_,
    &FinderOptions::includeStdNs_,         &FinderOptions::includeSystemHeaders_,
    &FinderOptions::includeTemplateScope_, &FinderOptions::includeAggregateScope_,
};

int FinderOptions::compareWith(FinderOptions const& other) const noexcept {
    for (auto const field : switches)
        if (this->*field != other.*field) return this->*field ? 1 : -1;
    int const mine = static_cast<int>(nameResolutionStrategy_);
    int const theirs = static_cast<int>(other.nameResolutionStrategy_);
    return (mine > theirs) - (mine < theirs);
}

std::size_t FinderOptions::hash() const noexcept {
    std::uint64_t seed =
        ::brant::zero::hashRange(switches, [this](auto field) -> std::uint64_t { return this->*field; });
    ::brant::zero::hashCombine(seed, static_cast<std::uint64_t>(nameResolutionStrategy_));
    return seed;
}

/// Reads and writes the options as a record of the fields that their table lists.
class FinderOptionsDatatypeSerializer final : public meta::DefaultDatatypeSerializer<FinderOptions> {
  protected:
    Value doGetPropertyValue(FinderOptions const& options, meta::Property const& property) const override {
        std::size_t const place = placeOf(property);
        if (place < std::size(FinderOptions::switches))
            return Value::createPrimitiveValue(property, options.*FinderOptions::switches[place]);
        return Value::createPrimitiveValue(property, options.nameResolutionStrategy_);
    }
    void doSetPropertyValue(FinderOptions& options, meta::Property const& property,
                            Value const& value) const override {
        std::size_t const place = placeOf(property);
        if (place < std::size(FinderOptions::switches))
            options.*FinderOptions::switches[place] = value.getValue<bool>();
        else
            options.nameResolutionStrategy_ = value.getValue<NameFinderKind>();
    }

  private:
    /// \returns the place of the field in the table. \throws NoSuchProperty.
    static std::size_t placeOf(meta::Property const& property) {
        auto const& table = FinderOptions::table;
        for (std::size_t place = 0; place < table.rowCount; ++place)
            if (property.get() == table.rows[place].object) return place;
        ::brant::zero::reportException(
            brant0::messages::NoSuchProperty(property ? property.getName() : std::u16string(),
                                             ::brant::zero::toUtf16(table.qualifiedName).value()));
    }
};

void FinderOptions::registerType(meta::DataType const& type) {
    ::brant::zero::registerDatatype<FinderOptions>(type, std::make_unique<FinderOptionsDatatypeSerializer>());
}

} // namespace zelkor::ast
