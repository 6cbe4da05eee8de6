#include "Records.hpp"

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

Place placeAt(za::source::SourcePosition const& position) {
    if (!position || !position.getFile()) return {};
    return {brant::zero::toUtf8(position.getFile().getPath()), position.getLine(), position.getCol()};
}

/// The position that tells the place of an element; null when there is none.
za::source::SourcePosition positionOf(ModelElement const& element) {
    if (auto const position = za::source::SourcePosition::cast(element)) return position;
    auto const located = za::source::LocatedObject::cast(element);
    if (!located) return {};
    if (za::source::SourcePosition const position = located.getDefPos(); position && position.getFile())
        return position;
    return located.hasDeclPos() ? located.getDeclPos()[0] : za::source::SourcePosition();
}

} // namespace

std::string Place::text() const {
    if (line == 0) return path;
    return path + ':' + std::to_string(line) + ':' + std::to_string(column);
}

Place placeOf(ModelElement const& element) {
    if (auto const file = za::source::SourceFile::cast(element))
        return {brant::zero::toUtf8(file.getPath()), 0, 0};
    return placeAt(positionOf(element));
}

bool isForeign(ModelElement const& element) {
    za::source::SourceFile file = za::source::SourceFile::cast(element);
    if (!file)
        if (za::source::SourcePosition const position = positionOf(element)) file = position.getFile();
    return !file || file.getIsIncludedFromSystemIncludeDir();
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
    if (auto const unit = za::source::CompilationUnit::cast(element)) {
        for (za::source::SourceFile const& file : unit.getFiles())
            if (file.getIsTopLevelFile()) return title(file);
        return unit.hasFiles() ? title(unit.getFiles()[0]) : std::string();
    }
    if (auto const argument = za::TemplateArg::cast(element)) return argument.getFullyQualifiedName(false);
    if (auto const number = za::constants::NumericConstant::cast(element)) return number.getValue();
    if (auto const address = za::constants::AddressConstant::cast(element)) return address.getValue();
    if (auto const comment = za::Comment::cast(element)) return brant::zero::toUtf8(comment.getText());
    return qualifiedName(element);
}

std::string lineText(ModelElement const& element) {
    if (za::Function::cast(element)) return title(element);
    std::string const name = qualifiedName(element);
    return name.empty() ? title(element) : name;
}

JsonMembers recordOf(ModelElement const& element) {
    JsonMembers members;
    members.text("uuid", element->identifier()).text("class", className(element));
    members.text("name", simpleName(element)).text("qualifiedName", qualifiedName(element));
    if (auto const symbol = za::Symbol::cast(element))
        members.text("signature", symbol.generateSignature());
    else if (std::string const text = title(element); !text.empty())
        members.text("text", text);
    if (Place const place = placeOf(element); place.known()) {
        members.text("file", place.path);
        if (place.line != 0) members.number("line", place.line).number("column", place.column);
    }
    return members;
}

std::string counted(std::size_t count, std::string const& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string recordLine(JsonMembers const& members) {
    return "    {" + members.str() + "}";
}

std::string jsonReply(std::string const& format, std::vector<std::string> const& records,
                      JsonMembers const& more) {
    std::string out = "{\n  \"format\": " + jsonText(format) + ",\n  \"version\": \"1.0\",\n";
    if (!more.empty()) out += "  " + more.str() + ",\n";
    out += "  \"results\": [";
    for (std::size_t i = 0; i < records.size(); ++i)
        out += (i == 0 ? "\n" : ",\n") + records[i];
    return out + (records.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

} // namespace zelkor::command
