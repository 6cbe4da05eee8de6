// The merge rule over units.
#include "Merge.hpp"
#include "FactsSupport.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace zelkor::producer::test {
namespace {

MergedEntity const* findMerged(ProjectFacts& facts, EntityKind kind, std::string_view name) {
    for (MergedEntity const* const merged : facts.entities()) {
        if (merged->facts.kind == kind && merged->facts.name == name) return merged;
    }
    return nullptr;
}

std::size_t countMerged(ProjectFacts& facts, EntityKind kind, std::string_view name) {
    std::vector<MergedEntity*> const all = facts.entities();
    return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [&](MergedEntity const* merged) {
        return merged->facts.kind == kind && merged->facts.name == name;
    }));
}

TEST(Merge, OneElementForWhatManyUnitsSee) {
    ProjectFacts facts;
    facts.add(parse("first.cpp"));
    facts.add(parse("second.cpp"));
    facts.add(parse("plain.c"));
    struct Row {
        EntityKind kind;
        char const* name;
        std::size_t count;
    };
    for (Row const& row :
         {Row{EntityKind::Class, "Shape", 1}, Row{EntityKind::Namespace, "shapes", 1},
          Row{EntityKind::Function, "later", 1}, Row{EntityKind::Variable, "copy", 1},
          Row{EntityKind::Enum, "Colour", 1}, Row{EntityKind::Enum, "", 1},
          Row{EntityKind::Method, "area", 2}, Row{EntityKind::Struct, "point", 1},
          Row{EntityKind::Typedef, "Callback", 1}, Row{EntityKind::Function, "register_plain", 1},
          // internal to their files
          Row{EntityKind::Variable, "counter", 2}, Row{EntityKind::Variable, "hidden", 2}}) {
        EXPECT_EQ(countMerged(facts, row.kind, row.name), row.count) << row.name;
    }
    EXPECT_TRUE(facts.variants().empty())
        << facts.variants().front().name << ": " << facts.variants().front().reason;
    std::map<Id, int> seen;
    for (MergedEntity const* const merged : facts.entities())
        EXPECT_EQ(++seen[merged->facts.id], 1);
}

TEST(Merge, TheDefinitionDecidesWhereAnEntityStands) {
    ProjectFacts facts;
    facts.add(parse("first.cpp"));
    facts.add(parse("second.cpp"));
    struct Row {
        EntityKind kind;
        char const* name;
        std::size_t unit;
        bool isDefined;
    };
    for (Row const& row :
         {Row{EntityKind::Method, "~Shape", 1, true}, Row{EntityKind::Function, "versioned", 1, true},
          Row{EntityKind::Method, "isLarge", 0, true}, Row{EntityKind::Function, "makeForward", 0, false}}) {
        MergedEntity const* const merged = findMerged(facts, row.kind, row.name);
        ASSERT_NE(merged, nullptr) << row.name;
        EXPECT_EQ(merged->unit, row.unit) << row.name;
        EXPECT_EQ(merged->facts.isDefined, row.isDefined) << row.name;
        EXPECT_EQ(merged->facts.declarations.size(), row.unit == 1 || !row.isDefined ? 1U : 0U) << row.name;
    }
}

TEST(Merge, HeadersUnderDifferentMacrosAreVariants) {
    WrittenProject project;
    project.add("h.h",
                "struct S {\n#ifdef X\nint x;\n#endif\nint y;\n};\ninline int f() {\n#ifdef X\nint l = 1;\n"
                "#endif\nreturn 0; }\nenum E { A,\n#ifdef X\nB,\n#endif\n};\n");
    project.add("a.cpp", "#include \"h.h\"\n");
    project.add("b.cpp", "#define X\n#include \"h.h\"\n");
    project.facts.add(parse("b.cpp", {}, project.directory.path()));
    ProjectFacts& facts = project.facts;
    EXPECT_EQ(facts.variants().size(), 3U) << "each once, however many units see it";
    std::map<std::string, std::string> reasons;
    for (Variant const& variant : facts.variants())
        reasons[variant.name] = variant.reason;
    EXPECT_EQ(reasons, (std::map<std::string, std::string>{
                           {"S", "other members"}, {"f", "another body"}, {"E", "other enumerators"}}));
    EXPECT_EQ(facts.file(facts.variants()[0].kept.file)->path, "h.h");
    EXPECT_EQ(facts.variants()[0].dropped, facts.variants()[0].kept);
    EXPECT_EQ(countMerged(facts, EntityKind::Member, "x") + countMerged(facts, EntityKind::Variable, "l"),
              0U);
}

TEST(Merge, SpecialisationsThatDifferInConstraintsStayApart) {
    WrittenProject project;
    project.add(
        "a.cpp",
        "template <class T> concept A = sizeof(T) == 1;\ntemplate <class T> concept B = sizeof(T) == 2;\n"
        "template <class T> struct S {};\ntemplate <A T> struct S<T> { int a; };\n"
        "template <B T> struct S<T> { int b; };\n",
        {"-std=c++20"});
    ProjectFacts& facts = project.facts;
    EXPECT_EQ(countMerged(facts, EntityKind::Template, "S"), 3U);
    EXPECT_EQ(countMerged(facts, EntityKind::Struct, "S"), 3U);
    EXPECT_EQ(countMerged(facts, EntityKind::Member, "a"), 1U);
    EXPECT_EQ(countMerged(facts, EntityKind::Member, "b"), 1U);
}

TEST(Merge, RepeatedTypedefsAreNoVariants) {
    WrittenProject project;
    project.add("a.c", "typedef struct node node;\nnode *first;\n");
    project.add("b.c", "struct node { int v; };\ntypedef struct node node;\nnode second;\n");
    ProjectFacts& facts = project.facts;
    EXPECT_TRUE(facts.variants().empty());
    MergedEntity const* const node = findMerged(facts, EntityKind::Struct, "node");
    ASSERT_NE(node, nullptr);
    EXPECT_TRUE(node->facts.isDefined);
    EXPECT_EQ(node->unit, 1U);
}

TEST(Merge, TentativeDefinitionsGiveWay) {
    WrittenProject project;
    project.add("h.h", "int shared;\n");
    project.add("a.c", "#include \"h.h\"\nint once;\nint once = 1;\nint twice;\nint twice;\n");
    project.add("b.c", "#include \"h.h\"\nint user(void) { return shared; }\nint twice = 2;\n");
    ProjectFacts& facts = project.facts;
    EXPECT_TRUE(facts.variants().empty());
    struct Row {
        char const* name;
        std::size_t unit;
        unsigned line;
        std::size_t declarations;
    };
    for (Row const& row : {Row{"once", 0, 3, 1}, Row{"twice", 1, 3, 2}, Row{"shared", 0, 1, 0}}) {
        MergedEntity const* const merged = findMerged(facts, EntityKind::Variable, row.name);
        ASSERT_NE(merged, nullptr) << row.name;
        EXPECT_EQ(merged->unit, row.unit) << row.name;
        ASSERT_TRUE(merged->facts.definition) << row.name;
        EXPECT_EQ(merged->facts.definition->line, row.line) << row.name;
        EXPECT_EQ(merged->facts.declarations.size(), row.declarations) << row.name;
    }
}

TEST(Merge, TheFirstReadableUnitGivesTheTarget) {
    TemporaryDirectory const directory;
    directory.write("a.c", "int a;\n");
    ProjectFacts facts;
    facts.add(parse("nowhere.c", {}, directory.path()));
    facts.add(parse("a.c", {"-m32"}, directory.path()));
    EXPECT_EQ(facts.target().pointerBits, 32U);
    EXPECT_FALSE(facts.hasMixedTargets());
    facts.add(parse("a.c", {"-m64"}, directory.path()));
    EXPECT_EQ(facts.target().pointerBits, 32U);
    EXPECT_TRUE(facts.hasMixedTargets());
}

TEST(Merge, FilesUniteTheirFlagsAndIncludes) {
    WrittenProject project;
    project.add("one.h", "");
    project.add("two.h", "");
    project.add("both.h", "#ifdef X\n#include \"one.h\"\n#else\n#include <two.h>\n#endif\n");
    project.add("a.c", "#include \"both.h\"\n", {"-I."});
    project.add("b.c", "#define X\n#include <both.h>\n", {"-I."});
    ProjectFacts& facts = project.facts;
    FileFact const* both = nullptr;
    for (FileFact const& file : facts.files()) {
        if (file.path == "both.h") both = &file;
    }
    ASSERT_NE(both, nullptr);
    EXPECT_TRUE(both->isSystemSyntax);
    EXPECT_EQ(both->includes.size(), 2U);
    EXPECT_EQ(facts.files().size(), 5U);
}

TEST(Merge, MacrosAreOnePerDefinition) {
    ProjectFacts facts;
    facts.add(parse("first.cpp", {"-DMODE=1"}));
    facts.add(parse("second.cpp", {"-DMODE=2"}));
    std::map<std::string, int> count;
    for (MergedUnit const& unit : facts.units()) {
        for (MacroFact const& macro : unit.macros)
            ++count[macro.name + '=' + macro.text];
    }
    EXPECT_EQ(count["SQUARE=(x) ((x) * (x))"], 1);
    EXPECT_EQ(count["__cplusplus=201703L"], 1);
    EXPECT_EQ(count["MODE=1"], 1);
    EXPECT_EQ(count["MODE=2"], 1);
}

} // namespace
} // namespace zelkor::producer::test
