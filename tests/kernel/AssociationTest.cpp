// Both ends of what owns and is owned, and what setters and reflection ask before they change anything.

#include "kernel/Stage.hpp"

#include "ModelImpl.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace testmodel;

namespace {

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
        char const* before;
        char const* change;
        char const* child;
        char const* owner;
        char const* place;
    } const cases[] = {
        {"other.Scope = scope", "function.Scope = scope", "scope", "function", "OwningFun in Scope"},
        {"function.Scope = second", "scope.OwningFun = function", "scope", "function", "OwningFun in Scope"},
        {"scope.Parent = second", "scope.OwningFun = function", "scope", "function", "OwningFun in Scope"},
        {"function.Scope = scope", "second.Namespaces = scope", "scope", "second", "Parent in Namespaces"},
        {"type.Methods = method", "method.OwningScope = scope", "method", "scope", "OwningScope in Symbols"},
        {"scope.Symbols = one", "one.OwningFunPrototype = function", "one", "function",
         "OwningFunPrototype in Params"},
        {"other.DefPos = position", "function.DefPos = position", "position", "function", "in DefPos"},
        {"function.DefPos = position", "function.DeclPos = position", "position", "function", "in DeclPos"},
        {"function.DeclPos = position", "other.DefPos = position", "position", "other", "in DefPos"},
        {"function.DefPos = position", "function.DefPos = null", "position", "null", "in nothing"},
        {"scope.Symbols = one", "one.OwningScope = null", "one", "null", "in nothing"},
        // Another end set to null changes nothing.
        {"scope.Symbols = one", "one.OwningFunPrototype = null", "one", "scope", "OwningScope in Symbols"},
    };
    for (Case const& one : cases) {
        SCOPED_TRACE(std::string(one.before) + ", then " + one.change);
        Stage s;
        s.does(one.before);
        std::string const before = dump(s.model);
        {
            Transaction const level = s.model.beginTransaction();
            s.does(one.change);
        }
        EXPECT_EQ(firstDifference(before, dump(s.model)), "");
        s.does(one.change);
        EXPECT_EQ(s.named(one.child).container(), s.named(one.owner));
        EXPECT_EQ(placeOf(s.named(one.child)), one.place);
        EXPECT_EQ(violationOf(s.model), ""); // nobody else holds it, nor does it hold anybody else
    }
}

TEST(Association, ABasicContainerEndRecordsTheOwnersProperty) {
    Stage s;
    Transaction const level = s.model.beginTransaction();
    s.one.get()->basicSetOwningScope(s.scope);
    EXPECT_EQ(s.one.container(), s.scope);
    EXPECT_EQ(s.one.containmentFeature(), za::Scope::symbols().getProperty());
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
    za::Scope const inside = za::Scope::create(s.model);
    s.second.getNamespacesMutable().genericAdd(inside);
    std::pair<char const*, std::function<void()>> const circles[] = {
        {"an owned reference", [&] { s.does("other.Scope = scope"); }},
        {"a container end", [&] { s.does("scope.OwningFun = other"); }},
        {"a list", [&] { s.does("second.Namespaces = scope"); }},
        {"a replacement", [&] { s.second.getNamespacesMutable().genericReplace(s.scope, 0); }},
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
    EXPECT_EQ(failureOf([&] { s.one.setOwningScope(za::Scope::create(elsewhere)); }),
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
    s.other.getParamsMutable().add(s.one);
    s.other.getParamsMutable().add(last);
    s.function.getCommentsMutable().push_back(u"old");
    int commits = 0;
    Subscription const subscription = s.model.onCommit([&](CommitNotice const&) { ++commits; });
    s.function.setPropertyValue(params, s.other.getPropertyValue(params));
    EXPECT_EQ(commits, 1);
    ASSERT_EQ(s.function.getParams().size(), 2u);
    EXPECT_EQ(s.function.getParams()[0], s.one);
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
