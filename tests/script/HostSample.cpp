#include "HostSample.hpp"

namespace hostsample {

namespace {

using factory::basic::BindingRegistry;
using factory::impl::AdaptedClassGetter;
using factory::impl::AdaptedClassSetter;
using factory::impl::Invoker;
using factory::impl::PropertyImpl;

template <class V, class X, V (*get)(X*), void (*set)(X*, V)>
std::unique_ptr<QuorlPropInfo> property(std::string name) {
    std::unique_ptr<factory::impl::PropertySetter> setter;
    if constexpr (set != nullptr) setter = std::make_unique<AdaptedClassSetter<V, X, decltype(set)>>(set);
    return std::make_unique<PropertyImpl>(std::move(name), 0u,
                                          std::make_unique<AdaptedClassGetter<V, X, decltype(get)>>(get),
                                          std::move(setter));
}

template <auto member, class V>
V getOf(AnimalHandle* self) {
    return (**self).*member;
}
template <auto member, class V>
void setOf(AnimalHandle* self, V value) {
    (**self).*member = std::move(value);
}
template <auto member, class V>
std::unique_ptr<QuorlPropInfo> field(std::string name) {
    return property<V, AnimalHandle, getOf<member, V>, setOf<member, V>>(std::move(name));
}
std::int32_t countHandles(AnimalHandle* self) {
    return (*self)->handles;
}

class AnimalInfo final : public factory::HandleClassInfo<AnimalHandle, false> {
  public:
    AnimalInfo(std::string_view name, std::string_view superclass)
        : HandleClassInfo(name), _superclass(superclass) {}

    bool isAbstract() const override { return _superclass.empty(); }

    void initializeClass(QuorlClass* quorlClass) override {
        factory::detail::initStringDataTypes();
        if (!_superclass.empty()) {
            quorlClass->addSuperclass(zooName(_superclass));
            addConstructor(*quorlClass);
            return;
        }
        quorlClass->addProperty(field<&Animal::name, std::u16string>("Name"));
        quorlClass->addProperty(field<&Animal::sound, std::string>("Sound"));
        quorlClass->addProperty(field<&Animal::legs, std::int32_t>("Legs"));
        quorlClass->addProperty(field<&Animal::tame, bool>("Tame"));
        quorlClass->addProperty(property<std::int32_t, AnimalHandle, countHandles, nullptr>("Handles"));
        QuorlClass const& self = *quorlClass;
        quorlClass->addMethod(std::make_unique<Lambda>(
            "speak", methodPlain, Invoker::createSignature("char", "sound", getName().text()),
            [&self](Outputs& outputs, Inputs inputs) {
                auto const& animal =
                    *static_cast<AnimalHandle*>(factory::impl::validateSelfPointer(*inputs[0], self));
                outputs.push_back(omCreateCharArray(animal->sound));
            }));
    }

  protected:
    AnimalHandle makeHandle(void* implementation) const override {
        return AnimalHandle(static_cast<Animal*>(implementation));
    }

  private:
    /// Takes the native record by its address, and a name.
    void addConstructor(QuorlClass& quorlClass) {
        auto signature =
            Invoker::createSignature(getName().text(), "obj", "uint64 scalar", "QuorlFactoryString scalar");
        signature->setInputNames("animal opt_name");
        signature->setOptionalCount(1);
        quorlClass.addMethod(std::make_unique<Lambda>(
            std::string(quorlClass.getSimpleName()), methodConstructor, std::move(signature),
            [name = getName()](Outputs& outputs, Inputs inputs) {
                auto* const animal = reinterpret_cast<Animal*>(omGetNumbers<std::uint64_t>(*inputs[0])[0]);
                if (animal == nullptr) raise<brant0::messages::CannotCreateWithoutModel>();
                if (inputs.size() == 2) animal->name = factory::extractString(*inputs[1]);
                BindingRegistry::announceForConstructor(animal, name, *outputs[0]);
            }));
    }

    std::string _superclass;
};

double getX(Point* self) {
    return self->x;
}
void setX(Point* self, double x) {
    self->x = x;
}
std::string getLabel(Point* self) {
    return self->label;
}

class PointInfo final : public factory::CopyableDataTypeClassInfo<Point> {
  public:
    PointInfo() : CopyableDataTypeClassInfo("test.zoo.Point") {}
    void initializeClass(QuorlClass* quorlClass) override {
        factory::detail::initStringDataTypes();
        auto const add = [&](std::string_view input, Lambda::Body body) {
            quorlClass->addMethod(std::make_unique<Lambda>(
                "Point", methodConstructor, Invoker::createSignature("test.zoo.Point", "p", input),
                std::move(body)));
        };
        add("void", [](Outputs& outputs, Inputs) { construct(*outputs[0], Point()); });
        add("double scalar", [](Outputs& outputs, Inputs inputs) {
            construct(*outputs[0], Point{omGetNumbers<double>(*inputs[0])[0], "from a number"});
        });
        add("char", [](Outputs& outputs, Inputs inputs) {
            if (omGetChars(*inputs[0]).empty()) return; // leaves the object unconstructed
            construct(*outputs[0], Point{0, omGetChars(*inputs[0])});
        });
        quorlClass->addProperty(property<double, Point, getX, setX>("X"));
        quorlClass->addProperty(property<std::string, Point, getLabel, nullptr>("Label"));
    }
};

/// "any" to Mood by the literal's name.
class MoodByName final : public QuorlConversion {
  public:
    ArrayPtr convert(krelArray const& value) const override {
        std::string const name = factory::extractChars(value);
        QuorlEnumInfo const* const literal = zooClass("Mood").findLiteral(name);
        if (literal == nullptr) raise<brant0::messages::CannotCastIncompatibleTypes>("test.zoo.Mood");
        return omDuplicateArray(literal->getValue());
    }
};

void initializeMood(QuorlClass* quorlClass) {
    factory::detail::initStringDataTypes();
    quorlClass->setBaseType("int32 scalar");
    char const* const literals[] = {"Calm", "Wild"};
    for (std::int32_t i = 0; i < 2; ++i)
        quorlClass->addEnumValue(std::make_unique<QuorlEnumInfo>(literals[i], quorlClass->getName(), 10 * i));
    quorlClass->addMethod(std::make_unique<Lambda>(
        "Mood", methodConstructor, Invoker::createSignature("test.zoo.Mood", "m", "test.zoo.Mood"),
        [](Outputs& outputs, Inputs inputs) { outputs.push_back(omDuplicateArray(*inputs[0])); }));
    quorlClass->addMethod(std::make_unique<Lambda>(
        "getValue", methodPlain, Invoker::createSignature("int32 scalar", "v", "test.zoo.Mood scalar"),
        [](Outputs& outputs, Inputs inputs) {
            outputs.push_back(omDuplicateArray(omGetUnderlyingArray(*inputs[0])));
        }));
    quorlClass->addMethod(std::make_unique<Lambda>(
        "worst", methodStatic, Invoker::createSignature("test.zoo.Mood", "m", "void"),
        [](Outputs& outputs, Inputs) {
            outputs.push_back(omDuplicateArray(zooClass("Mood").findLiteral("Wild")->getValue()));
        }));
    quorlClass->addMethod(std::make_unique<Lambda>(
        "broken", methodStatic, Invoker::createSignature("test.zoo.Mood", "m", "void"),
        [](Outputs& outputs, Inputs) { outputs.push_back(omCreateNumericScalar(1.0)); }));
}

void addZooClasses(QuorlPackage* package) {
    package->addClass(std::make_unique<AnimalInfo>("test.zoo.Animal", ""));
    package->addClass(std::make_unique<AnimalInfo>("test.zoo.Dog", "Animal"));
    package->addClass(std::make_unique<AnimalInfo>("test.zoo.Cat", "Animal"));
    package->addClass(std::make_unique<AnimalInfo>("test.zoo.Puppy", "Dog"));
    package->addClass(std::make_unique<PointInfo>());
    package->addClass(std::make_unique<PlainInfo>("test.zoo.Mood", initializeMood));
    auto const byName = std::make_shared<MoodByName>();
    auto& types = QuorlTypeRepository::getInstance();
    for (char const* target : {"test.zoo.Mood", "test.zoo.Mood scalar"}) {
        if (types.getConversion("any", target) != nullptr) types.removeConversion("any", target);
        types.addConversion("any", target, byName);
    }
}

} // namespace

void registerZoo() {
    static bool const done = [] {
        factory::registerQuorlPackage("test.zoo", addZooClasses);
        return true;
    }();
    static_cast<void>(done);
}

InternedName zooName(std::string_view simpleName) {
    return internal::makeInterned("test.zoo." + std::string(simpleName));
}

QuorlClass& zooClass(std::string_view simpleName) {
    registerZoo();
    return QuorlClass::requireClass(zooName(simpleName));
}

std::string failureOf(std::function<void()> const& call) {
    try {
        call();
    } catch (tamber::core::except::IUserException const& error) {
        ErrorReport const report = describe(error);
        return report.catalog + ":" + report.id;
    }
    return {};
}

} // namespace hostsample
