#include <algorithm>
#include <boost/uuid/nil_generator.hpp>
#include <cctype>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <unordered_set>

#include "brant/zero/Exceptions.hpp"
#include "brant/zero/Hash.hpp"
#include "brant/zero/SaturatedBloomFilter.hpp"
#include "brant/zero/Uuid.hpp"

namespace {

using namespace brant::zero;
using tamber::core::except::IMsgIDException;
using tamber::core::except::IUserException;
namespace messages = brant0::messages;

using IdHash = services::hashers::Brant0Hasher<uuid>;

constexpr char dnsText[] = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";

uuid idOf(std::string_view text) {
    uuid id = boost::uuids::nil_uuid();
    EXPECT_TRUE(parseUuid(text, id)) << text;
    return id;
}

// ---- identities

TEST(Uuid, FreshOnesAreOfVersionFourAndDiffer) {
    std::unordered_set<uuid, IdHash> seen;
    uuid always, never;
    std::fill(always.begin(), always.end(), 0xff);
    std::fill(never.begin(), never.end(), 0xff);
    for (int i = 0; i < 100000; ++i) {
        uuid const id = generateUuid();
        ASSERT_EQ(id.version(), boost::uuids::uuid::version_random_number_based);
        ASSERT_EQ(id.variant(), boost::uuids::uuid::variant_rfc_4122);
        ASSERT_TRUE(seen.insert(id).second);
        for (std::size_t b = 0; b < 16; ++b) {
            always.data[b] &= id.data[b];
            never.data[b] &= std::uint8_t(~id.data[b]);
        }
    }
    // Every bit but the six fixed ones takes both values.
    EXPECT_EQ(toString(always), "00000000-0000-4000-8000-000000000000");
    EXPECT_EQ(toString(never), "00000000-0000-b000-4000-000000000000");
}

TEST(Uuid, ThreadsDrawDifferentOnes) {
    constexpr std::size_t threads = 8, each = 20000;
    std::vector<std::vector<uuid>> drawn(threads);
    std::vector<std::thread> running;
    for (auto& mine : drawn)
        running.emplace_back([&mine] {
            for (std::size_t i = 0; i < each; ++i)
                mine.push_back(generateUuid());
        });
    std::unordered_set<uuid, IdHash> all;
    for (std::size_t t = 0; t < threads; ++t) {
        running[t].join();
        all.insert(drawn[t].begin(), drawn[t].end());
    }
    EXPECT_EQ(all.size(), threads * each);
}

TEST(Uuid, AForkedChildDoesNotRepeatItsParent) {
    generateUuid();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t const child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        uuid const id = generateUuid();
        _exit(write(ends[1], id.data, sizeof id.data) == sizeof id.data ? 0 : 1);
    }
    uuid const mine = generateUuid();
    uuid theirs = mine;
    EXPECT_EQ(read(ends[0], theirs.data, sizeof theirs.data), ssize_t(sizeof theirs.data));
    int status = 0;
    waitpid(child, &status, 0);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(theirs.version(), boost::uuids::uuid::version_random_number_based);
    EXPECT_NE(mine, theirs);
}

TEST(Uuid, NamesGiveTheStandardIdentities) {
    struct Row {
        uuid (*make)(uuid const&, std::string_view);
        char const* name;
        char const* expected;
    };
    Row const rows[] = {
        {nameUuid3, "python.org", "6fa459ea-ee8a-3ca4-894e-db77e160355e"},
        {nameUuid3, "\u00e4\u20ac\U0001f600", "3cb2a576-8f87-3a2b-b1aa-9f0c7e0ad5e3"},
        {nameUuid5, "python.org", "886313e1-3b8a-5372-9b90-0c9aee199e5d"},
        {nameUuid5, "", "4ebd0208-8328-5d69-8c44-ec50939c0967"},
    };
    for (Row const& row : rows)
        EXPECT_EQ(toString(row.make(idOf(dnsText), row.name)), row.expected) << row.name;
}

struct Parser {
    char const* name;
    bool (*parse)(std::string_view, uuid&);
};
Parser const parsers[] = {
    {"vector", [](std::string_view text, uuid& id) { return parseUuid(text, id); }},
    {"portable", [](std::string_view text, uuid& id) { return detail::parseUuidPortable(text, id); }},
};

TEST(Uuid, TextRoundTripsInBothForms) {
    for (int i = 0; i < 1000; ++i) {
        uuid const id = generateUuid();
        std::string const text = toString(id);
        std::string portable(uuidTextSize, '?');
        detail::formatUuidPortable(id, portable.data());
        ASSERT_EQ(text, portable);
        std::string upper = text;
        for (char& c : upper)
            c = char(std::toupper(c));
        for (Parser const& parser : parsers)
            for (std::string const& form : {text, upper}) {
                uuid back = boost::uuids::nil_uuid();
                ASSERT_TRUE(parser.parse(form, back)) << parser.name << " " << form;
                ASSERT_EQ(back, id) << parser.name << " " << form;
            }
    }
}

TEST(Uuid, ParserTakesExactlyTheDigitsAtEveryPlace) {
    std::string_view const allowed = "0123456789abcdefABCDEF";
    for (Parser const& parser : parsers)
        for (std::size_t place = 0; place < uuidTextSize; ++place)
            for (int c = 0; c < 256; ++c) {
                std::string text = dnsText;
                bool const hyphen = text[place] == '-';
                text[place] = char(c);
                bool const good = hyphen ? c == '-' : allowed.find(char(c)) != allowed.npos;
                uuid id = boost::uuids::nil_uuid();
                ASSERT_EQ(parser.parse(text, id), good) << parser.name << ": " << place << ", " << c;
                ASSERT_EQ(id.is_nil(), !good) << parser.name << ": " << place << ", " << c;
            }
}

TEST(Uuid, ParserRefusesOtherShapes) {
    std::string const text = dnsText;
    std::string const bad[] = {"",
                               text.substr(1),
                               text + "0",
                               " " + text,
                               text + " ",
                               "{" + text + "}",
                               "6ba7b8109dad11d180b400c04fd430c8",
                               "6ba7b8109-dad-11d1-80b4-00c04fd430c8",
                               text.substr(0, 35) + '\0'};
    for (Parser const& parser : parsers)
        for (std::string const& form : bad) {
            uuid id = boost::uuids::nil_uuid();
            EXPECT_FALSE(parser.parse(form, id)) << parser.name << ": " << form;
            EXPECT_TRUE(id.is_nil()) << parser.name << ": " << form;
        }
}

// ---- hashes; the numbers come from an implementation of the published algorithms in another language

TEST(Hash, CombineStepIsFixed) {
    struct Row {
        std::uint64_t seed, value, expected;
    };
    Row const rows[] = {
        {0, 0, 0xe6546b64},
        {0, 1, 0xbbddcb5b9bc10e60},
        {1, 0, 0xc6a4a794422654f9},
        {0x0123456789abcdef, 0xfedcba9876543210, 0xc1fd796fb3b53311},
        {~0ull, ~0ull, 0x2ac7511f80bd4e1a},
    };
    for (Row const& row : rows) {
        std::uint64_t seed = row.seed;
        hashCombine(seed, row.value);
        EXPECT_EQ(seed, row.expected) << row.seed << ", " << row.value;
    }
}

TEST(Hash, RangesFoldInOrder) {
    auto const identity = [](int value) { return std::uint64_t(value); };
    EXPECT_EQ(hashRange(std::vector<int>{}, identity), 0u);
    EXPECT_EQ(hashRange(std::vector<int>{1, 2, 3}, identity), 0xc731b9530f415a0cu);
    EXPECT_EQ(hashRange(std::set<int>{3, 2, 1}, identity), 0xc731b9530f415a0cu);
    EXPECT_EQ(hashRange(std::vector<int>{3, 2, 1}, identity), 0xdc3b95ec2bd5ac1cu);
}

TEST(Hash, TextsAndNumbersAreFixed) {
    struct Row {
        std::string_view narrow;
        std::u16string_view wide;
        std::uint64_t ofNarrow, ofWide;
    };
    Row const rows[] = {
        {"", u"", 0x553e93901e462a6e, 0x553e93901e462a6e},
        {"a", u"a", 0x454ddee488c1ed6b, 0x56d17a82022d767f},
        {"main", u"main", 0xa4b4090b8f936f2c, 0x81766e0e8b7b86d3},
        {"zelkor::ast::Function", u"zelkor::ast::Function", 0xb9b4ae1a07a89dfa, 0x797488d3d45ad078},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(hashString(row.narrow), row.ofNarrow) << row.narrow;
        EXPECT_EQ(hashString(row.wide), row.ofWide) << row.narrow;
    }
    EXPECT_EQ(hashReal(0.0), 0u);
    EXPECT_EQ(hashReal(-0.0), 0u);
    EXPECT_EQ(hashReal(1.0), 0x7461a4504ece7b9bu);
    EXPECT_EQ(hashReal(-2.5), 0x69707202f073c9e7u);
}

TEST(Hash, IdentitiesThatDifferInOneBitSpreadOverAMaskedTable) {
    std::set<std::size_t> low, high;
    for (int bit = 0; bit < 128; ++bit) {
        uuid id = idOf(dnsText);
        id.data[bit / 8] ^= std::uint8_t(1 << bit % 8);
        low.insert(IdHash()(id) & 0xfff);
        high.insert(IdHash()(id) >> 52);
    }
    // Random numbers would leave about 126 of 128 in 4096 places.
    EXPECT_GE(low.size(), 118u);
    EXPECT_GE(high.size(), 118u);
}

// ---- the filter

TEST(SaturatedBloomFilter, NeverDeniesWhatItHolds) {
    SaturatedBloomFilter filter;
    std::vector<uuid> held;
    for (int i = 0; i < 3000; ++i) {
        held.push_back(generateUuid());
        filter.add(held.back());
    }
    // By now counters are at their limit; taking most out again must not lose the rest.
    while (held.size() > 20) {
        filter.remove(held.back());
        held.pop_back();
        if (held.size() % 100 != 0) continue;
        for (uuid const& id : held)
            ASSERT_TRUE(filter.contains(id)) << held.size();
    }
    for (uuid const& id : held)
        EXPECT_TRUE(filter.contains(id));
}

TEST(SaturatedBloomFilter, CountsRepetitionsAndForgets) {
    uuid const id = idOf(dnsText), other = nameUuid5(id, "other");
    SaturatedBloomFilter filter;
    EXPECT_TRUE(filter.empty());
    filter.remove(id);
    filter.add(id);
    filter.add(id);
    filter.remove(other);
    filter.remove(id);
    EXPECT_TRUE(filter.contains(id));
    EXPECT_FALSE(filter.contains(other));

    SaturatedBloomFilter moved = std::move(filter);
    EXPECT_TRUE(filter.empty());
    filter.add(other);
    filter.remove(other);
    EXPECT_TRUE(filter.empty());
    EXPECT_TRUE(moved.contains(id));
    moved.remove(id);
    EXPECT_FALSE(moved.contains(id));
    EXPECT_TRUE(moved.empty());
}

TEST(SaturatedBloomFilter, RarelyClaimsWhatItLacks) {
    SaturatedBloomFilter filter;
    uuid const space = idOf(dnsText);
    for (int i = 0; i < 50; ++i)
        filter.add(nameUuid5(space, "in" + std::to_string(i)));
    int wrong = 0;
    for (int i = 0; i < 10000; ++i)
        wrong += filter.contains(nameUuid5(space, "out" + std::to_string(i)));
    // Theory: (1 - e^(-150/512))^3 of 10,000, that is 164.
    EXPECT_LT(wrong, 350);
}

// ---- failures

struct Failure {
    char const* id;
    std::string what;
    std::function<void()> raise;
};

std::vector<Failure> const failures = {
    {"brant0:messages:NoSuchType", "There is no type 'a\u00e9'.",
     [] { reportException(messages::NoSuchType(u"a\u00e9")); }},
    {"brant0:messages:NoSuchType", "There is no type '{0}'.",
     [] { reportException(messages::NoSuchType("{0}")); }},
    {"brant0:messages:NoSuchType", "There is no type '\uFFFD'.",
     [] { reportException(messages::NoSuchType(std::u16string(1, 0xd800))); }},
    {"brant0:messages:NoSuchProperty", "There is no property 'p' in 'C'.",
     [] { reportException(messages::NoSuchProperty(u"p", u"C")); }},
    {"brant0:messages:CannotSetReadOnlyProperty", "The property 'C.p' cannot be set: it is read-only.",
     [] { reportException(messages::CannotSetReadOnlyProperty(std::u16string_view(u"C.p"))); }},
    {"brant0:messages:CannotAddIncompatibleTypes",
     "An element of type '7' cannot be added to a collection of 'T'.",
     [] { reportException(messages::CannotAddIncompatibleTypes(7, std::string("T"))); }},
    {"Orvane:class:InvalidHandle", "The handle is null or its object is gone.",
     [] { reportException(orvane::messages::InvalidHandle()); }},
};

TEST(Exceptions, CarryIdTextAndMessage) {
    for (Failure const& failure : failures) {
        std::string const expected = std::string(failure.id) + ": " + failure.what;
        try {
            failure.raise();
            FAIL() << failure.id;
        } catch (std::exception const& caught) {
            EXPECT_EQ(caught.what(), expected);
            auto const* user = dynamic_cast<IMsgIDException const*>(&caught);
            ASSERT_NE(user, nullptr) << failure.id;
            EXPECT_EQ(user->what(), expected);
            EXPECT_EQ(user->GetID(), failure.id);
            EXPECT_EQ(IMsgIDException::get_error_id(user->GetBaseMsgIDObj()), failure.id);
            EXPECT_EQ(user->GetBaseMsgIDObj().format(), failure.what);
        }
    }
}

TEST(Exceptions, ArgumentsKeepTheirKind) {
    using tamber::core::except::MessageArgument;
    EXPECT_EQ(messages::NoSuchProperty(u"p", "C").getArguments(),
              (std::vector<MessageArgument>{std::u16string(u"p"), std::string("C")}));
    EXPECT_EQ(messages::NoSuchType(-3).getArguments(), std::vector<MessageArgument>{-3L});
    EXPECT_EQ(messages::NoSuchType(-3).format(), "There is no type '-3'.");
}

TEST(Exceptions, EachMessageIsASentenceOfItsOwn) {
    std::set<std::string_view> keys, texts;
    auto const check = [&](std::string_view key, std::string_view text) {
        EXPECT_TRUE(keys.insert(key).second) << key;
        EXPECT_TRUE(texts.insert(text).second) << key;
        EXPECT_TRUE(std::isupper(text.front()) && text.back() == '.') << key;
        std::size_t const count = tamber::core::except::countPlaceholders(text);
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_NE(text.find(std::string("{").append(std::to_string(i)).append("}")), text.npos)
                << key << " lacks " << i;
    };
#define CHECK_MESSAGE(Key, Text) check(messages::Key::key, messages::Key::text);
    BRANT0_FOR_EACH_MESSAGE(CHECK_MESSAGE)
#undef CHECK_MESSAGE
    EXPECT_EQ(keys.size(), 14u);
}

TEST(Exceptions, CopiesKeepTypeAndTextBeyondTheOriginal) {
    std::unique_ptr<IUserException> copy;
    try {
        reportException(messages::NoSuchType(u"X"));
    } catch (IUserException const& caught) {
        copy = caught.clone();
    }
    EXPECT_STREQ(copy->what(), "brant0:messages:NoSuchType: There is no type 'X'.");
    EXPECT_THROW(copy->rethrow(), MessageException<messages::NoSuchType>);
    EXPECT_THROW(io::FileError("a", "b").clone()->rethrow(), io::FileError);
    EXPECT_THROW(io::ParseError("a", 1, 1, "b").clone()->rethrow(), io::ParseError);
    EXPECT_THROW(DeadHandle(HandleState::Null).clone()->rethrow(), DeadHandle);
    try {
        throwDeadHandle(HandleState::Destroyed, "Function.getName");
    } catch (DeadHandle const& caught) {
        EXPECT_EQ(std::string_view(caught.what()).find("Function.getName: "), 0u) << caught.what();
    }
}

TEST(Exceptions, ParseErrorsSayWhere) {
    struct Row {
        io::ParseError error;
        char const* what;
    };
    Row const rows[] = {
        {{"m.json", 3, 14, "unknown class 'Funktion'"}, "m.json:3:14: error: unknown class 'Funktion'"},
        {{"", 1, 1, "empty input", "an object"}, "<string>:1:1: error: empty input; expected an object"},
        {{"m.xml", 2, 0, "bad"}, "m.xml:2: error: bad"},
        {{"m.xml", 0, 0, "bad"}, "m.xml: error: bad"},
    };
    for (Row const& row : rows)
        EXPECT_STREQ(row.error.what(), row.what);
    io::FileError const file("/a/b", "No space left on device");
    EXPECT_STREQ(file.what(), "/a/b: error: No space left on device");
}

} // namespace
