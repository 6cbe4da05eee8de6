#include "UseClimb.hpp"

#include "ClangText.hpp"

#include <set>
#include <string>

namespace zelkor::producer::test {

namespace {

bool isArray(CXType type) {
    return clang_getArrayElementType(clang_getCanonicalType(type)).kind != CXType_Invalid;
}

bool isNothing(CXCursor cursor) {
    return clang_Cursor_isNull(cursor) || clang_isInvalid(clang_getCursorKind(cursor));
}

// An object that is bound to what is declared with this type.
Outcome bound(CXType declared) {
    CXType const type = clang_getCanonicalType(declared);
    if (type.kind == CXType_RValueReference) return {true, false, true, false};
    if (type.kind != CXType_LValueReference) return {true, false, false, false};
    CXType target = clang_getPointeeType(type);
    for (CXType next = clang_getArrayElementType(target); next.kind != CXType_Invalid;
         next = clang_getArrayElementType(target))
        target = next;
    bool const isConst = clang_isConstQualifiedType(target) != 0;
    return {isConst, false, !isConst, false};
}

bool assigns(std::string const& name) {
    return name == "operator=";
}

bool updates(std::string const& name) {
    static std::set<std::string> const names{
        "operator+=", "operator-=", "operator*=",  "operator/=",  "operator%=", "operator^=",
        "operator&=", "operator|=", "operator<<=", "operator>>=", "operator++", "operator--"};
    return names.contains(name);
}

Outcome objectOf(CXCursor method) {
    if (clang_CXXMethod_isStatic(method)) return {};
    if (clang_CXXMethod_isConst(method)) return {true, false, false, false};
    std::string const name = take(clang_getCursorSpelling(method));
    if (assigns(name)) return {false, true, false, false};
    if (updates(name)) return {true, true, false, false};
    return {true, false, true, false};
}

// Cursors of one expression differ in the declaration that they remember, when one was reached by children
// and one by the call; the expression itself stands second.
bool isSame(CXCursor a, CXCursor b) {
    return a.kind == b.kind && a.data[1] == b.data[1];
}

int argumentOf(CXCursor call, CXCursor child) {
    for (int i = 0; i < clang_Cursor_getNumArguments(call); ++i) {
        if (isSame(clang_Cursor_getArgument(call, static_cast<unsigned>(i)), child)) return i;
    }
    return -1;
}

// `std::move` and its like give back what they get.
bool isTransparent(CXCursor function) {
    static std::set<std::string> const names{"move", "forward", "move_if_noexcept"};
    if (isNothing(function) || !names.contains(take(clang_getCursorSpelling(function)))) return false;
    return take(clang_getCursorSpelling(clang_getCursorSemanticParent(function))) == "std" &&
           clang_getNumArgTypes(clang_getCursorType(function)) == 1 &&
           clang_Location_isInSystemHeader(clang_getCursorLocation(function));
}

CXType calledType(CXCursor call) {
    CXCursor const function = clang_getCursorReferenced(call);
    if (!isNothing(function) && isFunctionKind(clang_getCursorKind(function)))
        return clang_getCanonicalType(clang_getCursorType(function));
    for (CXCursor const& child : childrenOf(call)) {
        if (!clang_isExpression(clang_getCursorKind(child)) || argumentOf(call, child) >= 0) continue;
        CXType const type = clang_getCanonicalType(clang_getCursorType(child));
        CXType const target = clang_getPointeeType(type);
        return target.kind == CXType_Invalid ? type : target;
    }
    return clang_getCursorType(clang_getNullCursor());
}

Outcome argument(CXCursor call, int index) {
    CXCursor const function = clang_getCursorReferenced(call);
    CXType const type = calledType(call);
    int const parameters = clang_getNumArgTypes(type);
    CXCursorKind const kind = isNothing(function) ? CXCursor_FirstInvalid : clang_getCursorKind(function);
    std::string const name = isNothing(function) ? std::string() : take(clang_getCursorSpelling(function));
    if (kind == CXCursor_CXXMethod && !clang_isFunctionTypeVariadic(type) &&
        clang_Cursor_getNumArguments(call) == parameters + 1) {
        if (index == 0) return objectOf(function);
        --index;
    } else if (kind == CXCursor_FunctionDecl && index == 0 && updates(name)) {
        return {true, true, false, false};
    }
    if (index >= parameters) return {true, false, false, false};
    return bound(clang_getArgType(type, static_cast<unsigned>(index)));
}

CXCursor callOperator(CXCursor lambda) {
    for (CXCursor const& child : childrenOf(clang_getTypeDeclaration(clang_getCursorType(lambda)))) {
        if (take(clang_getCursorSpelling(child)) == "operator()") return child;
    }
    return clang_getNullCursor();
}

bool isFunctionLike(CXCursorKind kind) {
    return isFunctionKind(kind) || kind == CXCursor_FunctionTemplate;
}

bool isLambdaPart(CXCursorKind kind) {
    return kind == CXCursor_CompoundStmt || kind == CXCursor_ParmDecl;
}

Outcome returned(Path const& path) {
    CXCursor owner = ownerOf(path);
    if (clang_getCursorKind(owner) == CXCursor_LambdaExpr) owner = callOperator(owner);
    return bound(clang_getResultType(clang_getCursorType(owner)));
}

bool isObject(CXCursor expression) {
    return clang_getCanonicalType(clang_getCursorType(expression)).kind == CXType_Record;
}

// One step up: either it ends here, or the parent's outcome is that of the child.
class Climb {
  public:
    explicit Climb(Path const& path) : path_(path) {}

    Outcome run() {
        Outcome outcome;
        for (std::size_t i = path_.size() - 1; i > 0; --i) {
            if (isAtEnd(path_[i - 1], path_[i], outcome)) return outcome;
        }
        return value();
    }

  private:
    // Its value is wanted; that of an array is a pointer to it.
    Outcome value() const { return {!decays_, false, decays_, false}; }

    bool end(Outcome& outcome, Outcome reached) const {
        outcome = decays_ ? value() : reached;
        return true;
    }

    bool isAtEnd(Step const& parent, Step const& child, Outcome& outcome) {
        switch (parent.kind) {
        case CXCursor_ParenExpr:
            return false;
        case CXCursor_UnexposedExpr:
            if (child.previous == CXCursor_MemberRef)
                return end(outcome, bound(clang_getCursorType(memberBefore(parent, child))));
            decays_ |= isArray(clang_getCursorType(child.cursor)) &&
                       clang_getCanonicalType(clang_getCursorType(parent.cursor)).kind == CXType_Pointer;
            return false;
        case CXCursor_CStyleCastExpr:
        case CXCursor_CXXFunctionalCastExpr:
        case CXCursor_CXXStaticCastExpr:
            if (clang_getCanonicalType(clang_getCursorType(parent.cursor)).kind == CXType_Void) {
                outcome = {};
                return true;
            }
            return false;
        case CXCursor_CXXConstCastExpr:
        case CXCursor_CXXDynamicCastExpr:
        case CXCursor_CXXReinterpretCastExpr:
            return false;
        case CXCursor_UnaryOperator:
            return atUnary(parent, outcome);
        case CXCursor_BinaryOperator:
            return atBinary(parent, child, outcome);
        case CXCursor_CompoundAssignOperator:
            return end(outcome, {true, child.index == 0, false, false});
        case CXCursor_ConditionalOperator:
        case CXCursor_GenericSelectionExpr:
            return child.index > 0 ? false : end(outcome, value());
        case CXCursor_ArraySubscriptExpr:
            if (!decays_) return end(outcome, value());
            decays_ = false;
            return false;
        case CXCursor_MemberRefExpr:
            return atMember(parent, child, outcome);
        case CXCursor_CallExpr:
            return atCall(parent, child, outcome);
        case CXCursor_VarDecl:
        case CXCursor_ParmDecl: {
            CXCursor const value = clang_Cursor_getVarDeclInitializer(parent.cursor);
            bool const isValue = !isNothing(value) && isSame(value, child.cursor);
            return end(outcome, isValue ? bound(clang_getCursorType(parent.cursor)) : this->value());
        }
        case CXCursor_UnexposedDecl:
            return end(outcome, bound(clang_getCursorType(parent.cursor)));
        case CXCursor_CXXForRangeStmt:
            return end(outcome, child.previous == CXCursor_VarDecl ? bound(loopType(parent)) : value());
        case CXCursor_ReturnStmt:
            return end(outcome, returned(path_));
        case CXCursor_GCCAsmStmt:
            return end(outcome, {true, child.kind != CXCursor_UnexposedExpr, false, false});
        case CXCursor_Constructor:
        case CXCursor_FunctionTemplate:
            if (child.previous != CXCursor_MemberRef) return end(outcome, value());
            return end(outcome, bound(clang_getCursorType(memberBefore(parent, child))));
        default:
            return end(outcome, value());
        }
    }

    bool atUnary(Step const& parent, Outcome& outcome) {
        switch (clang_getCursorUnaryOperatorKind(parent.cursor)) {
        case CXUnaryOperator_AddrOf:
            outcome = {false, false, true, false};
            return true;
        case CXUnaryOperator_PostInc:
        case CXUnaryOperator_PostDec:
        case CXUnaryOperator_PreInc:
        case CXUnaryOperator_PreDec:
            return end(outcome, {true, true, false, false});
        case CXUnaryOperator_Extension:
        case CXUnaryOperator_Real:
        case CXUnaryOperator_Imag:
            return false;
        case CXUnaryOperator_Deref:
            if (!decays_) return end(outcome, value());
            decays_ = false;
            return false;
        default:
            return end(outcome, value());
        }
    }

    bool atBinary(Step const& parent, Step const& child, Outcome& outcome) const {
        switch (clang_getCursorBinaryOperatorKind(parent.cursor)) {
        case CXBinaryOperator_Assign:
            return end(outcome, child.index == 0 ? Outcome{false, true, false, false} : value());
        case CXBinaryOperator_Comma:
            return child.index == 0 ? end(outcome, value()) : false;
        case CXBinaryOperator_PtrMemD:
            return child.index == 0 ? false : end(outcome, value());
        default:
            return end(outcome, value());
        }
    }

    bool atMember(Step const& parent, Step const& child, Outcome& outcome) const {
        CXCursor const member = clang_getCursorReferenced(parent.cursor);
        CXCursorKind const kind = isNothing(member) ? CXCursor_FirstInvalid : clang_getCursorKind(member);
        if (isFunctionKind(kind)) {
            if (clang_CXXMethod_isStatic(member)) return end(outcome, {});
            return end(outcome, isObject(child.cursor) ? objectOf(member) : value());
        }
        if (kind == CXCursor_VarDecl || kind == CXCursor_EnumConstantDecl) return end(outcome, {});
        if (kind != CXCursor_FieldDecl || !isObject(child.cursor)) return end(outcome, value());
        CXTypeKind const type = clang_getCursorType(member).kind;
        bool const isReference = type == CXType_LValueReference || type == CXType_RValueReference;
        return isReference ? end(outcome, value()) : false;
    }

    bool atCall(Step const& parent, Step const& child, Outcome& outcome) const {
        int const index = argumentOf(parent.cursor, child.cursor);
        if (index < 0) return end(outcome, value()); // what is called is read
        if (isTransparent(clang_getCursorReferenced(parent.cursor))) return false;
        return end(outcome, argument(parent.cursor, index));
    }

    static CXCursor memberBefore(Step const& parent, Step const& child) {
        CXCursor member = clang_getNullCursor();
        for (CXCursor const& sibling : childrenOf(parent.cursor)) {
            if (clang_equalCursors(sibling, child.cursor)) break;
            if (clang_getCursorKind(sibling) == CXCursor_MemberRef) member = sibling;
        }
        return clang_getCursorReferenced(member);
    }

    static CXType loopType(Step const& loop) {
        for (CXCursor const& child : childrenOf(loop.cursor)) {
            if (clang_getCursorKind(child) == CXCursor_VarDecl) return clang_getCursorType(child);
        }
        return clang_getCursorType(clang_getNullCursor());
    }

    Path const& path_;
    bool decays_ = false;
};

// A function that is named: called, unless anything else happens to it.
Outcome functionOutcome(Path const& path) {
    for (std::size_t i = path.size() - 1; i > 0; --i) {
        Step const& parent = path[i - 1];
        // An object of a dependent type is made of its arguments only.
        bool const isCall =
            parent.kind == CXCursor_CallExpr && clang_Cursor_getNumArguments(parent.cursor) >= 0;
        if (isCall && argumentOf(parent.cursor, path[i].cursor) < 0) return {false, false, false, true};
        // Below an initialiser of a capture the call itself does not show.
        if (parent.kind == CXCursor_LambdaExpr && path[i].kind == CXCursor_UnexposedExpr)
            return {false, false, false, true};
        bool const isAround = parent.kind == CXCursor_ParenExpr || parent.kind == CXCursor_UnexposedExpr ||
                              parent.kind == CXCursor_CStyleCastExpr ||
                              (parent.kind == CXCursor_UnaryOperator &&
                               (clang_getCursorUnaryOperatorKind(parent.cursor) == CXUnaryOperator_AddrOf ||
                                clang_getCursorUnaryOperatorKind(parent.cursor) == CXUnaryOperator_Deref));
        if (!isAround) break;
    }
    return {false, false, true, false};
}

bool isValueOf(CXCursor variable, CXCursor child) {
    CXCursor const value = clang_Cursor_getVarDeclInitializer(variable);
    return !isNothing(value) && isSame(value, child);
}

bool hasArray(CXType type) {
    while (type.kind == CXType_Pointer || type.kind == CXType_LValueReference)
        type = clang_getPointeeType(type);
    return isArray(type);
}

bool isEvaluatedIn(Step const& parent, Step const& child) {
    bool const isExpression = clang_isExpression(child.kind) != 0;
    switch (parent.kind) {
    case CXCursor_UnaryExpr:
    case CXCursor_CXXTypeidExpr:
    case CXCursor_StaticAssert:
    case CXCursor_NonTypeTemplateParameter:
    case CXCursor_TemplateTypeParameter:
    case CXCursor_TemplateTemplateParameter:
    case CXCursor_TypeAliasDecl: // arguments of templates
        return false;
    case CXCursor_DeclRefExpr:
        return !isExpression;
    case CXCursor_MemberRefExpr:
        return !isExpression || child.index == 0;
    case CXCursor_GenericSelectionExpr:
        return child.index > 0;
    case CXCursor_VarDecl:
    case CXCursor_ParmDecl:
        return !isExpression || isValueOf(parent.cursor, child.cursor) ||
               hasArray(clang_getCursorType(parent.cursor));
    default:
        break;
    }
    if (!isFunctionLike(parent.kind) || !isExpression || child.previous == CXCursor_MemberRef) return true;
    return parent.kind == CXCursor_Constructor ||
           clang_getTemplateCursorKind(parent.cursor) == CXCursor_Constructor;
}

} // namespace

bool isFunctionKind(CXCursorKind kind) {
    return kind == CXCursor_FunctionDecl || kind == CXCursor_CXXMethod || kind == CXCursor_Constructor ||
           kind == CXCursor_Destructor || kind == CXCursor_ConversionFunction;
}

Outcome outcomeOf(Path const& path) {
    CXCursor const named = clang_getCursorReferenced(path.back().cursor);
    bool const isFunction = !isNothing(named) && isFunctionKind(clang_getCursorKind(named));
    return isFunction ? functionOutcome(path) : Climb(path).run();
}

CXCursor ownerOf(Path const& path) {
    CXCursor variable = clang_getNullCursor();
    for (std::size_t i = path.size() - 1; i > 0; --i) {
        Step const& parent = path[i - 1];
        if (isFunctionLike(parent.kind)) return parent.cursor;
        if (parent.kind == CXCursor_LambdaExpr && isLambdaPart(path[i].kind)) return parent.cursor;
        if (parent.kind == CXCursor_ParmDecl && isValueOf(parent.cursor, path[i].cursor))
            return parent.cursor;
        if (parent.kind == CXCursor_FieldDecl) return parent.cursor;
        if (parent.kind == CXCursor_VarDecl) variable = parent.cursor;
    }
    return variable;
}

bool isEvaluated(Path const& path) {
    CXCursor const owner = ownerOf(path);
    for (std::size_t i = path.size() - 1; i > 0; --i) {
        if (!isEvaluatedIn(path[i - 1], path[i])) return false;
        if (clang_equalCursors(path[i - 1].cursor, owner)) break;
    }
    return true;
}

} // namespace zelkor::producer::test
