// Definitions of one name in several programs of one database.
#include "FactsSupport.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace zelkor::producer::test {
namespace {

// Entities as "name@file of the definition", and their uses by these names.
struct Project : WrittenProject {
    std::map<Id, std::string> names;
    std::map<std::string, MergedEntity const*> entities;

    void index() {
        for (MergedEntity const* const merged : facts.entities()) {
            Entity const& entity = merged->facts;
            std::string name = entity.name;
            if (entity.definition) name.append("@").append(facts.file(entity.definition->file)->path);
            EXPECT_TRUE(entities.emplace(name, merged).second || entity.name.empty()) << name;
            names[entity.id] = name;
            FunctionFacts const* const function = entity.as<FunctionFacts>();
            for (std::size_t i = 0; function && i < function->parameters.size(); ++i)
                names[makeId(entity.id, "parameter", i)] = function->parameters[i].name + " of " + name;
        }
    }
    std::string uses(std::string const& owner, UseKind kind) const {
        std::string text;
        for (UseFacts const& uses : facts.uses()) {
            if (uses.owner != entities.at(owner)->facts.id) continue;
            for (Id const& id : uses.of(kind))
                text.append(text.empty() ? "" : " ").append(names.contains(id) ? names.at(id) : "?");
        }
        return text;
    }
};

TEST(Programs, EachHasDefinitionsOfItsOwn) {
    Project project;
    project.add("h.h", "void usage(void *);\n");
    project.add(
        "a.c",
        "#include \"h.h\"\nstruct options { int verbose; };\ntypedef struct options settings;\n"
        "enum mode { on, off };\nint level = 1;\nvoid usage(void *p) { ((settings *)p)->verbose = level; }\n"
        "int main(void) { settings o; usage(&o); return off; }\n");
    project.add("b.c", "#include \"h.h\"\nstruct options { int *counts; struct options *next; };\n"
                       "typedef struct options settings;\nenum mode { off, on };\nint level = 2;\n"
                       "void usage(void *q) { settings *o = q; o->next->counts = &level; }\n"
                       "int main(int n, char **v) { usage(v); return n + (enum mode)on; }\n");
    project.add("c.c", "#include \"h.h\"\nvoid call(void) { usage(0); }\n");
    project.index();
    EXPECT_TRUE(project.facts.variants().empty());
    struct Row {
        char const* owner;
        UseKind kind;
        char const* expected;
    };
    for (Row const& row :
         {Row{"main@a.c", UseKind::Call, "usage@a.c"}, Row{"main@b.c", UseKind::Call, "usage@b.c"},
          Row{"main@b.c", UseKind::Read, "v of main@b.c n of main@b.c"},
          Row{"main@b.c", UseKind::Type, "mode@b.c"}, Row{"usage@a.c", UseKind::Write, "verbose@a.c"},
          Row{"usage@a.c", UseKind::Read, "p of usage@a.c level@a.c"},
          Row{"usage@b.c", UseKind::Write, "counts@b.c"},
          Row{"usage@b.c", UseKind::Read, "q of usage@b.c next@b.c o@b.c"},
          Row{"usage@b.c", UseKind::Address, "level@b.c"},
          // Nothing tells which program this unit is of.
          Row{"call@c.c", UseKind::Call, "usage@a.c"}})
        EXPECT_EQ(project.uses(row.owner, row.kind), row.expected) << row.owner;
    EXPECT_EQ(project.names[project.entities.at("settings@b.c")->facts.type], "options@b.c");
    EXPECT_EQ(project.entities.at("usage@b.c")->facts.declarations.size(), 1U);
}

TEST(Programs, WhatIsMadeFromAPrivateTypeGoesWithIt) {
    Project project;
    std::string const box = "template <class T> struct Box { T held; T get() { return held; } };\n";
    project.add("box.h", box);
    project.add(
        "a.cpp",
        "#include \"box.h\"\nstruct Item { int a; };\nint main() { Box<Item> b{}; return b.get().a; }\n");
    project.add(
        "b.cpp",
        "#include \"box.h\"\nstruct Item { int b; };\nint main() { Box<Item> b{}; return b.get().b; }\n");
    std::set<Id> items;
    for (MergedEntity const* const merged : project.facts.entities()) {
        if (merged->facts.kind == EntityKind::Struct && merged->facts.name == "Item")
            items.insert(merged->facts.id);
    }
    EXPECT_EQ(items.size(), 2U);
    std::set<Id> arguments;
    for (MergedEntity const* const merged : project.facts.entities()) {
        if (merged->facts.name == "Box" && merged->facts.arguments.size() == 1)
            arguments.insert(merged->facts.arguments[0].type);
    }
    for (Id const& item : items)
        EXPECT_TRUE(arguments.contains(item)) << "each instance has its own argument";
    EXPECT_TRUE(project.facts.variants().empty());
}

TEST(Programs, OneProgramStaysWhole) {
    Project project;
    project.add("h.h",
                "struct shared;\nvoid f(struct shared *);\n#ifdef X\nstruct variant { int x; };\n#else\n"
                "struct variant { int y; };\n#endif\n");
    project.add("a.c", "#include \"h.h\"\ntypedef int number;\nint common;\nvoid f(struct shared *s) {}\n");
    project.add(
        "b.c", "#define X\n#include \"h.h\"\ntypedef int number;\nint common;\nstruct shared { number v; };\n"
               "void g(struct shared *s) { f(s); common = s->v; }\n");
    project.index();
    EXPECT_EQ(project.uses("g@b.c", UseKind::Call), "f@a.c");
    EXPECT_EQ(project.uses("g@b.c", UseKind::Write), "common@a.c");
    ASSERT_EQ(project.facts.variants().size(), 1U) << "headers under other macros are no other program";
    EXPECT_EQ(project.facts.variants()[0].name, "variant");
    EXPECT_TRUE(project.entities.contains("shared@b.c"));
}

} // namespace
} // namespace zelkor::producer::test
