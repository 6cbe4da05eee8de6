// Every property, constructor and method of every element class, reached and used through the class system
// alone.

#include "Host.hpp"

#include "brant/zero/mi/WrapperInfo.hpp"

#include <gtest/gtest.h>

#include <map>

namespace {

using brant::zero::mi::ElementProperty;
using brant::zero::schema::PropertyKind;
using host::ArrayPtr;
using quorl::InternedName;
using quorl::QuorlClass;
using quorl::QuorlMethodInfo;
using quorl::QuorlPropInfo;

std::vector<QuorlClass*> const& elementClasses() {
    static std::vector<QuorlClass*> const found = [] {
        QuorlClass const& root = host::classOf("brant.zero.ModelElement");
        std::vector<QuorlClass*> classes;
        for (char const* const package : {"", ".codeinsight", ".constants", ".source", ".types"})
            for (InternedName const name :
                 quorl::QuorlPackage::getPackage("internal.zelkor.ast" + std::string(package))
                     ->getClassNames())
                if (QuorlClass& quorlClass = QuorlClass::requireClass(name); quorlClass.isSubclassOf(root))
                    classes.push_back(&quorlClass);
        return classes;
    }();
    return found;
}

ArrayPtr makeOf(QuorlClass& quorlClass, ArrayPtr const& model) {
    return quorl::construct(quorlClass, host::inputs(model));
}

/// The class itself, or the first one below it that has elements.
QuorlClass& concrete(QuorlClass& quorlClass) {
    for (QuorlClass* const candidate : elementClasses())
        if (candidate->isSubclassOf(quorlClass) && !candidate->getInfo().isAbstract() &&
            (candidate == &quorlClass || quorlClass.getInfo().isAbstract()))
            return *candidate;
    return quorlClass;
}

/// All properties of the class, inherited ones included.
std::vector<ElementProperty const*> propertiesOf(QuorlClass const& quorlClass) {
    std::vector<ElementProperty const*> found;
    for (QuorlClass const* at = &quorlClass; at != nullptr;
         at = at->getSuperclasses().empty() ? nullptr : at->getSuperclasses()[0])
        for (auto const& property : at->getProperties())
            found.push_back(&dynamic_cast<ElementProperty const&>(*property));
    return found;
}

template <class T>
ArrayPtr numbers(std::initializer_list<T> values) {
    ArrayPtr array = omCreateNumericMatrix<T>(1, values.size());
    std::copy(values.begin(), values.end(), omGetNumbersMutable<T>(*array).begin());
    return array;
}

ArrayPtr strings(std::u16string_view a, std::u16string_view b) {
    ArrayPtr array = omCreateStringMatrix(1, 2);
    omSetString(*array, 0, a);
    omSetString(*array, 1, b);
    return array;
}

/// Two values for a collection, one that is not the default for anything else.
ArrayPtr valueFor(ElementProperty const& property, ArrayPtr const& model) {
    bool const many = property.getRow().many();
    static std::map<std::string, std::function<ArrayPtr()>> const builtIn = {
        {"logical scalar", [] { return host::number(true); }},
        {"int32 scalar", [] { return host::number<std::int32_t>(-7); }},
        {"int64 scalar", [] { return host::number<std::int64_t>(-7); }},
        {"uint32", [] { return host::number<std::uint32_t>(7); }},
        {"int32",
         [] {
             return numbers<std::int32_t>({3, -4});
         }},
        {"char", [] { return host::text("caf\xC3\xA9"); }},
        {"QuorlFactoryString scalar", [] { return host::string(u"caf\u00E9"); }},
        {"QuorlFactoryString", [] { return strings(u"one", u"two"); }},
    };
    std::string const type(property.getTypeName());
    if (auto const found = builtIn.find(type); found != builtIn.end()) return found->second();
    QuorlClass& quorlClass = QuorlClass::requireClass(quorl::internal::makeInterned(type));
    if (quorlClass.isEnumeration()) return omDuplicateArray(quorlClass.getEnumValues().back()->getValue());
    QuorlClass& target = concrete(quorlClass);
    if (!many) return makeOf(target, model);
    ArrayPtr array = omCreateQuorlMatrix(target.getName(), 1, 2);
    for (std::size_t i = 0; i < 2; ++i) {
        ArrayPtr const element = makeOf(target, model);
        if (target.findProperty("Path") != nullptr)
            host::set(element, "Path", host::string(i == 0 ? u"a.c" : u"b.c"));
        omSetArrayElement(*array, i, *element);
    }
    return array;
}

/// What an array without elements does to a property: null, an empty list, or a failure.
void checkEmpty(ElementProperty const& property, ArrayPtr const& object, std::string const& before) {
    ArrayPtr const nothing = omCreateNumericMatrix<double>(0, 0);
    char const* const name = property.getRow().name;
    bool const takesNothing = property.getRow().many() || property.getRow().refersToElements();
    EXPECT_EQ(host::failureOf([&] { host::set(object, name, nothing); }), takesNothing ? "" : "InvalidValue");
    ArrayPtr const after = host::get(object, name);
    if (!takesNothing) {
        EXPECT_EQ(host::show(after), before);
        return;
    }
    EXPECT_EQ(omGetNumberOfElements(*after), 0u);
    if (property.getRow().refersToElements()) {
        EXPECT_EQ(omGetTypeName(*after), property.getTypeName()) << "empty, but of the class";
    }
}

void checkProperty(QuorlClass& quorlClass, ElementProperty const& property, ArrayPtr const& model) {
    char const* const name = property.getRow().name;
    SCOPED_TRACE(quorlClass.getName().text() + "." + name);
    ArrayPtr const object = makeOf(quorlClass, model);
    std::string const before = host::show(host::get(object, name));
    if (property.isReadOnly()) {
        EXPECT_EQ(host::failureOf([&] { host::set(object, name, host::number(true)); }),
                  "CannotSetReadOnlyProperty(" + std::string(name) + ")");
        return;
    }
    ArrayPtr const wrong = host::init({});
    EXPECT_EQ(host::failureOf([&] { host::set(object, name, wrong); }).substr(0, 28),
              "CannotCastIncompatibleTypes(");

    ArrayPtr const value = valueFor(property, model);
    ArrayPtr const transaction = host::call("beginTransaction", model);
    host::set(object, name, value);
    EXPECT_EQ(host::show(host::get(object, name)), host::show(value));
    host::call("rollback", transaction);
    EXPECT_EQ(host::show(host::get(object, name)), before) << "after the rollback";

    host::set(object, name, value);
    EXPECT_EQ(host::show(host::get(object, name)), host::show(value));
    if (!property.getRow().many() && property.getRow().refersToElements()) {
        ArrayPtr const two = omCreateQuorlMatrix(omGetClassName(*value), 1, 2);
        omSetArrayElement(*two, 0, *value);
        omSetArrayElement(*two, 1, *value);
        EXPECT_EQ(host::failureOf([&] { host::set(object, name, two); }),
                  "CannotCastIncompatibleTypes(" + std::string(property.getTypeName()) + ")");
    }
    checkEmpty(property, object, host::show(value));
}

/// Makes an element through `createIntoP` of a new object and finds it in P.
void checkCreateInto(QuorlClass& quorlClass, ElementProperty const& property, ArrayPtr const& model) {
    std::string const method = "createInto" + property.getName();
    SCOPED_TRACE(quorlClass.getName().text() + "." + method);
    ArrayPtr const object = makeOf(quorlClass, model);
    QuorlClass& declared = QuorlClass::requireClass(quorl::internal::makeInterned(property.getTypeName()));
    ArrayPtr const className = host::text(concrete(declared).getName().text());
    std::string const identity = "0d5313d4-cd37-4348-b0d2-5dab4ed6e8cf";
    ArrayPtr const made =
        host::call(method.c_str(), object, host::init({{"MetaClass", className}}), host::text(identity));
    EXPECT_EQ(host::show(host::get(object, property.getRow().name)), host::show(made));
    EXPECT_EQ(host::show(host::call("getUuid", made)), "'" + identity + "'");
    EXPECT_EQ(host::show(host::call("getContainer", made)), host::show(object));
    host::call("destroy", made);
    EXPECT_EQ(omGetNumberOfElements(*host::get(object, property.getRow().name)), 0u);

    std::string const plain = host::failureOf([&] { host::call(method.c_str(), object); });
    EXPECT_EQ(plain.substr(0, 22), declared.getInfo().isAbstract() ? "host CannotInstantiate" : "");
    EXPECT_EQ(host::failureOf([&] { host::call(method.c_str(), object, className, className); }),
              "InvalidValue");
}

/// The one input that an operation's type stands for in this walk.
ArrayPtr inputFor(quorl::QuorlType const& type, ArrayPtr const& object, ArrayPtr const& model) {
    if (type.getSpelling() == "brant.zero.Model") return omDuplicateArray(*model);
    if (type.getSpelling() == "brant.zero.meta.Class") return host::callStatic("Symbol", "StaticMetaClass");
    if (type.getSpelling() == "internal.zelkor.ast.FinderOptions") return host::make("FinderOptions");
    if (type.getKind() == quorl::QuorlType::Kind::Class) return omDuplicateArray(*object);
    return type.getKind() == quorl::QuorlType::Kind::Char ? host::text("42") : host::number(1.0);
}

void callEach(QuorlClass& quorlClass, ArrayPtr const& model) {
    ArrayPtr const object = makeOf(quorlClass, model);
    for (QuorlClass const* at = &quorlClass; at != nullptr;
         at = at->getSuperclasses().empty() ? nullptr : at->getSuperclasses()[0])
        for (auto const& method : at->getMethods()) {
            if (method->isConstructor() || method->getName().starts_with("createInto") ||
                method->getName() == "destroy")
                continue;
            SCOPED_TRACE(quorlClass.getName().text() + "." + method->getName());
            std::vector<ArrayPtr> made;
            std::vector<krelArray const*> inputs;
            for (quorl::QuorlType const& type : method->getSignature()->getInputs()) {
                made.push_back(inputFor(type, object, model));
                inputs.push_back(made.back().get());
            }
            std::string const failure = host::failureOf([&] {
                quorl::Outputs const outputs = method->isStatic()
                                                   ? quorl::callStatic(*at, method->getName(), inputs)
                                                   : quorl::callMethod(method->getName(), inputs);
                ASSERT_EQ(outputs.size(), 1u);
                std::string const name(at->getSimpleName());
                bool const family =
                    method->getName() == "is" + name || method->getName() + "Constant" == "is" + name;
                EXPECT_TRUE(!family || host::show(outputs[0]) == "1");
            });
            EXPECT_EQ(failure, "");
        }
}

} // namespace

TEST(ScriptWalk, setsAndReadsBackEveryProperty) {
    ArrayPtr const model = host::make("brant.zero.Model");
    std::size_t properties = 0;
    std::size_t ownProperties = 0;
    for (QuorlClass* const quorlClass : elementClasses()) {
        ownProperties += quorlClass->getProperties().size();
        if (quorlClass->getInfo().isAbstract()) continue;
        for (ElementProperty const* const property : propertiesOf(*quorlClass)) {
            checkProperty(*quorlClass, *property, model);
            ++properties;
        }
    }
    EXPECT_EQ(ownProperties, 239u);
    EXPECT_GT(properties, ownProperties);
    EXPECT_EQ(host::show(host::call("verify", model)), "''");
}

TEST(ScriptWalk, createsIntoEveryOwningProperty) {
    ArrayPtr const model = host::make("brant.zero.Model");
    for (QuorlClass* const quorlClass : elementClasses())
        for (ElementProperty const* const property : propertiesOf(*quorlClass))
            if (property->getRow().owning() && !quorlClass->getInfo().isAbstract())
                checkCreateInto(*quorlClass, *property, model);
    EXPECT_EQ(host::show(host::call("verify", model)), "''");
}

TEST(ScriptWalk, callsEveryMethod) {
    ArrayPtr const model = host::make("brant.zero.Model");
    for (QuorlClass* const quorlClass : elementClasses())
        if (!quorlClass->getInfo().isAbstract()) callEach(*quorlClass, model);
}

TEST(ScriptWalk, readsTheWholeMetamodel) {
    std::size_t read = 0;
    for (QuorlClass* const quorlClass : elementClasses()) {
        ArrayPtr const metaClass =
            host::callStatic(quorlClass->getName().text().substr(20), "StaticMetaClass");
        QuorlClass const& classOfClasses = QuorlClass::requireClass(omGetClassName(*metaClass));
        for (ElementProperty const* const property : propertiesOf(classOfClasses)) {
            SCOPED_TRACE(property->getName());
            EXPECT_EQ(host::failureOf([&] { host::get(metaClass, property->getRow().name); }), "");
            ++read;
        }
        EXPECT_THROW(host::set(metaClass, "Name", host::string(u"other")), std::exception) << "frozen";
    }
    EXPECT_EQ(read, 72 * 7u);
}
