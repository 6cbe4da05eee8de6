#include "names/PlainNames.hpp"

#include <regex>
#include <sstream>

namespace testnames::plain {

namespace {

using Out = std::ostream;

template <class T>
bool is(brant::zero::ModelElement const& element) {
    return static_cast<bool>(T::cast(element));
}

std::string withoutMarker(std::string const& text, std::string const& replacement = "") {
    static std::regex const marker("#unnamed#");
    return std::regex_replace(text, marker, replacement);
}

std::string marked(zt::TemplateParamType const& type, std::string const& text) {
    return type.getIsPack() && text.find("...") == std::string::npos ? "... " + text : text;
}

void write(Out& out, zt::Type const& type, std::string const& declared, bool skip);

std::string integerWords(zt::IntegerType const& type) {
    switch (type.getKind()) {
    case IntegerKind::Char:
        return "char";
    case IntegerKind::Wchar:
        return "wchar_t";
    default:
        break;
    }
    std::string const sign = type.getIsSigned() ? "" : "unsigned ";
    return sign + (type.getKind() == IntegerKind::SignedLong ? "long" : "int");
}

bool needsParentheses(zt::Type const& type) {
    return is<zt::ArrayType>(type) || is<zt::VectorType>(type) || is<zt::FunctionType>(type);
}

void writePointer(Out& out, std::string const& sign, zt::BasedType const& type, std::string const& tail,
                  bool skip) {
    bool const parentheses = needsParentheses(type.getType());
    write(out, type.getType(), (parentheses ? "(" : "") + sign + tail + (parentheses ? ")" : ""), skip);
}

void writeFunction(Out& out, zt::FunctionType const& type, bool skip) {
    std::ostringstream f;
    f << withoutMarker(symbolName(type)) << " /* FunctionType */ (";
    if (type.getParamTypes().empty()) f << "void";
    std::string separator;
    for (zt::Type const& parameter : type.getParamTypes()) {
        f << separator;
        separator = ", ";
        write(f, parameter, "", skip);
    }
    if (!type.getParamTypes().empty() && type.getIsVariadic()) f << separator << "...";
    f << ")";
    write(out, type.getRetType(), f.str(), skip);
}

void writeTyperef(Out& out, zt::TyperefType const& type, std::string const& declared, std::string const& tail,
                  bool skip) {
    if (!is<zt::TypedefType>(type)) return write(out, type.getType(), declared, false);
    zt::Type const base = type.getType();
    if (is<zt::TypeOpType>(base) || is<zt::TypeAttrType>(base) || is<zt::NullPtrType>(base)) skip = false;
    if (skip)
        write(out, base, declared, true);
    else
        out << symbolName(type) << tail;
}

void write(Out& out, zt::Type const& type, std::string const& declared, bool skip) {
    std::string const sep = declared.empty() ? "" : " ";
    std::string const tail = sep + declared;
    if (!type) {
        out << "#unknown#" << tail;
    } else if (is<zt::VoidType>(type)) {
        out << "void" << tail;
    } else if (auto const integer = zt::IntegerType::cast(type)) {
        out << integerWords(integer) << tail;
    } else if (is<zt::NullPtrType>(type)) {
        out << (type.getName().empty() ? "nullptr" : type.getName()) << tail;
    } else if (is<zt::EnumType>(type)) {
        out << withoutMarker(symbolName(type)) << (type.getName().empty() ? " /* EnumType */" : "") << tail;
    } else if (auto const vector = zt::VectorType::cast(type)) {
        write(out, vector.getType(), declared, skip);
        out << "[" << (vector.getWidth() > 0 ? std::to_string(vector.getWidth()) : "") << "]";
    } else if (auto const array = zt::ArrayType::cast(type)) {
        write(out, array.getType(), declared, skip);
        for (int dimension : array.getDimensions())
            out << "[" << (dimension > 0 ? std::to_string(dimension) : "") << "]";
    } else if (auto const qualified = zt::QualifiedType::cast(type)) {
        std::string q = qualified.getIsConst() ? "const" : "";
        if (qualified.getIsVolatile()) q += std::string(q.empty() ? "" : " ") + "volatile";
        if (qualified.getIsRestrict()) q += std::string(q.empty() ? "" : " ") + "restrict";
        write(out, qualified.getType(), q + tail, skip);
    } else if (auto const typeref = zt::TyperefType::cast(type)) {
        writeTyperef(out, typeref, declared, tail, skip);
    } else if (is<zt::PointerType>(type) || is<zt::PointerToMemberType>(type)) {
        writePointer(out, "*", zt::BasedType::cast(type), tail, skip);
    } else if (is<zt::ReferenceType>(type)) {
        writePointer(out, is<zt::RValueReferenceType>(type) ? "&&" : "&", zt::BasedType::cast(type), tail,
                     skip);
    } else if (auto const function = zt::FunctionType::cast(type)) {
        writeFunction(out, function, skip);
    } else if (is<zt::AggregateType>(type)) {
        out << withoutMarker(symbolName(type));
        if (type.getName().empty())
            out << " "
                << (is<zt::UnionType>(type)    ? "/* UnionType */"
                    : is<zt::StructType>(type) ? "/* StructType */"
                                               : "/* ClassType */");
        out << tail;
    } else if (auto const param = zt::TemplateParamType::cast(type)) {
        if (type.getName().empty())
            out << "typename " << marked(param, withoutMarker(symbolName(type), "T"));
        else
            out << symbolName(type) << sep << marked(param, declared);
    }
}

template <class Owner>
std::string argumentList(Owner const& owner) {
    std::string text = "<";
    std::string separator;
    bool afterMark = false;
    for (za::TemplateArg const& argument : owner.getTemplateArgs()) {
        if (argument.getKind() == za::TemplateArgKind::StartOfPackExpansion) {
            afterMark = true;
            continue;
        }
        text += separator + argumentName(argument, afterMark);
        separator = ", ";
        afterMark = false;
    }
    return text + ">";
}

std::string prefixed(std::string const& scope, std::string const& name) {
    return scope.empty() ? name : scope + "::" + name;
}

std::string functionName(za::Function const& function) {
    std::string text = function.getName();
    zt::Method const method = zt::Method::cast(function);
    if (method ? !method.getOwningAggregate() : !function.getOwningScope()) return text;
    text = prefixed(method ? symbolName(method.getOwningAggregate()) : scopeName(function.getOwningScope()),
                    text);
    return function.getIsTemplate() ? text + argumentList(function) : text;
}

std::string typeRule(zt::Type const& type) {
    std::string text = type.getName().empty() ? "#unnamed#" : type.getName();
    zt::TypedefType const alias = zt::TypedefType::cast(type);
    if (alias && !alias.getTemplateArgs().empty()) {
        text += "<";
        std::string separator;
        for (za::TemplateArg const& argument : alias.getTemplateArgs()) {
            text += separator + argumentName(argument, false);
            separator = ", ";
        }
        text += ">";
    }
    if (is<zt::TemplateParamType>(type) || !type.getOwningScope()) return text;
    return prefixed(scopeName(type.getOwningScope()), text);
}

std::string variableText(za::Variable const& variable) {
    return typeName(variable.getType(), (variable.getIsParameterPack() ? "... " : "") + variable.getName(),
                    false);
}

std::string functionText(za::Function const& function) {
    std::string text;
    zt::Method const method = zt::Method::cast(function);
    if (method && method.getIsVirtual()) text += "virtual ";
    if (function.getIsInline()) text += "inline ";
    if (auto const type = zt::FunctionType::cast(function.getType()); type && type.getRetType())
        text += signature(type.getRetType()) + " ";
    text += symbolName(function) + "(";
    if (function.getParams().empty()) text += "void";
    std::string separator;
    bool sawPack = false;
    for (za::Variable const& parameter : function.getParams()) {
        sawPack |= parameter.getIsParameterPack();
        text += separator + variableText(parameter);
        separator = ", ";
    }
    if (!function.getParams().empty() && !sawPack && function.getIsVariadic()) text += separator + "...";
    text += ")";
    if (method && method.getIsThisConst()) text += " const";
    return function.getIsDeleted() ? text + " = deleted" : text;
}

std::string typeArgument(zt::Type const& type, bool afterPackMark) {
    if (is<zt::TemplateParamType>(type))
        return std::string("typename ") + (afterPackMark ? "... " : "") +
               (type.getName().empty() ? "T" : type.getName());
    std::string const text = type ? typeName(type, "", true) : "";
    return text.empty() ? "T" : text;
}

std::string valueArgument(zc::Constant const& value, bool afterPackMark) {
    if (!value) return std::string("#UnknownType# ") + (afterPackMark ? "... N" : "N");
    if (auto const number = zc::NumericConstant::cast(value)) {
        auto const type = zt::EnumType::cast(value.getType());
        if (!type) return number.getValue();
        bool const byScope = !type.getIsScopedEnum() && is<za::Namespace>(type.getOwningScope());
        return prefixed(byScope ? scopeName(type.getOwningScope()) : symbolName(type), value.getName());
    }
    if (auto const address = zc::AddressConstant::cast(value)) {
        std::string const text = address.getKind() == za::AddressKind::Unknown ? "" : address.getValue();
        return text.empty() ? "#UnknownAddress#" : text;
    }
    std::string prefix;
    if (value.getType()) {
        prefix = typeName(value.getType(), "", true);
        if (prefix.empty()) prefix = "#UnknownType#";
        if (!value.getName().empty()) prefix += " ";
    }
    return prefix + value.getName();
}

} // namespace

std::string typeName(zt::Type const& type, std::string const& declared, bool skipTypedefs) {
    static std::regex const blanks("\\s+");
    std::ostringstream out;
    write(out, type, declared, skipTypedefs);
    return std::regex_replace(out.str(), blanks, " ");
}

std::string scopeName(za::Scope const& scope) {
    if (scope.getOwningTemplate()) return symbolName(scope.getOwningTemplate());
    if (scope.getOwningAggregate()) return symbolName(scope.getOwningAggregate());
    if (scope.getOwningFun()) return symbolName(scope.getOwningFun());
    za::Namespace const space = za::Namespace::cast(scope);
    if (!space) return "";
    return space.getParent() ? prefixed(scopeName(space.getParent()), space.getName()) : space.getName();
}

std::string symbolName(za::Symbol const& symbol) {
    if (auto const type = zt::Type::cast(symbol)) {
        std::string const text = typeRule(type);
        auto const aggregate = zt::AggregateType::cast(type);
        return aggregate && aggregate.getIsTemplate() ? text + argumentList(aggregate) : text;
    }
    if (auto const function = za::Function::cast(symbol)) return functionName(function);
    if (auto const made = za::Template::cast(symbol); made && made.getProtoTypeInstantiation())
        return symbolName(made.getProtoTypeInstantiation());
    if (auto const member = zt::Member::cast(symbol))
        return member.getAggregate() ? prefixed(symbolName(member.getAggregate()), member.getName())
                                     : member.getName();
    za::Scope const scope = symbol.getOwningScope();
    return scope ? prefixed(scopeName(scope), symbol.getName()) : symbol.getName();
}

std::string argumentName(za::TemplateArg const& argument, bool afterPackMark) {
    switch (argument.getKind()) {
    case za::TemplateArgKind::Type:
        return typeArgument(argument.getType(), afterPackMark);
    case za::TemplateArgKind::NonType:
        return valueArgument(argument.getVal(), afterPackMark);
    case za::TemplateArgKind::StartOfPackExpansion:
        return "...";
    default:
        return std::string("#Unsupported# ") + (afterPackMark ? "... " : "") + argument.getName();
    }
}

std::string signature(za::Symbol const& symbol) {
    if (auto const type = zt::Type::cast(symbol)) return typeName(type, "", false);
    if (auto const function = za::Function::cast(symbol)) return functionText(function);
    if (auto const variable = za::Variable::cast(symbol)) return variableText(variable);
    auto const made = za::Template::cast(symbol);
    std::string const text = made.getIsExported() ? "exported " : "";
    if (made.getProtoTypeInstantiation()) return text + signature(made.getProtoTypeInstantiation());
    return text + symbolName(made) + "<#UnknownTemplateArgList#>";
}

} // namespace testnames::plain
