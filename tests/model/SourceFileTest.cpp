// The path of a file, which is also the key under which a project holds it.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

using namespace testmodel;
namespace za = zelkor::ast;
using za::source::SourceFile;

namespace {

SourceFile fileAt(Model const& model, char16_t const* path) {
    SourceFile const file = SourceFile::create(model);
    file.setPath(path);
    return file;
}

using Keys = std::vector<std::u16string>;

} // namespace

TEST(SourceFile, MovesItsEntryAlongWithItsPath) {
    Model const model = newModel();
    za::Project const project = za::Project::create(model);
    SourceFile const file = fileAt(model, u"/b");
    SourceFile const other = fileAt(model, u"/c");
    project.getFilesMutable().insert(file);
    project.getFilesMutable().insert(other);
    auto const changes = reported(file, [&] { file.setPath(u"/d"); });
    EXPECT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes.at("Path").getValue<std::u16string>(), u"/b");
    EXPECT_EQ(project.getFiles().keys(), (Keys{u"/c", u"/d"}));
    EXPECT_EQ(project.getFiles()[u"/d"], file);
    EXPECT_EQ(project.getFiles()[u"/b"], nullptr);
    EXPECT_EQ(file.container(), project);
    EXPECT_EQ(failureOf([&] { file.setPath(u"/c"); }), "UniquenessConstraint");
    EXPECT_EQ(file.getPath(), u"/d");
    EXPECT_EQ(project.getFiles().keys(), (Keys{u"/c", u"/d"}));
    other.setPath(u"/b"); // is free again
    EXPECT_EQ(violationOf(model), "");
}

TEST(SourceFile, TakesAnyPathOutsideOfAProject) {
    Model const model = newModel();
    za::Project const project = za::Project::create(model);
    auto const insight = za::codeinsight::CodeInsight::create(model);
    auto const unit = za::source::CompilationUnit::create(model);
    project.getFilesMutable().insert(fileAt(model, u"/a"));
    SourceFile const free = fileAt(model, u"/a");
    SourceFile const own = fileAt(model, u"/b");
    insight.getFilesMutable().add(own);
    insight.getFilesMutable().add(fileAt(model, u"/c"));
    own.setPath(u"/c");
    own.setPath(u"/a");
    unit.getFilesMutable().add(free);
    unit.getFilesMutable().add(fileAt(model, u"/a"));
    EXPECT_EQ(own.container(), insight);
    EXPECT_EQ(free.container(), nullptr); // a unit only names its files
    EXPECT_EQ(project.getFiles().keys(), Keys{u"/a"});
    EXPECT_EQ(violationOf(model), "");
}

TEST(SourceFile, IsFoundUnderItsPathAlsoWhenSetByReflectionOrRestored) {
    Model const model = newModel();
    za::Project const project = za::Project::create(model);
    SourceFile const file = fileAt(model, u"/a");
    meta::Property const path = SourceFile::path().getProperty();
    project.getFilesMutable().insert(file);
    {
        Transaction const level = model.beginTransaction();
        file.setPropertyValue(path, Value::createPrimitiveValue(path, std::u16string(u"/b")));
        EXPECT_EQ(project.getFiles().keys(), Keys{u"/b"});
        file.setPath(u"/c");
    }
    EXPECT_EQ(project.getFiles().keys(), Keys{u"/a"});
    EXPECT_EQ(violationOf(model), "");
}
