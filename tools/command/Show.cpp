// `zelkor show`: everything about one element, by the rows of its class.

#include "Answers.hpp"
#include "Terminal.hpp"

#include <brant/zero/Visit.hpp>

#include <algorithm>
#include <charconv>
#include <map>

namespace zelkor::command {

namespace za = zelkor::ast;
namespace schema = brant::zero::schema;
using brant::zero::ModelElement;
using brant::zero::ModelElementImpl;
using brant::zero::Value;

namespace {

constexpr std::size_t shownItems = 10;

/// One value of a property in both forms.
struct Item {
    std::string text;
    std::string json;
};

struct Shown {
    std::string name;
    std::vector<Item> items;
    bool many = false;
    bool isDefault = false; ///< shown with --all only
};

Item textItem(std::string const& text) {
    return {text, jsonText(text)};
}
Item plainItem(std::string const& text) {
    return {text, text};
}
Item realItem(double value) {
    char digits[40];
    auto const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return plainItem(std::string(digits, end));
}
Item elementItem(ModelElement const& element) {
    if (element.isProxy()) {
        std::string const target = brant::zero::toUtf8(element->getProxyId().element);
        return {className(element) + " " + target + ", which is not in the model",
                "{\"uuid\": " + jsonText(target) + ", \"class\": " + jsonText(className(element)) +
                    ", \"missing\": true}"};
    }
    std::string const told = title(element);
    std::string const place = placeOf(element).text();
    std::string text = className(element) + (told.empty() ? "" : " " + told);
    if (!place.empty() && place != told) text += " at " + place;
    return {text, "{\"uuid\": " + jsonText(element->identifier()) +
                      ", \"class\": " + jsonText(className(element)) + ", \"text\": " + jsonText(told) + "}"};
}
Item enumItem(schema::PropertyRow const& row, std::int32_t number) {
    for (std::uint16_t i = 0; i < row.enumeration->literalCount; ++i)
        if (row.enumeration->literals[i].value == number) return textItem(row.enumeration->literals[i].name);
    return plainItem(std::to_string(number));
}

Item listedItem(schema::PropertyRow const& row, Value const& value) {
    switch (row.valueKind) {
    case schema::ValueKind::StdString:
        return textItem(value.getValue<std::string>());
    case schema::ValueKind::String:
        return textItem(brant::zero::toUtf8(value.getValue<std::u16string>()));
    default:
        return plainItem(std::to_string(value.getValue<int>()));
    }
}

/// Turns what `visitFeatures` hands out into items.
struct Collector {
    std::vector<Shown> shown;

    void operator()(schema::PropertyRow const& row, auto const& value) {
        using T = std::remove_cvref_t<decltype(value)>;
        Shown property{row.name, {}, row.many(), false};
        if constexpr (std::is_same_v<T, bool>) {
            property.items = {plainItem(value ? "true" : "false")};
            property.isDefault = value == (row.defaultBits != 0);
        } else if constexpr (std::is_same_v<T, brant::zero::EnumerationNumber>) {
            property.items = {enumItem(row, value.value)};
            property.isDefault = value.value == static_cast<std::int32_t>(row.defaultBits);
        } else if constexpr (std::is_same_v<T, std::string>) {
            property.items = {textItem(value)};
            property.isDefault = value.empty();
        } else if constexpr (std::is_same_v<T, std::u16string>) {
            property.items = {textItem(brant::zero::toUtf8(value))};
            property.isDefault = value.empty();
        } else if constexpr (std::is_same_v<T, double>) {
            property.items = {realItem(value)};
            property.isDefault = value == 0;
        } else if constexpr (std::is_integral_v<T>) {
            property.items = {plainItem(std::to_string(value))};
            property.isDefault = value == static_cast<T>(row.defaultBits);
        } else if constexpr (std::is_convertible_v<T, ModelElementImpl const*>) {
            if (value != nullptr && value->valid()) property.items = {elementItem(value->This())};
            property.isDefault = property.items.empty();
        } else if constexpr (std::is_base_of_v<brant::zero::ReferenceCollection, T>) {
            for (ModelElement const& member : value.getAllValuesAndProxies())
                if (member) property.items.push_back(elementItem(member));
            property.isDefault = property.items.empty();
        } else {
            for (Value const& member : value.getAllValues())
                property.items.push_back(listedItem(row, member));
            property.isDefault = std::all_of(property.items.begin(), property.items.end(),
                                             [](Item const& item) { return item.text.empty(); });
        }
        shown.push_back(std::move(property));
    }
};

/// Computed truth values; the other computed properties show other ones from another side.
void addComputed(ModelElement const& element, std::vector<Shown>& shown) {
    schema::ClassTable const& table = element->classTable();
    for (std::uint16_t level = 0; level <= table.depth; ++level)
        for (std::uint16_t i = 0; i < table.chain[level]->rowCount; ++i) {
            schema::PropertyRow const& row = table.chain[level]->rows[i];
            if (row.derived == nullptr || row.many() || row.valueKind != schema::ValueKind::Boolean) continue;
            bool const value = row.derived(*element.get(), row).getValue<bool>();
            shown.push_back({row.name, {plainItem(value ? "true" : "false")}, false, true});
        }
}

std::vector<Shown> properties(ModelElement const& element, bool all) {
    Collector collector;
    brant::zero::visitFeatures(*element.get(), collector);
    if (all)
        addComputed(element, collector.shown);
    else
        std::erase_if(collector.shown, [](Shown const& property) { return property.isDefault; });
    return std::move(collector.shown);
}

/// Class names with how many elements of each lie below, most first.
std::vector<std::pair<std::string, std::size_t>> contents(ModelElement const& element) {
    std::map<std::string, std::size_t> byClass;
    forEachBelow(element, [&](ModelElement const& below) {
        if (!(below == element)) ++byClass[className(below)];
    });
    std::vector<std::pair<std::string, std::size_t>> counts(byClass.begin(), byClass.end());
    std::stable_sort(counts.begin(), counts.end(),
                     [](auto const& a, auto const& b) { return a.second > b.second; });
    return counts;
}

/// A text of several lines stays under the line that it begins on.
std::string indented(std::string const& text, std::size_t columns) {
    std::string out;
    for (char const c : text) {
        out += c;
        if (c == '\n') out.append(columns, ' ');
    }
    return out;
}

void appendProperty(std::string& out, Shown const& property, bool all) {
    out += "  " + property.name;
    if (!property.many) {
        out += ": " + (property.items.empty() ? "none" : indented(property.items.front().text, 4)) + '\n';
        return;
    }
    out += " (" + std::to_string(property.items.size()) + ")\n";
    std::size_t const shown = all ? property.items.size() : std::min(shownItems, property.items.size());
    for (std::size_t i = 0; i < shown; ++i)
        out += "    " + indented(property.items[i].text, 4) + '\n';
    if (shown < property.items.size())
        out += "    and " + std::to_string(property.items.size() - shown) + " more; --all lists them\n";
}

std::string asText(ModelElement const& element, bool all) {
    std::string const name = qualifiedName(element);
    std::string out = painted(Paint::Class, className(element));
    out += (name.empty() ? "" : " " + painted(Paint::Name, name)) + '\n';
    out += "  uuid: " + element->identifier() + '\n';
    if (auto const symbol = za::Symbol::cast(element))
        out += "  signature: " + symbol.generateSignature() + '\n';
    if (Place const place = placeOf(element); place.known())
        out += "  at: " + painted(Paint::Place, place.text()) + '\n';
    if (ModelElement const container = element.container())
        out += "  in: " + elementItem(container).text + '\n';
    for (Shown const& property : properties(element, all))
        appendProperty(out, property, all);
    std::string separator = "  contains: ";
    for (auto const& [cls, count] : contents(element)) {
        out += separator + std::to_string(count) + ' ' + cls;
        separator = ", ";
    }
    return separator == ", " ? out + '\n' : out;
}

std::string asJson(ModelElement const& element, bool all) {
    std::string out = "    {" + recordOf(element).str();
    if (ModelElement const container = element.container())
        out += ",\n     \"container\": " + elementItem(container).json;
    out += ",\n     \"properties\": {";
    std::string separator;
    for (Shown const& property : properties(element, all)) {
        out += separator + "\n       " + jsonText(property.name) + ": ";
        separator = ",";
        if (!property.many) {
            out += property.items.empty() ? "null" : property.items.front().json;
            continue;
        }
        out += "[";
        for (std::size_t i = 0; i < property.items.size(); ++i)
            out += (i == 0 ? "" : ", ") + property.items[i].json;
        out += "]";
    }
    out += "},\n     \"contains\": {";
    separator.clear();
    for (auto const& [cls, count] : contents(element)) {
        out += separator + jsonText(cls) + ": " + std::to_string(count);
        separator = ", ";
    }
    return out + "}}";
}

} // namespace

int runShow(Arguments const& arguments) {
    arguments.requireOperands({"FILE", "NAME|UUID"});
    za::Ast const ast = readModel(arguments.operands()[0]);
    std::string const& word = arguments.operands()[1];
    Lookup const lookup = lookUp(ast, word);
    bool const all = arguments.has("--all");
    std::vector<std::string> texts;
    std::vector<std::string> records;
    for (ModelElement const& element : lookup.elements) {
        if (arguments.has("--json"))
            records.push_back(asJson(element, all));
        else
            texts.push_back((texts.empty() ? "" : "\n") + asText(element, all));
    }
    printLimited(arguments, "show", texts, records);
    return lookup.elements.empty() ? reportMissing(word, lookup) : Ok;
}

} // namespace zelkor::command
