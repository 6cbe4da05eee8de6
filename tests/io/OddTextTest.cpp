#include "io/TextSupport.hpp"

#include <gtest/gtest.h>

namespace {

using namespace zelkor::test;
using namespace std::string_literals;

struct Wide {
    char const* name;
    std::u16string text;
};
struct Narrow {
    char const* name;
    std::string text;
};

std::u16string everyUnit() {
    std::u16string text;
    for (char32_t unit = 0; unit < 0x10000; unit += unit < 0x800 ? 1 : 37)
        text += static_cast<char16_t>(unit);
    return text;
}

std::string everyByte() {
    std::string text;
    for (int byte = 0; byte < 256; ++byte)
        text += static_cast<char>(byte);
    return text;
}

std::vector<Wide> wideTexts() {
    return {
        {"blanks", u"  leading and trailing  "},
        {"only blanks", u" \t "},
        {"line ends", u"\r\n\n\r"},
        {"markup", u"<a href=\"x\">&amp;'</a>"},
        {"end of a section", u"]]>"},
        {"zero", u"a\0b"s},
        {"controls", u"\x01\x02\x1f\x7f\u0080\u009f"},
        {"no characters", u"\uFFFE\uFFFF"},
        {"beyond the plane", u"\U0001F600\U0010FFFF"},
        {"no characters beyond", u"\U0001FFFE"},
        {"high alone", u"a\xD800z"},
        {"low alone", u"a\xDC00z"},
        {"wrong order", u"\xDC00\xD800"},
        {"high before a pair", u"\xD800\xD83D\xDE00"},
        {"high at the end", u"\xDBFF"},
        {"quote and escape with a lone one", u"\"\\\n\xD800\""},
        {"separators", u"\u2028\u2029\uFEFF"},
        {"looks like an escape", u"\\ud800 \\\\ud800"},
        {"looks like an entity", u"&#10;&lt;"},
        {"every unit", everyUnit()},
        {"long", std::u16string(300000, u'\u00e9') + u"\"" + std::u16string(300000, u'x')},
    };
}

std::vector<Narrow> narrowTexts() {
    return {
        {"blanks", "  leading and trailing  "},
        {"line ends", "\r\n\n\r"},
        {"markup", "operator<< <a>&&\"\""},
        {"end of a section", "]]>"},
        {"zero", "a\0b"s},
        {"controls", "\x01\x1f\x7f"},
        {"valid", "\xc3\xa9 \xf0\x9f\x98\x80"},
        {"no characters", "\xef\xbf\xbe\xef\xbf\xbf"},
        {"a lone byte", "\xff"},
        {"cut short", "name\xc3"},
        {"overlong", "\xc0\x80"},
        {"a surrogate's bytes", "\xed\xa0\x80"},
        {"beyond the last", "\xf4\x90\x80\x80"},
        {"every byte", everyByte()},
        {"long", std::string(200000, '<') + std::string(200000, '\\')},
        {"long, no text", std::string(200000, 'x') + "\xff"},
    };
}

class OddText : public testing::TestWithParam<IoFormat> {};
INSTANTIATE_TEST_SUITE_P(Forms, OddText, testing::Values(IoFormat::json, IoFormat::xml),
                         [](auto const& info) { return info.param == IoFormat::json ? "Json" : "Xml"; });

TEST_P(OddText, WideTextsSurvive) {
    for (auto const& [name, text] : wideTexts()) {
        SCOPED_TRACE(name);
        za::Ast ast;
        auto const comment = za::Comment::create(ast.getModel());
        comment.setText(text);
        auto const function = za::Function::create(ast.getModel());
        function.getCommentsMutable().push_back(text);
        std::string const saved = save(ast, GetParam());
        za::Ast const again = load(saved, GetParam());
        EXPECT_TRUE(za::Comment::cast(again.getModel().findElement(comment.uuid())).getText() == text);
        auto const read = za::Function::cast(again.getModel().findElement(function.uuid()));
        ASSERT_EQ(read.getComments().size(), 1u);
        EXPECT_TRUE(read.getComments()[0] == text);
        EXPECT_EQ(save(again, GetParam()), saved);
        std::u16string const wide = za::io::serializeToUTF16String(ast, GetParam());
        za::Ast const fromWide = za::io::deserializeFromUTF16String(wide, GetParam());
        EXPECT_EQ(save(fromWide, GetParam()), saved);
    }
}

TEST_P(OddText, BytesSurvive) {
    for (auto const& [name, text] : narrowTexts()) {
        SCOPED_TRACE(name);
        za::Ast ast;
        auto const function = za::Function::create(ast.getModel());
        function.setName(text);
        auto const type = za::types::EnumType::create(ast.getModel());
        type.getStringsMutable().push_back(text);
        std::string const saved = save(ast, GetParam());
        EXPECT_TRUE(brant::zero::isValidUtf8(saved));
        za::Ast const again = load(saved, GetParam());
        EXPECT_TRUE(za::Function::cast(again.getModel().findElement(function.uuid())).getName() == text);
        auto const read = za::types::EnumType::cast(again.getModel().findElement(type.uuid()));
        ASSERT_EQ(read.getStrings().size(), 1u);
        EXPECT_TRUE(read.getStrings()[0] == text);
        EXPECT_EQ(save(again, GetParam()), saved);
    }
}

/// What is written must be what other programs can read without knowing this one.
TEST(OddTextSpelling, IsAsDocumented) {
    za::Ast ast;
    za::Comment::create(ast.getModel()).setText(u"\xD800\"\x01\n");
    EXPECT_NE(save(ast, IoFormat::json).find("\"Text\":\"\\ud800\\\"\\u0001\\n\"}"), std::string::npos);
    EXPECT_NE(save(ast, IoFormat::xml).find("<Text encoding=\"base64\">ANgiAAEACgA=</Text>"),
              std::string::npos);
    za::Ast bytes;
    za::Function::create(bytes.getModel()).setName("\xff");
    EXPECT_NE(save(bytes, IoFormat::json).find("\"Name\":{\"base64\":\"/w==\"}"), std::string::npos);
    EXPECT_NE(save(bytes, IoFormat::xml).find("<Name encoding=\"base64\">/w==</Name>"), std::string::npos);
    za::Ast lines;
    za::Function::create(lines.getModel()).setName("\ta\r\n");
    EXPECT_NE(save(lines, IoFormat::xml).find("Name=\"&#9;a&#13;&#10;\""), std::string::npos);
}

/// Escapes and characters that fall on the border of the reader's buffer, at every distance from it.
TEST(OddTextBorder, NothingBreaksAtTheEndOfTheBuffer) {
    std::u16string const odd = u"\\\xD800\U0001F600\u20ac\"\xD83D";
    for (std::size_t padding = 65000; padding < 65600; ++padding) {
        za::Ast ast;
        auto const comment = za::Comment::create(ast.getModel());
        comment.setText(std::u16string(padding, u'x') + odd + u"tail");
        za::Ast const again = load(save(ast, IoFormat::json), IoFormat::json);
        ASSERT_TRUE(za::Comment::cast(again.getModel().findElement(comment.uuid())).getText() ==
                    comment.getText())
            << padding;
    }
}

} // namespace
