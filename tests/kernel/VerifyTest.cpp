// The whole-graph check sees each kind of damage. Damage is done behind the write path's back.

#include "model/ModelSupport.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
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

    Sound() {
        file.setPath(u"/a");
        project.getFilesMutable().insert(file);
        function.setScope(scope);
        scope.getSymbolsMutable().add(variable);
        scope.getSymbolsMutable().add(second);
    }
};

PropertyRow const& row(ClassTable const& table, std::string const& name) {
    for (PropertyRow const* candidate : propertiesOf(table))
        if (candidate->name == name) return *candidate;
    throw std::logic_error("no property " + name);
}

/// Exchanges two members in the middle of a sequence, with no other word to anybody.
void swapRaw(ModelElement const& element, char const* name) {
    auto& members = Core::sequence(*element.get(), row(element.get()->classTable(), name));
    auto* slots = const_cast<ModelElementImpl**>(members.slots());
    std::swap(slots[0], slots[1]);
}

} // namespace

TEST(Verify, SeesEachViolation) {
    struct Case {
        char const* what;
        char const* rule;
        std::function<void(Sound&)> damage;
        std::function<void(Sound&)> repair; ///< so that the model can end in order
    } const cases[] = {
        {"an owned reference without its child's link", "opposite",
         [](Sound& s) { Core::restoreLink(*s.scope.get(), nullptr, nullptr, 99); },
         [](Sound& s) {
             Core::restoreLink(*s.scope.get(), s.function.get(), &row(za::Function::Impl::table, "Scope"), 0);
         }},
        {"a child whose owner does not hold it", "containment",
         [](Sound& s) {
             Core::basicSetReference(*s.function.get(), row(za::Function::Impl::table, "Scope"), nullptr);
         },
         [](Sound& s) {
             Core::basicSetReference(*s.function.get(), row(za::Function::Impl::table, "Scope"),
                                     s.scope.get());
         }},
        {"a child held through a property of another class", "containment",
         [](Sound& s) {
             Core::restoreLink(*s.top.get(), s.function.get(), &row(za::Scope::Impl::table, "Symbols"), 0);
         },
         [](Sound& s) { Core::restoreLink(*s.top.get(), nullptr, nullptr, 7); }},
        {"an element inside itself", "containment",
         [](Sound& s) {
             PropertyRow const& in = row(za::Scope::Impl::table, "Namespaces");
             s.scope->setParent(nullptr);
             Core::restoreLink(*s.scope.get(), s.scope.get(), &in, 0);
         },
         [](Sound& s) { Core::restoreLink(*s.scope.get(), nullptr, nullptr, 20); }},
        {"a reference of a wrong class", "containment",
         [](Sound& s) {
             Core::basicSetReference(*s.function.get(), row(za::Function::Impl::table, "AssocTemplate"),
                                     s.top.get());
         },
         [](Sound& s) {
             Core::basicSetReference(*s.function.get(), row(za::Function::Impl::table, "AssocTemplate"),
                                     nullptr);
         }},
        {"a member that the container end denies", "opposite",
         [](Sound& s) {
             Core::restoreLink(*s.variable.get(), s.function.get(), &row(za::Function::Impl::table, "Params"),
                               0);
         },
         [](Sound& s) {
             Core::restoreLink(*s.variable.get(), s.scope.get(), &row(za::Scope::Impl::table, "Symbols"), 0);
         }},
        {"members out of their order", "key", [](Sound& s) { swapRaw(s.scope, "Symbols"); },
         [](Sound& s) { swapRaw(s.scope, "Symbols"); }},
        {"a member of a map under a stale key", "key",
         [](Sound& s) {
             Core::field<std::u16string>(*s.file.get(), row(za::source::SourceFile::Impl::table, "Path")) =
                 u"/b";
         },
         [](Sound& s) {
             Core::field<std::u16string>(*s.file.get(), row(za::source::SourceFile::Impl::table, "Path")) =
                 u"/a";
         }},
        {"a top-level element that the list has lost", "top-level",
         [](Sound& s) { s.model->leaveTopLevel(*s.top.get()); },
         [](Sound& s) { s.model->enterTopLevel(*s.top.get()); }},
        {"a contained element in the top-level list", "top-level",
         [](Sound& s) { s.model->enterTopLevel(*s.scope.get()); },
         [](Sound& s) { s.model->leaveTopLevel(*s.scope.get()); }},
        {"an element that the identity index has lost", "identity",
         [](Sound& s) {
             static_cast<void>(s.model.findElement(s.top.uuid()));
             s.model->identities().erase(s.top.get());
         },
         [](Sound& s) { s.model->identities().insert(s.top.get()); }},
    };
    std::set<std::string> rules;
    for (Case const& one : cases) {
        Sound sound;
        EXPECT_EQ(violationOf(sound.model), "") << one.what;
        one.damage(sound);
        std::optional<Violation> const violation = sound.model.verify();
        ASSERT_TRUE(violation) << one.what;
        std::string const first = violation->rule;
        rules.insert(first);
        // The first of several findings may be another face of the same damage.
        EXPECT_EQ(first, one.rule) << one.what << ": " << violation->detail;
        EXPECT_TRUE(violation->element);
        EXPECT_FALSE(violation->detail.empty());
        one.repair(sound);
    }
    EXPECT_EQ(rules.size(), 5u);
}

TEST(Verify, WhatLooksOddIsLegal) {
    struct Case {
        char const* what;
        std::function<void(Sound&)> make;
    } const cases[] = {
        {"an element twice in a collection that is not unique",
         [](Sound& s) {
             auto const arg = za::TemplateArg::create(s.model);
             s.function.getTemplateArgsMutable().add(arg);
             s.function.getTemplateArgsMutable().add(arg);
         }},
        {"an entry that outlived the containment",
         [](Sound& s) {
             auto const arg = za::TemplateArg::create(s.model);
             s.function.getTemplateArgsMutable().add(arg);
             s.function.getTemplateArgsMutable().add(arg);
             za::Function::create(s.model).getTemplateArgsMutable().add(arg);
         }},
        {"an entry whose element is dead",
         [](Sound& s) {
             auto const arg = za::TemplateArg::create(s.model);
             s.function.getTemplateArgsMutable().add(arg);
             s.function.getTemplateArgsMutable().add(arg);
             arg.destroy();
         }},
        {"a reference to a dead element",
         [](Sound& s) {
             auto const other = za::Template::create(s.model);
             s.function.setAssocTemplate(other);
             other.destroy();
         }},
        {"a placeholder as a member",
         [](Sound& s) {
             s.scope.getSymbolsMutable().genericAdd(
                 s.model.createProxy(za::Variable::metaClass(), {u"", u"nowhere", nullptr}));
         }},
    };
    for (Case const& one : cases) {
        Sound sound;
        one.make(sound);
        EXPECT_EQ(violationOf(sound.model), "") << one.what;
    }
}

// Five faults of a restore, each planted after a real rollback: the comparison with the state before must see
// it.
TEST(Verify, APlantedFaultOfARestoreIsCaught) {
    struct Case {
        char const* what;
        std::function<void(Sound&)> fault;
        bool violates; ///< whether the model is also unsound
    } const cases[] = {
        {"a restore step left out",
         [](Sound& s) { Core::field<bool>(*s.top.get(), row(za::Macro::Impl::table, "IsUndef")) = true; },
         false},
        {"an opposite", [](Sound& s) { Core::restoreLink(*s.variable.get(), nullptr, nullptr, 50); }, true},
        {"an index entry", [](Sound& s) { s.model->identities().erase(s.top.get()); }, true},
        {"a map key",
         [](Sound& s) {
             Core::field<std::u16string>(*s.file.get(), row(za::source::SourceFile::Impl::table, "Path")) =
                 u"/z";
         },
         true},
        {"a top-level entry", [](Sound& s) { s.model->leaveTopLevel(*s.top.get()); }, true},
    };
    std::size_t caught = 0;
    for (Case const& one : cases) {
        Sound sound;
        static_cast<void>(sound.model.findElement(sound.top.uuid()));
        std::string const before = dump(sound.model);
        {
            Transaction const level = sound.model.beginTransaction();
            sound.top.setIsUndef(true);
            sound.function.destroy();
            sound.file.setPath(u"/q");
            sound.top.destroy();
        }
        EXPECT_EQ(firstDifference(before, dump(sound.model)), "") << one.what;
        EXPECT_EQ(violationOf(sound.model), "") << one.what;
        one.fault(sound);
        bool const differs = dump(sound.model) != before;
        bool const unsound = !violationOf(sound.model).empty();
        EXPECT_EQ(unsound, one.violates) << one.what;
        caught += differs || unsound;
        EXPECT_TRUE(differs || unsound) << one.what;
    }
    std::cout << "planted faults caught: " << caught << " of " << std::size(cases) << '\n';
}
