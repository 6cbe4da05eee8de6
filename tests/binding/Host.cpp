#include "Host.hpp"

#include "zelkor/ast/binding.hpp"

#include <gtest/gtest.h>

#include "brant/zero/Text.hpp"

namespace host {

QuorlClass& classOf(std::string const& name) {
    zelkor_ast_initialize();
    std::string const whole = name.starts_with("brant") ? name : "internal.zelkor.ast." + name;
    return QuorlClass::requireClass(quorl::internal::makeInterned(whole));
}

ArrayPtr text(std::string const& utf8) {
    return omCreateCharArray(utf8);
}

ArrayPtr string(std::u16string const& utf16) {
    return omCreateStringScalar(utf16);
}

ArrayPtr init(std::initializer_list<Field> fields) {
    std::vector<std::string> names;
    for (Field const& field : fields)
        names.emplace_back(field.name);
    ArrayPtr made = omCreateStructMatrix(1, 1, names);
    for (Field const& field : fields)
        omSetField(*made, 0, field.name, omDuplicateArray(*field.value));
    return made;
}

namespace {

std::string showNumber(krelArray const& array, std::size_t index) {
    ArrayPtr const numbers = omConvertNumbers(array, quorl::NumericType::Double);
    std::string text = std::to_string(omGetNumbers<double>(*numbers)[index]);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

std::string showLiteral(krelArray const& array, std::size_t index) {
    std::int32_t const number = omGetNumbers<std::int32_t>(omGetUnderlyingArray(array))[index];
    for (auto const& literal : QuorlClass::requireClass(omGetClassName(array)).getEnumValues())
        if (literal->getNumericValue() == number) return literal->getName();
    return std::to_string(number);
}

std::string showObject(krelArray const& array, std::size_t index) {
    quorl::QuorlObject* const object = omGetArrayElement(array, index);
    if (object == nullptr) return "null";
    std::string const name(object->getQuorlClass().getSimpleName());
    if (!object->isValid()) return name + " dead";
    if (object->getQuorlClass().findMethods("getUuid").empty()) return name;
    return name + " " + show(call("getUuid", omCreateQuorlScalar(object)));
}

std::string showOne(krelArray const& array, std::size_t index) {
    switch (omGetKind(array)) {
    case quorl::ArrayKind::Numeric:
        return showNumber(array, index);
    case quorl::ArrayKind::Char:
        return std::string(1, '\'').append(omGetChars(array)).append(1, '\'');
    case quorl::ArrayKind::String:
        return std::string(1, '"').append(brant::zero::toUtf8(omGetString(array, index))).append(1, '"');
    case quorl::ArrayKind::Struct:
        return "struct";
    case quorl::ArrayKind::Quorl:
        return showObject(array, index);
    case quorl::ArrayKind::BuiltinBased:
        return showLiteral(array, index);
    }
    return {};
}

} // namespace

std::string show(krelArray const& array) {
    std::size_t const count = omIsChar(array) ? 1 : omGetNumberOfElements(array);
    if (count == 1) return showOne(array, 0);
    std::string text = omGetTypeName(array) + "[";
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : ", ") + showOne(array, i);
    return text + "]";
}

std::string failureOf(std::function<void()> const& call) {
    try {
        call();
    } catch (tamber::core::except::IUserException const& error) {
        quorl::ErrorReport const report = quorl::describe(error);
        bool const ofHost = report.catalog == "Orvane:class";
        EXPECT_TRUE(ofHost || report.catalog == "brant0:messages") << report.text;
        std::string result = (ofHost ? "host " : "") + report.id;
        for (std::size_t i = 0; i < report.arguments.size(); ++i) {
            result += i == 0 ? "(" : ", ";
            if (auto const* const bytes = std::get_if<std::string>(&report.arguments[i])) result += *bytes;
            if (auto const* const wide = std::get_if<std::u16string>(&report.arguments[i]))
                result += "u:" + brant::zero::toUtf8(*wide);
            if (auto const* const integer = std::get_if<long>(&report.arguments[i]))
                result += std::to_string(*integer);
        }
        return report.arguments.empty() ? result : result + ")";
    }
    return {};
}

} // namespace host
