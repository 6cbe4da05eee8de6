// The spelling of JSON.
#pragma once

#include "Base64.hpp"
#include "FormatNames.hpp"
#include "Numbers.hpp"
#include "Sink.hpp"
#include "TextClass.hpp"
#include "WritePlan.hpp"
#include "brant/zero/ModelElement.hpp"
#include "brant/zero/Uuid.hpp"

#include <cstring>

namespace brant::zero::io {

class JsonForm final : public PlanSpelling {
  public:
    JsonForm(TextBuffer& out, std::string_view) noexcept : out_(out) {}

    void spell(WritePlan& plan, schema::ClassTable const& table) const override;
    void spell(WriteField& field) const override;
    [[nodiscard]] bool scalarsFirst() const noexcept override { return false; }

    void beginDocument();
    void endDocument();

    void beginElement(WritePlan const& plan, uuid const& identity) {
        char* to = out_.room(plan.opening.size() + uuidTextSize + 1);
        std::memcpy(to, plan.opening.data(), plan.opening.size());
        to += plan.opening.size();
        formatUuid(identity, to);
        to[uuidTextSize] = '"';
        out_.advance(to + uuidTextSize + 1);
    }
    void endElement(WritePlan const&) { out_.put('}'); }

    void boolean(WriteField const& field, bool value) {
        out_.put(field.key);
        out_.put(value ? std::string_view("true") : std::string_view("false"));
    }
    template <class Number>
    void number(WriteField const& field, Number value) {
        out_.put(field.key);
        putNumber(value);
    }
    void literal(WriteField const& field, std::string_view name) {
        out_.put(field.key);
        quoted(name);
    }
    template <class Text>
    bool text(WriteField const& field, Text const& value) {
        out_.put(field.key);
        putText(value);
        return true;
    }
    void reference(WriteField const& field, uuid const& target) {
        out_.put(field.key);
        reference(target);
    }
    bool proxy(WriteField const& field, ModelElementImpl const& target) {
        out_.put(field.key);
        proxy(target);
        return true;
    }

    void beginList(WriteField const& field) {
        out_.put(field.key);
        out_.put('[');
    }
    void endList(WriteField const&) { out_.put(']'); }
    void beginChild(WriteField const& field) {
        out_.put(field.key);
        out_.put('\n');
    }
    void endChild(WriteField const&) {}
    void listItem(bool first, bool nested = true) {
        if (!first) out_.put(',');
        if (nested) out_.put('\n');
    }
    void item(std::string const& value, bool first) {
        listItem(first, false);
        putText(value);
    }
    void item(std::u16string const& value, bool first) {
        listItem(first, false);
        putText(value);
    }
    void item(int value, bool first) {
        listItem(first, false);
        putNumber(value);
    }
    void reference(uuid const& target) {
        char* to = out_.room(uuidTextSize + 2);
        *to = '"';
        formatUuid(target, to + 1);
        to[uuidTextSize + 1] = '"';
        out_.advance(to + uuidTextSize + 2);
    }
    void proxy(ModelElementImpl const& target);

    // Every value stands where it is met.
    void contentText(WriteField const&, std::string const&) {}
    void contentText(WriteField const&, std::u16string const&) {}
    void contentProxy(WriteField const&, ModelElementImpl const&) {}

  private:
    template <class Number>
    void putNumber(Number value) {
        if constexpr (std::is_same_v<Number, double>)
            if (std::string_view const word = wordFor(value); !word.empty()) return quoted(word);
        out_.advance(formatNumber(value, out_.room(longestNumber)));
    }
    void quoted(std::string_view plain) {
        out_.put('"');
        out_.put(plain);
        out_.put('"');
    }
    void putText(std::string const& bytes);
    void putText(std::u16string const& text);
    void putEscaped(std::string_view utf8, unsigned bits);
    void putEncoded(std::string_view base64);
    void putWithLoneSurrogates(std::u16string_view text);

    TextBuffer& out_;
    std::string scratch_;
};

} // namespace brant::zero::io
