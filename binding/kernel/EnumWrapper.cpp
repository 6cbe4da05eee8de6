#include "brant/zero/mi/EnumWrapper.hpp"

#include "brant/zero/Text.hpp"
#include "brant/zero/mi/EnumMarshaler.hpp"
#include "brant/zero/mi/Methods.hpp"

#include <algorithm>
#include <span>

namespace brant::zero::mi {

using quorl::Inputs;
using quorl::InternedName;
using quorl::Outputs;
using quorl::factory::impl::Invoker;

namespace {

std::span<schema::LiteralRow const> literalsOf(schema::EnumTable const& table) {
    return {table.literals, table.literalCount};
}

/// The literal of the one value in `array`.
quorl::QuorlEnumInfo const& literalOf(krelArray const& array) {
    quorl::QuorlClass const& quorlClass = quorl::QuorlClass::requireClass(omGetClassName(array));
    std::string const& name = quorlClass.getName().text();
    std::vector<std::int32_t> const numbers = literalNumbers(array, name.c_str());
    if (numbers.size() != 1) quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(name);
    for (auto const& literal : quorlClass.getEnumValues())
        if (literal->getNumericValue() == numbers[0]) return *literal;
    quorl::raise<brant0::messages::InvalidValue>();
}

void getValue(Outputs& outputs, Inputs inputs) {
    outputs.push_back(omCreateNumericScalar<std::int32_t>(literalOf(*inputs[0]).getNumericValue()));
}

/// The name of a literal is also what the text forms call it, so there is one answer for both questions.
void getLiteral(Outputs& outputs, Inputs inputs) {
    outputs.push_back(omCreateStringScalar(toUtf16(literalOf(*inputs[0]).getName()).value()));
}

} // namespace

quorl::ArrayPtr FromAnyAsStringTypeConverter::convert(krelArray const& value) const {
    auto const refuse = [&] {
        quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(className_.text());
    };
    if (!omIsChar(value) && !omIsString(value)) refuse();
    std::vector<std::int32_t> numbers(countValues(value));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        std::string const name = omIsChar(value) ? omGetChars(value) : toUtf8(omGetString(value, i));
        auto const literals = literalsOf(*enumeration_);
        auto const found =
            std::find_if(literals.begin(), literals.end(), [&](auto const& row) { return name == row.name; });
        if (found == literals.end()) refuse();
        numbers[i] = static_cast<std::int32_t>(found->value);
    }
    return literalArray(numbers, className_.text().c_str());
}

EnumConstructor::EnumConstructor(InternedName className)
    : QuorlMethodInfo(className.text().substr(className.text().rfind('.') + 1), quorl::methodConstructor, ""),
      className_(className) {
    auto signature = quorl::QuorlMethodSignature::createMethodSignature();
    signature->addInput("any");
    signature->addOutput(className.text(), "value");
    setSignature(std::move(signature));
}

void EnumConstructor::invoke(Outputs& outputs, Inputs inputs) {
    quorl::QuorlClass::getClass(className_);
    outputs.push_back(
        literalArray(literalNumbers(*inputs[0], className_.text().c_str()), className_.text().c_str()));
}

EnumWrapperInfo::EnumWrapperInfo(schema::EnumTable const& table)
    : QuorlFactoryClassInfo(table.scriptName), table_(&table) {}

void EnumWrapperInfo::initializeClass(quorl::QuorlClass* quorlClass) {
    quorl::factory::detail::initStringDataTypes();
    quorlClass->setBaseType("int32 scalar");
    quorlClass->addMethod(std::make_unique<EnumConstructor>(getName()));
    for (schema::LiteralRow const& row : literalsOf(*table_))
        quorlClass->addEnumValue(
            std::make_unique<EnumValueInfo>(row.name, getName(), static_cast<std::int32_t>(row.value)));
    auto const add = [&](char const* name, char const* output, PlainMethod::Body body) {
        quorlClass->addMethod(std::make_unique<PlainMethod>(
            name, quorl::methodPlain, Invoker::createSignature(output, name, getName().text()), body));
    };
    add("getValue", "int32 scalar", &getValue);
    add("getLiteral", "QuorlFactoryString scalar", &getLiteral);
    add("getPublicIdentifier", "QuorlFactoryString scalar", &getLiteral);
}

void addEnumeration(quorl::QuorlPackage& package, std::unique_ptr<EnumWrapperInfo> info) {
    InternedName const className = info->getName();
    auto const converter = std::make_shared<FromAnyAsStringTypeConverter>(className, info->getTable());
    package.addClass(std::move(info));
    auto& repository = quorl::QuorlTypeRepository::getInstance();
    for (std::string const& target : {className.text(), className.text() + " scalar"}) {
        if (repository.getConversion("any", target) != nullptr) repository.removeConversion("any", target);
        repository.addConversion("any", target, converter);
    }
}

} // namespace brant::zero::mi
