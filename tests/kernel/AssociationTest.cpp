// Both ends of what owns and is owned, and what setters and reflection ask before they change anything.

#include "model/ModelSupport.hpp"

#include "ModelImpl.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

struct Stage {
    Model model = newModel();
    za::Function function = za::Function::create(model);
    za::Function other = za::Function::create(model);
    za::Scope scope = za::Scope::create(model);
    za::Scope second = za::Scope::create(model);
    za::Variable variable = za::Variable::create(model);
    za::types::StructType type = za::types::StructType::create(model);
    za::types::Method method = za::types::Method::create(model);
    za::source::SourcePosition position = za::source::SourcePosition::create(model);
};

/// \returns the names of the container ends that are set, and the property that holds the element.
std::string placeOf(ModelElement const& element) {
    std::string place;
    for (PropertyRow const* row : propertiesOf(element.get()->classTable()))
        if (row->kind == PropertyKind::ContainerEnd &&
            element.getPropertyValue(Core::propertyOf(row)).getValue<ModelElement>())
            place += std::string(row->name) + " ";
    PropertyRow const* const held = element.get()->containmentRow();
    return place + "in " + (held == nullptr ? "nothing" : held->name);
}

} // namespace

TEST(Association, TheLastOwnerWinsAndTheFormerOneLetsGo) {
    struct Case {
        char const* what;
        std::function<void(Stage&)> prepare;
        std::function<void(Stage&)> change;
        std::function<ModelElement(Stage&)> child;
        std::function<ModelElement(Stage&)> owner;
        char const* place;
        std::function<bool(Stage&)> free; ///< whether the former owner, or the former child, is rid of it
    } const cases[] = {
        {"a scope taken over by another function", [](Stage& s) { s.other.setScope(s.scope); },
         [](Stage& s) { s.function.setScope(s.scope); }, [](Stage& s) { return s.scope; },
         [](Stage& s) { return s.function; }, "OwningFun in Scope",
         [](Stage& s) { return !s.other.hasScope(); }},
        {"a second scope from the scope's end", [](Stage& s) { s.function.setScope(s.second); },
         [](Stage& s) { s.scope.setOwningFun(s.function); }, [](Stage& s) { return s.scope; },
         [](Stage& s) { return s.function; }, "OwningFun in Scope",
         [](Stage& s) { return s.second.container() == nullptr && !s.second.getOwningFun(); }},
        {"a nested scope that becomes a function's", [](Stage& s) { s.scope.setParent(s.second); },
         [](Stage& s) { s.scope.setOwningFun(s.function); }, [](Stage& s) { return s.scope; },
         [](Stage& s) { return s.function; }, "OwningFun in Scope",
         [](Stage& s) { return !s.second.hasNamespaces(); }},
        {"a function's scope that is nested", [](Stage& s) { s.function.setScope(s.scope); },
         [](Stage& s) { s.second.getNamespacesMutable().genericAdd(s.scope); },
         [](Stage& s) { return s.scope; }, [](Stage& s) { return s.second; }, "Parent in Namespaces",
         [](Stage& s) { return !s.function.hasScope(); }},
        {"a method that becomes a symbol of a scope",
         [](Stage& s) { s.type.getMethodsMutable().add(s.method); },
         [](Stage& s) { s.method.setOwningScope(s.scope); }, [](Stage& s) { return s.method; },
         [](Stage& s) { return s.scope; }, "OwningScope in Symbols",
         [](Stage& s) { return !s.type.hasMethods() && !s.method.getOwningAggregate(); }},
        {"a local variable that becomes a parameter",
         [](Stage& s) { s.scope.getSymbolsMutable().add(s.variable); },
         [](Stage& s) { s.variable.setOwningFunPrototype(s.function); }, [](Stage& s) { return s.variable; },
         [](Stage& s) { return s.function; }, "OwningFunPrototype in Params",
         [](Stage& s) { return !s.scope.hasSymbols(); }},
        {"an owned position replaced", [](Stage& s) { s.function.setDefPos(s.position); },
         [](Stage& s) { s.function.setDefPos(za::source::SourcePosition::create(s.model)); },
         [](Stage& s) { return s.function.getDefPos(); }, [](Stage& s) { return s.function; }, "in DefPos",
         [](Stage& s) { return s.position.container() == nullptr; }},
        {"an owned position that moves into a list of the same element",
         [](Stage& s) { s.function.setDefPos(s.position); },
         [](Stage& s) { s.function.getDeclPosMutable().add(s.position); },
         [](Stage& s) { return s.position; }, [](Stage& s) { return s.function; }, "in DeclPos",
         [](Stage& s) { return !s.function.hasDefPos(); }},
        {"an owned position that moves out of a list",
         [](Stage& s) { s.function.getDeclPosMutable().add(s.position); },
         [](Stage& s) { s.other.setDefPos(s.position); }, [](Stage& s) { return s.position; },
         [](Stage& s) { return s.other; }, "in DefPos", [](Stage& s) { return !s.function.hasDeclPos(); }},
        {"a container end set to null", [](Stage& s) { s.scope.getSymbolsMutable().add(s.variable); },
         [](Stage& s) { s.variable.setOwningScope({}); }, [](Stage& s) { return s.variable; },
         [](Stage&) { return ModelElement(); }, "in nothing", [](Stage& s) { return !s.scope.hasSymbols(); }},
        {"another container end set to null, which changes nothing",
         [](Stage& s) { s.scope.getSymbolsMutable().add(s.variable); },
         [](Stage& s) { s.variable.setOwningFunPrototype({}); }, [](Stage& s) { return s.variable; },
         [](Stage& s) { return s.scope; }, "OwningScope in Symbols",
         [](Stage& s) { return s.scope.getSymbols().contains(s.variable); }},
    };
    for (Case const& one : cases) {
        SCOPED_TRACE(one.what);
        Stage s;
        one.prepare(s);
        std::string const before = dump(s.model);
        {
            Transaction const level = s.model.beginTransaction();
            one.change(s);
        }
        EXPECT_EQ(firstDifference(before, dump(s.model)), "");
        one.change(s);
        EXPECT_EQ(one.child(s).container(), one.owner(s));
        EXPECT_EQ(placeOf(one.child(s)), one.place);
        EXPECT_TRUE(one.free(s));
        EXPECT_EQ(violationOf(s.model), "");
    }
}

TEST(Association, ABasicContainerEndRecordsTheOwnersProperty) {
    Stage s;
    Transaction const level = s.model.beginTransaction();
    s.variable.get()->basicSetOwningScope(s.scope);
    EXPECT_EQ(s.variable.container(), s.scope);
    EXPECT_EQ(s.variable.containmentFeature(), za::Scope::symbols().getProperty());
    EXPECT_FALSE(s.scope.hasSymbols()); // the other end is not told
}

// A frozen model refuses every transaction, so what is decided before one shows there.
TEST(Association, SettersAskBeforeTheyOpenATransaction) {
    Stage s;
    Model const elsewhere = newModel();
    za::Template const foreign = za::Template::create(elsewhere);
    auto const foreignBody = za::source::SourceRange::create(elsewhere);
    s.scope.setParent(s.second);
    s.function.setName("f");
    s.function.setType(s.type);
    za::Project const project = za::Project::create(s.model);
    auto const file = za::source::SourceFile::create(s.model);
    auto const twin = za::source::SourceFile::create(s.model);
    file.setPath(u"/a");
    twin.setPath(u"/b");
    project.getFilesMutable().insert(file);
    project.getFilesMutable().insert(twin);
    char const* const frozen = "the model is frozen and cannot be changed";
    struct Case {
        char const* what;
        std::function<void()> set;
        char const* failure;
    } const cases[] = {
        {"an equal text", [&] { s.function.setName("f"); }, ""},
        {"an equal flag", [&] { s.function.setIsInline(false); }, ""},
        {"an equal reference", [&] { s.function.setType(s.type); }, ""},
        {"null for null", [&] { s.function.setScope({}); }, ""},
        {"an equal container end", [&] { s.scope.setParent(s.second); }, ""},
        {"an equal path", [&] { file.setPath(u"/a"); }, ""},
        {"the path of another file", [&] { file.setPath(u"/b"); }, "UniquenessConstraint"},
        {"a reference to another model", [&] { s.function.setAssocTemplate(foreign); },
         "CannotCreateCrossModelAssociation"},
        {"an owned reference to another model", [&] { s.function.setBodyPosition(foreignBody); },
         "CannotCreateCrossModelAssociation"},
        {"a parent inside", [&] { s.second.setParent(s.scope); }, "CircularContainment"},
        {"itself as parent", [&] { s.second.setParent(s.second); }, "CircularContainment"},
        {"another text", [&] { s.function.setName("g"); }, frozen},
        {"another reference", [&] { s.function.setType({}); }, frozen},
        {"another container end", [&] { s.scope.setParent({}); }, frozen},
        {"another path", [&] { file.setPath(u"/c"); }, frozen},
    };
    std::string const before = dump(s.model);
    Model::Freezer const freezer(s.model);
    for (Case const& one : cases) {
        EXPECT_EQ(failureOf(one.set), one.failure) << one.what;
        EXPECT_EQ(firstDifference(before, dump(s.model)), "") << one.what;
    }
}

TEST(Association, NothingIsPutIntoItself) {
    Stage s;
    Model const elsewhere = newModel();
    s.function.setScope(s.scope);
    s.scope.getSymbolsMutable().add(s.other);
    s.second.setParent(s.scope);
    std::pair<char const*, std::function<void()>> const circles[] = {
        {"an owned reference", [&] { s.other.setScope(s.scope); }},
        {"a container end", [&] { s.scope.setOwningFun(s.other); }},
        {"a list", [&] { s.second.getNamespacesMutable().genericAdd(s.scope); }},
        {"a replacement",
         [&] {
             s.second.getNamespacesMutable().genericAdd(za::Scope::create(s.model));
             s.second.getNamespacesMutable().genericReplace(s.scope, 0);
         }},
    };
    for (auto const& [what, put] : circles) {
        SCOPED_TRACE(what);
        Transaction const level = s.model.beginTransaction();
        EXPECT_EQ(failureOf(put), "CircularContainment");
        EXPECT_EQ(s.scope.getOwningFun(), s.function);
        EXPECT_EQ(s.other.getOwningScope(), s.scope);
        EXPECT_EQ(violationOf(s.model), "");
    }
    std::string const before = dump(s.model);
    EXPECT_EQ(failureOf([&] { s.variable.setOwningScope(za::Scope::create(elsewhere)); }),
              "CannotCreateCrossModelAssociation");
    EXPECT_EQ(firstDifference(before, dump(s.model)), "");
}

TEST(Association, ReflectionReplacesTheContentOfAList) {
    Stage s;
    meta::Property const params = za::Function::params().getProperty();
    meta::Property const comments = Core::propertyOf(&rowNamed(za::Function::Impl::table, "Comments"));
    za::Variable const first = za::Variable::create(s.model);
    za::Variable const last = za::Variable::create(s.model);
    s.function.getParamsMutable().add(first);
    s.other.getParamsMutable().add(s.variable);
    s.other.getParamsMutable().add(last);
    s.function.getCommentsMutable().push_back(u"old");
    int commits = 0;
    Subscription const subscription = s.model.onCommit([&](CommitNotice const&) { ++commits; });
    s.function.setPropertyValue(params, s.other.getPropertyValue(params));
    EXPECT_EQ(commits, 1);
    ASSERT_EQ(s.function.getParams().size(), 2u);
    EXPECT_EQ(s.function.getParams()[0], s.variable);
    EXPECT_EQ(s.function.getParams()[1], last);
    EXPECT_FALSE(s.other.hasParams());
    EXPECT_EQ(first.container(), nullptr);
    s.function.setPropertyValue(
        comments, Value::ownContainer(comments.getType(), std::vector<std::u16string>{u"a", u"b", u"a"}));
    ASSERT_EQ(s.function.getComments().size(), 3u);
    EXPECT_EQ(s.function.getComments()[2], u"a");
    s.function.setPropertyValue(comments, s.function.getPropertyValue(comments)); // of itself
    EXPECT_EQ(s.function.getComments().size(), 3u);
    za::Variable const fits = za::Variable::create(s.model);
    std::string const before = dump(s.model);
    Value const wrong =
        Value::ownContainer(meta::Type(ModelElement::metaClass()), std::vector<ModelElement>{fits, s.scope});
    EXPECT_EQ(failureOf([&] { s.function.setPropertyValue(params, wrong); }), "CannotAddIncompatibleTypes");
    EXPECT_EQ(firstDifference(before, dump(s.model)), "");
    EXPECT_EQ(violationOf(s.model), "");
}
