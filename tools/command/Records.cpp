#include "Records.hpp"

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

Place placeAt(za::source::SourcePosition const& position) {
    if (!position || !position.getFile()) return {};
    return {brant::zero::toUtf8(position.getFile().getPath()), position.getLine(), position.getCol()};
}

} // namespace

std::string Place::text() const {
    return known() ? path + ':' + std::to_string(line) + ':' + std::to_string(column) : std::string();
}

Place placeOf(ModelElement const& element) {
    if (auto const position = za::source::SourcePosition::cast(element)) return placeAt(position);
    auto const located = za::source::LocatedObject::cast(element);
    if (!located) return {};
    Place place = placeAt(located.getDefPos());
    if (!place.known() && located.hasDeclPos()) place = placeAt(located.getDeclPos()[0]);
    return place;
}

std::string className(ModelElement const& element) {
    return element->classTable().shortName;
}

std::string title(ModelElement const& element) {
    if (auto const type = za::types::Type::cast(element))
        return za::types::Type::generateTypeName(type, {}, false);
    if (auto const declaration = za::Declaration::cast(element)) return declaration.generateSignature();
    if (auto const base = za::types::BaseClass::cast(element)) return title(base.getType());
    if (auto const range = za::source::SourceRange::cast(element)) return placeOf(range.getStart()).text();
    if (auto const file = za::source::SourceFile::cast(element)) return brant::zero::toUtf8(file.getPath());
    if (za::source::SourcePosition::cast(element)) return placeOf(element).text();
    if (auto const argument = za::TemplateArg::cast(element)) return argument.getFullyQualifiedName(false);
    if (auto const number = za::constants::NumericConstant::cast(element)) return number.getValue();
    if (auto const address = za::constants::AddressConstant::cast(element)) return address.getValue();
    if (auto const comment = za::Comment::cast(element)) return brant::zero::toUtf8(comment.getText());
    return qualifiedName(element);
}

std::string commonMembers(ModelElement const& element) {
    return "\"uuid\": " + jsonText(element->identifier()) + ", \"class\": " + jsonText(className(element)) +
           ", \"name\": " + jsonText(simpleName(element)) +
           ", \"qualifiedName\": " + jsonText(qualifiedName(element));
}

std::string placeMembers(Place const& place) {
    if (!place.known()) return {};
    return ", \"file\": " + jsonText(place.path) + ", \"line\": " + std::to_string(place.line) +
           ", \"column\": " + std::to_string(place.column);
}

std::string jsonReply(std::string const& format, std::vector<std::string> const& records) {
    std::string out = "{\n  \"format\": " + jsonText(format) + ",\n  \"version\": \"1.0\",\n  \"results\": [";
    for (std::size_t i = 0; i < records.size(); ++i)
        out += (i == 0 ? "\n" : ",\n") + records[i];
    return out + (records.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

} // namespace zelkor::command
