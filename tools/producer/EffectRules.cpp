#include "EffectRules.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace zelkor::producer {

namespace {

constexpr Effect readWrite = effect::read | effect::write;

Expectation passed(Frame const& parent) {
    return {parent.expected.value, parent.expected.element, true};
}

// `operator+=` and its like, `operator++`; `operator=` only writes.
Effect operatorEffect(std::string_view name) {
    static constexpr std::string_view changing[] = {
        "+=", "-=", "*=", "/=", "%=", "^=", "&=", "|=", "<<=", ">>=", "++", "--"};
    static constexpr std::string_view word = "operator";
    if (!name.starts_with(word)) return effect::none;
    name.remove_prefix(word.size());
    if (name == "=") return effect::write;
    return std::find(std::begin(changing), std::end(changing), name) == std::end(changing) ? effect::none
                                                                                           : readWrite;
}

Expectation expectBinary(Frame const& parent) {
    bool const isFirst = parent.expressions == 0;
    switch (clang_getCursorBinaryOperatorKind(parent.cursor)) {
    case CXBinaryOperator_Assign:
        return isFirst ? Expectation{effect::write} : Expectation{effect::read, effect::address, true};
    case CXBinaryOperator_Comma:
        return isFirst ? Expectation{} : passed(parent);
    case CXBinaryOperator_PtrMemD:
        return isFirst ? passed(parent) : Expectation{};
    default:
        return {};
    }
}

Expectation expectUnary(Frame const& parent) {
    switch (clang_getCursorUnaryOperatorKind(parent.cursor)) {
    case CXUnaryOperator_PostInc:
    case CXUnaryOperator_PostDec:
    case CXUnaryOperator_PreInc:
    case CXUnaryOperator_PreDec:
        return {readWrite};
    case CXUnaryOperator_AddrOf:
        if (parent.expected.value & effect::callee) return passed(parent);
        return {effect::address, effect::address, true};
    case CXUnaryOperator_Deref:
        return {effect::read | (parent.expected.value & effect::callee), parent.expected.value};
    case CXUnaryOperator_Extension:
    case CXUnaryOperator_Real:
    case CXUnaryOperator_Imag:
        return passed(parent);
    default:
        return {};
    }
}

Expectation expectMemberBase(Frame const& parent, CXCursor base) {
    CXCursorKind const member = clang_getCursorKind(parent.partner);
    bool const isObject = clang_getCanonicalType(clang_getCursorType(base)).kind == CXType_Record;
    switch (member) {
    case CXCursor_CXXMethod:
    case CXCursor_ConversionFunction:
    case CXCursor_Destructor:
        if (clang_CXXMethod_isStatic(parent.partner)) return {effect::none, effect::none};
        return isObject ? Expectation{objectEffect(parent.partner)} : Expectation{};
    case CXCursor_FieldDecl: {
        CXTypeKind const type = clang_getCursorType(parent.partner).kind;
        bool const isPart = type != CXType_LValueReference && type != CXType_RValueReference;
        if (!isObject || !isPart) return {};
        // A function that is called through a member is read from it.
        if (parent.expected.value & effect::callee) return {};
        return {parent.expected.value, parent.expected.element};
    }
    case CXCursor_VarDecl:
    case CXCursor_EnumConstantDecl:
        return {effect::none, effect::none};
    default:
        return {};
    }
}

// Arguments are told by the call, since operators are shown among them, and a constructed type before them.
int argumentIndex(Frame const& call, CXCursor child) {
    int const count = clang_Cursor_getNumArguments(call.cursor);
    // Operands of operators come in the order of the text, all others after the function.
    int const guess = std::max(0, static_cast<int>(call.expressions) - 1);
    for (int step = 0; step < count; ++step) {
        int const index = (guess + step) % count;
        CXCursor const argument = clang_Cursor_getArgument(call.cursor, static_cast<unsigned>(index));
        if (isSameNode(argument, child)) return index;
    }
    return -1;
}

Expectation expectCallPart(Frame& call, CXCursor child) {
    // An object of a dependent type: nothing is called that has a name, and all is passed.
    if (clang_Cursor_getNumArguments(call.cursor) < 0) return {};
    int const index = argumentIndex(call, child);
    if (index < 0) {
        if (call.type.kind == CXType_Invalid) {
            // A call through a pointer: what is known is the type.
            CXType const type = clang_getCanonicalType(clang_getCursorType(child));
            call.type = type.kind == CXType_Pointer ? clang_getPointeeType(type) : type;
        }
        return {effect::callee};
    }
    if (call.isPlainCast) return passed(call);
    int const parameters = clang_getNumArgTypes(call.type);
    bool const isMember = clang_getCursorKind(call.partner) == CXCursor_CXXMethod;
    bool const hasObject = isMember && !clang_isFunctionTypeVariadic(call.type) &&
                           clang_Cursor_getNumArguments(call.cursor) == parameters + 1;
    if (hasObject && index == 0) return {objectEffect(call.partner)};
    int const parameter = index - (hasObject ? 1 : 0);
    if (parameter >= parameters) return {};
    if (parameter == 0 && !isMember && clang_getCursorKind(call.partner) == CXCursor_FunctionDecl) {
        Effect const changed = operatorEffect(toText(clang_getCursorSpelling(call.partner)));
        if (changed != effect::none) return {changed};
    }
    return {bindingEffect(clang_getArgType(call.type, static_cast<unsigned>(parameter)))};
}

Expectation expectInitialiser(Frame const& variable, CXCursor child) {
    if (isSameNode(variable.partner, child)) return {bindingEffect(variable.type), effect::address, true};
    // Bounds of arrays are values; what `decltype` and the arguments of templates hold is not evaluated.
    CXType type = variable.type;
    while (type.kind == CXType_Pointer || type.kind == CXType_LValueReference)
        type = clang_getPointeeType(type);
    return isArrayType(type) ? Expectation{} : Expectation{effect::hidden};
}

// A function shows its body and the initialisers of its members; the rest belongs to its declaration.
Expectation expectFunctionPart(Frame& function, CXCursorKind child) {
    if (isStatementKind(child)) return {};
    Effect const pending = std::exchange(function.pending, effect::none);
    if (pending != effect::none) return {pending, effect::address, true};
    bool const isConstructor = function.kind == CXCursor_Constructor ||
                               (function.kind == CXCursor_FunctionTemplate &&
                                clang_getTemplateCursorKind(function.cursor) == CXCursor_Constructor);
    return isConstructor ? Expectation{} : Expectation{effect::hidden};
}

Expectation expectByKind(Frame& parent, CXCursor child, CXCursorKind kind) {
    switch (parent.kind) {
    case CXCursor_FunctionDecl:
    case CXCursor_CXXMethod:
    case CXCursor_Constructor:
    case CXCursor_Destructor:
    case CXCursor_ConversionFunction:
    case CXCursor_FunctionTemplate:
        return expectFunctionPart(parent, kind);
    case CXCursor_BinaryOperator:
        return expectBinary(parent);
    case CXCursor_CompoundAssignOperator:
        return parent.expressions == 0 ? Expectation{readWrite} : Expectation{};
    case CXCursor_UnaryOperator:
        return expectUnary(parent);
    case CXCursor_ArraySubscriptExpr:
        return {effect::read, parent.expected.value, (parent.expected.value & effect::address) != 0};
    case CXCursor_MemberRefExpr:
        return parent.expressions == 0 ? expectMemberBase(parent, child) : Expectation{effect::hidden};
    case CXCursor_CallExpr:
        return expectCallPart(parent, child);
    case CXCursor_ConditionalOperator:
        return parent.expressions == 0 ? Expectation{} : passed(parent);
    case CXCursor_GenericSelectionExpr:
        return parent.expressions == 0 ? Expectation{effect::hidden} : passed(parent);
    case CXCursor_InitListExpr:
        return {effect::read, effect::address, true};
    case CXCursor_UnexposedExpr:
        // After the name of a designator.
        if (parent.pending != effect::none) return {parent.pending, effect::address, true};
        [[fallthrough]];
    case CXCursor_ParenExpr:
    case CXCursor_CStyleCastExpr:
    case CXCursor_CXXFunctionalCastExpr:
    case CXCursor_CXXStaticCastExpr:
    case CXCursor_CXXConstCastExpr:
    case CXCursor_CXXDynamicCastExpr:
    case CXCursor_CXXReinterpretCastExpr:
        if (parent.kind != CXCursor_UnexposedExpr && parent.kind != CXCursor_ParenExpr &&
            parent.type.kind == CXType_Void)
            return {effect::none, effect::none};
        return passed(parent);
    case CXCursor_DeclRefExpr: // arguments of a template
    case CXCursor_UnaryExpr:
    case CXCursor_CXXTypeidExpr:
    case CXCursor_NonTypeTemplateParameter:
    case CXCursor_TemplateTypeParameter:
    case CXCursor_TemplateTemplateParameter:
        return {effect::hidden};
    case CXCursor_VarDecl:
    case CXCursor_ParmDecl:
        return expectInitialiser(parent, child);
    case CXCursor_UnexposedDecl:
        return {bindingEffect(parent.type)};
    case CXCursor_FieldDecl:
        return {effect::read, effect::address, true};
    case CXCursor_CXXForRangeStmt: {
        // The range comes after the variable and before the body, which may be an expression too.
        Effect const range = std::exchange(parent.pending, effect::none);
        return {range == effect::none ? effect::read : range};
    }
    case CXCursor_ReturnStmt:
        return {parent.pending};
    case CXCursor_GCCAsmStmt:
    case CXCursor_MSAsmStmt:
        return {kind == CXCursor_UnexposedExpr ? effect::read : readWrite};
    case CXCursor_LambdaExpr:
        // The front end shows what is inside the initialiser of a capture, not its outermost expression.
        return {kind == CXCursor_UnexposedExpr ? effect::read | effect::callee : effect::read};
    default:
        return {};
    }
}

} // namespace

bool isArrayType(CXType type) {
    CXTypeKind const kind = clang_getCanonicalType(type).kind;
    return kind == CXType_ConstantArray || kind == CXType_IncompleteArray || kind == CXType_VariableArray ||
           kind == CXType_DependentSizedArray;
}

Effect bindingEffect(CXType declared) {
    CXType const type = clang_getCanonicalType(declared);
    if (type.kind == CXType_RValueReference) return effect::read | effect::address;
    if (type.kind != CXType_LValueReference) return effect::read;
    CXType target = clang_getPointeeType(type);
    while (isArrayType(target))
        target = clang_getArrayElementType(target);
    return clang_isConstQualifiedType(target) ? effect::read : effect::address;
}

Effect objectEffect(CXCursor method) {
    if (clang_CXXMethod_isStatic(method)) return effect::none;
    if (clang_CXXMethod_isConst(method)) return effect::read;
    Effect const changed = operatorEffect(toText(clang_getCursorSpelling(method)));
    return changed == effect::none ? effect::read | effect::address : changed;
}

Expectation expectChild(Frame& parent, CXCursor child, CXCursorKind kind) {
    Expectation expected = expectByKind(parent, child, kind);
    ++parent.expressions;
    if (parent.expected.value & effect::hidden) return {effect::hidden, effect::hidden};
    if (expected.value & effect::hidden) expected.element = effect::hidden;
    // An array that turns into a pointer is no value that is read.
    bool const turns = parent.kind == CXCursor_UnexposedExpr && parent.type.kind == CXType_Pointer &&
                       isArrayType(clang_getCursorType(child));
    if (turns) expected.value = expected.element;
    return expected;
}

} // namespace zelkor::producer
