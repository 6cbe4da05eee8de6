#include "io/SampleModel.hpp"
#include "io/TextSupport.hpp"

#include <brant/zero/io/Parser.hpp>
#include <brant/zero/io/Serializer.hpp>
#include <gtest/gtest.h>

namespace {

using namespace zelkor::test;

class RoundTrip : public testing::TestWithParam<IoFormat> {};
INSTANTIATE_TEST_SUITE_P(Forms, RoundTrip, testing::Values(IoFormat::json, IoFormat::xml),
                         [](auto const& info) { return info.param == IoFormat::json ? "Json" : "Xml"; });

TEST_P(RoundTrip, EveryPropertyOfEveryClassSurvives) {
    za::Ast const original = makeSampleModel();
    std::string const text = save(original, GetParam());
    za::Ast const again = load(text, GetParam());
    EXPECT_EQ(difference(original, again), "");
    EXPECT_EQ(save(again, GetParam()), text);
    EXPECT_EQ(again.getModel().size(), original.getModel().size());
    EXPECT_FALSE(again.getModel().verify().has_value());
    EXPECT_TRUE(text.ends_with('\n') && !text.ends_with("\n\n"));
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(load(save(za::Ast(), GetParam()), GetParam()).getModel().size(), 0u);
}

TEST_P(RoundTrip, Utf16HoldsTheSameText) {
    za::Ast original = makeSampleModel();
    std::u16string const wide = za::io::serializeToUTF16String(original, GetParam());
    std::string narrow = save(original, GetParam());
    if (std::size_t const at = narrow.find("UTF-8"); GetParam() == IoFormat::xml)
        narrow.replace(at, 5, "UTF-16");
    EXPECT_EQ(brant::zero::toUtf8(wide), narrow);
    EXPECT_EQ(difference(original, za::io::deserializeFromUTF16String(wide, GetParam())), "");
    EXPECT_EQ(difference(original, za::io::deserializeFromUTF16String(u"\uFEFF" + wide, GetParam())), "");
}

TEST_P(RoundTrip, ByteOrderMarksAreAccepted) {
    za::Ast original = makeSampleModel();
    EXPECT_EQ(difference(original, load("\xEF\xBB\xBF" + save(original, GetParam()), GetParam())), "");
    std::u16string const wide = za::io::serializeToUTF16String(original, GetParam());
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (char16_t const unit : wide) {
        little += {static_cast<char>(unit & 0xff), static_cast<char>(unit >> 8)};
        big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xff)};
    }
    EXPECT_EQ(difference(original, load(little, GetParam())), "");
    EXPECT_EQ(difference(original, load(big, GetParam())), "");
    EXPECT_NE(refusal(little + "x", GetParam()), "the text was read"); // half a unit
}

TEST_P(RoundTrip, DefaultsAreLeftOutOnlyWhenAsked) {
    za::Ast ast;
    za::Function::create(ast.getModel());
    EXPECT_EQ(save(ast, GetParam()).find("IsInline"), std::string::npos);
    std::string whole;
    auto const write = [&](auto&& serializer) {
        serializer.serialize(ast.getModel(), brant::zero::io::SerializationOutput::forUTF8String(whole));
    };
    if (GetParam() == IoFormat::json)
        write(brant::zero::io::JSONSerializer());
    else
        write(brant::zero::io::XmlSerializer());
    EXPECT_NE(whole.find("IsInline"), std::string::npos);
    EXPECT_NE(whole.find("Name"), std::string::npos);
    EXPECT_EQ(difference(ast, load(whole, GetParam())), "");
}

TEST_P(RoundTrip, OrderAndRepetitionSurvive) {
    za::Ast ast;
    auto const model = ast.getModel();
    auto const scope = za::Scope::create(model);
    auto const first = za::Function::create(model);
    auto const second = za::Variable::create(model);
    auto const third = za::Function::create(model);
    auto const elsewhere = za::Scope::create(model);
    for (za::Symbol const& symbol :
         {za::Symbol(second), za::Symbol(first), za::Symbol(second), za::Symbol(third)})
        scope.getSymbolsMutable().add(symbol);
    elsewhere.getSymbolsMutable().add(third); // leaves nothing behind but its place
    za::Ast const again = load(save(ast, GetParam()), GetParam());
    EXPECT_EQ(difference(ast, again), "");
    auto const read = za::Scope::cast(again.getModel().findElement(scope.uuid()));
    ASSERT_EQ(read.getSymbols().size(), scope.getSymbols().size());
    for (std::size_t i = 0; i < scope.getSymbols().size(); ++i)
        EXPECT_EQ(read.getSymbols()[i].uuid(), scope.getSymbols()[i].uuid());
    EXPECT_EQ(again.getModel().getTopLevelElements().size(), 2u);
    EXPECT_FALSE(again.getModel().verify().has_value());
}

TEST_P(RoundTrip, DeadEntriesAreNotWritten) {
    za::Ast ast;
    auto const model = ast.getModel();
    auto const function = za::Function::create(model);
    auto const gone = za::types::StructType::create(model);
    auto const type = za::types::StructType::create(model);
    function.setType(gone);
    function.getBefriendingAggregatesMutable().add(gone);
    function.getBefriendingAggregatesMutable().add(type);
    gone.destroy();
    za::Ast const again = load(save(ast, GetParam()), GetParam());
    auto const read = za::Function::cast(again.getModel().findElement(function.uuid()));
    EXPECT_FALSE(read.getType());
    ASSERT_EQ(read.getBefriendingAggregates().size(), 1u);
    EXPECT_EQ(read.getBefriendingAggregates()[0].uuid(), type.uuid());
}

TEST_P(RoundTrip, PlaceholdersStayPlaceholders) {
    za::Ast ast;
    auto const model = ast.getModel();
    auto const function = za::Function::create(model);
    auto const scope = za::Scope::create(model);
    auto const project = za::Project::create(model);
    auto const type = za::types::StructType::create(model);
    auto const placeholder = [&](brant::zero::meta::Class const& cls, std::u16string element,
                                 std::u16string external) {
        brant::zero::ProxyId id{u"uri <&>", std::move(element), nullptr};
        if (!external.empty()) id.external = std::make_shared<std::u16string>(std::move(external));
        return model.createProxy(cls, id);
    };
    using za::types::StructType;
    function.setType(StructType::cast(placeholder(StructType::metaClass(), u"one", u"")));
    function.getBefriendingAggregatesMutable().add(type);
    function.getBefriendingAggregatesMutable().add(
        StructType::cast(placeholder(StructType::metaClass(), u"two", u"\xD800 out")));
    function.getBefriendingAggregatesMutable().add(type);
    scope.getSymbolsMutable().add(za::Function::cast(placeholder(za::Function::metaClass(), u"three", u"")));
    for (char16_t const* name : {u"y", u"x", u"z"})
        project.getFilesMutable().insert(
            za::source::SourceFile::cast(placeholder(za::source::SourceFile::metaClass(), name, u"")));
    std::string const text = save(ast, GetParam());
    za::Ast const again = load(text, GetParam());
    EXPECT_EQ(save(again, GetParam()), text);
    EXPECT_EQ(save(load(save(again, other(GetParam())), other(GetParam())), GetParam()), text);
    auto const read = za::Function::cast(again.getModel().findElement(function.uuid()));
    ASSERT_TRUE(read.getType().isProxy());
    EXPECT_EQ(read.getType()->getProxyId(), function.getType()->getProxyId());
    ASSERT_EQ(read.getBefriendingAggregates().size(), 3u);
    EXPECT_FALSE(read.getBefriendingAggregates()[0].isProxy());
    EXPECT_EQ(read.getBefriendingAggregates()[1]->getProxyId(),
              function.getBefriendingAggregates()[1]->getProxyId());
}

TEST_P(RoundTrip, TheOpenTransactionIsWrittenAsItStands) {
    za::Ast ast;
    auto transaction = ast.getModel().beginTransaction();
    auto const function = za::Function::create(ast.getModel());
    function.setName("open");
    EXPECT_NE(save(ast, GetParam()).find("open"), std::string::npos);
    transaction.rollback();
    EXPECT_EQ(save(ast, GetParam()).find("open"), std::string::npos);
}

TEST_P(RoundTrip, OnlyTheFirstProjectAtTheTopIsAdopted) {
    za::Ast ast;
    auto const model = ast.getModel();
    za::Scope::create(model);
    auto const first = za::Project::create(model);
    za::Project::create(model);
    za::Ast const again = load(save(ast, GetParam()), GetParam());
    ASSERT_TRUE(again.getProject());
    EXPECT_EQ(again.getProject().uuid(), first.uuid());
    EXPECT_EQ(again.getModel().size(), 3u);
    EXPECT_FALSE(za::Ast(again.getModel()).getProject());
}

TEST(IoFormat, AnyNumberButZeroIsXml) {
    za::Ast const ast = makeSampleModel();
    EXPECT_EQ(save(ast, static_cast<IoFormat>(7)), save(ast, IoFormat::xml));
    EXPECT_EQ(difference(ast, load(save(ast, IoFormat::xml), static_cast<IoFormat>(4294967295u))), "");
}

TEST(Enumeration, ANumberWithoutLiteralIsWrittenEmptyAndNotReadBack) {
    za::Ast ast;
    za::Function::create(ast.getModel()).setSpecialKind(static_cast<za::SpecialFunctionKind>(99));
    std::string const json = save(ast, IoFormat::json);
    EXPECT_NE(json.find("\"SpecialKind\":\"\""), std::string::npos);
    EXPECT_NE(refusal(json, IoFormat::json).find("is no literal"), std::string::npos);
    std::string const xml = save(ast, IoFormat::xml);
    EXPECT_NE(xml.find("SpecialKind=\"\""), std::string::npos);
    EXPECT_NE(refusal(xml, IoFormat::xml).find("is no literal"), std::string::npos);
}

TEST(Reading, AddsToAModelThatIsThere) {
    za::Ast ast;
    auto const present = za::Function::create(ast.getModel());
    brant::zero::io::JSONParser parser;
    parser.targetModel() = ast.getModel();
    parser.parseString(jsonDocument(jsonElement("Function", 1)));
    EXPECT_EQ(ast.getModel().size(), 2u);
    std::string const text =
        jsonDocument(jsonElement("Function", 2) + ",{\"class\":\"Function\",\"uuid\":\"" +
                     brant::zero::toString(present.uuid()) + "\"}");
    EXPECT_THROW(parser.parseString(text), ParseError);
    EXPECT_EQ(ast.getModel().size(), 2u) << "nothing of a text that was refused may stay";
    EXPECT_TRUE(present);
}

} // namespace
