#include "JsonForm.hpp"

#include "ModelWriter.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/io/Serializer.hpp"

namespace brant::zero::io {

namespace {

/// Characters that are worked on between two looks at the room in the buffer.
constexpr std::size_t portion = 2048;

char* escape(unsigned char character, char* to) {
    *to++ = '\\';
    switch (character) {
    case '"':
    case '\\':
        *to++ = static_cast<char>(character);
        return to;
    case '\b':
        *to++ = 'b';
        return to;
    case '\t':
        *to++ = 't';
        return to;
    case '\n':
        *to++ = 'n';
        return to;
    case '\f':
        *to++ = 'f';
        return to;
    case '\r':
        *to++ = 'r';
        return to;
    default: {
        constexpr char digits[] = "0123456789abcdef";
        std::memcpy(to, "u00", 3);
        to[3] = digits[character >> 4];
        to[4] = digits[character & 15];
        return to + 5;
    }
    }
}

} // namespace

void JsonForm::spell(WritePlan& plan, schema::ClassTable const& table) const {
    plan.opening = std::string("{\"class\":\"") + table.shortName + "\",\"uuid\":\"";
}

void JsonForm::spell(WriteField& field) const {
    field.key = std::string(",\"") + field.row->name + "\":";
}

void JsonForm::beginDocument() {
    out_.put("{\"format\":\"");
    out_.put(formatName);
    out_.put("\",\"version\":\"");
    out_.put(formatVersion);
    out_.put("\",\"elements\":[");
}

void JsonForm::endDocument() {
    out_.put("]}\n");
}

void JsonForm::putText(std::string const& bytes) {
    unsigned const bits = classify(bytes);
    if ((bits & BeyondBit) != 0 && !isValidUtf8(bytes)) return putEncoded(encodeBase64(bytes));
    putEscaped(bytes, bits);
}

void JsonForm::putText(std::u16string const& text) {
    scratch_.clear();
    if (!appendUtf8(scratch_, text)) return putWithLoneSurrogates(text);
    putEscaped(scratch_, classify(scratch_));
}

void JsonForm::putEscaped(std::string_view utf8, unsigned bits) {
    if ((bits & (ControlBit | QuoteBit | BackslashBit)) == 0) return quoted(utf8);
    out_.put('"');
    for (std::size_t i = 0; i < utf8.size(); i += portion) {
        std::string_view const part = utf8.substr(i, portion);
        char* to = out_.room(part.size() * 6);
        for (char const character : part)
            if ((classify(character) & (ControlBit | QuoteBit | BackslashBit)) == 0)
                *to++ = character;
            else
                to = escape(static_cast<unsigned char>(character), to);
        out_.advance(to);
    }
    out_.put('"');
}

void JsonForm::putEncoded(std::string_view base64) {
    out_.put("{\"base64\":");
    quoted(base64);
    out_.put('}');
}

void JsonForm::putWithLoneSurrogates(std::u16string_view text) {
    auto const high = [](char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
    auto const low = [](char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
    out_.put('"');
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::size_t const length = high(text[i]) && i + 1 < text.size() && low(text[i + 1]) ? 2 : 1;
        scratch_.clear();
        if (appendUtf8(scratch_, text.substr(i, length))) {
            char* const to = out_.room(6);
            bool const plain = (classify(scratch_) & (ControlBit | QuoteBit | BackslashBit)) == 0;
            if (plain) std::memcpy(to, scratch_.data(), scratch_.size());
            out_.advance(plain ? to + scratch_.size() : escape(static_cast<unsigned char>(scratch_[0]), to));
        } else {
            char* const to = out_.room(longestNumber);
            to[0] = '\\';
            to[1] = 'u';
            out_.advance(std::to_chars(to + 2, to + 6, static_cast<unsigned>(text[i]), 16).ptr);
        }
        i += length - 1;
    }
    out_.put('"');
}

void JsonForm::proxy(ModelElementImpl const& target) {
    ProxyId const id = target.getProxyId();
    out_.put("{\"proxy\":");
    quoted(target.classTable().shortName);
    if (!id.model.empty()) {
        out_.put(",\"model\":");
        putText(id.model);
    }
    out_.put(",\"element\":");
    putText(id.element);
    if (id.isExternal()) {
        out_.put(",\"external\":");
        putText(*id.external);
    }
    out_.put('}');
}

void JSONSerializer::serialize(Model const& model, SerializationOutput const& output) {
    writeText<JsonForm>(model, output, customizer());
}

} // namespace brant::zero::io
