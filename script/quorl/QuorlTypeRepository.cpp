#include "quorl/QuorlClass.hpp"

#include "ArrayData.hpp"

#include <map>
#include <unordered_map>

namespace quorl {

struct QuorlTypeRepository::Data {
    std::unordered_map<std::string_view, QuorlType> builtIn;
    std::map<std::pair<std::string, std::string>, std::shared_ptr<QuorlConversion const>, std::less<>>
        conversions;
};

QuorlConversion::~QuorlConversion() = default;

QuorlTypeRepository& QuorlTypeRepository::getInstance() {
    static auto& repository = *new QuorlTypeRepository;
    return repository;
}

QuorlTypeRepository::QuorlTypeRepository() : _data(new Data) {
    _data->builtIn["any"]._kind = QuorlType::Kind::Any;
    _data->builtIn["void"]._kind = QuorlType::Kind::Void;
    _data->builtIn["struct"]._kind = QuorlType::Kind::Struct;
    for (std::size_t i = 0; i < std::variant_size_v<detail::Numbers>; ++i) {
        QuorlType& type = _data->builtIn[detail::spellingOf(NumericType(i))];
        type._kind = QuorlType::Kind::Numeric;
        type._numeric = NumericType(i);
    }
}

QuorlTypeRepository::~QuorlTypeRepository() = default;

void factory::detail::initStringDataTypes() {
    auto& builtIn = QuorlTypeRepository::getInstance()._data->builtIn;
    builtIn["char"]._kind = QuorlType::Kind::Char;
    builtIn["QuorlFactoryString"]._kind = QuorlType::Kind::String;
}

QuorlType QuorlType::parse(std::string_view spelling) {
    constexpr std::string_view tail = " scalar";
    bool const scalar = spelling.ends_with(tail);
    std::string_view const name = spelling.substr(0, spelling.size() - (scalar ? tail.size() : 0));
    auto const& builtIn = QuorlTypeRepository::getInstance()._data->builtIn;
    QuorlType type;
    if (auto const found = builtIn.find(name); found != builtIn.end()) {
        type = found->second;
        if (scalar && (type._kind == Kind::Any || type._kind == Kind::Void || type._kind == Kind::Char))
            raise<messages::BadSignature>(spelling, "this type is never scalar");
    } else {
        if (name.find('.') == std::string_view::npos || name.find(' ') != std::string_view::npos)
            raise<messages::BadSignature>(spelling, "it is neither a built-in type nor a dotted class name");
        type._kind = Kind::Class;
        type._className = internal::makeInterned(name);
    }
    type._scalar = scalar;
    type._spelling = internal::makeInterned(spelling);
    return type;
}

bool QuorlType::accepts(krelArray const& array) const {
    if (_scalar && omGetNumberOfElements(array) != 1) return false;
    switch (_kind) {
    case Kind::Any:
        return true;
    case Kind::Void:
        return false;
    case Kind::Numeric:
        return omIsNumeric(array) && omGetNumericType(array) == _numeric;
    case Kind::Char:
        return omIsChar(array);
    case Kind::String:
        return omIsString(array);
    case Kind::Struct:
        return omIsStruct(array);
    case Kind::Class:
        return omIsOfClass(array, _className);
    }
    return false;
}

void QuorlTypeRepository::addConversion(std::string_view from, std::string_view to,
                                        std::shared_ptr<QuorlConversion const> conversion) {
    auto const [place, isNew] = _data->conversions.try_emplace({std::string(from), std::string(to)});
    if (!isNew) raise<messages::DuplicateName>(from, "conversion to " + std::string(to));
    place->second = std::move(conversion);
}

bool QuorlTypeRepository::removeConversion(std::string_view from, std::string_view to) {
    return _data->conversions.erase({std::string(from), std::string(to)}) != 0;
}

QuorlConversion const* QuorlTypeRepository::getConversion(std::string_view from, std::string_view to) const {
    auto const found = _data->conversions.find({std::string(from), std::string(to)});
    return found == _data->conversions.end() ? nullptr : found->second.get();
}

ConvertedValue QuorlTypeRepository::convert(krelArray const& value, QuorlType const& type,
                                            std::string_view where) const {
    if (type.accepts(value)) return ConvertedValue(value);
    ArrayPtr made;
    // The package of the class brings the conversions to it.
    if (type._kind == QuorlType::Kind::Class) QuorlClass::getClass(type._className);
    QuorlConversion const* conversion = getConversion(omGetTypeName(value), type.getSpelling());
    if (conversion == nullptr) conversion = getConversion("any", type.getSpelling());
    if (conversion != nullptr)
        made = conversion->convert(value);
    else if (type._kind == QuorlType::Kind::Numeric && omIsNumeric(value))
        made = omConvertNumbers(value, type._numeric);
    if (made == nullptr || !type.accepts(*made)) {
        std::string actual = omGetTypeName(value);
        if (type._scalar && omGetNumberOfElements(value) != 1)
            actual += " with " + std::to_string(omGetNumberOfElements(value)) + " elements";
        raise<messages::WrongType>(where, type.getSpelling(), actual);
    }
    return ConvertedValue(std::move(made));
}

} // namespace quorl
