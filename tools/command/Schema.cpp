// The schema as the run-time meta package tells it; the schema's own files are not read.

#include "Verbs.hpp"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <sstream>

namespace zelkor::command {

namespace meta = brant::zero::meta;
using brant::zero::toUtf8;

namespace {

using Json = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void text(Json& json, char const* key, std::string const& value) {
    json.Key(key);
    json.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void flag(Json& json, char const* key, bool value) {
    json.Key(key);
    json.Bool(value);
}

void textOrNull(Json& json, char const* key, bool present, std::string const& value) {
    if (present) {
        text(json, key, value);
    } else {
        json.Key(key);
        json.Null();
    }
}

/// The dotted name; operations call the model by its simple one.
std::string typeName(meta::Type const& type) {
    return type == brant::zero::Model::metaClass() ? "Model" : meta::qualifiedNameUtf8(type);
}

char const* multiplicity(meta::Property const& property) {
    return property.getMultiplicity() == 6 ? "map" : (property.getMultiplicity() == 2 ? "*" : "1");
}

void writeProperty(Json& json, meta::Property const& p) {
    json.StartObject();
    text(json, "name", toUtf8(p.getName()));
    json.Key("index");
    if (p.getPropertyIndex() < 0)
        json.Null();
    else
        json.Int64(p.getPropertyIndex());
    text(json, "type", typeName(p.getType()));
    text(json, "multiplicity", multiplicity(p));
    meta::Property const key = p.getQualifiedBy();
    textOrNull(json, "keyedBy", bool(key), key ? toUtf8(meta::qualifiedName(key)) : "");
    flag(json, "contained", p.getIsComposite());
    meta::Property const opposite = p.getOpposite();
    textOrNull(json, "opposite", bool(opposite), opposite ? toUtf8(meta::qualifiedName(opposite)) : "");
    flag(json, "ordered", p.getIsOrdered());
    flag(json, "unique", p.getIsUnique());
    flag(json, "derived", p.getIsDerived());
    flag(json, "readOnly", p.getIsReadOnly());
    flag(json, "transient", p.getIsTransient());
    textOrNull(json, "default", p.getHasDefaultValue() && !p.getDefaultValue().empty(),
               toUtf8(p.getDefaultValue()));
    flag(json, "hasDefault", p.getHasDefaultValue());
    json.EndObject();
}

/// Reflection calls what needs no static context and has no output argument.
bool hasInvoker(meta::Operation const& operation) {
    auto const& arguments = operation.getArguments();
    return !operation.getIsStatic() && std::all_of(arguments.begin(), arguments.end(),
                                                   [](meta::Argument const& a) { return a.getIsInput(); });
}

void writeOperation(Json& json, meta::Operation const& o) {
    json.StartObject();
    text(json, "name", toUtf8(o.getName()));
    text(json, "type", typeName(o.getType()));
    json.Key("lower");
    json.Uint(o.getLower());
    json.Key("upper");
    json.Uint(o.getUpper());
    flag(json, "static", o.getIsStatic());
    flag(json, "abstract", o.getIsAbstract());
    flag(json, "invoker", hasInvoker(o));
    json.Key("arguments");
    json.StartArray();
    for (meta::Argument const& a : o.getArguments()) {
        json.StartObject();
        text(json, "name", toUtf8(a.getName()));
        text(json, "type", typeName(a.getType()));
        flag(json, "input", a.getIsInput());
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
}

void writeNames(Json& json, meta::Type const& type) {
    meta::MetaRegistry::Names const* names = meta::MetaRegistry::getInstance().names(type);
    text(json, "name", meta::qualifiedNameUtf8(type));
    text(json, "native", names == nullptr ? "" : names->native);
    text(json, "script", names == nullptr ? "" : names->script);
}

void writeStructured(Json& json, meta::Type const& type) {
    json.StartObject();
    writeNames(json, type);
    meta::Class const cls = meta::Class::cast(type);
    meta::Class const super = cls ? cls.getSuperclass() : meta::Class();
    textOrNull(json, "super", bool(super), super ? meta::qualifiedNameUtf8(super) : "");
    flag(json, "abstract", cls && cls.getIsAbstract());
    text(json, "uuid", brant::zero::toString(type.uuid()));
    json.Key("properties");
    json.StartArray();
    for (meta::Property const& property : type.getProperties())
        writeProperty(json, property);
    json.EndArray();
    json.Key("operations");
    json.StartArray();
    for (meta::Operation const& operation : type.getOperations())
        writeOperation(json, operation);
    json.EndArray();
    json.EndObject();
}

std::vector<meta::EnumLiteral> literalsByValue(meta::Enum const& type) {
    std::vector<meta::EnumLiteral> literals;
    for (meta::EnumLiteral const& literal : type.getLiterals())
        literals.push_back(literal);
    std::stable_sort(literals.begin(), literals.end(),
                     [](auto const& a, auto const& b) { return a.getValue() < b.getValue(); });
    return literals;
}

void writeEnum(Json& json, meta::Enum const& type) {
    json.StartObject();
    writeNames(json, type);
    text(json, "uuid", brant::zero::toString(type.uuid()));
    text(json, "underlying", meta::qualifiedNameUtf8(type.getUnderlyingType()));
    json.Key("literals");
    json.StartArray();
    for (meta::EnumLiteral const& literal : literalsByValue(type)) {
        json.StartObject();
        text(json, "name", toUtf8(literal.getName()));
        json.Key("value");
        json.Int64(literal.getValue());
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
}

/// The types of all packages below the root, packages outermost first.
struct Contents {
    std::vector<meta::Package> packages;
    std::vector<meta::Type> classes;
    std::vector<meta::Type> datatypes;
    std::vector<meta::Enum> enums;

    void add(meta::Package const& package) {
        for (meta::Package const& inner : package.getSubPackages()) {
            packages.push_back(inner);
            for (meta::Type const& type : inner.getTypes()) {
                if (meta::Enum const e = meta::Enum::cast(type))
                    enums.push_back(e);
                else
                    (meta::DataType::cast(type) ? datatypes : classes).push_back(type);
            }
            add(inner);
        }
    }
};

std::string dottedName(meta::Package const& package) {
    meta::Package const parent = package.getParentPackage();
    std::string const name = toUtf8(package.getName());
    return parent && !parent.getName().empty() ? dottedName(parent) + "." + name : name;
}

std::string asJson(Contents const& contents) {
    rapidjson::StringBuffer buffer;
    Json json(buffer);
    json.SetIndent(' ', 1);
    json.StartObject();
    json.Key("packages");
    json.StartArray();
    for (meta::Package const& package : contents.packages) {
        json.StartObject();
        text(json, "name", dottedName(package));
        text(json, "uri", toUtf8(package.getUri()));
        json.EndObject();
    }
    json.EndArray();
    json.Key("classes");
    json.StartArray();
    for (meta::Type const& type : contents.classes)
        writeStructured(json, type);
    json.EndArray();
    json.Key("datatypes");
    json.StartArray();
    for (meta::Type const& type : contents.datatypes)
        writeStructured(json, type);
    json.EndArray();
    json.Key("enums");
    json.StartArray();
    for (meta::Enum const& type : contents.enums)
        writeEnum(json, type);
    json.EndArray();
    json.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

void describe(std::ostream& out, meta::Type const& type) {
    meta::Class const cls = meta::Class::cast(type);
    out << (cls ? (cls.getIsAbstract() ? "abstract class " : "class ") : "value type ")
        << meta::qualifiedNameUtf8(type);
    if (cls && cls.getSuperclass()) out << " : " << meta::qualifiedNameUtf8(cls.getSuperclass());
    out << '\n';
    for (meta::Property const& p : type.getProperties()) {
        out << "  ";
        if (p.getPropertyIndex() >= 0) out << p.getPropertyIndex() << ' ';
        out << toUtf8(p.getName()) << ": " << meta::qualifiedNameUtf8(p.getType());
        if (p.getMultiplicity() != 1) out << " [" << multiplicity(p) << ']';
        if (p.getIsComposite()) out << " contained";
        if (p.getIsDerived()) out << " derived";
        if (p.getOpposite()) out << " <-> " << toUtf8(meta::qualifiedName(p.getOpposite()));
        if (p.getHasDefaultValue() && !p.getDefaultValue().empty())
            out << " = " << toUtf8(p.getDefaultValue());
        out << '\n';
    }
    for (meta::Operation const& o : type.getOperations()) {
        out << "  " << (o.getIsStatic() ? "static " : "") << toUtf8(o.getName()) << '(';
        char const* separator = "";
        for (meta::Argument const& a : o.getArguments()) {
            out << separator << (a.getIsInput() ? "" : "out ") << toUtf8(a.getName()) << ": "
                << meta::qualifiedNameUtf8(a.getType());
            separator = ", ";
        }
        out << "): " << meta::qualifiedNameUtf8(o.getType()) << (o.getUpper() > 1 ? " [*]" : "") << '\n';
    }
}

std::string asText(Contents const& contents) {
    std::ostringstream out;
    for (meta::Type const& type : contents.classes)
        describe(out, type);
    for (meta::Type const& type : contents.datatypes)
        describe(out, type);
    for (meta::Enum const& type : contents.enums) {
        out << "enum " << meta::qualifiedNameUtf8(type) << '\n';
        for (meta::EnumLiteral const& literal : literalsByValue(type))
            out << "  " << toUtf8(literal.getName()) << " = " << literal.getValue() << '\n';
    }
    return out.str();
}

} // namespace

int runSchema(Arguments const& arguments) {
    arguments.requireOperands({});
    Contents contents;
    contents.add(zelkor::ast::MetaPackageZelkor_ast::getInstance().rootPackage());
    print(arguments.has("--json") ? asJson(contents) : asText(contents));
    return Ok;
}

} // namespace zelkor::command
