// Packages, classes and their members: what is registered when, and what is refused.

#include "HostSample.hpp"

using namespace hostsample;
using factory::impl::Invoker;

namespace {

std::unique_ptr<QuorlClassInfo> plain(std::string_view name,
                                      std::function<void(QuorlClass*)> initialize = {}) {
    return std::make_unique<PlainInfo>(name, std::move(initialize));
}

std::unique_ptr<QuorlMethodInfo> method(std::string name, std::string_view input) {
    return std::make_unique<Lambda>(std::move(name), methodPlain, Invoker::createSignature("void", "", input),
                                    [](Outputs&, Inputs) {});
}

std::unique_ptr<QuorlEnumInfo> literal(QuorlClass* owner, std::string name, std::int32_t value) {
    return std::make_unique<QuorlEnumInfo>(std::move(name), owner->getName(), value);
}

class SealedInfo final : public factory::QuorlFactoryClassInfo {
  public:
    SealedInfo() : QuorlFactoryClassInfo("test.refuse.Sealed") {}
    bool isSealed() const override { return true; }
    void initializeClass(QuorlClass*) override {}
};

InternedName named(std::string_view name) {
    return internal::makeInterned(name);
}

} // namespace

TEST(Interning, OneNameForOneText) {
    std::string const text = "a.b";
    EXPECT_EQ(named(text), named("a.b"));
    EXPECT_FALSE(named("a.b") == named("a.c"));
    EXPECT_EQ(named("a.b").text(), "a.b");
    EXPECT_EQ(named(""), InternedName());
    EXPECT_EQ(InternedName().text(), "");
}

TEST(Package, ComesInPartsWithThoseAboveIt) {
    int runs = 0;
    for (char const* part : {"One", "Two"})
        factory::registerQuorlPackage("test.parts.deep", [&runs, part](QuorlPackage* package) {
            ++runs;
            package->addClass(plain("test.parts.deep." + std::string(part)));
        });
    EXPECT_EQ(runs, 0);
    QuorlPackage* const above = QuorlPackage::getPackage("test.parts");
    ASSERT_NE(above, nullptr);
    EXPECT_TRUE(above->getClassNames().empty());
    ASSERT_EQ(above->getSubpackages().size(), 1u);
    EXPECT_EQ(above->getSubpackages()[0]->getName(), "test.parts.deep");
    EXPECT_EQ(runs, 0);

    ASSERT_NE(QuorlClass::getClass("test.parts.deep.Two"), nullptr);
    EXPECT_EQ(runs, 2);
    QuorlPackage* const package = QuorlPackage::getPackage("test.parts.deep");
    EXPECT_EQ(runs, 2);
    std::vector<InternedName> const both = {named("test.parts.deep.One"), named("test.parts.deep.Two")};
    EXPECT_EQ(package->getClassNames(), both);
    EXPECT_EQ(package->getClass("One"), QuorlClass::getClass(both[0]));

    // The library is loaded once more: same classes; another class of the name is refused.
    QuorlClass const* const before = package->getClass("One");
    package->addClass(plain("test.parts.deep.One"));
    EXPECT_EQ(package->getClass("One"), before);
    EXPECT_EQ(package->getClassNames().size(), 2u);
}

TEST(Package, ThatFailsToFillIsFilledAgain) {
    int runs = 0;
    factory::registerQuorlPackage("test.failing", [&runs](QuorlPackage* package) {
        package->addClass(plain("test.failing.Class"));
        if (++runs == 1) raise<brant0::messages::InvalidValue>();
    });
    EXPECT_EQ(failureOf([] { QuorlPackage::getPackage("test.failing"); }), "brant0:messages:InvalidValue");
    EXPECT_NE(QuorlClass::getClass("test.failing.Class"), nullptr);
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(QuorlPackage::getPackage("test.failing")->getClassNames().size(), 1u);
}

TEST(Package, RefusesNames) {
    for (char const* name : {"", ".a", "a.", "a..b"})
        EXPECT_EQ(failureOf([&] { factory::registerQuorlPackage(name, [](QuorlPackage*) {}); }),
                  "Orvane:class:BadPackage")
            << name;
    factory::registerQuorlPackage("test.names", [](QuorlPackage*) {});
    QuorlPackage& package = *QuorlPackage::getPackage("test.names");
    for (char const* name : {"Class", "test.Class", "test.names.", "test.names.a.B"})
        EXPECT_EQ(failureOf([&] { package.addClass(plain(name)); }), "Orvane:class:BadClass") << name;
    EXPECT_EQ(QuorlPackage::getPackage("test.nothing"), nullptr);
    for (char const* name : {"", "Class", "test.names.Class", "test.nothing.Class"})
        EXPECT_EQ(QuorlClass::getClass(name), nullptr) << name;
    EXPECT_EQ(failureOf([] { QuorlClass::requireClass(named("test.names.Class")); }),
              "Orvane:class:NoSuchClass");
}

TEST(Class, RefusesWhatDoesNotFitAndStaysUnloaded) {
    struct Case {
        char const* what;
        char const* id;
        std::function<void(QuorlClass*)> initialize;
    } const cases[] = {
        {"no such superclass", "NoSuchClass",
         [](QuorlClass* c) { c->addSuperclass(named("test.refuse.No")); }},
        {"itself", "BadClass", [](QuorlClass* c) { c->addSuperclass(c->getName()); }},
        {"sealed", "BadClass", [](QuorlClass* c) { c->addSuperclass(named("test.refuse.Sealed")); }},
        {"enumeration", "BadClass", [](QuorlClass* c) { c->addSuperclass(named("test.refuse.Enum")); }},
        {"superclass twice", "DuplicateName",
         [](QuorlClass* c) {
             c->addSuperclass(named("test.refuse.Base"));
             c->addSuperclass(named("test.refuse.Base"));
         }},
        {"same inputs", "DuplicateName",
         [](QuorlClass* c) {
             c->addMethod(method("m", "double scalar"));
             c->addMethod(method("m", "double scalar"));
         }},
        {"literal and method", "DuplicateName",
         [](QuorlClass* c) {
             c->addMethod(method("m", "any"));
             c->addEnumValue(literal(c, "m", 0));
         }},
        {"method and literal", "DuplicateName",
         [](QuorlClass* c) {
             c->addEnumValue(literal(c, "m", 0));
             c->addMethod(method("m", "any"));
         }},
        {"value twice", "DuplicateName",
         [](QuorlClass* c) {
             c->addEnumValue(literal(c, "a", 1));
             c->addEnumValue(literal(c, "b", 1));
         }},
        {"base type", "BadClass", [](QuorlClass* c) { c->setBaseType("double scalar"); }},
        {"no signature", "BadSignature",
         [](QuorlClass* c) {
             c->addMethod(std::make_unique<Lambda>("m", methodPlain, nullptr, [](Outputs&, Inputs) {}));
         }},
        {"no type", "BadSignature", [](QuorlClass* c) { c->addMethod(method("m", "doubel scalar")); }},
    };
    factory::registerQuorlPackage("test.refuse", [](QuorlPackage* package) {
        package->addClass(std::make_unique<SealedInfo>());
        package->addClass(plain("test.refuse.Base"));
        package->addClass(plain("test.refuse.Enum", [](QuorlClass* c) { c->setBaseType("int32 scalar"); }));
    });
    QuorlPackage& package = *QuorlPackage::getPackage("test.refuse");
    for (Case const& each : cases) {
        SCOPED_TRACE(each.what);
        std::string const name = "test.refuse.Case" + std::to_string(&each - cases);
        bool repaired = false;
        package.addClass(plain(name, [&](QuorlClass* c) {
            c->addMethod(method("kept", "any"));
            if (!repaired) each.initialize(c);
        }));
        EXPECT_EQ(failureOf([&] { QuorlClass::getClass(name); }), "Orvane:class:" + std::string(each.id));
        // Nothing of the failed attempt is left: it would be a duplicate now.
        repaired = true;
        QuorlClass* const loaded = QuorlClass::getClass(name);
        ASSERT_NE(loaded, nullptr);
        EXPECT_EQ(loaded->getMethods().size(), 1u);
        EXPECT_TRUE(loaded->getSuperclasses().empty());
        EXPECT_FALSE(loaded->isEnumeration());
    }
}

TEST(Class, ShowsMembersInOrderAndInheritsThem) {
    QuorlClass const& animal = zooClass("Animal");
    std::vector<std::string> names;
    for (auto const& property : animal.getProperties())
        names.push_back(property->getName() + ":" + std::string(property->getTypeName()) +
                        (property->isReadOnly() ? " read-only" : ""));
    std::vector<std::string> const expected = {"Name:QuorlFactoryString scalar", "Sound:char",
                                               "Legs:int32 scalar", "Tame:logical scalar",
                                               "Handles:int32 scalar read-only"};
    EXPECT_EQ(names, expected);

    QuorlClass const& puppy = zooClass("Puppy");
    EXPECT_EQ(puppy.findProperty("Legs"), animal.getProperties()[2].get());
    EXPECT_EQ(puppy.findProperty("legs"), nullptr);
    EXPECT_EQ(puppy.findMethods("speak").size(), 1u);
    EXPECT_TRUE(puppy.findMethods("Dog").empty()) << "constructors are not inherited";
    EXPECT_TRUE(puppy.isSubclassOf(animal));
    EXPECT_TRUE(puppy.isSubclassOf(puppy));
    EXPECT_FALSE(animal.isSubclassOf(puppy));
    EXPECT_FALSE(zooClass("Cat").isSubclassOf(zooClass("Dog")));
    EXPECT_EQ(puppy.getSimpleName(), "Puppy");

    QuorlMethodInfo const& constructor = *puppy.getMethods().at(0);
    EXPECT_TRUE(constructor.isConstructor());
    EXPECT_EQ(constructor.getSignature()->getInputNames(), (std::vector<std::string>{"animal", "opt_name"}));
    EXPECT_EQ(constructor.getSignature()->getOptionalCount(), 1u);
    EXPECT_EQ(constructor.getSignature()->getOutputNames(), std::vector<std::string>{"obj"});
}

TEST(Class, LiteralsHaveOneValueEach) {
    QuorlClass const& mood = zooClass("Mood");
    ASSERT_EQ(mood.getEnumValues().size(), 2u);
    EXPECT_EQ(mood.getBaseType(), "int32 scalar");
    QuorlEnumInfo const* const wild = mood.findLiteral("Wild");
    ASSERT_NE(wild, nullptr);
    EXPECT_EQ(wild->getNumericValue(), 10);
    EXPECT_EQ(&wild->getValue(), &wild->getValue());
    EXPECT_EQ(omGetNumbers<std::int32_t>(omGetUnderlyingArray(wild->getValue()))[0], 10);
    EXPECT_EQ(mood.findLiteral("wild"), nullptr);
}

TEST(Signature, CountsAndNamesMatch) {
    factory::detail::initStringDataTypes();
    auto signature = Invoker::createSignature("void", "", "any", "char", "test.zoo.Dog scalar", "uint32");
    EXPECT_TRUE(signature->getOutputs().empty());
    ASSERT_EQ(signature->getInputs().size(), 4u);
    EXPECT_EQ(signature->getInputs()[2].getClassName(), named("test.zoo.Dog"));
    EXPECT_TRUE(signature->getInputs()[2].isScalar());
    EXPECT_EQ(failureOf([&] { signature->setInputNames("a b c"); }), "Orvane:class:BadSignature");
    EXPECT_EQ(failureOf([&] { signature->setOptionalCount(5); }), "Orvane:class:BadSignature");
    signature->setOptionalCount(3);
    for (std::size_t count = 0; count <= 5; ++count)
        EXPECT_EQ(signature->acceptsCount(count), count >= 1 && count <= 4) << count;
    EXPECT_TRUE(Invoker::createSignature("char", "out", "void")->getInputs().empty());
    for (char const* type : {"", "scalar", "any scalar", "void scalar", "char scalar", "string", "a b.c"})
        EXPECT_EQ(failureOf([&] { QuorlType::parse(type); }), "Orvane:class:BadSignature") << type;
}
