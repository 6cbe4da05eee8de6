#include "ConstantReader.hpp"

#include "DeclarationReader.hpp"
#include "TypeReader.hpp"

#include <algorithm>
#include <charconv>
#include <vector>

namespace zelkor::producer {

namespace {

constexpr unsigned deepestList = 64;

std::vector<CXCursor> childrenOf(CXCursor cursor) {
    std::vector<CXCursor> children;
    visitChildren(cursor, [&](CXCursor child) {
        children.push_back(child);
        return CXChildVisit_Continue;
    });
    return children;
}

bool isWrapper(CXCursorKind kind) {
    return kind == CXCursor_UnexposedExpr || kind == CXCursor_ParenExpr || kind == CXCursor_CStyleCastExpr ||
           kind == CXCursor_CXXStaticCastExpr || kind == CXCursor_CXXReinterpretCastExpr ||
           kind == CXCursor_CXXConstCastExpr || kind == CXCursor_CXXFunctionalCastExpr;
}

// Casts and parentheses stand in the way of what an address or a literal is; the operand is the last child.
CXCursor unwrap(CXCursor expression) {
    while (isWrapper(clang_getCursorKind(expression))) {
        std::vector<CXCursor> const children = childrenOf(expression);
        if (children.empty() || !isExpressionKind(clang_getCursorKind(children.back()))) break;
        expression = children.back();
    }
    return expression;
}

bool isLiteral(CXCursorKind kind) {
    return kind == CXCursor_IntegerLiteral || kind == CXCursor_FloatingLiteral ||
           kind == CXCursor_CharacterLiteral || kind == CXCursor_CXXBoolLiteralExpr ||
           kind == CXCursor_CXXNullPtrLiteralExpr;
}

// Literals and arithmetic of them; nothing in it depends on a template parameter.
bool isOfLiterals(CXCursor expression) {
    bool isIt = true;
    auto const test = [&](CXCursor cursor) {
        CXCursorKind const kind = clang_getCursorKind(cursor);
        if (!isExpressionKind(kind)) return CXChildVisit_Recurse;
        CXTypeKind const type = clang_getCanonicalType(clang_getCursorType(cursor)).kind;
        bool const isKnown = isLiteral(kind) || isWrapper(kind) || kind == CXCursor_UnaryOperator ||
                             kind == CXCursor_BinaryOperator || kind == CXCursor_ConditionalOperator;
        isIt &= isKnown && type != CXType_Unexposed && type != CXType_Dependent;
        return isIt ? CXChildVisit_Recurse : CXChildVisit_Break;
    };
    test(expression);
    if (isIt) visitChildren(expression, test);
    return isIt;
}

// In a template the front end may not evaluate what depends on parameters, so there only literals count.
bool mayEvaluate(CXCursor expression, CXCursor context) {
    for (CXCursor cursor = context; !clang_isInvalid(clang_getCursorKind(cursor));
         cursor = clang_getCursorSemanticParent(cursor)) {
        CXCursorKind const kind = clang_getCursorKind(cursor);
        if (kind == CXCursor_TranslationUnit) break;
        if (isTemplateCursor(kind)) return isOfLiterals(expression);
    }
    return true;
}

bool refersToTemplateParameter(CXCursor expression) {
    bool found = false;
    auto const test = [&](CXCursor cursor) {
        CXCursor const referenced = clang_getCursorReferenced(cursor);
        found |= clang_getCursorKind(referenced) == CXCursor_NonTypeTemplateParameter;
        return found ? CXChildVisit_Break : CXChildVisit_Recurse;
    };
    test(expression);
    if (!found) visitChildren(expression, test);
    return found;
}

bool isPointerLike(CXTypeKind kind) {
    return kind == CXType_Pointer || kind == CXType_LValueReference || kind == CXType_RValueReference ||
           kind == CXType_MemberPointer || kind == CXType_NullPtr || kind == CXType_BlockPointer;
}

std::string qualifiedName(CXCursor cursor) {
    std::string name = nameOf(cursor);
    for (CXCursor scope = clang_getCursorSemanticParent(cursor); !clang_isInvalid(clang_getCursorKind(scope));
         scope = clang_getCursorSemanticParent(scope)) {
        CXCursorKind const kind = clang_getCursorKind(scope);
        if (kind == CXCursor_TranslationUnit) break;
        if (kind == CXCursor_LinkageSpec) continue;
        name = nameOf(scope) + "::" + name;
    }
    return name;
}

template <class Real>
std::string shortestText(Real value) {
    char text[64];
    auto const result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

void appendUtf8(std::string& text, unsigned long code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | (code >> 6));
        text += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | (code >> 12));
        text += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (code >> 18));
        text += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Digits of an escape at `at`, at most `most` of them; moves `at` behind them.
unsigned long readDigits(std::string const& text, std::size_t& at, std::size_t most, int base) {
    unsigned long value = 0;
    std::size_t const last = std::min(text.size(), at + most);
    auto const result = std::from_chars(text.data() + at, text.data() + last, value, base);
    at = static_cast<std::size_t>(result.ptr - text.data());
    return value;
}

} // namespace

std::string decodeLiteral(std::string const& literal) {
    static constexpr std::string_view letters = "abfnrtv";
    static constexpr std::string_view controls = "\a\b\f\n\r\t\v";
    std::size_t const quote = literal.find('"');
    std::size_t const end = literal.rfind('"');
    if (quote == std::string::npos || end <= quote) return literal;
    // Only the units of narrow literals are bytes.
    bool const isWide = quote > 0 && !literal.starts_with("u8");
    std::string text;
    for (std::size_t at = quote + 1; at < end;) {
        char const next = literal[at++];
        if (next != '\\' || at >= end) {
            text += next;
            continue;
        }
        char const escape = literal[at];
        std::size_t const control = letters.find(escape);
        bool const isCode = escape == 'x' || escape == 'u' || escape == 'U';
        unsigned long code = 0;
        if (isCode) {
            std::size_t const digits = escape == 'x' ? end : escape == 'u' ? 4 : 8;
            code = readDigits(literal, ++at, digits, 16);
        } else if (escape >= '0' && escape <= '7') {
            code = readDigits(literal, at, 3, 8);
        } else {
            text += control == std::string_view::npos ? escape : controls[control];
            ++at;
            continue;
        }
        if (isWide || escape == 'u' || escape == 'U') {
            appendUtf8(text, code);
        } else {
            text += static_cast<char>(code);
        }
    }
    return text;
}

ConstantReader::ConstantReader(DeclarationReader& declarations, TypeReader& types)
    : declarations_(declarations), types_(types) {}

ConstantFact ConstantReader::read(CXCursor expression, CXCursor context) {
    CXTypeKind const declared = clang_getCanonicalType(clang_getCursorType(context)).kind;
    ConstantFact constant;
    if ((declared == CXType_LValueReference || declared == CXType_RValueReference) &&
        readAddress(unwrap(expression), true, constant)) {
        constant.type = types_.read(clang_getCursorType(expression), context);
        return constant;
    }
    return readNested(expression, context, 0);
}

ConstantFact ConstantReader::readNested(CXCursor expression, CXCursor context, unsigned depth) {
    CXCursor const plain = unwrap(expression);
    CXCursorKind const kind = clang_getCursorKind(plain);
    if (kind == CXCursor_InitListExpr && depth < deepestList) return readList(plain, context, depth);
    ConstantFact constant;
    constant.type = types_.read(clang_getCursorType(expression), context);
    if (kind == CXCursor_StringLiteral) {
        constant.kind = ConstantKind::String;
        constant.value = decodeLiteral(toText(clang_getCursorSpelling(plain)));
        return constant;
    }
    CXTypeKind const typeKind = clang_getCanonicalType(clang_getCursorType(expression)).kind;
    if (isPointerLike(typeKind) && readAddress(plain, false, constant)) return constant;
    if (mayEvaluate(expression, context) && readEvaluated(expression, constant)) return constant;
    if (refersToTemplateParameter(expression)) {
        constant.kind = ConstantKind::TemplateParam;
        CXCursor const parameter = clang_getCursorReferenced(plain);
        if (clang_getCursorKind(parameter) == CXCursor_NonTypeTemplateParameter)
            constant.name = nameOf(parameter);
    }
    return constant;
}

ConstantFact ConstantReader::readList(CXCursor list, CXCursor context, unsigned depth) {
    ConstantFact constant;
    constant.kind = ConstantKind::Aggregate;
    CXType const type = clang_getCursorType(list);
    constant.type = types_.read(type, context);
    std::vector<CXCursor> const items = childrenOf(list);
    for (CXCursor const& item : items)
        readListItem(item, context, depth, constant);
    CXType const canonical = clang_getCanonicalType(type);
    if (canonical.kind == CXType_ConstantArray &&
        clang_getArraySize(canonical) > static_cast<long long>(items.size())) {
        ConstantFact rest;
        rest.kind = ConstantKind::InitRepeat;
        rest.type = types_.read(clang_getArrayElementType(canonical), context);
        constant.elements.push_back(std::move(rest));
    }
    return constant;
}

// A designated value is an unexposed expression of the member, or of an index, and the value after it.
void ConstantReader::readListItem(CXCursor item, CXCursor context, unsigned depth, ConstantFact& list) {
    if (clang_getCursorKind(item) == CXCursor_UnexposedExpr &&
        clang_getCursorType(item).kind == CXType_Void) {
        std::vector<CXCursor> const parts = childrenOf(item);
        for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
            ConstantFact designator;
            designator.kind = ConstantKind::Designator;
            designator.type = types_.read(clang_getCursorType(parts[i]), context);
            if (clang_getCursorKind(parts[i]) == CXCursor_MemberRef) {
                designator.name = toText(clang_getCursorSpelling(parts[i]));
            } else {
                designator.name = std::string(declarations_.sources().text(clang_getCursorExtent(parts[i])));
            }
            list.elements.push_back(std::move(designator));
        }
        if (!parts.empty()) list.elements.push_back(readNested(parts.back(), context, depth + 1));
        return;
    }
    list.elements.push_back(readNested(item, context, depth + 1));
}

bool ConstantReader::readEvaluated(CXCursor expression, ConstantFact& constant) {
    CXTypeKind const type = clang_getCanonicalType(clang_getCursorType(expression)).kind;
    if (type == CXType_Record || type == CXType_Unexposed || type == CXType_Dependent) return false;
    CXEvalResult const result = clang_Cursor_Evaluate(expression);
    if (!result) return false;
    bool isKnown = true;
    switch (clang_EvalResult_getKind(result)) {
    case CXEval_Int:
        constant.kind = ConstantKind::Integer;
        constant.value = clang_EvalResult_isUnsignedInt(result)
                             ? std::to_string(clang_EvalResult_getAsUnsigned(result))
                             : std::to_string(clang_EvalResult_getAsLongLong(result));
        break;
    case CXEval_Float:
        constant.kind = ConstantKind::Float;
        constant.value = type == CXType_Float
                             ? shortestText(static_cast<float>(clang_EvalResult_getAsDouble(result)))
                             : shortestText(clang_EvalResult_getAsDouble(result));
        break;
    default:
        isKnown = false;
    }
    clang_EvalResult_dispose(result);
    if (!isKnown) return false;
    CXCursor const referenced = clang_getCursorReferenced(unwrap(expression));
    if (clang_getCursorKind(referenced) == CXCursor_EnumConstantDecl) constant.name = nameOf(referenced);
    return true;
}

bool ConstantReader::readAddress(CXCursor expression, bool bindsReference, ConstantFact& constant) {
    CXCursor operand = expression;
    CXCursorKind kind = clang_getCursorKind(operand);
    if (!bindsReference && (kind == CXCursor_CXXNullPtrLiteralExpr || kind == CXCursor_GNUNullExpr ||
                            kind == CXCursor_IntegerLiteral)) {
        CXEvalResult const result =
            kind == CXCursor_IntegerLiteral ? clang_Cursor_Evaluate(operand) : nullptr;
        constant.kind = ConstantKind::Integer;
        constant.value = result ? std::to_string(clang_EvalResult_getAsUnsigned(result)) : "0";
        clang_EvalResult_dispose(result);
        return true;
    }
    bool isAddressOf = bindsReference;
    if (kind == CXCursor_UnaryOperator && !bindsReference) {
        if (clang_getCursorUnaryOperatorKind(operand) != CXUnaryOperator_AddrOf) return false;
        std::vector<CXCursor> const children = childrenOf(operand);
        if (children.empty()) return false;
        isAddressOf = true;
        operand = unwrap(children.back());
        kind = clang_getCursorKind(operand);
    }
    // An element or a member of a variable has its address somewhere inside; the variable is what can be
    // told.
    while (isAddressOf && (kind == CXCursor_ArraySubscriptExpr || kind == CXCursor_MemberRefExpr)) {
        std::vector<CXCursor> const children = childrenOf(operand);
        if (children.empty()) return false;
        operand = unwrap(children.front());
        kind = clang_getCursorKind(operand);
    }
    if (kind != CXCursor_DeclRefExpr) return false;
    CXCursor const referenced = clang_getCursorReferenced(operand);
    CXCursorKind const target = clang_getCursorKind(referenced);
    CXType const type = clang_getCanonicalType(clang_getCursorType(referenced));
    constant.value = qualifiedName(referenced);
    if (target == CXCursor_FieldDecl ||
        (target == CXCursor_CXXMethod && !clang_CXXMethod_isStatic(referenced))) {
        constant.kind = ConstantKind::PointerToMember;
        constant.name = std::move(constant.value);
        constant.value.clear();
        return true;
    }
    bool const isFunction = isFunctionCursor(target);
    bool const isArray = type.kind == CXType_ConstantArray || type.kind == CXType_IncompleteArray;
    // The value of a pointer is not its own address, and that of a local variable is not known before run
    // time.
    bool const isVariable = target == CXCursor_VarDecl && (isAddressOf || isArray) &&
                            clang_Cursor_hasVarDeclGlobalStorage(referenced) == 1;
    if (!isFunction && !isVariable) {
        constant.value.clear();
        return false;
    }
    constant.kind = ConstantKind::Address;
    constant.address = isFunction ? AddressOf::Function : AddressOf::Variable;
    return true;
}

} // namespace zelkor::producer
