// What a script does: makes objects, reads and writes properties, calls methods; and what comes back when it
// fails.

#include "HostSample.hpp"

using namespace hostsample;
using factory::CopyableSupport;
using factory::basic::BindingRegistry;

namespace {

ArrayPtr addressOf(Animal& animal) {
    return omCreateNumericScalar<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&animal));
}

ArrayPtr text(char const* chars) {
    return omCreateCharArray(chars);
}

std::int32_t moodOf(krelArray const& value) {
    return omGetNumbers<std::int32_t>(omGetUnderlyingArray(value))[0];
}

} // namespace

TEST(Registry, HasOneObjectForAnElementUntilItsLastReferenceGoes) {
    Animal animal;
    zooClass("Dog");
    std::size_t const before = BindingRegistry::size();
    bool created = false;
    ObjectRef first = BindingRegistry::announce(&animal, zooName("Dog"), &created);
    EXPECT_TRUE(created);
    ObjectRef second = BindingRegistry::announce(&animal, zooName("Dog"), &created);
    EXPECT_FALSE(created);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first->getImplementation(), &animal);
    EXPECT_EQ(animal.handles, 1);
    EXPECT_EQ(BindingRegistry::size(), before + 1);
    first.reset();
    EXPECT_EQ(BindingRegistry::find(&animal), second.get());
    second.reset();
    EXPECT_EQ(BindingRegistry::find(&animal), nullptr);
    EXPECT_EQ(animal.handles, 0);
    EXPECT_TRUE(animal.alive) << "the element outlives its object";
}

TEST(Registry, ObjectsThatItDoesNotKnowTakeNobodysPlace) {
    Animal animal;
    zooClass("Dog");
    ObjectRef stranger = BindingRegistry::announceWithoutStoring(&animal, zooName("Dog"));
    EXPECT_EQ(BindingRegistry::find(&animal), nullptr);
    ObjectRef const known = BindingRegistry::announce(&animal, zooName("Dog"));
    EXPECT_NE(stranger, known);
    stranger.reset();
    EXPECT_EQ(BindingRegistry::find(&animal), known.get());

    EXPECT_TRUE(BindingRegistry::remove(&animal));
    EXPECT_FALSE(BindingRegistry::remove(&animal));
    ObjectRef const other = BindingRegistry::announce(&animal, zooName("Dog"));
    EXPECT_NE(other, known);
    EXPECT_EQ(animal.handles, 2);
}

TEST(Registry, RefusesAndForgets) {
    Animal animal;
    std::size_t const before = BindingRegistry::size();
    zooClass("Point");
    EXPECT_EQ(failureOf([&] { BindingRegistry::announce(&animal, zooName("Unicorn")); }),
              "Orvane:class:NoSuchClass");
    EXPECT_EQ(failureOf([&] { BindingRegistry::announce(&animal, zooName("Point")); }),
              "Orvane:class:CannotInstantiate");
    EXPECT_EQ(failureOf([&] { BindingRegistry::announce(&animal, zooName("Mood")); }),
              "Orvane:class:CannotInstantiate");
    EXPECT_EQ(failureOf([&] { BindingRegistry::announce(nullptr, zooName("Dog")); }),
              "Orvane:class:InvalidHandle");
    EXPECT_EQ(BindingRegistry::size(), before);
}

TEST(Construct, BindsTheNewObjectOrTheOneThatIsThere) {
    Animal animal;
    ArrayPtr const address = addressOf(animal);
    ArrayPtr const name = omCreateStringScalar(u"Rex");
    ArrayPtr const dog = construct(zooClass("Dog"), inputsOf(address, name));
    EXPECT_EQ(omGetArrayElement(*dog, 0), BindingRegistry::find(&animal));
    EXPECT_EQ(omGetString(*getProperty(*dog, "Name"), 0), u"Rex");
    ArrayPtr const again = construct(zooClass("Dog"), inputsOf(address));
    EXPECT_EQ(omGetArrayElement(*again, 0), omGetArrayElement(*dog, 0));
    EXPECT_EQ(animal.handles, 1);

    // An object that stands for an element already is not bound to another one.
    Animal other;
    ArrayPtr const taken = omDuplicateArray(*dog);
    EXPECT_EQ(failureOf([&] { BindingRegistry::announceForConstructor(&other, zooName("Dog"), *taken); }),
              "Orvane:class:CannotInstantiate");
    EXPECT_EQ(BindingRegistry::find(&other), nullptr);
}

TEST(Construct, ChoosesTheFormByItsInputs) {
    struct Case {
        std::vector<ArrayPtr> inputs;
        std::optional<double> x;
        char const* result; ///< the label, or the failure
    };
    std::vector<Case> cases(6);
    cases[0] = {{}, 0.0, "a label that is longer than what a string holds in itself"};
    cases[1].inputs.push_back(omCreateNumericScalar(2.5));
    cases[1].x = 2.5, cases[1].result = "from a number";
    cases[2].inputs.push_back(omCreateNumericScalar<std::int32_t>(3));
    cases[2].x = 3, cases[2].result = "from a number";
    cases[3].inputs.push_back(text("given"));
    cases[3].x = 0, cases[3].result = "given";
    cases[4].inputs.push_back(omCreateStringScalar(u"the two forms of text are distinct"));
    cases[4].result = "Orvane:class:NoMatchingOverload";
    cases[5].inputs.push_back(text(""));
    cases[5].result = "Orvane:class:CannotInstantiate";
    for (Case const& each : cases) {
        SCOPED_TRACE(each.result);
        std::vector<krelArray const*> inputs;
        for (ArrayPtr const& input : each.inputs)
            inputs.push_back(input.get());
        ArrayPtr point;
        std::string const failure = failureOf([&] { point = construct(zooClass("Point"), inputs); });
        EXPECT_EQ(failure, each.x ? "" : each.result);
        if (point == nullptr) continue;
        EXPECT_EQ(omGetNumbers<double>(*getProperty(*point, "X"))[0], each.x);
        EXPECT_EQ(omGetChars(*getProperty(*point, "Label")), each.result);
    }
}

TEST(Construct, Refuses) {
    ArrayPtr const zero = omCreateNumericScalar(0.0);
    ArrayPtr const name = omCreateStringScalar(u"Rex");
    struct Case {
        char const* className;
        std::vector<krelArray const*> inputs;
        char const* failure;
    } const cases[] = {
        {"Animal", {zero.get()}, "Orvane:class:CannotInstantiate"},
        {"Dog", {}, "Orvane:class:WrongArgumentCount"},
        {"Dog", {zero.get(), name.get(), name.get()}, "Orvane:class:WrongArgumentCount"},
        {"Dog", {name.get()}, "Orvane:class:WrongType"},
        {"Dog", {zero.get(), zero.get()}, "Orvane:class:WrongType"},
        {"Dog", {zero.get(), name.get()}, "brant0:messages:CannotCreateWithoutModel"},
        {"Mood", {zero.get()}, "brant0:messages:InvalidValue"},
    };
    for (Case const& each : cases)
        EXPECT_EQ(failureOf([&] { construct(zooClass(each.className), each.inputs); }), each.failure)
            << each.className << " with " << each.inputs.size();
    // Without a constructor.
    EXPECT_EQ(failureOf([] {
                  factory::registerQuorlPackage("test.bare", [](QuorlPackage* package) {
                      package->addClass(std::make_unique<PlainInfo>("test.bare.Class"));
                  });
                  construct(*QuorlClass::getClass("test.bare.Class"), {});
              }),
              "Orvane:class:CannotInstantiate");
}

TEST(Construct, ValuesAreUnconstructedUntilTheirConstructorRan) {
    ObjectRef object = QuorlObject::allocate(zooClass("Point"));
    void* const body = object->getSelfPointer();
    EXPECT_TRUE(CopyableSupport::isInUnconstructedSet(body));
    ArrayPtr const array = omCreateQuorlScalar(object);
    EXPECT_EQ(failureOf([&] { getProperty(*array, "X"); }), "Orvane:class:InvalidHandle");
    EXPECT_EQ(failureOf([&] { omDuplicateArray(*array); }), "Orvane:class:InvalidHandle");
    factory::CopyableDataTypeClassInfo<Point>::construct(*array, Point{4, "x"});
    EXPECT_FALSE(CopyableSupport::isInUnconstructedSet(body));
    EXPECT_EQ(omGetNumbers<double>(*getProperty(*array, "X"))[0], 4.0);
    EXPECT_EQ(factory::impl::validateSelfPointer(*array, zooClass("Point")), body);
}

TEST(Property, IsWrittenAndReadBack) {
    Animal animal;
    ArrayPtr const address = addressOf(animal);
    ArrayPtr const puppy = construct(zooClass("Puppy"), inputsOf(address));
    struct Case {
        char const* property;
        ArrayPtr value;
        char const* type; ///< as it is read back, or the failure
    } const cases[] = {
        {"Name", omCreateStringScalar(u"\x4e2d"), "QuorlFactoryString"},
        {"Name", text("as characters"), "QuorlFactoryString"},
        {"Name", text("\xff"), "brant0:messages:InvalidValue"},
        {"Name", omCreateStringMatrix(1, 2), "brant0:messages:InvalidValue"},
        {"Sound", text("\xff"), "char"},
        {"Sound", omCreateNumericScalar(1.0), "brant0:messages:InvalidValue"},
        {"Legs", omCreateNumericScalar<std::int32_t>(3), "int32"},
        {"Legs", omCreateNumericScalar(3.0), "int32"},
        {"Legs", omCreateNumericScalar(3.5), "Orvane:class:WrongType"},
        {"Legs", omCreateNumericMatrix<std::int32_t>(1, 2), "Orvane:class:WrongType"},
        {"Legs", text("3"), "Orvane:class:WrongType"},
        {"Tame", omCreateNumericScalar(true), "logical"},
        {"Tame", omCreateNumericScalar(2.0), "Orvane:class:WrongType"},
        {"Handles", omCreateNumericScalar<std::int32_t>(3), "brant0:messages:CannotSetReadOnlyProperty"},
        {"Wings", omCreateNumericScalar(2.0), "Orvane:class:NoSuchMember"},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(std::string(each.property) + " " + each.type);
        std::string const failure = failureOf([&] { setProperty(*puppy, each.property, *each.value); });
        if (std::string_view(each.type).find(':') != std::string_view::npos) {
            EXPECT_EQ(failure, each.type);
            continue;
        }
        EXPECT_EQ(failure, "");
        EXPECT_EQ(omGetTypeName(*getProperty(*puppy, each.property)), each.type);
    }
    EXPECT_EQ(animal.name, u"as characters");
    EXPECT_EQ(animal.sound, "\xff");
    EXPECT_EQ(animal.legs, 3);
    EXPECT_TRUE(animal.tame);

    QuorlObject* const twice[] = {omGetArrayElement(*puppy, 0), omGetArrayElement(*puppy, 0)};
    EXPECT_EQ(zooClass("Puppy").findProperty("Legs")->getQuorlArrays(twice).size(), 2u);
}

TEST(Property, NeedsOneLivingObject) {
    Animal animal;
    ArrayPtr const address = addressOf(animal);
    ArrayPtr const dog = construct(zooClass("Dog"), inputsOf(address));
    animal.alive = false;
    EXPECT_EQ(failureOf([&] { getProperty(*dog, "Name"); }), "Orvane:class:InvalidHandle");
    EXPECT_EQ(failureOf([&] { setProperty(*dog, "Name", *text("x")); }), "Orvane:class:InvalidHandle");
    EXPECT_EQ(failureOf([&] { callMethod("speak", inputsOf(dog)); }), "Orvane:class:InvalidHandle");
    EXPECT_EQ(failureOf([] { getProperty(*omCreateQuorlEmpty(zooName("Dog")), "Name"); }),
              "Orvane:class:InvalidHandle");
    EXPECT_EQ(failureOf([] { getProperty(*text("dog"), "Name"); }), "Orvane:class:WrongType");
    EXPECT_EQ(failureOf([&] { factory::impl::validateSelfPointer(*dog, zooClass("Cat")); }),
              "Orvane:class:WrongType");
}

TEST(Method, IsFoundByTheClassOfTheObject) {
    Animal animal;
    animal.sound = "wuff";
    ArrayPtr const address = addressOf(animal);
    ArrayPtr const dog = construct(zooClass("Dog"), inputsOf(address));
    EXPECT_EQ(omGetChars(*callMethod("speak", inputsOf(dog)).at(0)), "wuff");
    ArrayPtr const wild = text("Wild");
    ArrayPtr const mood = construct(zooClass("Mood"), inputsOf(wild));
    EXPECT_EQ(moodOf(*mood), 10);
    EXPECT_EQ(omGetNumbers<std::int32_t>(*callMethod("getValue", inputsOf(mood)).at(0))[0], 10);
    EXPECT_EQ(moodOf(*callStatic(zooClass("Mood"), "worst", {}).at(0)), 10);

    struct Case {
        char const* what;
        char const* failure;
        std::function<void()> call;
    } const cases[] = {
        {"no object", "WrongArgumentCount", [] { callMethod("speak", {}); }},
        {"no class", "WrongType", [&] { callMethod("speak", inputsOf(wild)); }},
        {"no method", "NoSuchMember", [&] { callMethod("sing", inputsOf(dog)); }},
        {"too much", "WrongArgumentCount", [&] { callMethod("speak", inputsOf(dog, dog)); }},
        {"not static", "NoSuchMember", [] { callStatic(zooClass("Mood"), "getValue", {}); }},
        {"wrong output", "BadSignature", [] { callStatic(zooClass("Mood"), "broken", {}); }},
    };
    for (Case const& each : cases)
        EXPECT_EQ(failureOf(each.call), "Orvane:class:" + std::string(each.failure)) << each.what;
}

TEST(Conversion, IsReplacedOnlyAfterItWasRemoved) {
    zooClass("Mood");
    auto& types = QuorlTypeRepository::getInstance();
    class ToOne final : public QuorlConversion {
        ArrayPtr convert(krelArray const&) const override { return omCreateNumericScalar(1.0); }
    };
    auto const toOne = std::make_shared<ToOne>();
    types.addConversion("char", "double scalar", toOne);
    EXPECT_EQ(failureOf([&] { types.addConversion("char", "double scalar", toOne); }),
              "Orvane:class:DuplicateName");
    QuorlType const type = QuorlType::parse("double scalar");
    ConvertedValue const one = types.convert(*text("x"), type, "here");
    EXPECT_EQ(omGetNumbers<double>(*one)[0], 1.0);
    EXPECT_EQ(types.getConversion("char", "double scalar"), toOne.get());
    EXPECT_TRUE(types.removeConversion("char", "double scalar"));
    EXPECT_FALSE(types.removeConversion("char", "double scalar"));
    EXPECT_EQ(toOne.use_count(), 1);
    EXPECT_EQ(failureOf([&] { types.convert(*text("x"), type, "here"); }), "Orvane:class:WrongType");

    QuorlType const mood = QuorlType::parse("test.zoo.Mood scalar");
    EXPECT_EQ(moodOf(*types.convert(*text("Wild"), mood, "here")), 10);
    EXPECT_EQ(failureOf([&] { types.convert(*text("Sad"), mood, "here"); }),
              "brant0:messages:CannotCastIncompatibleTypes");
}

TEST(Error, CarriesCatalogIdTextAndArguments) {
    using namespace brant::zero;
    ErrorReport const model = quorl::describe(
        MessageException<brant0::messages::NoSuchProperty>(brant0::messages::NoSuchProperty("x", u"Y")));
    EXPECT_EQ(model.catalog, "brant0:messages");
    EXPECT_EQ(model.id, "NoSuchProperty");
    EXPECT_EQ(model.text, "brant0:messages:NoSuchProperty: There is no property 'x' in 'Y'.");
    ASSERT_EQ(model.arguments.size(), 2u);
    EXPECT_EQ(std::get<std::string>(model.arguments[0]), "x");
    EXPECT_EQ(std::get<std::u16string>(model.arguments[1]), u"Y");

    ErrorReport const dead = quorl::describe(DeadHandle(HandleState::Destroyed));
    EXPECT_EQ(dead.catalog + "|" + dead.id, "brant0|DeadHandle");
    ErrorReport const file = quorl::describe(io::FileError("a", "b"));
    EXPECT_EQ(file.catalog + "|" + file.id, "brant0:io|FileError");

    // It leaves with its own type, so that C++ above the script can tell it.
    EXPECT_THROW(orvane_detail::do_legacy_error(io::FileError("a", "b")), io::FileError);
}

TEST(Host, TellsHowItWasLoaded) {
    EXPECT_FALSE(omGetQuorlUsingUSM());
    omSetQuorlUsingUSM(true);
    EXPECT_TRUE(omGetQuorlUsingUSM());
    omSetQuorlUsingUSM(false);
}
