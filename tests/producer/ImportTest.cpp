// Whole imports into a model.
#include "FactsSupport.hpp"
#include "ImportCheck.hpp"
#include "ModelIndex.hpp"

#include <zelkor/ast/io.hpp>

#include <gtest/gtest.h>

#include <sstream>

namespace zelkor::producer::test {
namespace {

namespace za = zelkor::ast;

std::string commandFor(std::string const& file, std::string const& options = "") {
    return R"({"directory": ")" + fixtures().string() + R"(", "file": ")" + file + R"(", "command": ")" +
           (file.ends_with(".c") ? "/usr/bin/cc -std=c11 " : "/usr/bin/c++ -std=c++17 ") + options + " -c " +
           file + R"("})";
}

class Import : public ::testing::Test {
  protected:
    std::filesystem::path database(std::vector<std::string> const& commands) {
        std::string text = "[";
        for (std::string const& command : commands)
            text += (text.size() > 1 ? ",\n" : "") + command;
        directory_.write("compile_commands.json", text + "]");
        return directory_.path();
    }
    std::filesystem::path wholeProject() {
        return database({commandFor("first.cpp", "-DGIVEN=1"), commandFor("second.cpp"),
                         commandFor("modern.cpp", "-std=c++20"), commandFor("plain.c"),
                         commandFor("uses.cpp"), commandFor("uses.c", "-std=gnu11"),
                         commandFor("templates.cpp"), commandFor("configured.cpp")});
    }

    ImportOptions optionsOf(std::filesystem::path const& path) {
        ImportOptions options;
        options.database = path.string();
        return options;
    }

    TemporaryDirectory directory_;
};

za::Symbol findSymbol(za::Project const& project, std::string_view name) {
    if (!project) return {};
    ModelIndex const index(project);
    for (za::Symbol const& symbol : index.symbols()) {
        bool const isType = static_cast<bool>(za::types::Type::cast(symbol));
        if (symbol.getName() == name && !isType && !za::Template::cast(symbol)) return symbol;
    }
    return {};
}

TEST_F(Import, AgreesWithTheFrontEndAndWithItself) {
    CheckReport const report = checkImport(wholeProject(), fixtures().string(), ZELKOR_CLANG_RESOURCE_DIR);
    for (std::string const& fault : report.faults)
        ADD_FAILURE() << fault;
}

TEST_F(Import, EveryClassOfTheProducerIsReached) {
    std::istringstream classes(R"(
        Comment Function Macro Namespace Project Scope Template TemplateArg Variable
        codeinsight.CodeInsight codeinsight.FunInfo codeinsight.FunctionInfo codeinsight.MacroInfo
        codeinsight.PtrInfo codeinsight.TypeInfo codeinsight.VariableInfo
        constants.AddressConstant constants.AggregateConstant constants.DesignatorConstant
        constants.DynamicInitConstant constants.FloatConstant constants.InitRepeatConstant
        constants.IntegerConstant constants.PointerToMemberConstant constants.StringConstant
        constants.TemplateParamConstant
        source.CompilationUnit source.SourceFile source.SourcePosition source.SourceRange
        types.ArrayType types.BaseClass types.BooleanType types.ClassType types.EnumType
        types.FloatType types.FunctionType types.IntegerType types.LValueReferenceType
        types.Member types.Method types.OpaqueType types.PointerToMemberType types.PointerType
        types.QualifiedType types.RValueReferenceType types.StructType types.TemplateParamType
        types.TypeAttrType types.TypeOpType types.TypedefType types.UnionType types.VectorType
        types.VoidType)");
    Imported const imported = import(wholeProject(), 2);
    for (std::string name; classes >> name;) {
        auto const found = imported.result.created.find(name);
        EXPECT_TRUE(found != imported.result.created.end() && found->second > 0) << name;
    }
    std::size_t total = 0;
    for (auto const& [name, count] : imported.result.created)
        total += count;
    EXPECT_EQ(total, imported.ast.getModel().size());
}

TEST_F(Import, UnitsStandInTheOrderOfTheDatabase) {
    Imported const imported = import(
        database({commandFor("second.cpp"), commandFor("plain.c"), commandFor("second.cpp", "-DAGAIN")}), 3);
    auto const& units = imported.project().getCompilations();
    ASSERT_EQ(units.size(), 3U);
    std::vector<std::u16string> mains;
    for (za::source::CompilationUnit const unit : units) {
        ASSERT_FALSE(unit.getFiles().empty());
        EXPECT_TRUE(unit.getFiles()[0].getIsTopLevelFile());
        mains.push_back(unit.getFiles()[0].getPath());
    }
    EXPECT_EQ(mains, (std::vector<std::u16string>{u"second.cpp", u"plain.c", u"second.cpp"}));
    EXPECT_EQ(units[0].getLanguage(), za::source::LanguageKind::CXX17);
    EXPECT_EQ(units[1].getLanguage(), za::source::LanguageKind::C11);
    EXPECT_EQ(units[2].getSymbols().size(), 0U) << "all it holds stands in the first unit";
    EXPECT_EQ(imported.project().getLongNumBits(), sizeof(long) * 8);
    EXPECT_EQ(imported.project().getPointerNumBits(), sizeof(void*) * 8);
}

TEST_F(Import, OneBadUnitDoesNotStopTheRest) {
    Imported const imported = import(
        database({commandFor("broken.cpp"), commandFor("nowhere.cpp"),
                  commandFor("plain.c", "-fconserve-stack"), commandFor("second.cpp", "-fconserve-stack")}),
        2);
    ImportResult const& result = imported.result;
    ASSERT_EQ(result.units.size(), 4U);
    EXPECT_EQ(result.units[0].state, UnitState::Incomplete);
    EXPECT_NE(result.units[0].reason.find("no_such_header.hpp"), std::string::npos);
    EXPECT_EQ(result.units[1].state, UnitState::Failed);
    EXPECT_NE(result.units[1].reason.find("No such file"), std::string::npos);
    EXPECT_EQ(result.countUnits(UnitState::Complete), 2U);
    EXPECT_EQ(result.rejectedOptions, (std::map<std::string, std::size_t>{{"-fconserve-stack", 2}}));
    EXPECT_FALSE(imported.ast.getModel().verify().has_value());
    EXPECT_TRUE(findSymbol(imported.project(), "stillThere"));
    EXPECT_TRUE(findSymbol(imported.project(), "origin"));
}

TEST_F(Import, InsightIsAsMuchAsIsAskedFor) {
    std::filesystem::path const path = database({commandFor("uses.cpp"), commandFor("uses.c", "-std=gnu11")});
    for (Insight const level : {Insight::None, Insight::Direct, Insight::Transitive}) {
        za::Ast ast;
        ImportOptions options = optionsOf(path);
        options.jobs = 1;
        options.insight = level;
        ImportResult result = importProject(ast, options);
        bool const isWanted = level != Insight::None;
        auto& created = result.created;
        // One record for each; parameters of stubs have none.
        EXPECT_EQ(created["codeinsight.CodeInsight"], isWanted ? 2U : 0U);
        EXPECT_EQ(created["codeinsight.FunctionInfo"],
                  isWanted ? created["Function"] + created["types.Method"] : 0U);
        EXPECT_EQ(created["codeinsight.MacroInfo"], isWanted ? created["Macro"] : 0U);
        EXPECT_EQ(created["codeinsight.VariableInfo"] > created["types.Member"], isWanted);
        std::size_t direct = 0;
        std::size_t reached = 0;
        za::Project const project = za::Project::cast(ast.getModel().getTopLevelElements().front());
        for (za::source::CompilationUnit const unit : project.getCompilations()) {
            for (za::Annotation const annotation : unit.getAnnotations()) {
                auto const insight = za::codeinsight::CodeInsight::cast(annotation);
                if (!insight) continue;
                for (auto const record : insight.getFunctions()) {
                    direct += record.getCalledFuns().size();
                    reached += record.getTransitiveCalledFuns().size();
                }
            }
        }
        EXPECT_EQ(direct > 0, isWanted);
        EXPECT_EQ(reached > direct, level == Insight::Transitive);
        EXPECT_FALSE(ast.getModel().verify().has_value());
    }
}

TEST_F(Import, CancellingLeavesTheModelAsItWas) {
    std::filesystem::path const path = wholeProject();
    for (std::size_t after : {0U, 1U, 2U}) {
        za::Ast ast;
        std::atomic<bool> cancelled = after == 0;
        ImportOptions options = optionsOf(path);
        options.jobs = 2;
        options.cancelled = &cancelled;
        options.progress = [&](ImportProgress const& progress) { cancelled = progress.unitsDone >= after; };
        ImportResult const result = importProject(ast, options);
        EXPECT_TRUE(result.isCancelled);
        EXPECT_EQ(result.units.size(), after);
        EXPECT_EQ(ast.getModel().size(), 0U);
    }
}

TEST_F(Import, WhatProgressThrowsArrivesAndLeavesNothing) {
    za::Ast ast;
    ImportOptions options = optionsOf(wholeProject());
    options.progress = [](ImportProgress const& progress) {
        if (progress.unitsDone == 2) throw std::runtime_error("enough");
    };
    EXPECT_THROW(importProject(ast, options), std::runtime_error);
    EXPECT_EQ(ast.getModel().size(), 0U);
}

TEST_F(Import, ProgressCountsEachUnitOnceInOrder) {
    za::Ast ast;
    ImportOptions options = optionsOf(wholeProject());
    std::vector<std::string> files;
    options.progress = [&](ImportProgress const& progress) {
        files.push_back(progress.file);
        EXPECT_EQ(progress.unitsDone, files.size());
        EXPECT_EQ(progress.unitsTotal, 8U);
    };
    importProject(ast, options);
    EXPECT_EQ(files, (std::vector<std::string>{"first.cpp", "second.cpp", "modern.cpp", "plain.c", "uses.cpp",
                                               "uses.c", "templates.cpp", "configured.cpp"}));
}

TEST_F(Import, AModelThatHoldsSomethingIsRefused) {
    za::Ast ast;
    za::Project::create(ast.getModel());
    ImportOptions options = optionsOf(wholeProject());
    EXPECT_THROW(importProject(ast, options), ImportError);
    EXPECT_EQ(ast.getModel().size(), 1U);
}

TEST_F(Import, BytesThatAreNoTextSurvive) {
    directory_.write("bytes.c", "/* caf\xe9 \xe2\x82\xac */ char const* text = \"\xff\";\n");
    directory_.write("compile_commands.json", R"([{"directory": ")" + directory_.path().string() +
                                                  R"(", "file": "bytes.c", "command": "cc -c bytes.c"}])");
    Imported const imported = import(directory_.path(), 1);
    auto const file = imported.project().getFiles()[u"bytes.c"];
    ASSERT_TRUE(file);
    ASSERT_EQ(file.getComments().size(), 1U);
    EXPECT_EQ(file.getComments()[0].getText(), std::u16string(u"/* caf") + char16_t(0xDCE9) + u" \u20ac */");
    za::Ast again = za::io::deserializeFromUTF8String(imported.json(), za::io::IoFormat::json);
    EXPECT_EQ(za::io::serializeToUTF8String(again, za::io::IoFormat::json), imported.json());
}

} // namespace
} // namespace zelkor::producer::test
