#include "brant/zero/mi/KernelBinding.hpp"

#include "ScriptTransaction.hpp"
#include "brant/zero/meta/mi/Wrappers.hpp"
#include "brant/zero/mi/StructBuilder.hpp"
#include "quorl/BindingRegistry.hpp"

namespace brant::zero::mi {

using quorl::Inputs;
using quorl::Outputs;
using quorl::factory::impl::Invoker;

namespace {

constexpr char const* elementClassName = "brant.zero.ModelElement";
constexpr char const* transactionClassName = "brant.zero.Transaction";

struct MethodEntry {
    char const* name;
    char const* output;
    char const* argument; ///< the type of a second input, or "void"
    PlainMethod::Body body;
};

/// Methods that take the object and at most one more input.
void addMethods(quorl::QuorlClass& quorlClass, std::span<MethodEntry const> entries) {
    for (MethodEntry const& entry : entries)
        quorlClass.addMethod(std::make_unique<PlainMethod>(
            entry.name, quorl::methodPlain,
            Invoker::createSignature(entry.output, "result", quorlClass.getName().text(), entry.argument),
            entry.body));
}

quorl::ArrayPtr textArray(boost::uuids::uuid const& identity) {
    return omCreateCharArray(toString(identity));
}

template <class Handle>
Handle& bodyOf(krelArray const& array) {
    return *static_cast<Handle*>(quorl::factory::impl::validateSelfPointer(
        array, quorl::QuorlClass::requireClass(omGetClassName(array))));
}

/// Whether the one object in the array is usable; asks what every other method takes for granted.
void isValid(Outputs& outputs, Inputs inputs) {
    quorl::QuorlObject const* const object =
        omGetNumberOfElements(*inputs[0]) == 1 ? omGetArrayElement(*inputs[0], 0) : nullptr;
    outputs.push_back(omCreateNumericScalar<bool>(object != nullptr && object->isValid()));
}

constexpr MethodEntry elementMethods[] = {
    {"isValid", "logical scalar", "void", &isValid},
    {"getUuid", "char", "void",
     [](Outputs& outputs, Inputs inputs) { outputs.push_back(textArray(selfOf(*inputs[0]).uuid())); }},
    {"getModel", modelClassName, "void",
     [](Outputs& outputs, Inputs inputs) { outputs.push_back(toArray(selfOf(*inputs[0]).getModel())); }},
    {"getMetaClass", "brant.zero.meta.Class", "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(toArray(selfOf(*inputs[0]).getMetaClass(), meta::Class::Impl::table));
     }},
    {"getContainer", elementClassName, "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(toArray(selfOf(*inputs[0]).container(), modelElementTable));
     }},
    {"getContainmentFeature", "brant.zero.meta.Property", "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(toArray(selfOf(*inputs[0]).containmentFeature(), meta::Property::Impl::table));
     }},
    {"isProxy", "logical scalar", "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(omCreateNumericScalar<bool>(selfOf(*inputs[0]).isProxy()));
     }},
    {"destroy", "void", "void", [](Outputs&, Inputs inputs) { selfOf(*inputs[0]).destroy(); }},
};

class ModelElementWrapper final : public quorl::factory::HandleClassInfo<ModelElement, false> {
  public:
    ModelElementWrapper() : HandleClassInfo(elementClassName) {}
    bool isAbstract() const override { return true; }
    void initializeClass(quorl::QuorlClass* quorlClass) override {
        quorl::factory::detail::initStringDataTypes();
        quorlClass->addMethod(std::make_unique<StaticMetaClass>(modelElementTable));
        addMethods(*quorlClass, elementMethods);
    }

  protected:
    ModelElement makeHandle(void* implementation) const override {
        return ModelElement(static_cast<ModelElementImpl*>(implementation));
    }
};

std::string describeViolation(std::optional<Violation> const& violation) {
    if (!violation) return {};
    std::string text = violation->rule + ": " + violation->detail;
    if (violation->element) text += " (element " + toString(violation->element.uuid()) + ")";
    return text;
}

constexpr MethodEntry modelMethods[] = {
    {"isValid", "logical scalar", "void", &isValid},
    {"getUuid", "char", "void",
     [](Outputs& outputs, Inputs inputs) { outputs.push_back(textArray(bodyOf<Model>(*inputs[0]).uuid())); }},
    {"size", "uint64 scalar", "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(omCreateNumericScalar<std::uint64_t>(bodyOf<Model>(*inputs[0]).size()));
     }},
    {"getTopLevelElements", elementClassName, "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(toArray(bodyOf<Model>(*inputs[0]).getTopLevelElements(), modelElementTable));
     }},
    {"findElement", elementClassName, "char",
     [](Outputs& outputs, Inputs inputs) {
         boost::uuids::uuid const identity = detail::extractUuid(*inputs[1]);
         ModelElement const found = bodyOf<Model>(*inputs[0]).findElement(identity);
         outputs.push_back(toArray(found ? found : ModelElement(), modelElementTable));
     }},
    {"beginTransaction", transactionClassName, "void",
     [](Outputs& outputs, Inputs inputs) {
         ScriptTransaction const transaction(bodyOf<Model>(*inputs[0]).beginTransaction());
         outputs.push_back(omCreateQuorlScalar(quorl::factory::basic::BindingRegistry::announce(
             transaction.get(), quorl::internal::makeInterned(transactionClassName))));
     }},
    {"verify", "char", "void",
     [](Outputs& outputs, Inputs inputs) {
         outputs.push_back(omCreateCharArray(describeViolation(bodyOf<Model>(*inputs[0]).verify())));
     }},
};

class ModelWrapper final : public quorl::factory::HandleClassInfo<Model, false> {
  public:
    ModelWrapper() : HandleClassInfo(modelClassName) {}
    void initializeClass(quorl::QuorlClass* quorlClass) override {
        quorl::factory::detail::initStringDataTypes();
        quorlClass->addMethod(std::make_unique<PlainMethod>(
            "Model", quorl::methodConstructor, Invoker::createSignature(modelClassName, "obj", "void"),
            [](Outputs& outputs, Inputs) {
                Model const model = Model::create({}, {}, DefaultWorkQueueFactory());
                quorl::factory::basic::BindingRegistry::announceForConstructor(
                    model.get(), quorl::internal::makeInterned(modelClassName), *outputs[0]);
            }));
        addMethods(*quorlClass, modelMethods);
    }

  protected:
    Model makeHandle(void* implementation) const override {
        return Model(static_cast<ModelImpl*>(implementation));
    }
};

constexpr MethodEntry transactionMethods[] = {
    {"isValid", "logical scalar", "void", &isValid},
    {"commit", "void", "void",
     [](Outputs&, Inputs inputs) { bodyOf<ScriptTransaction>(*inputs[0]).commit(); }},
    {"rollback", "void", "void",
     [](Outputs&, Inputs inputs) { bodyOf<ScriptTransaction>(*inputs[0]).rollback(); }},
};

/// One level of changes, abandoned with the last script reference to it. Once it has ended, by either method,
/// the object is invalid.
class TransactionWrapper final : public quorl::factory::HandleClassInfo<ScriptTransaction, false> {
  public:
    TransactionWrapper() : HandleClassInfo(transactionClassName) {}
    void initializeClass(quorl::QuorlClass* quorlClass) override {
        quorl::factory::detail::initStringDataTypes();
        addMethods(*quorlClass, transactionMethods);
    }

  protected:
    ScriptTransaction makeHandle(void* implementation) const override {
        return ScriptTransaction(static_cast<ScriptTransaction::State*>(implementation));
    }
};

class KernelScriptPackage final : public EmptyParentPackage {
  public:
    using EmptyParentPackage::EmptyParentPackage;
    void initializePackage(quorl::QuorlPackage* package) override {
        package->addClass(std::make_unique<ModelElementWrapper>());
        package->addClass(std::make_unique<ModelWrapper>());
        package->addClass(std::make_unique<TransactionWrapper>());
    }
};

} // namespace

void registerKernelPackages() {
    (new KernelScriptPackage("brant.zero"))->registerPackage();
    meta::mi::registerPackages();
}

} // namespace brant::zero::mi
