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
        bool inProject, isInclude, isSystemSyntax, isPreinclude, isSystem, isTopLevel;
    };
    for (Row const& row :
         {Row{"first.cpp", "", true, false, false, false, false, true},
          Row{"include/shapes.hpp", "include/shapes.hpp", true, true, false, false, false, false},
          Row{"include/plain.h", "include/plain.h", true, true, false, true, false, false},
          Row{"/c++/12/vector", "vector", false, true, true, false, true, false}}) {
        FileFact const* const file = findFile(facts, row.path);
        ASSERT_NE(file, nullptr) << row.path;
        EXPECT_EQ(file->writtenName, row.writtenName) << row.path;
        EXPECT_EQ(file->inProject, row.inProject) << row.path;
        EXPECT_EQ(file->isInclude, row.isInclude) << row.path;
        EXPECT_EQ(file->isSystemSyntax, row.isSystemSyntax) << row.path;
        EXPECT_EQ(file->isPreinclude, row.isPreinclude) << row.path;
        EXPECT_EQ(file->isFromSystemDirectory, row.isSystem) << row.path;
        EXPECT_EQ(file->isTopLevel, row.isTopLevel) << row.path;
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
        bool isUndef, isCommandLine, isPredefined, isReferenced;
        unsigned line; // 0: none
    };
    for (Row const& row :
         {Row{"SHAPE_LIMIT", "10", false, false, false, true, 7},
          Row{"SQUARE", "(x) ((x) * (x))", false, false, false, true, 8},
          Row{"TWO_LINES", "1 + 2", false, false, false, false, 9},
          Row{"PLAIN_H", "", false, false, false, false, 2},
          Row{"SHAPE_LIMIT", "", true, false, false, false, 4},
          Row{"GIVEN", "7", false, true, false, false, 0}, Row{"SPACED", "1", false, true, false, false, 0},
          Row{"REMOVED", "", true, true, false, false, 0},
          Row{"__cplusplus", "201703L", false, false, true, true, 0}, // by an #ifdef
          Row{"__STDC_HOSTED__", "1", false, false, true, false, 0},
          Row{"__LINE__", "", false, false, true, true, 0}}) {
        MacroFact const* const macro = findMacro(facts, row.name, row.isUndef);
        ASSERT_NE(macro, nullptr) << row.name;
        EXPECT_EQ(macro->text, row.text) << row.name;
        EXPECT_EQ(macro->isCommandLine, row.isCommandLine) << row.name;
        EXPECT_EQ(macro->isPredefined, row.isPredefined) << row.name;
        EXPECT_EQ(macro->isReferenced, row.isReferenced) << row.name;
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
