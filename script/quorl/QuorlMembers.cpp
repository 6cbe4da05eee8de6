#include "quorl/QuorlMembers.hpp"

#include <sstream>

namespace quorl {

std::unique_ptr<QuorlMethodSignature> QuorlMethodSignature::createMethodSignature() {
    return std::unique_ptr<QuorlMethodSignature>(new QuorlMethodSignature);
}

void QuorlMethodSignature::addInput(std::string_view type) {
    QuorlType parsed = QuorlType::parse(type);
    if (parsed.getKind() != QuorlType::Kind::Void) _inputs.push_back(std::move(parsed));
}

void QuorlMethodSignature::addOutput(std::string_view type, std::string_view name) {
    QuorlType parsed = QuorlType::parse(type);
    if (parsed.getKind() == QuorlType::Kind::Void) return;
    _outputNames.emplace_back(name);
    _outputs.push_back(std::move(parsed));
}

void QuorlMethodSignature::setInputNames(std::string_view words) {
    std::istringstream stream{std::string(words)};
    std::vector<std::string> names;
    for (std::string word; stream >> word;)
        names.push_back(std::move(word));
    if (names.size() != _inputs.size())
        raise<messages::BadSignature>(words, "there must be one name for each of the " +
                                                 std::to_string(_inputs.size()) + " inputs");
    _inputNames = std::move(names);
}

void QuorlMethodSignature::setOptionalCount(std::size_t count) {
    if (count > _inputs.size())
        raise<messages::BadSignature>(std::to_string(count) + " optional inputs",
                                      "there are only " + std::to_string(_inputs.size()));
    _optional = count;
}

QuorlMethodInfo::QuorlMethodInfo(std::string name, unsigned attributes, std::string description)
    : _name(std::move(name)), _description(std::move(description)), _attributes(attributes) {}
QuorlMethodInfo::~QuorlMethodInfo() = default;

QuorlPropInfo::QuorlPropInfo(std::string name, unsigned attributes)
    : _name(std::move(name)), _attributes(attributes) {}
QuorlPropInfo::~QuorlPropInfo() = default;

std::vector<ArrayPtr> QuorlPropInfo::getQuorlArrays(std::span<QuorlObject* const> objects) const {
    std::vector<ArrayPtr> values;
    values.reserve(objects.size());
    for (QuorlObject* const object : objects)
        values.push_back(getQuorlArray(*object));
    return values;
}

QuorlEnumInfo::QuorlEnumInfo(std::string name, InternedName className, std::int32_t value)
    : _name(std::move(name)), _className(className), _value(value) {}
QuorlEnumInfo::~QuorlEnumInfo() = default;

krelArray const& QuorlEnumInfo::getValue() const {
    if (_made == nullptr)
        _made = omCreateBuiltinBasedArrayFromUnderlyingArray(_className,
                                                             *omCreateNumericScalar<std::int32_t>(_value));
    return *_made;
}

} // namespace quorl
