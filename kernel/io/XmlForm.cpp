#include "XmlForm.hpp"

#include "Base64.hpp"
#include "ModelWriter.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/io/Serializer.hpp"

namespace brant::zero::io {

namespace {

/// Characters that are worked on between two looks at the room in the buffer.
constexpr std::size_t portion = 2048;
constexpr std::size_t longestEscape = 6;

/// \returns how the character is written where it cannot stand for itself.
std::string_view escape(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    default:
        return "&#13;";
    }
}

/// \returns whether valid UTF-8 consists of characters that XML 1.0 allows.
bool allowed(std::string_view utf8, unsigned bits) {
    if ((bits & ControlBit) != 0)
        for (char const character : utf8)
            if (static_cast<unsigned char>(character) < 0x20 && character != '\t' && character != '\n' &&
                character != '\r')
                return false;
    if ((bits & BeyondBit) != 0)
        for (std::size_t at = utf8.find("\xEF\xBF"); at != std::string_view::npos;
             at = utf8.find("\xEF\xBF", at + 1))
            if (auto const last = static_cast<unsigned char>(utf8[at + 2]); last == 0xBE || last == 0xBF)
                return false;
    return true;
}

} // namespace

void XmlForm::spell(WritePlan& plan, schema::ClassTable const& table) const {
    plan.opening = std::string("<") + table.shortName + " uuid=\"";
    plan.closing = std::string("</") + table.shortName + ">";
}

void XmlForm::spell(WriteField& field) const {
    std::string const name = field.row->name;
    // Beside its inline form a value has a content form, which needs no second key: it is met rarely.
    field.key = field.step <= Step::Reference ? std::string(" ") + name + "=\"" : std::string("<") + name;
    field.end = std::string("</") + name + ">";
}

void XmlForm::beginDocument() {
    out_.put("<?xml version=\"1.0\" encoding=\"");
    out_.put(encoding_);
    out_.put("\"?>\n<model format=\"");
    out_.put(formatName);
    out_.put("\" version=\"");
    out_.put(formatVersion);
    out_.put("\">");
}

void XmlForm::endDocument() {
    out_.put("</model>\n");
}

bool XmlForm::prepare(std::string const& value, std::string_view& utf8, unsigned& bits) {
    utf8 = value;
    bits = classify(utf8);
    return ((bits & BeyondBit) == 0 || isValidUtf8(utf8)) && allowed(utf8, bits);
}

bool XmlForm::prepare(std::u16string const& value, std::string_view& utf8, unsigned& bits) {
    scratch_.clear();
    if (!appendUtf8(scratch_, value)) return false;
    utf8 = scratch_;
    bits = classify(utf8);
    return allowed(utf8, bits);
}

void XmlForm::putEscaped(std::string_view utf8, unsigned bits) {
    if ((bits & (ControlBit | QuoteBit | MarkupBit)) == 0) return out_.put(utf8);
    for (std::size_t i = 0; i < utf8.size(); i += portion) {
        std::string_view const part = utf8.substr(i, portion);
        char* to = out_.room(part.size() * longestEscape);
        for (char const character : part) {
            if ((classify(character) & (ControlBit | QuoteBit | MarkupBit)) == 0) {
                *to++ = character;
                continue;
            }
            std::string_view const spelled = escape(character);
            std::memcpy(to, spelled.data(), spelled.size());
            to += spelled.size();
        }
        out_.advance(to);
    }
}

template <class Text>
bool XmlForm::putAttribute(std::string_view key, Text const& value) {
    std::string_view utf8;
    unsigned bits = 0;
    if (!prepare(value, utf8, bits)) return false;
    out_.put(key);
    putEscaped(utf8, bits);
    out_.put('"');
    return true;
}

bool XmlForm::text(WriteField const& field, std::string const& value) {
    return putAttribute(field.key, value);
}
bool XmlForm::text(WriteField const& field, std::u16string const& value) {
    return putAttribute(field.key, value);
}

void XmlForm::putEncoded(std::string_view base64) {
    out_.put(" encoding=\"base64\">");
    out_.put(base64);
}

template <class Text>
void XmlForm::putItem(std::string_view name, Text const& value) {
    std::string_view utf8;
    unsigned bits = 0;
    out_.put('<');
    out_.put(name);
    if (prepare(value, utf8, bits)) {
        out_.put('>');
        putEscaped(utf8, bits);
    } else {
        putEncoded(encodeBase64(value));
    }
    out_.put("</");
    out_.put(name);
    out_.put('>');
}

template <class Text>
void XmlForm::putContentText(WriteField const& field, Text const& value) {
    std::string_view utf8;
    unsigned bits = 0;
    if (prepare(value, utf8, bits)) return; // stands inline
    closeTag();
    putItem(field.row->name, value);
}

void XmlForm::proxy(ModelElementImpl const& target) {
    ProxyId const id = target.getProxyId();
    std::pair<std::string_view, std::u16string const*> const parts[] = {
        {"model", id.model.empty() ? nullptr : &id.model},
        {"element", &id.element},
        {"external", id.external.get()}};
    out_.put("<proxy class=\"");
    out_.put(target.classTable().shortName);
    out_.put('"');
    bool whole = true;
    for (auto const& [name, value] : parts)
        if (value != nullptr) whole = putAttribute(std::string(" ").append(name) + "=\"", *value) && whole;
    if (whole) return out_.put("/>");
    out_.put('>');
    for (auto const& [name, value] : parts) {
        std::string_view utf8;
        unsigned bits = 0;
        if (value != nullptr && !prepare(*value, utf8, bits)) putItem(name, *value);
    }
    out_.put("</proxy>");
}

void XmlSerializer::serialize(Model const& model, SerializationOutput const& output) {
    writeText<XmlForm>(model, output, customizer());
}

} // namespace brant::zero::io
