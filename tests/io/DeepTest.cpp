#include "io/TextSupport.hpp"

#include <brant/zero/io/Parser.hpp>
#include <gtest/gtest.h>

namespace {

using namespace zelkor::test;

constexpr int depth = 1'000'000;

class Deep : public testing::TestWithParam<IoFormat> {};
INSTANTIATE_TEST_SUITE_P(Forms, Deep, testing::Values(IoFormat::json, IoFormat::xml),
                         [](auto const& info) { return info.param == IoFormat::json ? "Json" : "Xml"; });

TEST_P(Deep, AMillionNestedScopesAreWrittenAndRead) {
    za::Ast ast;
    auto transaction = ast.getModel().beginTransaction();
    za::Scope outer = za::Scope::create(ast.getModel());
    for (int i = 1; i < depth; ++i) {
        za::Scope const inner = za::Scope::create(ast.getModel());
        outer.getNamespacesMutable().add(inner);
        outer = inner;
    }
    transaction.commit();
    std::string const text = save(ast, GetParam());
    za::Ast const again = load(text, GetParam());
    EXPECT_EQ(again.getModel().size(), static_cast<std::size_t>(depth));
    EXPECT_TRUE(save(again, GetParam()) == text);
}

TEST_P(Deep, BeyondTheLimitIsAnErrorAndNoCrash) {
    auto const nested = [&](int levels) {
        std::string text;
        for (int i = 0; i < levels; ++i)
            text += GetParam() == IoFormat::json ? "[" : "<a>";
        return GetParam() == IoFormat::json
                   ? jsonDocument(jsonElement("Function", 1, ",\"New\":" + text), "1.1")
                   : xmlDocument(xmlElement("Function", 1, "><New>" + text), "1.1");
    };
    EXPECT_NE(refusal(nested(10'000'001), GetParam()).find("nested deeper than 10000000 levels"),
              std::string::npos);
    auto const parse = [&](auto&& parser) {
        EXPECT_GE(parser.depthLimit(), 4'000'000u);
        parser.setDepthLimit(10);
        try {
            parser.parseString(nested(10));
            ADD_FAILURE() << "the text was read";
        } catch (ParseError const& error) {
            EXPECT_NE(error.getMessage().find("nested deeper than 10 levels"), std::string::npos)
                << error.what();
        }
    };
    za::MetaPackageZelkor_ast::getInstance();
    if (GetParam() == IoFormat::json)
        parse(brant::zero::io::JSONParser());
    else
        parse(brant::zero::io::XmlParser());
}

} // namespace
