// The whole-graph check sees each kind of damage. Damage is done behind the write path's back.

#include "model/ModelSupport.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <set>

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

struct Sound {
    Model model = newModel();
    za::Project project = za::Project::create(model);
    za::source::SourceFile file = za::source::SourceFile::create(model);
    za::Scope scope = za::Scope::create(model);
    za::Function function = za::Function::create(model);
    za::Variable variable = za::Variable::create(model);
    za::Variable second = za::Variable::create(model);
    za::Macro top = za::Macro::create(model);
    za::Namespace outer = za::Namespace::create(model);
    za::Namespace inner = za::Namespace::create(model);
    Model elsewhere = newModel();
    za::Scope strangeScope = za::Scope::create(elsewhere);
    za::Template strangeTemplate = za::Template::create(elsewhere);

    Sound() {
        file.setPath(u"/a");
        project.getFilesMutable().insert(file);
        outer.getNamespacesMutable().add(inner);
        function.setScope(scope);
        scope.getSymbolsMutable().add(variable);
        scope.getSymbolsMutable().add(second);
    }
};

ModelElementImpl** slotsOf(ModelElement const& element, char const* name) {
    PropertyRow const& row = rowNamed(element.get()->classTable(), name);
    return const_cast<ModelElementImpl**>(Core::sequence(*element.get(), row).slots());
}

/// Exchanges the first two members of a sequence.
void swapRaw(ModelElement const& element, char const* name) {
    std::swap(slotsOf(element, name)[0], slotsOf(element, name)[1]);
}

/// Puts another member into the second slot of a sequence, uncounted.
void replaceSecond(ModelElement const& element, char const* name, ModelElement const& member) {
    slotsOf(element, name)[1] = member.get();
}

/// Exchanges two elements in the list of all elements.
void swapRegistered(Sound& s) {
    auto& elements = const_cast<std::vector<ModelElementImpl*>&>(s.model->elements());
    std::swap(elements.front(), elements.back());
}

/// Makes a field refer to the target, with no other word to anybody.
void point(ModelElement const& element, char const* name, ModelElement const& target) {
    Core::basicSetReference(*element.get(), rowNamed(element.get()->classTable(), name), target.get());
}

/// Makes the child believe that the property of that owner holds it; without owner, that it stands at the
/// top.
void link(ModelElement const& child, ModelElement const& owner, ClassTable const& table, char const* name,
          std::uint32_t order = 0) {
    Core::restoreLink(*child.get(), owner.get(), owner == nullptr ? nullptr : &rowNamed(table, name), order);
}

ClassTable const& ofFunction = za::Function::Impl::table;
ClassTable const& ofScope = za::Scope::Impl::table;
PropertyRow const& pathRow = rowNamed(za::source::SourceFile::Impl::table, "Path");

struct Damage {
    char const* rule;
    char const* detail;
    std::function<void(Sound&)> inflict;
    std::function<void(Sound&)> repair; ///< so that the model can end in order
};

Damage const damages[] = {
    {"opposite", "what the property owns has another container",
     [](Sound& s) { link(s.scope, {}, ofFunction, "Scope", 99); },
     [](Sound& s) { link(s.scope, s.function, ofFunction, "Scope"); }},
    {"opposite", "a member has another container",
     [](Sound& s) { link(s.variable, s.function, ofFunction, "Params"); },
     [](Sound& s) { link(s.variable, s.scope, ofScope, "Symbols"); }},
    {"opposite", "a member has another container", // of a map
     [](Sound& s) { link(s.file, {}, ofScope, "", 98); },
     [](Sound& s) { link(s.file, s.project, za::Project::Impl::table, "Files"); }},
    {"opposite", "a member stands twice in a unique collection",
     [](Sound& s) { replaceSecond(s.scope, "Symbols", s.variable); },
     [](Sound& s) { replaceSecond(s.scope, "Symbols", s.second); }},
    {"containment", "the container does not hold the element",
     [](Sound& s) { point(s.function, "Scope", {}); }, [](Sound& s) { point(s.function, "Scope", s.scope); }},
    {"containment", "the container has no such containment",
     [](Sound& s) { link(s.top, s.function, ofScope, "Symbols"); },
     [](Sound& s) { link(s.top, {}, ofScope, "Symbols", 7); }},
    {"containment", "the container is dead or of another model",
     [](Sound& s) { link(s.top, s.strangeScope, ofScope, "Symbols"); },
     [](Sound& s) { link(s.top, {}, ofScope, "Symbols", 7); }},
    {"containment", "the target is of a wrong class",
     [](Sound& s) { point(s.function, "AssocTemplate", s.top); },
     [](Sound& s) { point(s.function, "AssocTemplate", {}); }},
    {"containment", "the target lies in another model",
     [](Sound& s) { point(s.function, "AssocTemplate", s.strangeTemplate); },
     [](Sound& s) { point(s.function, "AssocTemplate", {}); }},
    {"containment", "the element lies inside itself",
     [](Sound& s) {
         s.inner.get()->_basicAdd(&s.inner.getNamespacesMutable(), s.outer);
         link(s.outer, s.inner, ofScope, "Namespaces");
     },
     [](Sound& s) { link(s.outer, {}, ofScope, "", 97); }},
    {"key", "the order keys of the members are out of order", [](Sound& s) { swapRaw(s.scope, "Symbols"); },
     [](Sound& s) { swapRaw(s.scope, "Symbols"); }},
    {"key", "a member stands under another key than its own",
     [](Sound& s) { Core::field<std::u16string>(*s.file.get(), pathRow) = u"/b"; },
     [](Sound& s) { Core::field<std::u16string>(*s.file.get(), pathRow) = u"/a"; }},
    {"top-level", "an element without container is missing from the top-level list",
     [](Sound& s) { s.model->leaveTopLevel(*s.top.get()); },
     [](Sound& s) { s.model->enterTopLevel(*s.top.get()); }},
    {"top-level", "a contained element stands in the top-level list",
     [](Sound& s) { s.model->enterTopLevel(*s.scope.get()); },
     [](Sound& s) { s.model->leaveTopLevel(*s.scope.get()); }},
    {"identity", "the identity index does not find ",
     [](Sound& s) {
         static_cast<void>(s.model.findElement(s.top.uuid()));
         s.model->identities().erase(s.top.uuid(), Core::registrySlot(*s.top.get()));
     },
     [](Sound& s) { s.model->identities().insert(s.top.uuid(), Core::registrySlot(*s.top.get())); }},
    {"identity", "two elements have the identity ",
     [](Sound& s) { const_cast<boost::uuids::uuid&>(s.top.get()->uuid()) = s.scope.uuid(); }, [](Sound&) {}},
    {"identity", "the element does not know its place in the registry", swapRegistered, swapRegistered},
    {"identity", "a dead element is registered", [](Sound& s) { s.top.get()->invalidate(); }, [](Sound&) {}},
};

} // namespace

TEST(Verify, SeesEachViolation) {
    std::set<std::string> details;
    for (Damage const& one : damages) {
        SCOPED_TRACE(one.detail);
        Sound sound;
        EXPECT_EQ(violationOf(sound.model), "");
        one.inflict(sound);
        std::optional<Violation> const violation = sound.model.verify();
        ASSERT_TRUE(violation);
        EXPECT_EQ(violation->rule, one.rule);
        EXPECT_TRUE(violation->detail.starts_with(one.detail)) << violation->detail;
        EXPECT_NE(violation->element, nullptr);
        details.insert(one.detail);
        one.repair(sound);
    }
    EXPECT_EQ(details.size(), std::size(damages) - 1); // that of a member is told of lists and of maps
}

TEST(Verify, WhatLooksOddIsLegal) {
    Sound s;
    auto const arg = za::TemplateArg::create(s.model);
    auto const expectLegal = [&](char const* what) { EXPECT_EQ(violationOf(s.model), "") << what; };
    s.function.getTemplateArgsMutable().add(arg);
    s.function.getTemplateArgsMutable().add(arg);
    expectLegal("an element twice in a collection that is not unique");
    za::Function::create(s.model).getTemplateArgsMutable().add(arg);
    expectLegal("an entry that outlived the containment");
    arg.destroy();
    expectLegal("an entry whose element is dead");
    auto const assoc = za::Template::create(s.model);
    s.function.setAssocTemplate(assoc);
    assoc.destroy();
    expectLegal("a reference to a dead element");
    s.scope.getSymbolsMutable().genericAdd(
        s.model.createProxy(za::Variable::metaClass(), {u"", u"nowhere", nullptr}));
    expectLegal("a placeholder as a member");
}
