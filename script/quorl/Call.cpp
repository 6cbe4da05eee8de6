#include "quorl/Call.hpp"

#include <algorithm>

namespace quorl {

namespace {

using Methods = std::vector<QuorlMethodInfo*>;

std::string countsOf(Methods const& methods) {
    std::string text;
    for (QuorlMethodInfo const* const method : methods) {
        std::size_t const most = method->getSignature()->getInputs().size();
        std::size_t const optional = method->getSignature()->getOptionalCount();
        if (!text.empty()) text += ", or ";
        if (optional != 0) text += std::to_string(most - optional) + " to ";
        text += std::to_string(most);
    }
    return text;
}

std::string typesOf(Inputs inputs) {
    std::string text;
    for (krelArray const* const input : inputs)
        text += (text.empty() ? "" : ", ") + omGetTypeName(*input);
    return text.empty() ? "none" : text;
}

std::string nameOfInput(QuorlMethodInfo const& method, std::size_t index) {
    auto const& names = method.getSignature()->getInputNames();
    return method.getName() + ", input " + (index < names.size() ? names[index] : std::to_string(index + 1));
}

bool acceptsAsTheyAre(QuorlMethodSignature const& signature, Inputs inputs) {
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (!signature.getInputs()[i].accepts(*inputs[i])) return false;
    return true;
}

std::vector<ConvertedValue> convertAll(QuorlMethodInfo const& method, Inputs inputs) {
    std::vector<ConvertedValue> converted;
    converted.reserve(inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i)
        converted.push_back(QuorlTypeRepository::getInstance().convert(
            *inputs[i], method.getSignature()->getInputs()[i], nameOfInput(method, i)));
    return converted;
}

/// A wrapper that breaks its own promise must not reach a script, which could not tell whose fault it is.
void checkOutputs(QuorlMethodInfo const& method, Outputs const& outputs) {
    auto const& types = method.getSignature()->getOutputs();
    if (outputs.size() != types.size())
        raise<messages::BadSignature>(method.getName(), "it promises " + std::to_string(types.size()) +
                                                            " outputs and gave " +
                                                            std::to_string(outputs.size()));
    for (std::size_t i = 0; i < types.size(); ++i)
        if (outputs[i] == nullptr || !types[i].accepts(*outputs[i]))
            raise<messages::BadSignature>(
                method.getName(), "it promises " + types[i].getSpelling() + " and gave " +
                                      (outputs[i] == nullptr ? "nothing" : omGetTypeName(*outputs[i])));
}

void run(QuorlMethodInfo& method, Outputs& outputs, Inputs inputs) {
    method.invoke(outputs, inputs);
    checkOutputs(method, outputs);
}

void runConverted(QuorlMethodInfo& method, Outputs& outputs, std::vector<ConvertedValue> const& converted) {
    std::vector<krelArray const*> values;
    for (ConvertedValue const& value : converted)
        values.push_back(&*value);
    run(method, outputs, values);
}

void invokeBest(std::string_view name, Methods const& methods, Outputs& outputs, Inputs inputs) {
    Methods fitting;
    std::copy_if(methods.begin(), methods.end(), std::back_inserter(fitting), [&](QuorlMethodInfo* method) {
        return method->getSignature()->acceptsCount(inputs.size());
    });
    if (fitting.empty()) raise<messages::WrongArgumentCount>(name, long(inputs.size()), countsOf(methods));
    for (QuorlMethodInfo* const method : fitting)
        if (acceptsAsTheyAre(*method->getSignature(), inputs)) return run(*method, outputs, inputs);
    if (fitting.size() == 1) return runConverted(*fitting[0], outputs, convertAll(*fitting[0], inputs));
    for (QuorlMethodInfo* const method : fitting) {
        std::vector<ConvertedValue> converted;
        try {
            converted = convertAll(*method, inputs);
        } catch (tamber::core::except::IUserException const&) {
            continue; // not this form; what the form itself throws is not caught
        }
        return runConverted(*method, outputs, converted);
    }
    raise<messages::NoMatchingOverload>(name, typesOf(inputs));
}

QuorlObject& objectOf(krelArray const& self) {
    if (omGetKind(self) != ArrayKind::Quorl)
        raise<messages::WrongType>("the object of a property", "object", omGetTypeName(self));
    QuorlObject* const object = omGetNumberOfElements(self) == 1 ? omGetArrayElement(self, 0) : nullptr;
    if (object == nullptr) raise<messages::InvalidHandle>();
    return *object;
}

QuorlPropInfo const& propertyOf(QuorlObject const& object, std::string_view name) {
    QuorlPropInfo const* const property = object.getQuorlClass().findProperty(name);
    if (property == nullptr) raise<messages::NoSuchMember>(object.getQuorlClass().getName().text(), name);
    return *property;
}

} // namespace

ArrayPtr construct(QuorlClass& quorlClass, Inputs inputs) {
    std::string const& name = quorlClass.getName().text();
    if (quorlClass.getInfo().isAbstract()) raise<messages::CannotInstantiate>(name, "the class is abstract");
    Methods constructors;
    for (auto const& method : quorlClass.getMethods())
        if (method->isConstructor()) constructors.push_back(method.get());
    if (constructors.empty()) raise<messages::CannotInstantiate>(name, "the class has no constructor");
    Outputs outputs;
    // Values of an enumeration are literals that exist already.
    if (!quorlClass.isEnumeration())
        outputs.push_back(omCreateQuorlScalar(QuorlObject::allocate(quorlClass)));
    invokeBest(name, constructors, outputs, inputs);
    ArrayPtr made = std::move(outputs.at(0));
    if (omGetKind(*made) == ArrayKind::Quorl && !objectOf(*made).isValid())
        raise<messages::CannotInstantiate>(name, "the constructor made no object");
    return made;
}

Outputs callMethod(std::string_view name, Inputs inputs) {
    if (inputs.empty()) raise<messages::WrongArgumentCount>(name, 0L, "an object first");
    InternedName const className = omGetClassName(*inputs[0]);
    if (className.isEmpty()) raise<messages::WrongType>(name, "object", omGetTypeName(*inputs[0]));
    Methods const methods = QuorlClass::requireClass(className).findMethods(name);
    if (methods.empty()) raise<messages::NoSuchMember>(className.text(), name);
    Outputs outputs;
    invokeBest(name, methods, outputs, inputs);
    return outputs;
}

Outputs callStatic(QuorlClass const& quorlClass, std::string_view name, Inputs inputs) {
    Methods methods = quorlClass.findMethods(name);
    methods.erase(
        std::remove_if(methods.begin(), methods.end(), [](auto* method) { return !method->isStatic(); }),
        methods.end());
    if (methods.empty()) raise<messages::NoSuchMember>(quorlClass.getName().text(), name);
    Outputs outputs;
    invokeBest(name, methods, outputs, inputs);
    return outputs;
}

ArrayPtr getProperty(krelArray const& self, std::string_view name) {
    QuorlObject& object = objectOf(self);
    return propertyOf(object, name).getQuorlArray(object);
}

void setProperty(krelArray const& self, std::string_view name, krelArray const& value) {
    QuorlObject& object = objectOf(self);
    propertyOf(object, name).setQuorlArray(object, value);
}

} // namespace quorl
