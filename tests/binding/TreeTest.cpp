// The tree of script classes, walked from the load entry on through the class system alone and held against
// the metamodel and the table of methods.

#include "Host.hpp"

#include "brant/zero/meta/Names.hpp"
#include "brant/zero/mi/ValueMarshaler.hpp"
#include "zelkor/ast.hpp"
#include "zelkor/ast/binding.hpp"
#include "zelkor/ast/mi/Wrappers.hpp"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace {

namespace meta = brant::zero::meta;
using quorl::QuorlClass;
using quorl::QuorlMethodInfo;
using quorl::QuorlPackage;

constexpr char const* modelPackages[] = {"internal.zelkor.ast", "internal.zelkor.ast.codeinsight",
                                         "internal.zelkor.ast.constants", "internal.zelkor.ast.source",
                                         "internal.zelkor.ast.types"};

/// The methods besides constructor and StaticMetaClass, in order, but for those that follow from the schema:
/// first `createIntoP` for each owning property P, then the test for the class itself, where its root class
/// has one.
std::map<std::string, std::string> const methodTable = {
    {"Symbol", "getFullyQualifiedName generateSignature"},
    {"Function", "getFullyQualifiedName generateSignature"},
    {"Variable", "getFullyQualifiedName generateSignature"},
    {"Template", "getFullyQualifiedName generateSignature"},
    {"TemplateArg", "getFullyQualifiedName"},
    {"Scope", "getFullyQualifiedName findSymbolByMetaClass findSymbolByMetaClassAndName"},
    {"types.AggregateType", "getFullyQualifiedName"},
    {"types.StructType", "isCOnlyStructType isDestructible"},
    {"types.Member", "getFullyQualifiedName"},
    {"types.Method", "getFullyQualifiedName generateSignature"},
    {"types.Type", "isNullPtrType isErrorType isOpaqueType isVoidType isBasedType isVectorType isArrayType "
                   "isPointerType isPointerToMemberType isReferenceType isTyperefType isQualifiedType "
                   "isBooleanType isIntegerType isFloatType isEnumType isAggregateType isUnionType "
                   "isStructType isClassType isFunctionType isTemplateParamType isDestructible skipTypedefs "
                   "skipQualifiers skipTyperefs getUnderlyingType generateTypeName"},
    {"types.ReferenceType", "isLValueReferenceType isRValueReferenceType"},
    {"types.TyperefType", "isTypedefType isTypeAttrType isTypeOpType"},
    {"constants.Constant",
     "isAggregate isNumeric isFloat isInteger isError isVoid isAddress isString isTemplateParam "
     "isPointerToMember isDynamicInit isInitRepeat isDesignator fromDouble fromSignedInteger "
     "fromUnsignedInteger"},
    {"constants.NumericConstant", "toByteString"},
    {"constants.FloatConstant", "fitsDouble getDouble fromDouble fromByteString"},
    {"constants.IntegerConstant", "fitsSignedInteger fitsUnsignedInteger getSignedInteger "
                                  "getUnsignedInteger fromByteString fromSignedInteger fromUnsignedInteger"},
};

/// One of each form of signature; "?" stands before inputs that may be left out.
struct SignatureCase {
    char const* className;
    char const* method;
    char const* signature;
};
constexpr SignatureCase signatureTable[] = {
    {"Macro", "Macro", "Macro <- model:brant.zero.Model ?opt_init:any ?opt_uuid:any"},
    {"Macro", "StaticMetaClass", "brant.zero.meta.Class <- static"},
    {"Scope", "createIntoSymbols", "Symbol <- self:Scope ?opt_init:any ?opt_uuid:any"},
    {"Symbol", "generateSignature", "char <- self:Symbol"},
    {"TemplateArg", "getFullyQualifiedName", "char <- self:TemplateArg prevIsPack:logical scalar"},
    {"Scope", "findSymbolByMetaClass",
     "Symbol <- self:Scope metaCls:brant.zero.meta.Class opts:FinderOptions"},
    {"Scope", "findSymbolByMetaClassAndName",
     "Symbol <- self:Scope metaCls:brant.zero.meta.Class qname:char opts:FinderOptions"},
    {"types.Type", "isVoidType", "logical scalar <- self:types.Type"},
    {"types.Type", "generateTypeName",
     "char <- static type:types.Type symName:char skipTypedefs:logical scalar"},
    {"constants.Constant", "fromDouble", "constants.Constant <- static m:brant.zero.Model d:double scalar"},
    {"constants.IntegerConstant", "getSignedInteger", "int64 scalar <- self:constants.IntegerConstant"},
    {"constants.IntegerConstant", "getUnsignedInteger", "uint64 scalar <- self:constants.IntegerConstant"},
    {"constants.FloatConstant", "getDouble", "double scalar <- self:constants.FloatConstant"},
    {"AddressKind", "AddressKind", "AddressKind <- :any"},
    {"AddressKind", "getValue", "int32 scalar <- :AddressKind"},
    {"AddressKind", "getLiteral", "QuorlFactoryString scalar <- :AddressKind"},
    {"AddressKind", "getPublicIdentifier", "QuorlFactoryString scalar <- :AddressKind"},
    {"FinderOptions", "lt", "logical scalar <- :FinderOptions :FinderOptions"},
    {"Ast", "deserializeFromFile", "Ast <- static :QuorlFactoryString scalar :io.IoFormat"},
    {"Ast", "deserializeFromUTF8String", "Ast <- static :char :io.IoFormat"},
    {"Ast", "serializeToFile", " <- static :Ast :QuorlFactoryString scalar :io.IoFormat"},
    {"Ast", "serializeToUTF16String", "QuorlFactoryString scalar <- static :Ast :io.IoFormat"},
};

std::string shortName(std::string const& name) {
    return name.starts_with("internal.zelkor.ast.") ? name.substr(20) : name;
}

std::string methodNames(QuorlClass const& quorlClass) {
    std::string names;
    for (auto const& method : quorlClass.getMethods())
        if (!method->isConstructor() && method->getName() != "StaticMetaClass")
            names += (names.empty() ? "" : " ") + method->getName();
    return names;
}

std::set<std::string> words(std::string const& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

/// \returns the test of its own class that a type, a kind of reference or a constant has, if any.
std::string ownTest(std::string const& shortClass) {
    std::string const test = "is" + shortClass.substr(shortClass.find('.') + 1);
    std::string const ofConstant = test.substr(0, test.rfind("Constant"));
    for (auto const& [owner, name] :
         {std::pair("types.Type", test), std::pair("types.TyperefType", test),
          std::pair("types.ReferenceType", test), std::pair("constants.Constant", ofConstant)})
        if (shortClass != owner && words(methodTable.at(owner)).contains(name)) return name;
    return {};
}

std::string expectedMethods(meta::Class const& cls, std::string const& shortClass) {
    std::ostringstream names;
    auto const add = [&](std::string const& name) {
        if (!name.empty()) names << (names.tellp() == 0 ? "" : " ") << name;
    };
    for (meta::Property const& property : cls.getProperties())
        if (property.getIsComposite() && !property.getIsDerived())
            add("createInto" + brant::zero::toUtf8(property.getName()));
    auto const more = methodTable.find(shortClass);
    bool const isNumeric = shortClass == "constants.NumericConstant"; // the one whose test comes last
    if (!isNumeric) add(ownTest(shortClass));
    if (more != methodTable.end()) add(more->second);
    if (isNumeric) add(ownTest(shortClass));
    return names.str();
}

std::string spelled(QuorlMethodInfo const& method) {
    auto const& signature = *method.getSignature();
    std::string text;
    for (auto const& type : signature.getOutputs())
        text += shortName(type.getSpelling());
    text += " <-";
    if (method.isStatic()) text += " static";
    for (std::size_t i = 0; i < signature.getInputs().size(); ++i) {
        bool const optional = i + signature.getOptionalCount() >= signature.getInputs().size();
        std::string const name = signature.getInputNames().empty() ? "" : signature.getInputNames()[i];
        text += std::string(optional ? " ?" : " ") + name + ":" +
                shortName(signature.getInputs()[i].getSpelling());
    }
    return text;
}

/// The classes of the metamodel's package, in creation order.
std::vector<meta::Type> typesOf(char const* scriptPackage) {
    std::vector<meta::Type> types;
    for (meta::NamedElement const& object : zelkor::ast::MetaPackageZelkor_ast::getInstance().objects())
        if (meta::Type const type = meta::Type::cast(object)) {
            std::string const dotted = meta::qualifiedNameUtf8(type);
            if ("internal." + dotted.substr(0, dotted.rfind('.')) == scriptPackage) types.push_back(type);
        }
    return types;
}

void compareClass(QuorlClass& quorlClass, meta::Class const& cls) {
    SCOPED_TRACE(quorlClass.getName().text());
    EXPECT_EQ(quorlClass.getInfo().isAbstract(), cls.getIsAbstract());
    EXPECT_TRUE(quorlClass.getInfo().isHandleClass());
    ASSERT_EQ(quorlClass.getSuperclasses().size(), 1u);
    EXPECT_EQ(quorlClass.getSuperclasses()[0]->getName().text(), cls.getSuperclass().getScriptName());

    auto const& properties = quorlClass.getProperties();
    ASSERT_EQ(properties.size(), cls.getProperties().size());
    for (std::size_t i = 0; i < properties.size(); ++i) {
        meta::Property const property = cls.getProperties()[i];
        bool const many = property.getMultiplicity() != 1;
        EXPECT_EQ(properties[i]->getName(), brant::zero::toUtf8(property.getName()));
        EXPECT_EQ(properties[i]->isReadOnly(), property.getIsDerived() || property.getIsReadOnly());
        EXPECT_EQ(properties[i]->getTypeName(), brant::zero::mi::spellingOf(property.getType(), many));
    }

    auto const& methods = quorlClass.getMethods();
    std::size_t const constructors = cls.getIsAbstract() ? 0 : 1;
    ASSERT_GT(methods.size(), constructors);
    EXPECT_EQ(methods[0]->isConstructor(), constructors == 1);
    EXPECT_EQ(methods[constructors]->getName(), "StaticMetaClass");
    EXPECT_EQ(methodNames(quorlClass), expectedMethods(cls, shortName(quorlClass.getName().text())));
    for (auto const& method : methods)
        EXPECT_EQ(method->getDescription(), "");

    host::ArrayPtr const metaClass =
        host::callStatic(quorlClass.getName().text().substr(20), "StaticMetaClass");
    EXPECT_EQ(host::show(host::get(metaClass, "Name")),
              "\"" + std::string(quorlClass.getSimpleName()) + "\"");
}

void compareEnum(QuorlClass& quorlClass, meta::Enum const& enumeration) {
    SCOPED_TRACE(quorlClass.getName().text());
    EXPECT_EQ(quorlClass.getBaseType(), "int32 scalar");
    EXPECT_EQ(methodNames(quorlClass), "getValue getLiteral getPublicIdentifier");
    EXPECT_EQ(quorlClass.getEnumValues().size(), enumeration.getLiterals().size());
    for (auto const& literal : quorlClass.getEnumValues()) {
        meta::EnumLiteral const declared =
            enumeration.getLiterals()[*brant::zero::toUtf16(literal->getName())];
        ASSERT_TRUE(declared) << literal->getName();
        EXPECT_EQ(literal->getNumericValue(), declared.getValue());
        EXPECT_EQ(&literal->getValue(), &literal->getValue()) << "made once";
        host::ArrayPtr const value = omDuplicateArray(literal->getValue());
        EXPECT_EQ(host::show(host::call("getValue", value)), std::to_string(declared.getValue()));
        for (char const* const method : {"getLiteral", "getPublicIdentifier"})
            EXPECT_EQ(host::show(host::call(method, value)), "\"" + literal->getName() + "\"");
        host::ArrayPtr const byName =
            host::make(shortName(quorlClass.getName().text()), host::text(literal->getName()));
        EXPECT_EQ(host::show(byName), literal->getName());
    }
}

} // namespace

TEST(ScriptTree, matchesMetamodelAndMethodTable) {
    zelkor_ast_initialize();
    std::map<std::string, int> counts;
    for (char const* const name : modelPackages) {
        SCOPED_TRACE(name);
        QuorlPackage* const package = QuorlPackage::getPackage(name);
        ASSERT_NE(package, nullptr);
        std::vector<meta::Type> const types = typesOf(name);
        auto const names = package->getClassNames();
        ASSERT_GE(names.size(), types.size());
        for (std::size_t i = 0; i < types.size(); ++i) {
            QuorlClass& quorlClass = QuorlClass::requireClass(names[i]);
            ASSERT_EQ(names[i].text(), brant::zero::mi::spellingOf(types[i], false));
            if (meta::Class const cls = meta::Class::cast(types[i])) {
                compareClass(quorlClass, cls);
                ++counts["classes"];
            } else if (meta::Enum const enumeration = meta::Enum::cast(types[i])) {
                compareEnum(quorlClass, enumeration);
                ++counts["enumerations"];
            } else {
                ++counts["value types"];
            }
        }
    }
    EXPECT_EQ(counts,
              (std::map<std::string, int>{{"classes", 72}, {"enumerations", 14}, {"value types", 1}}));
}

TEST(ScriptTree, signaturesAreSpelledAsTold) {
    for (SignatureCase const& expected : signatureTable) {
        auto const methods = host::classOf(expected.className).getMethods().size();
        ASSERT_GT(methods, 0u);
        bool found = false;
        for (auto const& method : host::classOf(expected.className).getMethods())
            found = found || (method->getName() == expected.method && spelled(*method) == expected.signature);
        EXPECT_TRUE(found) << expected.className << "." << expected.method;
        for (auto const& method : host::classOf(expected.className).getMethods())
            if (!found && method->getName() == expected.method) ADD_FAILURE() << spelled(*method);
    }
}

TEST(ScriptTree, hasAstFinderOptionsAndFormats) {
    QuorlClass const& ast = host::classOf("Ast");
    EXPECT_TRUE(ast.getInfo().isSealed());
    EXPECT_FALSE(ast.getInfo().isHandleClass());
    std::string members;
    for (auto const& method : ast.getMethods())
        members += method->getName() + " ";
    EXPECT_EQ(members, "eq isequal isequaln Ast Ast deserializeFromFile deserializeFromUTF8String "
                       "deserializeFromUTF16String serializeToFile serializeToUTF8String "
                       "serializeToUTF16String ");
    members.clear();
    for (auto const& property : ast.getProperties())
        members += property->getName() + (property->isReadOnly() ? ":read-only " : " ") +
                   std::to_string(property->getAttributes()) + " ";
    EXPECT_EQ(members, "selfCopyingProperty 2144 Model:read-only 0 Project:read-only 0 ");

    std::ostringstream fields;
    for (auto const& property : host::classOf("FinderOptions").getProperties())
        fields << property->getName() << ':' << shortName(std::string(property->getTypeName())) << ' ';
    EXPECT_EQ(
        fields.str(),
        "IncludeSubScopes:logical scalar IncludeDerivedClasses:logical scalar IncludeStdNs:logical scalar "
        "IncludeSystemHeaders:logical scalar IncludeTemplateScope:logical scalar "
        "IncludeAggregateScope:logical scalar NameResolutionStrategy:NameFinderKind ");

    auto const& formats = host::classOf("io.IoFormat").getEnumValues();
    ASSERT_EQ(formats.size(), 2u);
    EXPECT_EQ(formats[0]->getName() + "=" + std::to_string(formats[0]->getNumericValue()), "xml=1");
    EXPECT_EQ(formats[1]->getName() + "=" + std::to_string(formats[1]->getNumericValue()), "json=0");
}

TEST(ScriptTree, loadsAgainInTheOtherHostMode) {
    QuorlClass& before = host::classOf("Function");
    omSetQuorlUsingUSM(true);
    zelkor_ast_initialize();
    omSetQuorlUsingUSM(false);
    EXPECT_EQ(&host::classOf("Function"), &before) << "objects point at classes, so classes stay";
    EXPECT_EQ(host::show(host::make("AddressKind", host::text("Variable"))), "Variable");

    zelkor_ast_terminate();
    zelkor::ast::mi::unregisterMarshalers();
    host::ArrayPtr const model = host::make("brant.zero.Model");
    host::ArrayPtr const address = host::make("constants.AddressConstant", model);
    EXPECT_EQ(host::failureOf([&] { host::get(address, "Kind"); }), "NoSuchType(u:zelkor.ast.AddressKind)");
    zelkor::ast::mi::registerMarshalers();
    EXPECT_EQ(host::show(host::get(address, "Kind")), "Unknown");
}
