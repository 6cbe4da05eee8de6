// Placeholders: who reads through them, who hands them out, and what resolving one costs.

#include "model/ModelSupport.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>

using namespace testmodel;
namespace za = zelkor::ast;
using za::types::ClassType;

namespace {

/// A function that refers, once and in a list, to placeholders of elements that are there.
struct Stage {
    Model model = newModel();
    za::Function function = za::Function::create(model);
    za::Template target = za::Template::create(model);
    ClassType friendly = ClassType::create(model);
    za::Template placeholder = placeholderFor<za::Template>(model, target.uuid());
    ClassType stand = placeholderFor<ClassType>(model, friendly.uuid());
    meta::Property assoc = za::Function::assocTemplate().getProperty();
    meta::Property friends = za::Function::befriendingAggregates().getProperty();

    Stage() {
        function.setAssocTemplate(placeholder);
        function.getBefriendingAggregatesMutable().add(stand);
    }
    /// What the field holds as it stands.
    [[nodiscard]] ModelElement stored() const {
        return ModelElement(Core::field<ModelElementImpl*>(*function.get(), Core::rowOf(assoc)));
    }
    [[nodiscard]] ModelElement storedFriend() const {
        return ModelElement(Core::sequence(*function.get(), Core::rowOf(friends)).slot(0));
    }
    [[nodiscard]] Value valueOf(ModelElement const& element) const {
        return Value::createElementValue(assoc, element);
    }
};

ReflectionPrivateTag const* const silentTags[] = {&ReflectionPrivateTag::NO_PROXY_RESOLVE,
                                                  &ReflectionPrivateTag::IN_MEMORY_ONLY};

} // namespace

TEST(Placeholder, RefusesOnlyWhatHandsOutElementsToChange) {
    Model const model = newModel();
    auto const nowhere = ElementImpl::generateNewUuid();
    auto const function = placeholderFor<za::Function>(model, nowhere);
    auto const type = placeholderFor<ClassType>(model, nowhere);
    auto const scope = placeholderFor<za::Scope>(model, nowhere);
    auto const project = placeholderFor<za::Project>(model, nowhere);
    // Properties by reflection: a walk of the conformance tests.
    static_cast<void>(function.getName());
    static_cast<void>(function.getComments());
    static_cast<void>(function.getScope());
    static_cast<void>(function.getOwningScope());
    EXPECT_FALSE(function.hasParams() || function.hasScope() || function.hasOwningScope() ||
                 scope.hasTypes());
    std::pair<char const*, std::function<void()>> const refused[] = {
        {"Params", [&] { static_cast<void>(function.getParams()); }},
        {"BefriendingAggregates", [&] { static_cast<void>(function.getBefriendingAggregates()); }},
        {"Params to change", [&] { static_cast<void>(function.getParamsMutable()); }},
        {"Comments to change", [&] { static_cast<void>(function.getCommentsMutable()); }},
        {"Types", [&] { static_cast<void>(scope.getTypes()); }},
        {"Files", [&] { static_cast<void>(project.getFiles()); }},
        {"create into Scope", [&] { function.createIntoScope(za::Scope::Builder()); }},
        {"IsTemplate of a function", [&] { static_cast<void>(function.getIsTemplate()); }},
        {"IsTemplate of a class", [&] { static_cast<void>(type.getIsTemplate()); }},
    };
    for (auto const& [what, read] : refused)
        EXPECT_EQ(failureOf(read), "CannotModifyProxy") << what;
}

TEST(Placeholder, TheTagOfAnAccessSaysWhetherItIsResolved) {
    Stage s;
    for (ReflectionPrivateTag const* tag : silentTags) {
        EXPECT_EQ(s.function.getPropertyValue(s.assoc, *tag).getValue<ModelElement>(), s.placeholder);
        Value const list = s.function.getPropertyValue(s.friends, *tag);
        EXPECT_EQ(list.collection(), &s.function.getBefriendingAggregates());
        EXPECT_TRUE(list.isManaged());
        EXPECT_TRUE(s.function.hasPropertyValue(s.assoc, *tag));
        EXPECT_EQ(s.storedFriend(), s.stand);
    }
    EXPECT_TRUE(s.function.hasPropertyValue(s.assoc));
    EXPECT_TRUE(s.function.hasAssocTemplate());
    EXPECT_EQ(s.stored(), s.placeholder);
    EXPECT_EQ(s.function.getPropertyValue(s.assoc).getValue<ModelElement>(), s.target);
    EXPECT_EQ(s.stored(), s.target);
    EXPECT_EQ(s.function.getPropertyValue(s.friends).collection(), &s.function.getBefriendingAggregates());
    EXPECT_EQ(s.storedFriend(), s.friendly);
}

TEST(Placeholder, WithoutATargetItIsAValueAllTheSame) {
    Stage s;
    auto const lost = placeholderFor<za::Template>(s.model, ElementImpl::generateNewUuid());
    s.function.setAssocTemplate(lost);
    EXPECT_TRUE(s.function.hasPropertyValue(s.assoc));
    EXPECT_EQ(s.function.getAssocTemplate(), lost);
    auto const elsewhere = placeholderFor<za::Template>(s.model, s.target.uuid(), true);
    s.function.setAssocTemplate(elsewhere);
    EXPECT_EQ(s.function.getAssocTemplate(), elsewhere); // what lies in another model is not looked for here
}

TEST(Placeholder, DeadTargetsAreHandedOutWhileTheirModelLives) {
    Stage s;
    s.function.setAssocTemplate(s.target);
    s.target.destroy();
    EXPECT_EQ(s.function.getAssocTemplate(), s.target);
    EXPECT_FALSE(s.function.getAssocTemplate());
    EXPECT_FALSE(s.function.hasPropertyValue(s.assoc));
    za::Template orphan;
    {
        Model const other = newModel();
        orphan = za::Template::create(other);
        Core::basicSetReference(*s.function.get(), Core::rowOf(s.assoc), orphan.get());
    }
    EXPECT_EQ(s.function.getAssocTemplate(), nullptr);
    EXPECT_EQ(s.stored(), nullptr);
}

TEST(Placeholder, ASetterComparesWithWhatIsRead) {
    struct Case {
        char const* what;
        std::function<void(Stage&)> set;
        std::function<ModelElement(Stage&)> stored;
        std::function<ModelElement(Stage&)> old; ///< none when no change is reported
    };
    auto const target = [](Stage& s) { return ModelElement(s.target); };
    auto const placeholder = [](Stage& s) { return ModelElement(s.placeholder); };
    auto const none = [](Stage&) { return ModelElement(); };
    std::vector<Case> cases = {
        {"its target", [](Stage& s) { s.function.setAssocTemplate(s.target); }, target, {}},
        {"its target by reflection",
         [](Stage& s) { s.function.setPropertyValue(s.assoc, s.valueOf(s.target)); },
         target,
         {}},
        {"null", [](Stage& s) { s.function.setAssocTemplate({}); }, none, target},
    };
    for (ReflectionPrivateTag const* tag : silentTags) {
        // The placeholder gives way before the setter looks at the field.
        cases.push_back({"its target, silently",
                         [tag](Stage& s) { s.function.setPropertyValue(s.assoc, s.valueOf(s.target), *tag); },
                         target, placeholder});
        cases.push_back({"null, silently",
                         [tag](Stage& s) { s.function.setPropertyValue(s.assoc, s.valueOf({}), *tag); }, none,
                         target});
        cases.push_back(
            {"a placeholder, silently",
             [tag](Stage& s) { s.function.setPropertyValue(s.assoc, s.valueOf(s.placeholder), *tag); },
             placeholder, target});
    }
    for (Case const& one : cases) {
        SCOPED_TRACE(one.what);
        Stage s;
        auto const changes = reported(s.function, [&] { one.set(s); });
        EXPECT_EQ(s.stored(), one.stored(s));
        EXPECT_EQ(changes.size(), one.old ? 1u : 0u);
        if (one.old && changes.contains("AssocTemplate")) {
            EXPECT_EQ(changes.at("AssocTemplate").getValue<ModelElement>(), one.old(s));
        }
    }
}

TEST(Placeholder, ResolvingIsNoChange) {
    Stage s;
    Model::Freezer const freezer(s.model); // so that any transaction would be refused
    auto const changes = reported(s.function, [&] {
        EXPECT_EQ(s.function.getAssocTemplate(), s.target);
        EXPECT_EQ(s.function.getBefriendingAggregates()[0], s.friendly);
    });
    EXPECT_TRUE(changes.empty());
    EXPECT_EQ(s.stored(), s.target);
    EXPECT_EQ(s.storedFriend(), s.friendly);
}

TEST(Placeholder, OfAnOwnedElementStaysUntilTheElementIsOwned) {
    Model const model = newModel();
    za::Function const function = za::Function::create(model);
    za::Scope const scope = za::Scope::create(model);
    auto const placeholder = placeholderFor<za::Scope>(model, scope.uuid());
    function.setScope(placeholder);
    EXPECT_EQ(function.getScope(), placeholder);
    EXPECT_EQ(scope.container(), nullptr);
    EXPECT_EQ(violationOf(model), "");
    scope.setOwningFun(function);
    EXPECT_EQ(function.getScope(), scope);
    EXPECT_EQ(violationOf(model), "");
}

TEST(Placeholder, IsReplacedInPlainReferencesWhenItsTargetIsAskedFor) {
    Stage s;
    za::Template const other = za::Template::create(s.model);
    ClassType const stranger = ClassType::create(s.model);
    za::Variable const param = za::Variable::create(s.model);
    za::Scope const scope = za::Scope::create(s.model);
    auto const asked = [&](ModelElement const& element, meta::Property const& property) {
        return s.function.get()->inverseContainsProxyTo(element, property);
    };
    auto const changes = reported(s.function, [&] {
        EXPECT_FALSE(asked(other, s.assoc));
        EXPECT_FALSE(asked(stranger, s.friends));
        EXPECT_EQ(s.stored(), s.placeholder);
        EXPECT_EQ(s.storedFriend(), s.stand);
        EXPECT_TRUE(asked(s.target, s.assoc));
        EXPECT_TRUE(asked(s.target, s.assoc)); // the element itself counts in a single reference
        EXPECT_TRUE(asked(s.friendly, s.friends));
    });
    EXPECT_TRUE(changes.empty());
    EXPECT_EQ(s.stored(), s.target);
    EXPECT_EQ(s.storedFriend(), s.friendly);
    // What is owned, or owns, is not asked.
    s.function.getParamsMutable().genericAdd(placeholderFor<za::Variable>(s.model, param.uuid()));
    s.function.setScope(scope);
    scope.setOwningFun(s.function);
    EXPECT_FALSE(asked(param, za::Function::params().getProperty()));
    EXPECT_FALSE(asked(scope, za::Function::scope().getProperty()));
    EXPECT_FALSE(scope.get()->inverseContainsProxyTo(s.function, za::Scope::owningFun().getProperty()));
}
