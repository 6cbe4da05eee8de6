// Plain values out of their spelling.

#include "Base64.hpp"
#include "ModelReader.hpp"
#include "NearName.hpp"
#include "Numbers.hpp"
#include "TextClass.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Text.hpp"

#include <bit>
#include <limits>

namespace brant::zero::io {

namespace {

std::string_view wantedFor(Step step) noexcept {
    switch (step) {
    case Step::Boolean:
        return "true or false";
    case Step::Integer:
    case Step::IntegerList:
    case Step::Natural:
    case Step::Integer64:
    case Step::Natural64:
    case Step::Real:
        return "a number";
    case Step::Enumeration:
        return "the name of a literal";
    case Step::Reference:
    case Step::ReferenceList:
        return "a reference by UUID";
    case Step::Child:
    case Step::ChildList:
    case Step::ChildMap:
        return "an element";
    default:
        return "a text";
    }
}

/// Decodes UTF-8 in which escapes have left lone surrogates. \returns false for any other fault.
bool widenSurrogates(std::string_view text, std::u16string& result) {
    result.clear();
    std::size_t done = 0;
    for (std::size_t i = 0; i + 2 < text.size(); ++i) {
        auto const at = [&](std::size_t offset) { return static_cast<unsigned char>(text[i + offset]); };
        if (at(0) != 0xED || at(1) < 0xA0) continue;
        if (!appendUtf16(result, text.substr(done, i - done))) return false;
        result += static_cast<char16_t>(0xD000 | (at(1) & 0x3f) << 6 | (at(2) & 0x3f));
        i += 2;
        done = i + 1;
    }
    return appendUtf16(result, text.substr(done));
}

} // namespace

void ModelReader::failKind(std::string_view text) {
    fail(quote(text) + " is no value for the property " + described(), std::string(wantedFor(field().step)));
}

void ModelReader::requireSpelling(Spelling actual, Spelling wanted, std::string_view text) {
    if (actual != Spelling::Plain && actual != wanted) [[unlikely]]
        failKind(text);
}

template <class Number>
Number ModelReader::number(std::string_view text) {
    Number result{};
    auto const [end, code] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (code == std::errc::result_out_of_range || (std::is_unsigned_v<Number> && text.starts_with('-')))
        fail("the number " + quote(text) + " is out of range for the property " + described(),
             "a number from " + std::to_string(std::numeric_limits<Number>::min()) + " to " +
                 std::to_string(std::numeric_limits<Number>::max()));
    if (code != std::errc() || end != text.data() + text.size())
        fail(quote(text) + " is no whole number", "digits without fraction or exponent");
    return result;
}

double ModelReader::real(std::string_view text, Spelling spelling) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (spelling != Spelling::Number)
        for (double const special : {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity})
            if (text == wordFor(special)) return special;
    requireSpelling(spelling, Spelling::Number, text);
    double result = 0;
    std::size_t const sign = text.starts_with('-') ? 1 : 0;
    bool const digit = text.size() > sign && text[sign] >= '0' && text[sign] <= '9'; // words are not taken
    auto const [end, code] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (digit && code == std::errc::result_out_of_range)
        fail("the number " + quote(text) + " is out of range for the property " + described(),
             "a number of double precision");
    if (!digit || code != std::errc() || end != text.data() + text.size()) failKind(text);
    return result;
}

std::uint32_t ModelReader::literal(std::string_view name) {
    schema::EnumTable const& type = *field().row->enumeration;
    std::vector<std::string_view> names;
    for (std::uint16_t i = 0; i < type.literalCount; ++i)
        if (type.literals[i].name == name) return static_cast<std::uint32_t>(type.literals[i].value);
    for (std::uint16_t i = 0; i < type.literalCount; ++i)
        names.emplace_back(type.literals[i].name);
    fail(quote(name) + " is no literal of the enumeration " + type.name + suggestion(name, names),
         "the name of a literal");
}

std::string ModelReader::bytes(std::string_view text) {
    if ((classify(text) & BeyondBit) != 0 && !isValidUtf8(text))
        fail("a lone surrogate stands in " + described() + ", which holds bytes", "UTF-8 or base64");
    return std::string(text);
}

std::u16string ModelReader::wide(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    if (!appendUtf16(result, text) && !widenSurrogates(text, result)) fail("the text is no valid UTF-8");
    return result;
}

std::u16string ModelReader::decoded(std::string_view base64) {
    std::u16string result;
    if (!decodeBase64(base64, result)) fail("the text is no base64 of UTF-16LE");
    return result;
}

void ModelReader::value(std::string_view text, Spelling spelling) {
    Frame& frame = frames_.back();
    ModelElementImpl& element = *frame.element;
    schema::PropertyRow const& row = *frame.field->row;
    Step const step = frame.field->step;
    if (step == Step::Reference || step == Step::ReferenceList || step >= Step::Child) {
        if (spelling != Spelling::Plain && spelling != Spelling::Quoted) failKind(text);
        return reference(text);
    }
    requireSingle();
    switch (step) {
    case Step::Boolean:
        requireSpelling(spelling, Spelling::Word, text);
        if (text != "true" && text != "false") failKind(text);
        return Core::setBoolean(element, row, text == "true");
    case Step::Real:
        return Core::setReal(element, row, real(text, spelling));
    case Step::Enumeration:
        requireSpelling(spelling, Spelling::Quoted, text);
        return Core::setWord(element, row, literal(text));
    case Step::String:
        requireSpelling(spelling, Spelling::Quoted, text);
        return Core::setString(element, row, wide(text));
    case Step::StdString:
        requireSpelling(spelling, Spelling::Quoted, text);
        return Core::setStdString(element, row, bytes(text));
    case Step::StringList:
        requireSpelling(spelling, Spelling::Quoted, text);
        return Core::field<PrimitiveSequence<std::u16string>>(element, row).push_back(wide(text));
    case Step::StdStringList:
        requireSpelling(spelling, Spelling::Quoted, text);
        return Core::field<PrimitiveSequence<std::string>>(element, row).push_back(bytes(text));
    default:
        requireSpelling(spelling, Spelling::Number, text);
        setNumber(text);
    }
}

void ModelReader::setNumber(std::string_view text) {
    ModelElementImpl& element = *frames_.back().element;
    schema::PropertyRow const& row = *field().row;
    switch (field().step) {
    case Step::Integer:
        return Core::setWord(element, row, static_cast<std::uint32_t>(number<std::int32_t>(text)));
    case Step::Natural:
        return Core::setWord(element, row, number<std::uint32_t>(text));
    case Step::Integer64:
        return Core::setLong(element, row, static_cast<std::uint64_t>(number<std::int64_t>(text)));
    case Step::Natural64:
        return Core::setLong(element, row, number<std::uint64_t>(text));
    default:
        return Core::field<PrimitiveSequence<int>>(element, row).push_back(number<int>(text));
    }
}

void ModelReader::encodedValue(std::string_view base64) {
    ModelElementImpl& element = *frames_.back().element;
    schema::PropertyRow const& row = *field().row;
    Step const step = field().step;
    bool const narrow = step == Step::StdString || step == Step::StdStringList;
    if (!narrow && step != Step::String && step != Step::StringList)
        fail("base64 stands in " + described() + ", which holds no text", std::string(wantedFor(step)));
    requireSingle();
    if (!narrow) {
        std::u16string units = decoded(base64);
        if (step == Step::String) return Core::setString(element, row, std::move(units));
        return Core::field<PrimitiveSequence<std::u16string>>(element, row).push_back(std::move(units));
    }
    std::string bytes;
    if (!decodeBase64(base64, bytes)) fail("the text of " + described() + " is no base64");
    if (step == Step::StdString) return Core::setStdString(element, row, std::move(bytes));
    Core::field<PrimitiveSequence<std::string>>(element, row).push_back(std::move(bytes));
}

} // namespace brant::zero::io
