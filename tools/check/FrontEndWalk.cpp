#include "FrontEndWalk.hpp"

#include "ClangText.hpp"

#include <brant/zero/meta/Names.hpp>

#include <algorithm>

namespace zelkor::producer::test {

namespace za = zelkor::ast;

namespace {

struct KindRow {
    CXCursorKind cursor;
    char const* kind;
};

constexpr KindRow kindRows[] = {
    {CXCursor_FunctionDecl, "function"},
    {CXCursor_CXXMethod, "function"},
    {CXCursor_Constructor, "function"},
    {CXCursor_Destructor, "function"},
    {CXCursor_ConversionFunction, "function"},
    {CXCursor_VarDecl, "variable"},
    {CXCursor_FieldDecl, "variable"},
    {CXCursor_StructDecl, "aggregate"},
    {CXCursor_ClassDecl, "aggregate"},
    {CXCursor_UnionDecl, "aggregate"},
    {CXCursor_EnumDecl, "enumeration"},
    {CXCursor_TypedefDecl, "typedef"},
    {CXCursor_TypeAliasDecl, "typedef"},
    {CXCursor_ClassTemplate, "template"},
    {CXCursor_ClassTemplatePartialSpecialization, "template"},
    {CXCursor_FunctionTemplate, "template"},
    {CXCursor_TypeAliasTemplateDecl, "template"},
};

std::string kindOf(CXCursorKind cursor) {
    for (KindRow const& row : kindRows) {
        if (row.cursor == cursor) return row.kind;
    }
    return {};
}

std::string kindOf(za::Symbol const& symbol) {
    if (za::Function::cast(symbol)) return "function";
    if (za::Variable::cast(symbol)) return "variable";
    if (za::types::AggregateType::cast(symbol)) return "aggregate";
    if (za::types::EnumType::cast(symbol)) return "enumeration";
    if (za::types::TypedefType::cast(symbol)) return "typedef";
    return za::Template::cast(symbol) ? "template" : "";
}

// The aggregate or the function that it stands in.
za::Symbol symbolAround(za::Symbol const& symbol) {
    if (auto const member = za::types::Member::cast(symbol)) return member.getAggregate();
    if (auto const method = za::types::Method::cast(symbol)) return method.getOwningAggregate();
    za::Scope const scope = symbol.getOwningScope();
    if (!scope) return {};
    if (za::types::AggregateType const aggregate = scope.getOwningAggregate()) return aggregate;
    return scope.getOwningFun();
}

// Instantiations and what is in them, implicit members, closures, and members that stand for anonymous unions
// are no declarations of the text.
bool isMade(za::Symbol const& symbol) {
    auto const function = za::Function::cast(symbol);
    auto const aggregate = za::types::AggregateType::cast(symbol);
    bool const isInstance =
        (function && function.getAssocTemplate()) || (aggregate && aggregate.getAssocTemplate());
    bool const isImplicit =
        function && (function.getIsCompilerGenerated() || function.getName() == "operator()");
    bool const isNameless = symbol.getName().empty() && (aggregate || za::types::Member::cast(symbol));
    if (isInstance || isImplicit || isNameless) return true;
    za::Symbol const around = symbolAround(symbol);
    return around && isMade(around);
}

// The front end has no cursor kind for these.
bool isVariableTemplate(CXCursor cursor) {
    CXToken* const first = clang_getToken(clang_Cursor_getTranslationUnit(cursor),
                                          clang_getRangeStart(clang_getCursorExtent(cursor)));
    if (!first) return false;
    CXTranslationUnit const unit = clang_Cursor_getTranslationUnit(cursor);
    bool const isTemplate = take(clang_getTokenSpelling(unit, *first)) == "template";
    clang_disposeTokens(unit, first, 1);
    return isTemplate && !plainName(cursor).empty();
}

// Counted by tokens, where the producer reads the text.
bool hasDefault(CXCursor parameter) {
    // The tokens of a macro may run on to what follows it.
    if (clang_getCursorLanguage(parameter) == CXLanguage_C) return false;
    CXTranslationUnit const unit = clang_Cursor_getTranslationUnit(parameter);
    CXToken* tokens = nullptr;
    unsigned count = 0;
    clang_tokenize(unit, clang_getCursorExtent(parameter), &tokens, &count);
    int depth = 0;
    bool found = false;
    for (unsigned i = 0; i < count; ++i) {
        std::string const text = take(clang_getTokenSpelling(unit, tokens[i]));
        if (text == "(" || text == "[" || text == "{") ++depth;
        if (text == ")" || text == "]" || text == "}") --depth;
        found |= depth == 0 && text == "=";
    }
    clang_disposeTokens(unit, tokens, count);
    return found;
}

} // namespace

FrontEndWalk::FrontEndWalk(ModelIndex const& index, std::string root, std::string resourceDirectory,
                           std::set<std::string> dropped)
    : index_(index), root_(std::move(root)), resourceDirectory_(std::move(resourceDirectory)),
      dropped_(std::move(dropped)) {}

void FrontEndWalk::walk(WalkedUnit const& unit) {
    ParsedUnit const parsed(unit, resourceDirectory_, CXTranslationUnit_IncludeAttributedTypes);
    if (!parsed.isValid()) {
        mismatches_.push_back("cannot parse " + unit.arguments.back());
        return;
    }
    clang_visitChildren(
        parsed.root(),
        [](CXCursor cursor, CXCursor parent, CXClientData data) {
            return static_cast<FrontEndWalk*>(data)->visit(cursor, parent);
        },
        this);
}

bool FrontEndWalk::isDropped(CXCursor cursor) const {
    Place place;
    return !clang_Cursor_isNull(cursor) && placeOf(cursor, place) &&
           dropped_.contains(textOf(place) + ' ' + plainName(cursor));
}

CXChildVisitResult FrontEndWalk::visit(CXCursor cursor, CXCursor parent) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    Place place;
    if (clang_isDeclaration(kind) && kind != CXCursor_LinkageSpec) {
        if (!placeOf(cursor, place) || !isInProject(place)) return CXChildVisit_Continue;
        if (isDropped(cursor) || isDropped(clang_getCursorDefinition(cursor))) return CXChildVisit_Continue;
    }
    if (kind == CXCursor_Namespace) checkNamespace(cursor);
    if (kind == CXCursor_FriendDecl && isInTemplate(parent)) {
        for (CXCursor const& child : childrenOf(cursor))
            if (placeOf(child, place)) friends_.insert(textOf(place) + ' ' + plainName(child));
    }
    std::string const group =
        kind == CXCursor_UnexposedDecl && isVariableTemplate(cursor) ? "template" : kindOf(kind);
    // The alias inside an alias template stands for its prototype, which the template leads to.
    bool const isInnerAlias =
        kind == CXCursor_TypeAliasDecl && clang_getCursorKind(parent) == CXCursor_TypeAliasTemplateDecl;
    if (!group.empty() && !isInnerAlias) check(cursor, group);
    return CXChildVisit_Recurse;
}

std::string FrontEndWalk::ownerText(CXCursor cursor) const {
    CXCursor const parent = clang_getCursorSemanticParent(cursor);
    CXCursorKind const kind = clang_getCursorKind(parent);
    if (clang_isInvalid(kind) || kind == CXCursor_TranslationUnit) return {};
    if (kind == CXCursor_LinkageSpec) return ownerText(parent);
    return ownerText(parent) + plainName(parent) + "::";
}

void FrontEndWalk::checkNamespace(CXCursor cursor) {
    std::string const wanted = ownerText(cursor) + plainName(cursor) + "::";
    if (!seen_.insert("namespace " + wanted).second) return;
    ++tallies_["namespace"].declarations;
    za::Namespace const space = index_.space(wanted);
    expect(static_cast<bool>(space), cursor, "namespace " + wanted + " is not in the model");
    if (!space) return;
    ++tallies_["namespace"].elements;
    expect(space.getIsInline() == (clang_Cursor_isInlineNamespace(cursor) != 0), cursor, "inline namespace");
}

za::Symbol FrontEndWalk::match(CXCursor cursor, std::string const& kind, Place const& place) {
    std::string const name = plainName(cursor);
    std::string const owner = ownerText(cursor);
    std::string const identity = take(clang_getCursorUSR(cursor));
    za::Symbol near;
    za::Symbol first;
    for (za::Symbol const& symbol : index_.at(place)) {
        if (kindOf(symbol) != kind || symbol.getName() != name) continue;
        bool const isInstance = za::types::AggregateType::cast(symbol) && !isPrototype(symbol) &&
                                za::types::AggregateType::cast(symbol).getAssocTemplate() &&
                                clang_Cursor_isNull(clang_getSpecializedCursorTemplate(cursor));
        if (isPrototype(symbol) || isInstance) continue;
        near = symbol;
        if (ModelIndex::ownerText(symbol) != owner) continue;
        // A macro may declare several of one name in one place.
        if (matched_.try_emplace(symbol.get(), identity).first->second == identity) return symbol;
        if (!first) first = symbol;
    }
    return first ? first : near;
}

void FrontEndWalk::check(CXCursor cursor, std::string const& kind) {
    Place place;
    if (!placeOf(cursor, place)) return;
    std::string key = kind + ' ' + textOf(place) + ' ' + ownerText(cursor) + plainName(cursor);
    if (kind == "template") key += ' ' + take(clang_getCursorUSR(cursor));
    // A macro may declare overloads in one place.
    if (kind == "function") key += ' ' + take(clang_getCursorDisplayName(cursor));
    if (!seen_.insert(key).second) return;
    Tally& tally = tallies_[kind];
    ++tally.declarations;
    za::Symbol const symbol = match(cursor, kind, place);
    expect(static_cast<bool>(symbol), cursor, "not in the model");
    if (!symbol) return;
    ++tally.elements;
    found_.insert(symbol.get());
    expect(ModelIndex::ownerText(symbol) == ownerText(cursor), cursor,
           "owner is " + ModelIndex::ownerText(symbol) + ", not " + ownerText(cursor));
    compare(cursor, symbol);
}

void FrontEndWalk::compare(CXCursor cursor, za::Symbol const& symbol) {
    if (auto const function = za::Function::cast(symbol)) compareFunction(cursor, function);
    if (auto const variable = za::Variable::cast(symbol)) compareVariable(cursor, variable);
    if (auto const aggregate = za::types::AggregateType::cast(symbol)) compareAggregate(cursor, aggregate);
    if (auto const type = za::types::EnumType::cast(symbol)) compareEnum(cursor, type);
    if (auto const made = za::Template::cast(symbol)) compareTemplate(cursor, made);
    if (auto const type = za::types::TypedefType::cast(symbol)) {
        expectType(cursor, type.getType(), clang_getTypedefDeclUnderlyingType(cursor), "aliased type");
        expect(type.getIsAlias() == (clang_getCursorKind(cursor) == CXCursor_TypeAliasDecl), cursor,
               "IsAlias");
    }
    // C and C++ place what has no name differently, and the first unit decides.
    if (clang_isCursorDefinition(cursor) && !symbol.getName().empty()) {
        Place place;
        placeOf(cursor, place);
        bool const isThere = symbol.getDefPos() && ModelIndex::placeOf(symbol.getDefPos()) == place;
        bool const isRepeated = za::types::TypedefType::cast(symbol) && symbol.hasDeclPos();
        expect(isThere || isRepeated, cursor, "DefPos");
    }
}

void FrontEndWalk::compareFunction(CXCursor cursor, za::Function const& function) {
    CXType const type = clang_getCursorType(cursor);
    CXCursorKind kind = clang_getCursorKind(cursor);
    if (kind == CXCursor_FunctionTemplate) kind = clang_getTemplateCursorKind(cursor);
    bool const hasResult = kind != CXCursor_Constructor && kind != CXCursor_Destructor;
    auto const made = za::types::FunctionType::cast(function.getType());
    // Redeclarations may spell the same type by other names.
    bool const isOther = function.getDefPos() && !clang_isCursorDefinition(cursor);
    expect(isOther || (made && agreesFunction(made, type, hasResult, 0)), cursor,
           "type " + take(clang_getTypeSpelling(type)));
    compareNames(cursor, function);
    compareParameters(cursor, function);
    // The cursor of a template is never variadic to the front end, its type is.
    bool const isVariadic = type.kind == CXType_FunctionProto && clang_isFunctionTypeVariadic(type) != 0;
    expect(function.getIsVariadic() == isVariadic, cursor, "IsVariadic");
    // What one declaration says holds for all, so that the model may know more than this one.
    expect(function.getIsInline() || !clang_Cursor_isFunctionInlined(cursor), cursor, "IsInline");
    expect(function.getIsDeleted() || !clang_CXXMethod_isDeleted(cursor), cursor, "IsDeleted");
    bool hasBody = false;
    for (CXCursor const& child : childrenOf(cursor)) {
        hasBody |= clang_getCursorKind(child) == CXCursor_CompoundStmt ||
                   clang_getCursorKind(child) == CXCursor_CXXTryStmt;
    }
    expect(function.hasBodyPosition() || !hasBody, cursor, "BodyPosition");
    struct SpecialRow {
        CXCursorKind cursor;
        bool isRight;
    };
    using Special = za::SpecialFunctionKind;
    Special const special = function.getSpecialKind();
    bool const isCopy = clang_CXXConstructor_isCopyConstructor(cursor) != 0;
    for (SpecialRow const& row :
         {SpecialRow{CXCursor_Constructor,
                     special == (isCopy ? Special::CopyConstructor : Special::Constructor)},
          SpecialRow{CXCursor_Destructor, special == Special::Destructor},
          SpecialRow{CXCursor_ConversionFunction, special == Special::Conversion}}) {
        expect(row.cursor != kind || row.isRight, cursor, "SpecialKind");
    }
    auto const method = za::types::Method::cast(function);
    if (!method) return;
    expect(method.getAccess() == accessOf(cursor), cursor, "Access");
    expect(method.getIsVirtual() == (clang_CXXMethod_isVirtual(cursor) != 0), cursor, "IsVirtual");
    expect(method.getIsAbstract() == (clang_CXXMethod_isPureVirtual(clang_getCanonicalCursor(cursor)) != 0),
           cursor, "IsAbstract");
    expect(method.getIsThisConst() == (clang_CXXMethod_isConst(cursor) != 0), cursor, "IsThisConst");
    bool const isStatic = clang_CXXMethod_isStatic(cursor) != 0;
    expect((method.getStorageClass() == za::StorageClassKind::Static) == isStatic, cursor, "StorageClass");
}

void FrontEndWalk::compareParameters(CXCursor cursor, za::Function const& function) {
    std::vector<CXCursor> parameters;
    for (CXCursor const& child : childrenOf(cursor)) {
        bool const isOwn = clang_getCursorKind(child) == CXCursor_ParmDecl &&
                           clang_equalCursors(clang_getCursorSemanticParent(child), cursor);
        if (isOwn) parameters.push_back(child);
    }
    expect(parameters.size() == function.getParams().size(), cursor,
           "number of parameters " + std::to_string(parameters.size()));
    unsigned optional = 0;
    for (std::size_t i = 0; i < std::min(parameters.size(), function.getParams().size()); ++i) {
        za::Variable const parameter = function.getParams()[i];
        std::string const name = plainName(parameters[i]);
        bool const isDefinition = clang_isCursorDefinition(cursor) != 0;
        expect(!isDefinition || name.empty() || parameter.getName() == name, cursor, "parameter " + name);
        CXType const type = clang_getCursorType(parameters[i]);
        bool const isPack = take(clang_getTypeSpelling(type)).ends_with("...");
        expect(parameter.getIsParameterPack() == isPack, cursor, "IsParameterPack of " + name);
        // An array parameter may be written differently on each declaration.
        if (!isPack && isDefinition)
            expectType(cursor, parameter.getType(), type, "type of parameter " + name);
        optional += hasDefault(parameters[i]) ? 1 : 0;
    }
    expect(function.getNumOptionalParams() >= optional, cursor, "NumOptionalParams");
}

void FrontEndWalk::compareVariable(CXCursor cursor, za::Variable const& variable) {
    if (clang_isCursorDefinition(cursor) || !variable.getDefPos()) {
        expectType(cursor, variable.getType(), clang_getCursorType(cursor), "type");
    }
    CXCursor const value = clang_Cursor_getVarDeclInitializer(cursor);
    bool const hasValue = clang_getCursorKind(cursor) == CXCursor_VarDecl && !clang_Cursor_isNull(value) &&
                          !clang_isInvalid(clang_getCursorKind(value));
    expect(variable.hasInitVal() || !hasValue, cursor, "InitVal");
    CXEvalResult const result =
        hasValue && clang_getCanonicalType(clang_getCursorType(cursor)).kind == CXType_Int
            ? clang_Cursor_Evaluate(cursor)
            : nullptr;
    if (result && clang_EvalResult_getKind(result) == CXEval_Int) {
        auto const constant = za::constants::IntegerConstant::cast(variable.getInitVal());
        expect(constant && constant.getValue() == std::to_string(clang_EvalResult_getAsLongLong(result)),
               cursor, "value of InitVal");
    }
    clang_EvalResult_dispose(result);
    auto const member = za::types::Member::cast(variable);
    if (!member) return;
    expect(member.getAccess() == accessOf(cursor), cursor, "Access");
    if (clang_getCursorKind(cursor) != CXCursor_FieldDecl) {
        expect(member.getStorageClass() == za::StorageClassKind::Static, cursor, "StorageClass");
        return;
    }
    expect(member.getIsBitField() == (clang_Cursor_isBitField(cursor) != 0), cursor, "IsBitField");
    int const bits = clang_getFieldDeclBitWidth(cursor);
    expect(bits < 0 || member.getBitSize() == static_cast<unsigned>(bits), cursor, "BitSize");
    expect(member.getIsMutable() == (clang_CXXField_isMutable(cursor) != 0), cursor, "IsMutable");
}

void FrontEndWalk::checkLeftOver() {
    for (za::Symbol const& symbol : index_.symbols()) {
        if (kindOf(symbol).empty() || found_.contains(symbol.get()) || !symbol.getDefPos()) continue;
        Place const place = ModelIndex::placeOf(symbol.getDefPos());
        // Each instantiation of the class has one of its own, in the namespace around.
        bool const isFriend =
            za::Function::cast(symbol) && friends_.contains(textOf(place) + ' ' + symbol.getName());
        if (!isMade(symbol) && !isFriend && isInProject(place)) {
            mismatches_.push_back(textOf(place) + ": " + kindOf(symbol) + ' ' + symbol.getName() +
                                  " is in the model only");
        }
    }
}

void FrontEndWalk::expect(bool isRight, CXCursor cursor, std::string const& what) {
    if (isRight) return;
    Place place;
    placeOf(cursor, place);
    mismatches_.push_back(textOf(place) + ": " + plainName(cursor) + ": " + what);
}

} // namespace zelkor::producer::test
