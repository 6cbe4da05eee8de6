// What scripts can count on beyond single properties: constructors, errors, lifetimes, files, searches.

#include "Host.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

namespace {

using host::ArrayPtr;
using host::call;
using host::failureOf;
using host::get;
using host::init;
using host::make;
using host::set;
using host::show;
using host::text;

constexpr char identity[] = "0d5313d4-cd37-4348-b0d2-5dab4ed6e8cf";

ArrayPtr newModel() {
    return make("brant.zero.Model");
}

ArrayPtr copyOf(ArrayPtr const& array) {
    return omDuplicateArray(*array);
}

/// A row of two, for places that take one.
ArrayPtr twice(ArrayPtr const& object) {
    ArrayPtr two = omCreateQuorlMatrix(omGetClassName(*object), 1, 2);
    omSetArrayElement(*two, 0, *object);
    omSetArrayElement(*two, 1, *object);
    return two;
}

} // namespace

TEST(ScriptConstruct, takesInitAndIdentityInAnyOrder) {
    ArrayPtr const model = newModel();
    ArrayPtr const named = init({{"Name", text("f")}});
    struct Case {
        char const* what;
        std::function<ArrayPtr()> construct;
        char const* name;
        bool keepsIdentity;
    };
    Case const cases[] = {
        {"model", [&] { return make("Function", model); }, "''", false},
        {"init", [&] { return make("Function", model, named); }, "'f'", false},
        {"identity", [&] { return make("Function", model, text(identity)); }, "''", true},
        {"init, identity", [&] { return make("Function", model, named, text(identity)); }, "'f'", true},
        {"identity, init", [&] { return make("Function", model, text(identity), named); }, "'f'", true},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(each.what);
        ArrayPtr const made = each.construct();
        EXPECT_EQ(show(get(made, "Name")), each.name);
        EXPECT_EQ(show(call("getUuid", made)) == "'" + std::string(identity) + "'", each.keepsIdentity);
        call("destroy", made);
    }
    EXPECT_EQ(show(call("size", model)), "0");
}

TEST(ScriptConstruct, buildsWholeSubtrees) {
    ArrayPtr const model = newModel();
    ArrayPtr const intType = make("types.IntegerType", model, init({{"Kind", text("SignedInt")}}));
    ArrayPtr const params = omCreateStructMatrix(1, 2, std::vector<std::string>{"Name", "Type"});
    for (std::size_t i = 0; i < 2; ++i) {
        omSetField(*params, i, "Name", text(i == 0 ? "a" : "b"));
        omSetField(*params, i, "Type", copyOf(intType));
    }
    ArrayPtr const body =
        init({{"Annotations", init({{"MetaClass", text("zelkor.ast.codeinsight.FunInfo")}})}});
    ArrayPtr const function =
        make("Function", model, init({{"Name", text("sum")}, {"Params", params}, {"Scope", body}}));
    ArrayPtr const made = get(function, "Params");
    ASSERT_EQ(omGetNumberOfElements(*made), 2u);
    ArrayPtr const second = omCreateQuorlScalar(omGetArrayElement(*made, 1));
    EXPECT_EQ(show(get(second, "Name")), "'b'");
    EXPECT_EQ(show(get(second, "Type")), show(intType));
    EXPECT_EQ(omGetTypeName(*get(get(function, "Scope"), "Annotations")),
              "internal.zelkor.ast.codeinsight.FunInfo");
    EXPECT_EQ(show(call("size", model)), "6");
    EXPECT_EQ(show(call("verify", model)), "''");
}

TEST(ScriptErrors, areReportedWithCatalogueAndId) {
    ArrayPtr const model = newModel();
    ArrayPtr const function = make("Function", model, text(identity));
    ArrayPtr const address = make("constants.AddressConstant", model);
    ArrayPtr const named = init({{"Name", text("f")}});
    ArrayPtr const gone = make("Variable", model);
    call("destroy", gone);
    ArrayPtr const emptyModel = omCreateQuorlEmpty(quorl::internal::makeInterned("brant.zero.Model"));
    ArrayPtr const nullModel = omCreateQuorlMatrix(quorl::internal::makeInterned("brant.zero.Model"), 1, 1);
    ArrayPtr const twoStructs = omCreateStructMatrix(1, 2, std::vector<std::string>{"Name"});
    ArrayPtr const fragment = host::number(2.5);
    ArrayPtr const foreign = newModel();
    ArrayPtr const project = make("Project", model);
    ArrayPtr const keyed = init({{"Path", host::string(u"a.c")}});
    call("createIntoFiles", project, keyed);
    auto const with = [&](char const* field, ArrayPtr const& value) {
        make("Function", model, init({{field, value}}));
    };
    struct Case {
        char const* what;
        std::function<void()> call;
        char const* failure;
    };
    Case const cases[] = {
        {"no model", [&] { make("Function", emptyModel); }, "CannotCreateWithoutModel"},
        {"null model", [&] { make("Function", nullModel); }, "CannotCreateWithoutModel"},
        {"two inits", [&] { make("Function", model, named, named); }, "InvalidValue"},
        {"two identities", [&] { make("Function", model, text(identity), text(identity)); }, "InvalidValue"},
        {"no identity", [&] { make("Function", model, text("nonsense")); }, "InvalidValue"},
        {"a number for it", [&] { make("Function", model, fragment); }, "InvalidValue"},
        {"two structs", [&] { make("Function", model, twoStructs); }, "InvalidValue"},
        {"taken identity", [&] { make("Function", model, text(identity)); }, "UniquenessConstraint"},
        {"abstract", [&] { make("Symbol", model); },
         "host CannotInstantiate(internal.zelkor.ast.Symbol, the class is abstract)"},
        {"no property", [&] { with("Nome", text("f")); }, "NoSuchProperty(Nome, zelkor.ast.Function)"},
        {"read-only init", [&] { with("IsTemplate", text("f")); },
         "CannotSetReadOnlyProperty(zelkor.ast.Function.IsTemplate)"},
        {"owned, no struct", [&] { with("Scope", text("f")); }, "InvalidValue"},
        {"two for one owned", [&] { with("Scope", twoStructs); }, "InvalidValue"},
        {"foreign class", [&] { with("MetaClass", text("zelkor.ast.Macro")); },
         "CannotCastIncompatibleTypes(internal.zelkor.ast.Function)"},
        {"subclass", [&] { with("MetaClass", text("zelkor.ast.types.Method")); }, "InvalidValue"},
        {"unknown class", [&] { with("MetaClass", text("Funktion")); }, "NoSuchType(u:Funktion)"},
        {"createInto on a dead one", [&] { call("createIntoInitVal", gone); }, "host InvalidHandle"},
        {"createInto, two structs", [&] { call("createIntoParams", function, twoStructs); }, "InvalidValue"},
        {"createInto, order", [&] { call("createIntoParams", function, text(identity), named); },
         "InvalidValue"},
        {"taken key", [&] { call("createIntoFiles", project, keyed); }, "UniquenessConstraint"},
        {"query on a dead one", [&] { call("generateSignature", gone); }, "host InvalidHandle"},
        {"read of a dead one", [&] { get(gone, "Name"); }, "host InvalidHandle"},
        {"write of a dead one", [&] { set(gone, "Name", text("f")); }, "host InvalidHandle"},
        {"dead value", [&] { set(function, "Params", gone); }, "host InvalidHandle"},
        {"wrong class", [&] { set(function, "Type", function); },
         "CannotCastIncompatibleTypes(internal.zelkor.ast.types.Type)"},
        {"two for one", [&] { set(function, "Type", twice(function)); },
         "CannotCastIncompatibleTypes(internal.zelkor.ast.types.Type)"},
        {"no literal", [&] { set(address, "Kind", text("Label")); },
         "CannotCastIncompatibleTypes(internal.zelkor.ast.AddressKind)"},
        {"number for a literal", [&] { set(address, "Kind", host::number<std::int32_t>(1)); },
         "CannotCastIncompatibleTypes(internal.zelkor.ast.AddressKind)"},
        {"fraction", [&] { set(function, "NumOptionalParams", fragment); }, "InvalidValue"},
        {"text for a number", [&] { set(function, "NumOptionalParams", text("1")); },
         "CannotCastIncompatibleTypes(uint32)"},
        {"ill-formed text", [&] { set(function, "Name", host::string(std::u16string(1, char16_t(0xD800)))); },
         "InvalidValue"},
        {"cross-model", [&] { set(function, "Params", make("Variable", foreign)); },
         "CannotCreateCrossModelAssociation"},
    };
    std::string const before = show(call("size", model));
    for (Case const& each : cases) {
        SCOPED_TRACE(each.what);
        EXPECT_EQ(failureOf(each.call), each.failure);
    }
    EXPECT_EQ(show(call("verify", model)), "''");
    EXPECT_EQ(show(get(function, "Name")), "''");
    EXPECT_EQ(show(call("size", model)), before) << "what failed left nothing behind";
}

TEST(ScriptValues, enumerationsTakeNamesAndNothingElse) {
    ArrayPtr const model = newModel();
    ArrayPtr const address = make("constants.AddressConstant", model);
    for (ArrayPtr const& name : {text("Function"), host::string(u"Variable")}) {
        set(address, "Kind", name);
        std::string const shown = show(name);
        EXPECT_EQ(show(get(address, "Kind")), shown.substr(1, shown.size() - 2));
    }
    ArrayPtr const names = omCreateStringMatrix(1, 2);
    omSetString(*names, 0, u"Constant");
    omSetString(*names, 1, u"Unknown");
    EXPECT_EQ(show(make("AddressKind", names)), "internal.zelkor.ast.AddressKind[Constant, Unknown]");
    EXPECT_EQ(failureOf([&] { set(address, "Kind", names); }),
              "CannotCastIncompatibleTypes(internal.zelkor.ast.AddressKind)");
}

TEST(ScriptValues, listsKeepTheNearestClassThatAllShare) {
    ArrayPtr const model = newModel();
    ArrayPtr const scope = make("Scope", model);
    auto const add = [&](char const* className) {
        call("createIntoSymbols", scope, init({{"MetaClass", text(className)}}));
        return omGetTypeName(*get(scope, "Symbols"));
    };
    EXPECT_EQ(add("zelkor.ast.types.Method"), "internal.zelkor.ast.types.Method");
    EXPECT_EQ(add("internal.zelkor.ast.Function"), "internal.zelkor.ast.Function");
    EXPECT_EQ(add("zelkor.ast.types.VoidType"), "internal.zelkor.ast.Symbol");
    EXPECT_EQ(omGetNumberOfElements(*get(scope, "Funs")), 2u);
    EXPECT_EQ(omGetTypeName(*get(scope, "Types")), "internal.zelkor.ast.types.VoidType");
    EXPECT_EQ(failureOf([&] { set(scope, "Types", get(scope, "Types")); }),
              "CannotSetReadOnlyProperty(Types)");
    std::string const before = show(get(scope, "Symbols"));
    set(scope, "Symbols", get(scope, "Symbols"));
    EXPECT_EQ(show(get(scope, "Symbols")), before);
}

TEST(ScriptValues, bytesPassThroughCharsUnchanged) {
    ArrayPtr const model = newModel();
    ArrayPtr const function = make("Function", model);
    set(function, "Name", text("\xFF\x01"));
    EXPECT_EQ(omGetChars(*get(function, "Name")), "\xFF\x01");
    ArrayPtr const attributes = make("types.TypeAttrType", model);
    set(attributes, "Attributes", text("\xFF\x01"));
    EXPECT_EQ(failureOf([&] { get(attributes, "Attributes"); }), "InvalidValue");
}

TEST(ScriptFinder, findsByClassNameAndOptions) {
    ArrayPtr const model = newModel();
    ArrayPtr const scope = make("Scope", model);
    ArrayPtr const inner = call("createIntoNamespaces", scope,
                                init({{"MetaClass", text("zelkor.ast.Namespace")}, {"Name", text("n")}}));
    ArrayPtr const f = call("createIntoSymbols", inner,
                            init({{"MetaClass", text("zelkor.ast.Function")}, {"Name", text("f")}}));
    ArrayPtr const functions = host::callStatic("Function", "StaticMetaClass");
    ArrayPtr const options = make("FinderOptions");
    set(options, "IncludeSystemHeaders", host::number(true));
    EXPECT_EQ(show(call("findSymbolByMetaClass", scope, functions, options)), show(f));
    EXPECT_EQ(show(call("findSymbolByMetaClassAndName", scope, functions, text("n::f"), options)), show(f));
    ArrayPtr const stray = make("brant.zero.meta.Class", model);
    EXPECT_EQ(omGetNumberOfElements(*call("findSymbolByMetaClass", scope, stray, options)), 0u);
    ArrayPtr const narrow = copyOf(options);
    set(narrow, "IncludeSubScopes", host::number(false));
    set(narrow, "NameResolutionStrategy", text("Name"));
    ArrayPtr const none = call("findSymbolByMetaClassAndName", scope, functions, text("f"), narrow);
    EXPECT_EQ(show(none), "internal.zelkor.ast.Symbol[]");

    EXPECT_EQ(show(get(options, "IncludeSubScopes")) + show(get(narrow, "IncludeSubScopes")), "10")
        << "a copy";
    EXPECT_EQ(show(call("eq", options, narrow)) + show(call("ne", options, narrow)), "01");
    EXPECT_EQ(show(call("lt", narrow, options)) + show(call("lt", options, narrow)), "10");
    EXPECT_EQ(show(call("eq", options, copyOf(options))), "1");
}

TEST(ScriptAst, isAValueThatSharesItsModel) {
    ArrayPtr const model = newModel();
    ArrayPtr const ast = make("Ast", model);
    EXPECT_EQ(omGetArrayElement(*get(ast, "Model"), 0), omGetArrayElement(*model, 0))
        << "one object for one model";
    EXPECT_EQ(show(get(ast, "Project")), "internal.zelkor.ast.Project[]");
    for (char const* const method : {"eq", "isequal", "isequaln"}) {
        EXPECT_EQ(show(call(method, ast, copyOf(ast))), "1");
        EXPECT_EQ(show(call(method, ast, get(ast, "selfCopyingProperty"))), "1");
        EXPECT_EQ(show(call(method, ast, make("Ast", model))), "1");
        EXPECT_EQ(show(call(method, ast, make("Ast"))), "0");
    }
    ArrayPtr const other = make("Ast");
    set(other, "selfCopyingProperty", ast);
    EXPECT_EQ(show(call("eq", ast, other)), "1");
}

TEST(ScriptAst, writesAndReadsAllForms) {
    ArrayPtr const model = newModel();
    ArrayPtr const project = make("Project", model, text(identity));
    call("createIntoFiles", project, init({{"Path", host::string(u"a.c")}}));
    ArrayPtr const ast = make("Ast", model);
    std::string const path =
        std::filesystem::temp_directory_path() / ("zelkor_binding_" + std::to_string(getpid()));
    ArrayPtr const file = host::string(std::u16string(path.begin(), path.end()));
    for (char const* const name : {"xml", "json"}) {
        SCOPED_TRACE(name);
        host::callStatic("Ast", "serializeToFile", ast, file,
                         text(name)); // before anyone has asked for formats
        ArrayPtr const format = make("io.IoFormat", text(name));
        ArrayPtr const read[] = {
            host::callStatic("Ast", "deserializeFromFile", file, text(name)),
            host::callStatic("Ast", "deserializeFromUTF8String",
                             host::callStatic("Ast", "serializeToUTF8String", ast, format), format),
            host::callStatic("Ast", "deserializeFromUTF16String",
                             host::callStatic("Ast", "serializeToUTF16String", ast, format), format),
        };
        for (ArrayPtr const& each : read) {
            ArrayPtr const found = get(each, "Project");
            EXPECT_EQ(show(found), std::string("Project '").append(identity) + "'");
            EXPECT_EQ(show(get(get(found, "Files"), "Path")), "\"a.c\"");
            EXPECT_EQ(show(call("eq", ast, each)), "0");
        }
        ArrayPtr const wrong = host::callStatic("Ast", "serializeToUTF8String", ast, format);
        EXPECT_EQ(failureOf([&] {
                      host::callStatic("Ast", "deserializeFromUTF16String", wrong, format);
                  }).substr(0, 14),
                  "host WrongType")
            << "chars and strings are distinct";
    }
    std::filesystem::remove(path);
    try {
        host::callStatic("Ast", "deserializeFromUTF8String", text("{"), text("json"));
        FAIL() << "no model in this text";
    } catch (brant::zero::io::ParseError const& error) {
        EXPECT_EQ(error.getLine(), 1u);
    }
}

TEST(ScriptLife, objectsAndModelsEndInAnyOrder) {
    ArrayPtr model = newModel();
    ArrayPtr const function = make("Function", model, text(identity));
    quorl::QuorlObject const* const object = omGetArrayElement(*function, 0);
    EXPECT_EQ(omGetArrayElement(*call("findElement", model, text(identity)), 0), object)
        << "one for each element";

    { ArrayPtr const released = make("Function", model, init({{"Name", text("kept")}})); }
    EXPECT_EQ(show(call("size", model)), "2") << "releasing an object leaves its element";

    ArrayPtr const ast = make("Ast", model);
    model = nullptr;
    EXPECT_EQ(show(call("isValid", function)), "1") << "the value holds the model";
    set(ast, "selfCopyingProperty", make("Ast"));
    EXPECT_EQ(show(call("isValid", function)), "0");
    EXPECT_EQ(failureOf([&] { get(function, "Name"); }), "host InvalidHandle");
    EXPECT_EQ(failureOf([&] { call("getModel", function); }), "host InvalidHandle");
}

TEST(ScriptLife, transactionsCommitRollBackAndNest) {
    ArrayPtr const model = newModel();
    ArrayPtr const function = make("Function", model, init({{"Name", text("old")}}));
    auto const rename = [&](char const* name) { set(function, "Name", text(name)); };
    {
        ArrayPtr const dropped = call("beginTransaction", model);
        rename("dropped");
    }
    EXPECT_EQ(show(get(function, "Name")), "'old'") << "abandoned with its object";

    ArrayPtr const outer = call("beginTransaction", model);
    rename("outer");
    ArrayPtr const made = make("Function", model);
    ArrayPtr const inner = call("beginTransaction", model);
    rename("inner");
    EXPECT_THROW(call("commit", outer), std::logic_error) << "the inner one is open";
    call("commit", inner);
    EXPECT_EQ(show(call("isValid", inner)), "0");
    EXPECT_EQ(failureOf([&] { call("commit", inner); }), "host InvalidHandle");
    call("rollback", outer);
    EXPECT_EQ(show(get(function, "Name")), "'old'");
    EXPECT_EQ(show(call("isValid", made)), "0") << "its creation was taken back";

    ArrayPtr const kept = call("beginTransaction", model);
    rename("new");
    call("commit", kept);
    EXPECT_EQ(show(get(function, "Name")), "'new'");
}
