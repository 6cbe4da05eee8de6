// Files, include graph, macros, comments and target of a unit.
#include "FactsSupport.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace zelkor::producer::test {
namespace {

FileFact const* findFile(UnitFacts const& facts, std::string_view end) {
    auto const found = std::find_if(facts.files.begin(), facts.files.end(),
                                    [&](FileFact const& file) { return file.path.ends_with(end); });
    return found == facts.files.end() ? nullptr : &*found;
}

MacroFact const* findMacro(UnitFacts const& facts, std::string_view name, bool isUndef = false) {
    auto const found = std::find_if(facts.macros.begin(), facts.macros.end(), [&](MacroFact const& macro) {
        return macro.name == name && macro.isUndef == isUndef;
    });
    return found == facts.macros.end() ? nullptr : &*found;
}

TEST(PreprocessorFacts, FilesAndTheirFlags) {
    UnitFacts const facts = parse("first.cpp", {"-include", "include/plain.h"});
    struct Row {
        char const* path;
        char const* writtenName;
        char const* flags;
    };
    for (Row const& row : {Row{"first.cpp", "", "project top"},
                           Row{"include/shapes.hpp", "include/shapes.hpp", "project include"},
                           Row{"include/plain.h", "include/plain.h", "project include preinclude"},
                           Row{"/c++/12/vector", "vector", "include syntax system"}}) {
        FileFact const* const file = findFile(facts, row.path);
        ASSERT_NE(file, nullptr) << row.path;
        EXPECT_EQ(file->writtenName, row.writtenName) << row.path;
        EXPECT_EQ(wordsOf({{file->inProject, "project"},
                           {file->isInclude, "include"},
                           {file->isSystemSyntax, "syntax"},
                           {file->isPreinclude, "preinclude"},
                           {file->isFromSystemDirectory, "system"},
                           {file->isTopLevel, "top"}}),
                  row.flags)
            << row.path;
    }
    EXPECT_EQ(facts.files.front().path, "first.cpp");
    FileFact const& main = facts.files.front();
    ASSERT_EQ(main.includes.size(), 2U);
    EXPECT_EQ(main.includes[0].file, findFile(facts, "include/shapes.hpp")->id);
    EXPECT_EQ(main.includes[0].writtenName, "include/shapes.hpp");
    EXPECT_EQ(main.includes[1].file, findFile(facts, "include/plain.h")->id);
}

TEST(PreprocessorFacts, Macros) {
    UnitFacts const facts = parse("first.cpp", {"-DGIVEN=7", "-D", "SPACED", "-UREMOVED"});
    struct Row {
        char const* name;
        char const* text;
        std::string flags;
        unsigned line; // 0: none
    };
    for (Row const& row :
         {Row{"SHAPE_LIMIT", "10", "used", 7}, Row{"SQUARE", "(x) ((x) * (x))", "used", 8},
          Row{"TWO_LINES", "1 + 2", "", 9}, Row{"PLAIN_H", "", "", 2}, Row{"SHAPE_LIMIT", "", "undef", 4},
          Row{"GIVEN", "7", "command", 0}, Row{"SPACED", "1", "command", 0},
          Row{"REMOVED", "", "undef command", 0},
          Row{"__cplusplus", "201703L", "predefined used", 0}, // by an #ifdef
          Row{"__STDC_HOSTED__", "1", "predefined", 0}, Row{"__LINE__", "", "predefined used", 0}}) {
        MacroFact const* const macro = findMacro(facts, row.name, row.flags.starts_with("undef"));
        ASSERT_NE(macro, nullptr) << row.name;
        EXPECT_EQ(macro->text, row.text) << row.name;
        EXPECT_EQ(wordsOf({{macro->isUndef, "undef"},
                           {macro->isCommandLine, "command"},
                           {macro->isPredefined, "predefined"},
                           {macro->isReferenced, "used"}}),
                  row.flags)
            << row.name;
        EXPECT_EQ(macro->position ? macro->position->line : 0, row.line) << row.name;
    }
    EXPECT_EQ(findMacro(facts, "_GLIBCXX_VECTOR"), nullptr)
        << "a macro of a system header that nothing expands";
    EXPECT_EQ(facts.language, Language::Cxx17);
    EXPECT_EQ(facts.target.charBits, 8U);
}

TEST(PreprocessorFacts, SystemMacrosThatAProjectFileExpands) {
    TemporaryDirectory const directory;
    directory.write("unit.c", "#include <limits.h>\nint most = INT_MAX;\n#if 0\n#undef INT_MAX\n#endif\n");
    UnitFacts const facts = parse("unit.c", {}, directory.path());
    MacroFact const* const macro = findMacro(facts, "INT_MAX");
    ASSERT_NE(macro, nullptr);
    EXPECT_TRUE(macro->isReferenced);
    EXPECT_EQ(findMacro(facts, "INT_MIN"), nullptr);
    EXPECT_EQ(findMacro(facts, "INT_MAX", true), nullptr) << "a skipped #undef undefines nothing";
}

TEST(PreprocessorFacts, CommentsOfProjectFiles) {
    UnitFacts const facts = parse("second.cpp");
    FileFact const* const file = findFile(facts, "second.cpp");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(file->comments.size(), 4U);
    EXPECT_EQ(file->comments[1].text, "// not the one of first.cpp");
    EXPECT_EQ(file->comments[1].range.start, (Position{file->id, 4, 28}));
    EXPECT_EQ(file->comments[1].range.end, (Position{file->id, 4, 54}));
    FileFact const* const header = findFile(facts, "shapes.hpp");
    ASSERT_NE(header, nullptr);
    EXPECT_TRUE(std::any_of(header->comments.begin(), header->comments.end(),
                            [](CommentFact const& comment) { return comment.text == "/* one */"; }));
    for (FileFact const& other : facts.files) {
        if (!other.inProject) {
            EXPECT_TRUE(other.comments.empty()) << other.path;
        }
    }
}

} // namespace
} // namespace zelkor::producer::test
