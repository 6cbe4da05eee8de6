// The spelling of XML.
#pragma once

#include "FormatNames.hpp"
#include "Numbers.hpp"
#include "Sink.hpp"
#include "TextClass.hpp"
#include "WritePlan.hpp"
#include "brant/zero/ModelElement.hpp"
#include "brant/zero/Uuid.hpp"

#include <cstring>

namespace brant::zero::io {

class XmlForm final : public PlanSpelling {
  public:
    XmlForm(TextBuffer& out, std::string_view encoding) noexcept : out_(out), encoding_(encoding) {}

    void spell(WritePlan& plan, schema::ClassTable const& table) const override;
    void spell(WriteField& field) const override;
    [[nodiscard]] bool scalarsFirst() const noexcept override { return true; }

    void beginDocument();
    void endDocument();

    void beginElement(WritePlan const& plan, uuid const& identity) {
        identified(plan.opening, identity);
        tagOpen_ = true;
    }
    void endElement(WritePlan const& plan) {
        if (tagOpen_)
            out_.put("/>");
        else
            out_.put(plan.closing);
        tagOpen_ = false;
    }

    void boolean(WriteField const& field, bool value) {
        out_.put(field.key);
        out_.put(value ? std::string_view("true\"") : std::string_view("false\""));
    }
    template <class Number>
    void number(WriteField const& field, Number value) {
        out_.put(field.key);
        putNumber(value);
        out_.put('"');
    }
    void literal(WriteField const& field, std::string_view name) {
        out_.put(field.key);
        out_.put(name);
        out_.put('"');
    }
    /// \returns false for a text that no attribute can hold.
    bool text(WriteField const& field, std::string const& value);
    bool text(WriteField const& field, std::u16string const& value);
    void reference(WriteField const& field, uuid const& target) { identified(field.key, target); }
    bool proxy(WriteField const&, ModelElementImpl const&) { return false; }

    void beginList(WriteField const& field) {
        closeTag();
        out_.put(field.key);
        out_.put('>');
    }
    void endList(WriteField const& field) { out_.put(field.end); }
    void beginChild(WriteField const& field) {
        beginList(field);
        out_.put('\n');
    }
    void endChild(WriteField const& field) { out_.put(field.end); }
    void listItem(bool, bool nested = true) {
        if (nested) out_.put('\n');
    }
    void item(std::string const& value, bool) { putItem("item", value); }
    void item(std::u16string const& value, bool) { putItem("item", value); }
    void item(int value, bool) {
        out_.put("<item>");
        putNumber(value);
        out_.put("</item>");
    }
    void reference(uuid const& target) {
        identified("<ref uuid=\"", target);
        out_.put("/>");
    }
    void proxy(ModelElementImpl const& target);

    void contentText(WriteField const& field, std::string const& value) { putContentText(field, value); }
    void contentText(WriteField const& field, std::u16string const& value) { putContentText(field, value); }
    void contentProxy(WriteField const& field, ModelElementImpl const& target) {
        closeTag();
        out_.put('<');
        out_.put(field.row->name);
        out_.put('>');
        proxy(target);
        out_.put(field.end);
    }

  private:
    void closeTag() {
        if (tagOpen_) out_.put('>');
        tagOpen_ = false;
    }
    void identified(std::string_view before, uuid const& identity) {
        char* to = out_.room(before.size() + uuidTextSize + 1);
        std::memcpy(to, before.data(), before.size());
        to += before.size();
        formatUuid(identity, to);
        to[uuidTextSize] = '"';
        out_.advance(to + uuidTextSize + 1);
    }
    template <class Number>
    void putNumber(Number value) {
        if constexpr (std::is_same_v<Number, double>)
            if (std::string_view const word = wordFor(value); !word.empty()) return out_.put(word);
        out_.advance(formatNumber(value, out_.room(longestNumber)));
    }
    /// \returns the text as UTF-8 when XML has all its characters, with their bits.
    [[nodiscard]] bool prepare(std::string const& value, std::string_view& utf8, unsigned& bits);
    [[nodiscard]] bool prepare(std::u16string const& value, std::string_view& utf8, unsigned& bits);
    template <class Text>
    bool putAttribute(std::string_view key, Text const& value);
    template <class Text>
    void putItem(std::string_view name, Text const& value);
    template <class Text>
    void putContentText(WriteField const& field, Text const& value);
    void putEncoded(std::string_view base64);
    void putEscaped(std::string_view utf8, unsigned bits);

    TextBuffer& out_;
    std::string_view encoding_;
    std::string scratch_;
    bool tagOpen_ = false;
};

} // namespace brant::zero::io
