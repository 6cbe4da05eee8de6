// Uses of many units as those of one project, and what follows from them.
#include "FactsSupport.hpp"
#include "UseIndex.hpp"

#include <gtest/gtest.h>

#include <map>

namespace zelkor::producer::test {
namespace {

using Names = std::vector<std::string>;

struct Project : WrittenProject {
    std::map<Id, std::string> names;
    std::map<std::string, Id> ids;

    void index() {
        for (MergedEntity const* const merged : facts.entities()) {
            names[merged->facts.id] = merged->facts.name;
            ids[merged->facts.name] = merged->facts.id;
            FunctionFacts const* const function = merged->facts.as<FunctionFacts>();
            for (std::size_t i = 0; function && i < function->parameters.size(); ++i)
                ids[function->parameters[i].name] = makeId(merged->facts.id, "parameter", i);
        }
    }
    Names namesOf(std::vector<Id> const& list) const {
        Names found;
        for (Id const& id : list)
            found.push_back(names.at(id));
        return found;
    }
};

TEST(InsightMerge, OneBodyOfWhatManyUnitsSee) {
    Project project;
    project.add(
        "h.h",
        "struct S { int v; };\nint later(struct S* s);\nint x, y;\n"
        "static inline int both(void) { return x; }\nint first(void), second(void);\n"
        "static inline int chosen(void) { return CHOICE() + x; }\n"
        "inline int variant(void) {\n#ifdef X\nint l = 0; return l + y;\n#else\nreturn x;\n#endif\n}\n");
    project.add("a.c",
                "#define CHOICE first\n#include \"h.h\"\nint useA(void) { return both() + variant(); }\n");
    project.add(
        "b.c",
        "#define X\n#define CHOICE second\n#include \"h.h\"\nint useB(void) { return both() + variant(); }\n"
        "int later(struct S* s) { return s->v + useB(); }\n");
    project.index();
    UseIndex const index(project.facts.uses(), project.facts.overrides());
    struct Row {
        char const* function;
        UseKind kind;
        Names expected;
    };
    for (Row const& row :
         {Row{"later", UseKind::Call, {"useB"}}, // declared in the unit before
          Row{"later", UseKind::Type, {"S"}}, Row{"both", UseKind::Read, {"x"}},
          Row{"variant", UseKind::Read, {"x"}}, // of the definition that won
          Row{"chosen", UseKind::Call, {"first", "second"}}, Row{"chosen", UseKind::Read, {"x"}},
          Row{"useB", UseKind::Call, {"both", "variant"}}})
        EXPECT_EQ(project.namesOf(index.of(project.ids[row.function]).of(row.kind)), row.expected)
            << row.function;
    std::map<Id, int> owners;
    for (UseFacts const& uses : project.facts.uses())
        EXPECT_EQ(++owners[uses.owner], 1) << project.names[uses.owner];
    EXPECT_TRUE(index.isUsed(UseKind::Read, project.ids["x"]));
    EXPECT_FALSE(index.isUsed(UseKind::Read, project.ids["y"])) << "only the definition that lost reads it";
    EXPECT_FALSE(index.isUsed(UseKind::Call, project.ids["later"]));
}

TEST(InsightMerge, InstancesOfWhatHasNoNameOutsideStayApart) {
    Project project;
    project.add("h.hpp", "template <class F> int apply(F f) { return f(); }\n"
                         "template <class T> struct Box { T held; int get() { return held.give(); } };\n");
    std::string const text =
        "#include \"h.hpp\"\nnamespace {\nstruct Giver { int give() { return G; } };\n"
        "int run() { Box<Giver> box; return apply([] { return 1; }) + apply([] { return 2; }) + "
        "box.get(); }\n}\nint F() { return run(); }\n";
    project.add("a.cpp", text, {"-DF=a", "-DG=3"});
    project.add("b.cpp", text, {"-DF=b", "-DG=4"});
    project.index();
    EXPECT_TRUE(project.facts.variants().empty());
    UseIndex const index(project.facts.uses(), project.facts.overrides());
    std::map<std::string, std::map<Id, int>> targets; // what the instances call, and how many of them
    for (MergedEntity const* const merged : project.facts.entities()) {
        std::string const& name = merged->facts.name;
        if (merged->facts.isPrototype || (name != "apply" && name != "get")) continue;
        for (Id const& called : index.of(merged->facts.id).of(UseKind::Call))
            ++targets[name][called];
    }
    EXPECT_EQ(targets["apply"].size(), 4U) << "two closures in each unit";
    EXPECT_EQ(targets["get"].size(), 2U);
    for (auto const& [name, called] : targets) {
        for (auto const& [id, count] : called)
            EXPECT_EQ(count, 1) << name;
    }
}

TEST(InsightMerge, MacrosAreUsedOncePerPlace) {
    Project project;
    project.add("h.h", "#define ONE 1\ninline int one() { return ONE; }\n");
    project.add("a.cpp", "#include \"h.h\"\nint a = ONE + ONE;\n");
    project.add("b.cpp", "#include \"h.h\"\n");
    std::vector<std::size_t> lines;
    for (MacroFact const& macro : project.facts.units()[0].macros) {
        if (macro.name != "ONE") continue;
        for (Position const& place : project.facts.macroUses(macro.id))
            lines.push_back(place.line);
    }
    EXPECT_EQ(lines, (std::vector<std::size_t>{2, 2, 2})); // of the header once, and two of the unit
}

TEST(InsightMerge, WhatIsReachedAlongCalls) {
    Project project;
    project.add(
        "a.cpp",
        "int x, y, z; void leaf() { x = y; } void even(int); void odd(int n) { if (n) even(n); leaf(); }\n"
        "void even(int m) { z = m; odd(m); } void apart() {}\n"
        "struct A { virtual void run(); }; struct B : A { void run() override { apart(); } };\n"
        "void start(A& a) { a.run(); even(1); }\n"
        "void (*pointer)() = leaf; void assign() { pointer = apart; pointer = leaf; }\n");
    project.index();
    UseIndex const index(project.facts.uses(), project.facts.overrides());
    EXPECT_EQ(project.namesOf(index.pointsTo(project.ids["pointer"])), (Names{"leaf", "apart"}));
    std::vector<Id> elements;
    std::vector<Id> functions;
    for (MergedEntity const* const merged : project.facts.entities()) {
        elements.push_back(merged->facts.id);
        if (merged->facts.as<FunctionFacts>()) functions.push_back(merged->facts.id);
    }
    std::vector<Reach> const reached = reachOf(functions, elements, index);
    ASSERT_EQ(reached.size(), functions.size());
    std::map<std::string, std::string> texts;
    for (std::size_t i = 0; i < functions.size(); ++i) {
        std::string& text = texts[project.names[functions[i]]];
        for (auto const& list : {reached[i].calls, reached[i].reads, reached[i].writes}) {
            for (std::string const& name : project.namesOf(list))
                text += name + ' ';
            text += '|';
        }
    }
    // In the order of the elements; both methods are called run.
    EXPECT_EQ(texts["leaf"], "|y |x |");
    EXPECT_EQ(texts["odd"], "leaf even odd |y |x z |");
    EXPECT_EQ(texts["even"], texts["odd"]) << "they call each other";
    EXPECT_EQ(texts["apart"], "|||");
    EXPECT_EQ(texts["start"], "leaf even odd apart run run |y |x z |");
    EXPECT_EQ(texts["assign"], "||pointer |");
}

} // namespace
} // namespace zelkor::producer::test
