#include "brant/zero/mi/Methods.hpp"

#include "brant/zero/Core.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/mi/MetaMarshalerRegistry.hpp"
#include "brant/zero/mi/StructBuilder.hpp"
#include "quorl/BindingRegistry.hpp"

#include <optional>

namespace brant::zero::mi {

using quorl::Inputs;
using quorl::Outputs;
using quorl::QuorlMethodSignature;
using quorl::factory::impl::Invoker;

namespace {

bool isInit(krelArray const& array) {
    return omIsStruct(array) && omGetNumberOfElements(array) == 1;
}

/// The types and names of an operation's result and arguments, behind those of the object if there is one.
std::unique_ptr<QuorlMethodSignature> signatureOf(schema::OperationRow const& row, char const* self) {
    auto signature = QuorlMethodSignature::createMethodSignature();
    signature->addOutput(spellingOf(meta::requireType(row.type), row.upper > 1), "result");
    std::string names;
    if (self != nullptr) {
        signature->addInput(self);
        names = "self";
    }
    for (std::uint16_t i = 0; i < row.argumentCount; ++i) {
        signature->addInput(spellingOf(meta::requireType(row.arguments[i].type), false));
        names += std::string(names.empty() ? "" : " ") + row.arguments[i].name;
    }
    signature->setInputNames(names);
    return signature;
}

} // namespace

Construct::Construct(schema::ClassTable const& table)
    : QuorlMethod(table.name, quorl::methodConstructor, ""), table_(&table) {
    auto signature = Invoker::createSignature(table.scriptName, "obj", modelClassName, "any", "any");
    signature->setInputNames("model opt_init opt_uuid");
    signature->setOptionalCount(2);
    setSignature(std::move(signature));
}

void Construct::invoke(Outputs& outputs, Inputs inputs) {
    Model const model = modelOf(*inputs[0]);
    if (!model) quorl::raise<brant0::messages::CannotCreateWithoutModel>();
    std::unique_ptr<Builder> builder;
    std::optional<boost::uuids::uuid> identity;
    for (krelArray const* const input : inputs.subspan(1)) {
        bool const second = isInit(*input) ? builder != nullptr : identity.has_value();
        if (second) quorl::raise<brant0::messages::InvalidValue>();
        if (isInit(*input))
            builder = detail::createBuilderFromStruct(*input, 0, model, table_->metaClass());
        else
            identity = detail::extractUuid(*input);
    }
    if (builder == nullptr) builder = detail::createEmptyBuilder(model, table_->metaClass());
    // The object is of this class already; an element of a subclass would not be what it stands for.
    if (&builder->classTable() != table_) quorl::raise<brant0::messages::InvalidValue>();
    ModelElement const element =
        builder->createElement(identity ? *identity : ElementImpl::generateNewUuid());
    bool created = false;
    quorl::factory::basic::BindingRegistry::announceForConstructor(
        element.get(), quorl::internal::makeInterned(table_->scriptName), *outputs[0], &created);
}

CreateInto::CreateInto(schema::ClassTable const& table, schema::PropertyRow const& row)
    : QuorlMethod(std::string("createInto") + row.name, quorl::methodPlain, ""), row_(&row) {
    auto signature = Invoker::createSignature(row.target->scriptName, "obj", table.scriptName, "any", "any");
    signature->setInputNames("self opt_init opt_uuid");
    signature->setOptionalCount(2);
    setSignature(std::move(signature));
}

void CreateInto::invoke(Outputs& outputs, Inputs inputs) {
    ModelElement& self = selfOf(*inputs[0]);
    Model const model = self.getModel();
    meta::Class const& target = row_->target->metaClass();
    std::unique_ptr<Builder> builder;
    krelArray const* identity = nullptr;
    if (inputs.size() > 1 && (inputs.size() == 3 || isInit(*inputs[1]))) {
        builder = detail::createBuilderFromStructFirst(*inputs[1], 0, model, target);
        if (inputs.size() == 3) identity = inputs[2];
    } else if (inputs.size() == 2) {
        identity = inputs[1];
    }
    boost::uuids::uuid const uuid =
        identity != nullptr ? detail::extractUuid(*identity) : ElementImpl::generateNewUuid();
    if (builder == nullptr) builder = detail::createEmptyBuilder(model, target);
    ModelElement const element = Core::createInto(*self.get(), *row_, *builder, uuid);
    outputs.push_back(toArray(element, *row_->target));
}

StaticMetaClass::StaticMetaClass(schema::ClassTable const& table)
    : QuorlMethod("StaticMetaClass", quorl::methodStatic, ""), table_(&table) {
    setSignature(Invoker::createSignature(meta::Class::Impl::table.scriptName, "metaClass", "void"));
}

void StaticMetaClass::invoke(Outputs& outputs, Inputs) {
    outputs.push_back(toArray(table_->metaClass(), meta::Class::Impl::table));
}

QueryMethod::QueryMethod(schema::ClassTable const& table, schema::OperationRow const& row)
    : QuorlMethod(row.name, quorl::methodPlain, ""), row_(&row) {
    setSignature(signatureOf(row, table.scriptName));
}

void QueryMethod::invoke(Outputs& outputs, Inputs inputs) {
    ModelElement const self = selfOf(*inputs[0]);
    auto& registry = MetaMarshalerRegistry::getInstance();
    std::vector<Value> arguments;
    for (std::uint16_t i = 0; i < row_->argumentCount; ++i)
        arguments.push_back(registry.getPropertyMarshaler(meta::requireType(row_->arguments[i].type))
                                .fromKrelArray(inputs[i + 1]));
    Value const result = row_->invoker()->invoke(*self.get(), arguments);
    ValueMarshaler const& marshaler = registry.getPropertyMarshaler(meta::requireType(row_->type));
    outputs.push_back(row_->upper > 1 ? marshaler.fromValueVector(result.extract())
                                      : marshaler.toKrelArray(result));
}

StaticQueryMethod::StaticQueryMethod(schema::OperationRow const& row, StaticCall call)
    : QuorlMethod(row.name, quorl::methodStatic, ""), call_(call) {
    setSignature(signatureOf(row, nullptr));
}

void StaticQueryMethod::invoke(Outputs& outputs, Inputs inputs) {
    outputs.push_back(call_(inputs));
}

} // namespace brant::zero::mi
