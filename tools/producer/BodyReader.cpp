#include "BodyReader.hpp"

#include "DeclarationReader.hpp"

#include <algorithm>

namespace zelkor::producer {

namespace {

bool isNull(CXCursor cursor) {
    return clang_Cursor_isNull(cursor) || clang_isInvalid(clang_getCursorKind(cursor));
}

// Without pointers, references and arrays around it.
CXType innermost(CXType type) {
    while (true) {
        if (type.kind == CXType_Pointer || type.kind == CXType_LValueReference ||
            type.kind == CXType_RValueReference) {
            type = clang_getPointeeType(type);
        } else if (isArrayType(type)) {
            type = clang_getArrayElementType(clang_getCanonicalType(type));
        } else {
            return type;
        }
    }
}

// Classes with their functions and fields are those of the instantiation, as closures are. Of the rest that
// of the pattern stands for it.
bool isLocalToInstance(CXCursor declaration) {
    CXCursorKind const kind = clang_getCursorKind(declaration);
    if (isRecordCursor(kind) || isFunctionCursor(kind) || kind == CXCursor_FieldDecl) return false;
    for (CXCursor scope = clang_getCursorSemanticParent(declaration); !isLambda(scope);
         scope = clang_getCursorSemanticParent(scope)) {
        bool const isFunction = isFunctionCursor(clang_getCursorKind(scope));
        if (isFunction && !isNull(clang_getSpecializedCursorTemplate(scope))) return true;
        if (!isFunction && !isRecordCursor(clang_getCursorKind(scope))) return false;
    }
    return false;
}

// Its life ends with the block, unlike that of what it refers to.
bool isAutomatic(CXCursor variable) {
    CX_StorageClass const storage = clang_Cursor_getStorageClass(variable);
    bool const isPlaced = storage == CX_SC_None || storage == CX_SC_Auto || storage == CX_SC_Register;
    return isPlaced && clang_getCursorTLSKind(variable) == CXTLS_None &&
           clang_getCursorLinkage(variable) == CXLinkage_NoLinkage;
}

CXCursor callOperatorOf(CXCursor closure) {
    CXCursor found = clang_getNullCursor();
    visitChildren(closure, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        bool const isIt = (kind == CXCursor_CXXMethod || kind == CXCursor_FunctionTemplate) &&
                          toText(clang_getCursorSpelling(child)) == "operator()";
        if (isIt) found = child;
        return isIt ? CXChildVisit_Break : CXChildVisit_Continue;
    });
    return found;
}

} // namespace

BodyReader::BodyReader(DeclarationReader& declarations, UseRecorder& uses)
    : declarations_(declarations), uses_(uses) {}

void BodyReader::read(CXCursor declaration, Id const& owner) {
    bool const isFunction = isFunctionCursor(clang_getCursorKind(declaration)) ||
                            isTemplateCursor(clang_getCursorKind(declaration));
    if (isFunction && clang_isCursorDefinition(declaration)) {
        read_.insert(owner);
        uses_.addBody(owner);
        if (auto const extent = declarations_.sources().range(clang_getCursorExtent(declaration)))
            uses_.addExtent(owner, *extent);
    }
    walk(declaration, owner, false);
}

void BodyReader::readInstances() {
    for (std::size_t i = 0; i < used_.size(); ++i) {
        auto const [id, cursor] = used_[i];
        CXCursor const definition = clang_getCursorDefinition(cursor);
        if (isNull(definition) || read_.contains(id) || isImplicitMember(definition)) continue;
        // What turns a closure into a pointer has a body of the front end's making.
        if (clang_getCursorKind(definition) == CXCursor_ConversionFunction && isLambda(scopeOf(definition)))
            continue;
        if (!declarations_.sources().inProject(definition)) continue;
        read_.insert(id);
        uses_.addBody(id);
        walk(definition, id, true);
    }
}

// Expressions are visited without recursion of our own, since they may be nested without bound.
void BodyReader::walk(CXCursor declaration, Id const& owner, bool isInstance) {
    Walk walk;
    walk.isInstance = isInstance;
    Frame root;
    root.cursor = declaration;
    root.kind = clang_getCursorKind(declaration);
    root.owner = owner;
    root.type = clang_getCursorType(declaration);
    if (root.kind == CXCursor_VarDecl) {
        root.partner = clang_Cursor_getVarDeclInitializer(declaration);
        root.sink = owner;
        if (!isNull(root.partner)) uses_.addBody(owner);
    } else if (root.kind == CXCursor_FieldDecl) {
        root.sink = owner;
    } else {
        walk.result = bindingEffect(clang_getResultType(root.type));
        useSpecialisation(owner, clang_getResultType(root.type));
    }
    walk.frames.push_back(root);
    visitChildren(declaration, [&](CXCursor cursor, CXCursor parent) { return visit(walk, cursor, parent); });
}

CXChildVisitResult BodyReader::visit(Walk& walk, CXCursor cursor, CXCursor parent) {
    // The initialiser of a capture is a parent that was never shown; what is in it counts for the lambda.
    auto const last = walk.frames.rend();
    auto found = std::find_if(walk.frames.rbegin(), last,
                              [&](Frame const& frame) { return isSameNode(frame.cursor, parent); });
    if (found == last) {
        found = std::find_if(walk.frames.rbegin(), last,
                             [](Frame const& frame) { return frame.kind == CXCursor_LambdaExpr; });
    }
    if (found != last) walk.frames.erase(found.base(), walk.frames.end());
    Frame& around = walk.frames.back();
    Frame frame;
    frame.cursor = cursor;
    frame.kind = clang_getCursorKind(cursor);
    // A default argument is not evaluated by the function itself.
    bool const isDefault = around.kind == CXCursor_ParmDecl && isSameNode(around.partner, cursor);
    frame.owner = isDefault ? around.sink : around.owner;
    if (isDefault) uses_.addBody(frame.owner);
    if (isExpressionKind(frame.kind) || isStatementKind(frame.kind)) {
        frame.expected = expectChild(around, cursor, frame.kind);
        if (frame.expected.keepsSink) frame.sink = around.sink;
    }
    if (!enter(walk, frame, around) || clang_isReference(frame.kind)) return CXChildVisit_Continue;
    walk.frames.push_back(frame);
    return CXChildVisit_Recurse;
}

// Answers whether to go below.
bool BodyReader::enter(Walk& walk, Frame& frame, Frame& parent) {
    if (parent.kind == CXCursor_CXXDeleteExpr && isExpressionKind(frame.kind))
        useDestructor(frame.owner, clang_getPointeeType(clang_getCursorType(frame.cursor)));
    switch (frame.kind) {
    case CXCursor_DeclRefExpr:
    case CXCursor_MemberRefExpr:
        enterName(walk, frame);
        break;
    case CXCursor_MemberRef:
        enterMemberName(frame, parent);
        break;
    case CXCursor_CallExpr:
        enterCall(frame);
        break;
    case CXCursor_UnexposedExpr:
    case CXCursor_CStyleCastExpr:
    case CXCursor_CXXFunctionalCastExpr:
    case CXCursor_CXXStaticCastExpr:
        frame.type = clang_getCanonicalType(clang_getCursorType(frame.cursor));
        break;
    case CXCursor_CXXNewExpr:
        useSpecialisation(frame.owner, clang_getCursorType(frame.cursor));
        break;
    case CXCursor_ReturnStmt:
        frame.pending = walk.result;
        break;
    case CXCursor_GCCAsmStmt:
    case CXCursor_MSAsmStmt:
        uses_.addAssembler(frame.owner);
        break;
    case CXCursor_LambdaExpr:
        enterLambda(walk, frame);
        break;
    case CXCursor_TypeRef:
    case CXCursor_TemplateRef:
        useType(frame.owner, clang_getCursorReferenced(frame.cursor));
        break;
    default:
        // Parameters and body of a lambda are those of its closure.
        if (parent.kind == CXCursor_LambdaExpr && !isExpressionKind(frame.kind)) return false;
        return !clang_isDeclaration(frame.kind) || enterDeclaration(walk, frame, parent);
    }
    return true;
}

bool BodyReader::enterDeclaration(Walk& walk, Frame& frame, Frame& parent) {
    switch (frame.kind) {
    case CXCursor_VarDecl:
        enterVariable(walk, frame, parent);
        return true;
    case CXCursor_ParmDecl:
        if (walk.isInstance) return false;
        frame.partner = clang_Cursor_getVarDeclInitializer(frame.cursor);
        frame.type = clang_getCursorType(frame.cursor);
        frame.sink = variableOf(frame.cursor);
        useSpecialisation(frame.owner, frame.type);
        return true;
    case CXCursor_UnexposedDecl: // of a structured binding
        frame.type = clang_getCursorType(frame.cursor);
        return true;
    case CXCursor_TemplateTypeParameter:
    case CXCursor_NonTypeTemplateParameter:
    case CXCursor_TemplateTemplateParameter:
        return true;
    case CXCursor_TypeAliasDecl:
    case CXCursor_TypedefDecl:
    case CXCursor_StaticAssert:
        readNamed(frame.cursor);
        [[fallthrough]];
    default:
        if (!walk.isInstance) declarations_.declare(frame.cursor);
        return false;
    }
}

// Instances that are called at compile time, by what is no use.
void BodyReader::readNamed(CXCursor declaration) {
    visitChildren(declaration, [this](CXCursor cursor) {
        if (clang_getCursorKind(cursor) != CXCursor_DeclRefExpr) return CXChildVisit_Recurse;
        CXCursor const named = clang_getCursorReferenced(cursor);
        bool const isInstance = !isNull(named) && isFunctionCursor(clang_getCursorKind(named)) &&
                                !isNull(clang_getSpecializedCursorTemplate(named));
        if (isInstance) readLater(refer(named), named);
        return CXChildVisit_Recurse;
    });
}

void BodyReader::enterVariable(Walk& walk, Frame& frame, Frame& parent) {
    if (!walk.isInstance) frame.sink = declarations_.declareLocal(frame.cursor);
    frame.partner = clang_Cursor_getVarDeclInitializer(frame.cursor);
    frame.type = clang_getCursorType(frame.cursor);
    if (parent.kind == CXCursor_CXXForRangeStmt) parent.pending = bindingEffect(frame.type);
    useSpecialisation(frame.owner, frame.type);
    if (isAutomatic(frame.cursor)) useDestructor(frame.owner, frame.type);
}

void BodyReader::enterCall(Frame& frame) {
    CXCursor const function = clang_getCursorReferenced(frame.cursor);
    if (isNull(function) || !isFunctionCursor(clang_getCursorKind(function))) return;
    frame.partner = function;
    frame.type = clang_getCanonicalType(clang_getCursorType(function));
    frame.isPlainCast = isPlainCast(function);
    if (clang_getCursorKind(function) == CXCursor_Constructor)
        useSpecialisation(frame.owner, clang_getCursorType(frame.cursor));
    if (!(frame.expected.value & effect::hidden))
        call(frame.owner, function);
    else if (!isNull(clang_getSpecializedCursorTemplate(function)))
        readLater(refer(function), function);
}

void BodyReader::enterName(Walk& walk, Frame& frame) {
    CXCursor const referenced = clang_getCursorReferenced(frame.cursor);
    CXCursorKind const kind = clang_getCursorKind(referenced);
    if (isNull(referenced)) return;
    frame.partner = referenced;
    if (isFunctionCursor(kind)) {
        useFunction(frame, referenced);
    } else if (kind == CXCursor_EnumConstantDecl) {
        useType(frame.owner, clang_getCursorSemanticParent(referenced));
    } else if (kind == CXCursor_VarDecl || kind == CXCursor_ParmDecl || kind == CXCursor_FieldDecl) {
        useVariable(walk, frame, variableOf(referenced));
    } else if (kind != CXCursor_UnexposedDecl) {
        refer(referenced);
    }
}

// Before the initialiser of a member, and in front of a designated value; elsewhere it is only a name.
void BodyReader::enterMemberName(Frame& frame, Frame& parent) {
    CXCursor const field = clang_getCursorReferenced(frame.cursor);
    if (isNull(field)) return;
    Id const id = refer(field);
    bool const isDesignator = parent.kind == CXCursor_UnexposedExpr && parent.type.kind == CXType_Void;
    bool const isMember = isFunctionCursor(parent.kind) || parent.kind == CXCursor_FunctionTemplate;
    if ((!isDesignator && !isMember) || (parent.expected.value & effect::hidden)) return;
    uses_.add(frame.owner, UseKind::Write, id);
    parent.pending = bindingEffect(clang_getCursorType(field));
    parent.sink = id;
}

void BodyReader::enterLambda(Walk const& walk, Frame const& frame) {
    if (!walk.isInstance) return declarations_.declareLambda(frame.cursor);
    CXCursor const closure = clang_getTypeDeclaration(clang_getCursorType(frame.cursor));
    CXCursor const function = isNull(closure) ? closure : callOperatorOf(closure);
    if (isNull(function)) return;
    bool const isGeneric = clang_getCursorKind(function) == CXCursor_FunctionTemplate;
    Id const id = isGeneric ? declarations_.referPrototype(function) : declarations_.refer(function);
    if (!read_.insert(id).second) return;
    uses_.addBody(id);
    this->walk(function, id, true);
}

void BodyReader::useFunction(Frame const& frame, CXCursor function) {
    Id const id = refer(function);
    Effect const value = frame.expected.value;
    // What is only called at compile time has a body all the same.
    readLater(id, function);
    if (value & effect::hidden) return;
    if (value & effect::callee) return uses_.add(frame.owner, UseKind::Call, id);
    uses_.add(frame.owner, UseKind::Address, id);
    uses_.addPointer(frame.owner, frame.sink, id);
}

void BodyReader::useVariable(Walk& walk, Frame const& frame, Id const& variable) {
    Effect value = frame.expected.value;
    if (value & effect::hidden) return;
    // What is called through a variable is read from it.
    if (value & effect::callee) value |= effect::read;
    if (value & effect::read) uses_.add(frame.owner, UseKind::Read, variable);
    if (value & effect::write) uses_.add(frame.owner, UseKind::Write, variable);
    if (value & effect::address) {
        uses_.add(frame.owner, UseKind::Address, variable);
        uses_.addPointer(frame.owner, frame.sink, variable);
    }
    if (!(value & effect::write)) return;
    for (auto around = walk.frames.rbegin(); around != walk.frames.rend(); ++around) {
        bool const isLeftSide = around->kind == CXCursor_BinaryOperator && around->expressions == 1;
        if (isLeftSide) around->sink = variable;
        bool const isBetween = around->kind == CXCursor_ParenExpr || around->kind == CXCursor_UnexposedExpr ||
                               around->kind == CXCursor_ArraySubscriptExpr;
        if (!isBetween) break;
    }
}

void BodyReader::useType(Id const& owner, CXCursor declaration) {
    if (isNull(declaration) || clang_getCursorKind(declaration) == CXCursor_UnexposedDecl) return;
    Id const id = refer(declaration);
    CXCursorKind const kind = clang_getCursorKind(declaration);
    bool const isType = isRecordCursor(kind) || kind == CXCursor_EnumDecl || kind == CXCursor_TypedefDecl ||
                        kind == CXCursor_TypeAliasDecl;
    if (isType) uses_.add(owner, UseKind::Type, id);
}

// A specialisation is written as its template and the arguments, which show one by one.
void BodyReader::useSpecialisation(Id const& owner, CXType type) {
    CXCursor const declaration = clang_getTypeDeclaration(innermost(type));
    if (isNull(declaration) || !isRecordCursor(clang_getCursorKind(declaration))) return;
    if (!isNull(clang_getSpecializedCursorTemplate(declaration))) useType(owner, declaration);
}

void BodyReader::useDestructor(Id const& owner, CXType type) {
    CXType object = clang_getCanonicalType(type);
    while (isArrayType(object))
        object = clang_getArrayElementType(object);
    if (object.kind != CXType_Record) return;
    CXCursor const destructor = destructorOf(clang_getTypeDeclaration(object));
    if (!isNull(destructor)) call(owner, destructor);
}

void BodyReader::call(Id const& owner, CXCursor function) {
    Id const id = refer(function);
    uses_.add(owner, UseKind::Call, id);
    readLater(id, function);
}

void BodyReader::readLater(Id const& id, CXCursor function) {
    if (!id.is_nil() && usedIds_.insert(id).second) used_.emplace_back(id, function);
}

Id BodyReader::refer(CXCursor declaration) {
    if (!isLocalToInstance(declaration)) return declarations_.refer(declaration);
    CXCursor const pattern = clang_getSpecializedCursorTemplate(declaration);
    return isNull(pattern) ? Id{} : declarations_.refer(pattern);
}

Id BodyReader::variableOf(CXCursor referenced) {
    CXCursorKind const kind = clang_getCursorKind(referenced);
    if (kind == CXCursor_ParmDecl) {
        if (auto const known = parameters_.find(referenced); known != parameters_.end()) return known->second;
        return parameters_.emplace(referenced, declarations_.functionParameter(referenced)).first->second;
    }
    // Locals are known where they stand; those of instantiations and those that the front end made are not.
    bool const isLocal =
        kind == CXCursor_VarDecl && clang_getCursorLinkage(referenced) == CXLinkage_NoLinkage;
    return isLocal ? declarations_.known(referenced) : refer(referenced);
}

bool BodyReader::isPlainCast(CXCursor function) {
    if (auto const known = plainCasts_.find(function); known != plainCasts_.end()) return known->second;
    bool isPlain = false;
    if (!declarations_.sources().inProject(function)) {
        std::string const name = toText(clang_getCursorSpelling(function));
        isPlain = (name == "move" || name == "forward" || name == "move_if_noexcept") &&
                  toText(clang_getCursorSpelling(clang_getCursorSemanticParent(function))) == "std" &&
                  clang_getNumArgTypes(clang_getCursorType(function)) == 1;
    }
    plainCasts_.emplace(function, isPlain);
    return isPlain;
}

CXCursor BodyReader::destructorOf(CXCursor record) {
    if (auto const known = destructors_.find(record); known != destructors_.end()) return known->second;
    CXCursor const definition = clang_getCursorDefinition(record);
    CXCursor destructor = clang_getNullCursor();
    if (!isNull(definition)) {
        visitChildren(definition, [&destructor](CXCursor child) {
            if (clang_getCursorKind(child) != CXCursor_Destructor) return CXChildVisit_Continue;
            destructor = child;
            return CXChildVisit_Break;
        });
    }
    destructors_.emplace(record, destructor);
    return destructor;
}

} // namespace zelkor::producer
