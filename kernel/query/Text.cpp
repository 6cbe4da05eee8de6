// What conditions and places print, and what they complain about.

#include "brant/zero/Text.hpp"

#include "brant/zero/meta/Class.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/query/Condition.hpp"

#include <stdexcept>

namespace brant::zero::query {

void print(std::ostream& out, Step const& step) {
    out << step.written->shortName << '.' << step.row->name;
    if (step.narrowed != nullptr) out << ".as(" << step.narrowed->shortName << ')';
}

void requireSingle(Step const& step) {
    if (!step.row->many()) return;
    throw std::invalid_argument(std::string(step.written->shortName) + "." + step.row->name +
                                " refers to many elements; ask any(), all(), none() or count() of it");
}

void requireSubject(schema::ClassTable const& asked, schema::ClassTable const& subject) {
    if (asked.conformsTo(subject)) return;
    throw std::invalid_argument(std::string("a condition about ") + subject.shortName +
                                " cannot be asked of elements of class " + asked.shortName);
}

schema::ClassTable const& detail::commonSubject(schema::ClassTable const& a, schema::ClassTable const& b) {
    if (a.conformsTo(b)) return a;
    requireSubject(b, a);
    return b;
}

schema::ClassTable const& writtenClass(InstanceAttachment const& attachment) {
    return *meta::tableOf(meta::Class::cast(attachment.query().queriedClass()));
}

void IsACondition::print(std::ostream& out, Binding) const {
    out << "isA(" << wanted_->shortName << ')';
}

void printValue(std::ostream& out, std::string_view value) {
    static constexpr char digits[] = "0123456789abcdef";
    out << '"';
    for (char const c : value) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            out << '\\' << c;
        else if (byte < 0x20)
            out << "\\x" << digits[byte >> 4] << digits[byte & 15];
        else
            out << c;
    }
    out << '"';
}

void printValue(std::ostream& out, std::u16string_view value) {
    out << 'u';
    printValue(out, std::string_view(toUtf8(value)));
}

void printValue(std::ostream& out, ModelElementImpl const* value) {
    if (value == nullptr)
        out << "null";
    else
        out << value->classTable().shortName << ' ' << value->identifier();
}

void printLiteral(std::ostream& out, schema::EnumTable const& enumeration, int number) {
    for (std::uint16_t i = 0; i < enumeration.literalCount; ++i)
        if (enumeration.literals[i].value == number) {
            out << enumeration.name << '.' << enumeration.literals[i].name;
            return;
        }
    out << enumeration.name << '(' << number << ')';
}

} // namespace brant::zero::query
