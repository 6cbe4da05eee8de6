// The object that holds a whole model.

#include "zelkor/ast.hpp"
#include "zelkor/ast/io.hpp"

#include "model/ModelSupport.hpp"

#include <gtest/gtest.h>

using namespace testmodel;
namespace za = zelkor::ast;
using za::io::IoFormat;

TEST(Ast, AdoptsAModelAndMakesOneForNone) {
    Model const model = newModel();
    za::Project::create(model);
    za::Ast const adopted(model);
    EXPECT_EQ(adopted.getModel(), model);
    EXPECT_FALSE(adopted.getProject()); // a project is looked for in texts only
    za::Ast const fresh{Model()};
    ASSERT_TRUE(fresh.getModel());
    EXPECT_EQ(fresh.getModel().size(), 0u);
    EXPECT_NE(fresh.getModel(), za::Ast().getModel());
}

TEST(Ast, IsEqualByTheVeryModelAndProject) {
    za::Ast const a;
    EXPECT_TRUE(a == za::Ast(a));
    EXPECT_TRUE(a == za::Ast(a.getModel()));
    EXPECT_FALSE(a == za::Ast());
    za::Ast source(newModel());
    za::Project::create(source.getModel());
    za::Ast const read = za::io::deserializeFromUTF8String(
        za::io::serializeToUTF8String(source, IoFormat::json), IoFormat::json);
    ASSERT_TRUE(read.getProject());
    EXPECT_TRUE(read == za::Ast(read));
    EXPECT_FALSE(read == za::Ast(read.getModel())); // the same model, another project
    EXPECT_FALSE(read == source);
}

TEST(Ast, IsWrittenWholeWithoutATransaction) {
    za::Ast source(newModel());
    za::Function::create(source.getModel());
    za::Project::create(source.getModel());
    for (IoFormat const format : {IoFormat::json, IoFormat::xml}) {
        std::string const text = za::io::serializeToUTF8String(source, format);
        za::Ast read = za::io::deserializeFromUTF8String(text, format);
        ASSERT_TRUE(read.getProject());
        Model::Freezer const freezer(read.getModel()); // refuses every transaction
        EXPECT_EQ(za::io::serializeToUTF8String(read, format), text);
        za::Ast withoutProject(read.getModel());
        EXPECT_EQ(za::io::serializeToUTF8String(withoutProject, format), text);
    }
}

TEST(Ast, LivesWithItsModel) {
    za::Function function;
    {
        za::Ast ast;
        function = za::Function::create(ast.getModel());
        za::Ast const copy = ast;
        ast = za::Ast();
        EXPECT_TRUE(function);
    }
    EXPECT_FALSE(function);
}
