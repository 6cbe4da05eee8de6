// Declarations of types: layers inward, then text outward.

#include "NameWriter.hpp"
#include "TextPatterns.hpp"
#include "zelkor/ast/types/ArrayType.hpp"
#include "zelkor/ast/types/NullPtrType.hpp"
#include "zelkor/ast/types/QualifiedType.hpp"
#include "zelkor/ast/types/TemplateParamType.hpp"
#include "zelkor/ast/types/TypeAttrType.hpp"
#include "zelkor/ast/types/TypeOpType.hpp"
#include "zelkor/ast/types/TypedefType.hpp"
#include "zelkor/ast/types/VectorType.hpp"

namespace zelkor::ast::names {

namespace {

bool isBracketLayer(TypeRule rule) noexcept {
    return rule == TypeRule::Array || rule == TypeRule::Vector;
}

/// \returns whether a pointer or reference to this type needs parentheses around its declarator.
bool bindsBehindTheName(Body const* base) noexcept {
    if (alive(base) == nullptr) return false;
    TypeRule const rule = ruleOf(base->classTable());
    return isBracketLayer(rule) || rule == TypeRule::Function;
}

/// \returns whether a typedef that may be expanded is written as what it stands for.
bool expands(types::TypedefType::Impl const& type) {
    Body const* base = alive(type.getTypeBody());
    return base == nullptr || !(isA<types::TypeOpType>(*base) || isA<types::TypeAttrType>(*base) ||
                                isA<types::NullPtrType>(*base));
}

void appendQualifiers(std::string& out, types::QualifiedType::Impl const& type) {
    char const* separator = "";
    auto const append = [&](bool present, char const* word) {
        if (!present) return;
        out += separator;
        out += word;
        separator = " ";
    };
    append(type.getIsConst(), "const");
    append(type.getIsVolatile(), "volatile");
    append(type.getIsRestrict(), "restrict");
}

void appendBracket(std::string& out, int count) {
    out += '[';
    if (count > 0) out += std::to_string(count);
    out += ']';
}

} // namespace

void NameWriter::writeType(Body const* type, std::string_view declared, bool skipTypedefs) {
    std::size_t const start = out_.size();
    ++openTypes_;
    Declarator declarator{.firstLayer = layers_.size(),
                          .firstPrefix = layers_.size(),
                          .declared = declared,
                          .empty = declared.empty()};
    Innermost const innermost = walkInward(type, skipTypedefs, declarator);
    writeInnermost(innermost, declarator);
    writeBrackets(declarator);
    layers_.erase(layers_.begin() + static_cast<std::ptrdiff_t>(declarator.firstLayer), layers_.end());
    if (--openTypes_ == 0) collapseBlanks(out_, start);
}

NameWriter::Innermost NameWriter::walkInward(Body const* type, bool skipTypedefs, Declarator& declarator) {
    CycleDetector detector;
    for (;;) {
        type = alive(type);
        if (type == nullptr || detector.returned(*type)) return {nullptr, TypeRule::Nothing};
        ++visits_;
        TypeRule const rule = ruleOf(type->classTable());
        switch (rule) {
        case TypeRule::Function: {
            // All that was to be wrapped is dropped, the brackets behind it excepted.
            auto const& function = as<types::FunctionType>(*type);
            declarator.function = &function;
            declarator.functionSkips = skipTypedefs;
            declarator.firstPrefix = layers_.size();
            declarator.empty = false;
            type = function.getRetTypeBody();
            continue;
        }
        case TypeRule::Typedef:
            if (!skipTypedefs || !expands(as<types::TypedefType>(*type))) return {type, rule};
            break;
        case TypeRule::Transparent:
            // A typedef that was expanded before is written by name now: coming back to it is no cycle yet.
            if (skipTypedefs) detector = CycleDetector();
            skipTypedefs = false;
            break;
        case TypeRule::Vector:
        case TypeRule::Array:
            layers_.push_back({type, rule, false, false});
            break;
        case TypeRule::Qualified:
        case TypeRule::Pointer:
        case TypeRule::Reference:
        case TypeRule::RValueReference:
            pushPrefix({type, rule, false, !declarator.empty}, declarator);
            break;
        default:
            return {type, rule};
        }
        type = as<types::BasedType>(*type).getTypeBody();
    }
}

void NameWriter::pushPrefix(Layer layer, Declarator& declarator) {
    if (layer.rule == TypeRule::Qualified) {
        auto const& qualified = as<types::QualifiedType>(*layer.type);
        if (qualified.getIsConst() || qualified.getIsVolatile() || qualified.getIsRestrict())
            declarator.empty = false;
    } else {
        layer.parentheses = bindsBehindTheName(as<types::BasedType>(*layer.type).getTypeBody());
        declarator.empty = false;
    }
    layers_.push_back(layer);
}

void NameWriter::writeInnermost(Innermost const& innermost, Declarator const& declarator) {
    if (innermost.type == nullptr) {
        out_ += unknown;
        return writeTail(declarator);
    }
    Body const& type = *innermost.type;
    std::string const& name = as<Symbol>(type).getName();
    switch (innermost.rule) {
    case TypeRule::Void:
        out_ += "void";
        break;
    case TypeRule::Error:
        out_ += "/* ErrorType */";
        break;
    case TypeRule::Opaque:
        out_ += name.empty() ? std::string_view("/* OpaqueType */") : name;
        break;
    case TypeRule::Boolean:
        out_ += "bool";
        break;
    case TypeRule::NullPtr:
        out_ += name.empty() ? std::string_view("nullptr") : name;
        break;
    case TypeRule::Integer: {
        auto const& integer = as<types::IntegerType>(type);
        appendIntegerWords(out_, integer.getKind(), integer.getIsSigned());
        break;
    }
    case TypeRule::Float:
        appendFloatWords(out_, as<types::FloatType>(type).getKind());
        break;
    case TypeRule::Enum:
        writeNameWithoutMarker(type);
        if (name.empty()) out_ += " /* EnumType */";
        break;
    case TypeRule::Typedef:
        writeQualifiedName(type);
        break;
    case TypeRule::Union:
    case TypeRule::Struct:
    case TypeRule::Aggregate:
        writeAggregate(as<types::AggregateType>(type), innermost.rule);
        break;
    case TypeRule::TemplateParam:
        return writeTemplateParam(type, declarator);
    default:
        return;
    }
    writeTail(declarator);
}

void NameWriter::writeTail(Declarator const& declarator) {
    if (declarator.empty) return;
    out_ += ' ';
    writeDeclarator(declarator);
}

void NameWriter::writeDeclarator(Declarator const& declarator) {
    std::size_t parentheses = 0;
    for (std::size_t i = layers_.size(); i-- > declarator.firstPrefix;) {
        Layer const& layer = layers_[i];
        if (isBracketLayer(layer.rule)) continue;
        if (layer.parentheses) {
            out_ += '(';
            ++parentheses;
        }
        if (layer.rule == TypeRule::Qualified)
            appendQualifiers(out_, as<types::QualifiedType>(*layer.type));
        else if (layer.rule == TypeRule::Pointer)
            out_ += '*';
        else
            out_ += layer.rule == TypeRule::Reference ? "&" : "&&";
        if (layer.blank) out_ += ' ';
    }
    if (declarator.function != nullptr)
        writeFunctionType(*declarator.function, declarator.functionSkips);
    else
        out_ += declarator.declared;
    out_.append(parentheses, ')');
}

void NameWriter::writeBrackets(Declarator const& declarator) {
    for (std::size_t i = layers_.size(); i-- > declarator.firstLayer;) {
        Layer const& layer = layers_[i];
        if (layer.rule == TypeRule::Vector)
            appendBracket(out_, as<types::VectorType>(*layer.type).getWidth());
        else if (layer.rule == TypeRule::Array)
            for (int const dimension : as<types::ArrayType>(*layer.type).getDimensions())
                appendBracket(out_, dimension);
    }
}

void NameWriter::writeFunctionType(types::FunctionType::Impl const& function, bool skipTypedefs) {
    writeNameWithoutMarker(function);
    out_ += " /* FunctionType */ (";
    auto const& parameters = function.getParamTypes();
    if (parameters.empty()) {
        out_ += "void";
    } else if (OpenList const list(*this, function); !list.entered) {
        out_ += unknown;
    } else {
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (i > 0) out_ += ", ";
            if (spent()) {
                out_ += unknown;
                break;
            }
            writeType(parameters.resolved(i), {}, skipTypedefs);
        }
        if (function.getIsVariadic()) out_ += ", ...";
    }
    out_ += ')';
}

void NameWriter::writeNameWithoutMarker(Body const& type) {
    std::size_t const start = out_.size();
    writeQualifiedName(type);
    eraseUnnamed(out_, start);
}

void NameWriter::writeAggregate(types::AggregateType::Impl const& aggregate, TypeRule rule) {
    writeNameWithoutMarker(aggregate);
    if (!aggregate.getName().empty()) return;
    out_ += rule == TypeRule::Union    ? " /* UnionType */"
            : rule == TypeRule::Struct ? " /* StructType */"
                                       : " /* ClassType */";
}

void NameWriter::writeTemplateParam(Body const& param, Declarator const& declarator) {
    auto const& type = as<types::TemplateParamType>(param);
    if (type.getName().empty()) {
        out_ += type.getIsPack() ? "typename ... T" : "typename T";
        return;
    }
    out_ += type.getName();
    if (!declarator.empty) out_ += ' ';
    std::size_t const start = out_.size();
    if (!declarator.empty) writeDeclarator(declarator);
    if (type.getIsPack() && out_.find("...", start) == std::string::npos) out_.insert(start, "... ");
}

std::string typeName(Body const* type, std::string_view declared, bool skipTypedefs) {
    NameWriter writer;
    writer.writeType(type, declared, skipTypedefs);
    return writer.take();
}

} // namespace zelkor::ast::names
