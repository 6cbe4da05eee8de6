#include <gtest/gtest.h>

#include "brant/zero/Text.hpp"
#include "tamber/i18n.hpp"

namespace {

using namespace brant::zero;

std::string encoded8(char32_t c) {
    std::string out;
    if (c < 0x80) return {char(c)};
    int const tails = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    out += char((0xff00 >> (tails + 1) & 0xff) | c >> 6 * tails);
    for (int i = tails - 1; i >= 0; --i)
        out += char(0x80 | (c >> 6 * i & 0x3f));
    return out;
}

std::u16string encoded16(char32_t c) {
    if (c < 0x10000) return {char16_t(c)};
    return {char16_t(0xd800 + ((c - 0x10000) >> 10)), char16_t(0xdc00 + ((c - 0x10000) & 0x3ff))};
}

TEST(Text, EveryCharacterConvertsBothWays) {
    for (char32_t c = 0; c <= 0x10ffff; ++c) {
        if (c == 0xd800) c = 0xe000;
        std::string const narrow = encoded8(c);
        std::u16string const wide = encoded16(c);
        ASSERT_EQ(toUtf8(wide), narrow) << std::hex << std::uint32_t(c);
        ASSERT_EQ(toUtf16(narrow), wide) << std::hex << std::uint32_t(c);
        ASSERT_TRUE(isValidUtf8(narrow) && isWellFormedUtf16(wide)) << std::hex << std::uint32_t(c);
    }
}

// Lengths around the strides of the fast paths and around the pieces that long texts are cut into.
std::vector<std::size_t> const lengths = {0,   1,   2,   3,   7,   8,    9,    15,   16,
                                          17,  31,  32,  33,  63,  64,   65,   500,  508,
                                          509, 510, 511, 512, 513, 1020, 1024, 1536, 5000};

TEST(Text, CharactersOfEachWidthSurviveAtEveryStride) {
    for (char32_t c : {U'\u0000', U'\u007f', U'\u00e9', U'\u20ac', U'\U0001f600'})
        for (std::size_t before : lengths)
            for (std::size_t after : {0, 1, 8, 17}) {
                std::string const narrow = std::string(before, 'x') + encoded8(c) + std::string(after, 'y');
                std::u16string const wide =
                    std::u16string(before, u'x') + encoded16(c) + std::u16string(after, u'y');
                std::string out8 = "kept";
                std::u16string out16 = u"kept";
                ASSERT_TRUE(appendUtf8(out8, wide) && appendUtf16(out16, narrow)) << before << " " << after;
                ASSERT_EQ(out8, "kept" + narrow) << before << " " << after;
                ASSERT_EQ(out16, u"kept" + wide) << before << " " << after;
                ASSERT_TRUE(isValidUtf8(narrow) && isWellFormedUtf16(wide)) << before << " " << after;
            }
}

TEST(Text, LongRunsOfWideCharactersAreCutBetweenCharacters) {
    for (std::size_t shift : {0, 1, 2, 3}) {
        std::string narrow(shift, 'x');
        std::u16string wide(shift, u'x');
        for (int i = 0; i < 2000; ++i) {
            narrow += encoded8(0x1f600);
            wide += encoded16(0x1f600);
        }
        EXPECT_TRUE(toUtf8(wide) == narrow) << shift;
        EXPECT_TRUE(toUtf16(narrow) == wide) << shift;
    }
}

TEST(Text, InvalidUtf8IsRefusedAtEveryStride) {
    std::string const bad[] = {
        "\x80",                 // a tail alone
        "\xc3",                 // cut short
        "\xe2\x82",             //
        "\xf0\x9f\x98",         //
        "\xc3x",                // tail missing
        "\xc0\x80",             // overlong
        "\xc1\xbf",             //
        "\xe0\x9f\xbf",         //
        "\xf0\x8f\xbf\xbf",     //
        "\xed\xa0\x80",         // surrogates
        "\xed\xbf\xbf",         //
        "\xf4\x90\x80\x80",     // above the last character
        "\xf8\x88\x80\x80\x80", // heads that do not exist
        "\xff",
    };
    for (std::string const& fault : bad)
        for (std::size_t before : lengths)
            for (char const* after : {"", "z", "zzzzzzzzzzzzzzzzzzzzzzzzzzzzzzzzzzz"}) {
                std::string const text = std::string(before, 'x') + fault + after;
                std::u16string out = u"kept";
                ASSERT_FALSE(isValidUtf8(text)) << testing::PrintToString(fault) << " at " << before;
                ASSERT_FALSE(appendUtf16(out, text)) << testing::PrintToString(fault) << " at " << before;
                ASSERT_EQ(out, u"kept");
                ASSERT_FALSE(toUtf16(text));
            }
}

TEST(Text, LoneSurrogatesAreRefusedAndReplacedOnlyInMessages) {
    struct Row {
        std::u16string fault;
        std::string replaced;
    };
    std::string const mark = "\uFFFD";
    Row const rows[] = {
        {{0xd800}, mark},
        {{0xdbff}, mark},
        {{0xdc00}, mark},
        {{0xdfff}, mark},
        {{0xd800, u'a'}, mark + "a"},
        {{0xd800, 0xd800}, mark + mark},
        {{0xdc00, 0xd800}, mark + mark},
        {{0xd800, 0xd83d, 0xde00}, mark + "\U0001f600"},
        {{0xd83d, 0xde00, 0xde00}, "\U0001f600" + mark},
    };
    for (Row const& row : rows)
        for (std::size_t before : lengths) {
            std::u16string const text = std::u16string(before, u'x') + row.fault;
            std::string out = "kept";
            ASSERT_FALSE(isWellFormedUtf16(text)) << row.replaced << " at " << before;
            ASSERT_FALSE(appendUtf8(out, text)) << row.replaced << " at " << before;
            ASSERT_EQ(out, "kept");
            ASSERT_EQ(tamber::i18n::utf16ToUtf8(text), std::string(before, 'x') + row.replaced);
        }
}

} // namespace
