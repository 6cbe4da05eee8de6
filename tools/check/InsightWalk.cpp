#include "InsightWalk.hpp"

#include "ClangText.hpp"

#include <brant/zero/Text.hpp>

#include <algorithm>

namespace zelkor::producer::test {

namespace za = zelkor::ast;
namespace ci = zelkor::ast::codeinsight;

namespace {

bool isNothing(CXCursor cursor) {
    return clang_Cursor_isNull(cursor) || clang_isInvalid(clang_getCursorKind(cursor));
}

bool isVariableKind(CXCursorKind kind) {
    return kind == CXCursor_VarDecl || kind == CXCursor_ParmDecl || kind == CXCursor_FieldDecl;
}

// The producer makes nothing of the conditions of a name and of its kind, so that it is told by its place.
std::string placed(Place const& place, std::string const& name) {
    return textOf(place) + ' ' + name;
}

std::string parameterKey(std::string const& function, std::size_t ordinal) {
    return function + " parameter " + std::to_string(ordinal);
}

} // namespace

InsightWalk::InsightWalk(ModelIndex const& index, za::Project const& project, std::string root,
                         std::string resourceDirectory, std::set<std::string> dropped)
    : index_(index), root_(std::move(root)), resourceDirectory_(std::move(resourceDirectory)),
      dropped_(std::move(dropped)) {
    for (za::Symbol const& symbol : index.symbols())
        addElement(symbol);
    for (za::Symbol const& symbol : index.symbols()) {
        auto const function = za::Function::cast(symbol);
        if (!function) continue;
        // Of a parameter the model has one place, of all its declarations.
        std::size_t ordinal = 0;
        for (za::Variable const parameter : function.getParams())
            parameters_[parameter.get()] = parameterKey(keyOf(function), ordinal++);
    }
    readModel(project);
}

std::string InsightWalk::groupOf(std::string const& placed) {
    std::string group = placed;
    for (auto next = groups_.find(group); next != groups_.end() && next->second != group;
         next = groups_.find(group))
        group = next->second;
    return group;
}

void InsightWalk::join(std::string const& first, std::string const& second) {
    groups_.emplace(first, first);
    groups_.emplace(second, second);
    std::string const a = groupOf(first);
    std::string const b = groupOf(second);
    if (a != b) groups_[std::max(a, b)] = std::min(a, b);
}

// All places of an element are one, and with them all elements at these places that have its name.
void InsightWalk::addElement(za::Symbol const& symbol) {
    if (!za::Function::cast(symbol) && !za::Variable::cast(symbol)) return;
    std::string const name = symbol.getName();
    std::string first;
    auto const addPlace = [&](za::source::SourcePosition const& position) {
        if (!position) return;
        std::string const text = placed(ModelIndex::placeOf(position), name);
        if (first.empty()) first = text;
        join(first, text);
    };
    addPlace(symbol.getDefPos());
    for (za::source::SourcePosition const position : symbol.getDeclPos())
        addPlace(position);
    if (first.empty()) join("- " + name, "- " + name);
}

std::string InsightWalk::keyOf(za::Symbol const& symbol) {
    if (auto const parameter = parameters_.find(symbol.get()); parameter != parameters_.end())
        return parameter->second;
    std::string const name = symbol.getName();
    za::source::SourcePosition position = symbol.getDefPos();
    if (!position && !symbol.getDeclPos().empty()) position = symbol.getDeclPos()[0];
    return groupOf(position ? placed(ModelIndex::placeOf(position), name) : "- " + name);
}

std::string InsightWalk::keyOf(CXCursor cursor) {
    if (clang_getCursorKind(cursor) == CXCursor_ParmDecl) {
        CXCursor const function = clang_getCursorSemanticParent(cursor);
        std::size_t ordinal = 0;
        for (CXCursor const& child : childrenOf(function)) {
            // A function type in the result shows its parameters too.
            bool const isOwn = clang_getCursorKind(child) == CXCursor_ParmDecl &&
                               clang_equalCursors(clang_getCursorSemanticParent(child), function);
            if (!isOwn) continue;
            if (clang_equalCursors(child, cursor)) break;
            ++ordinal;
        }
        return parameterKey(keyOf(function), ordinal);
    }
    std::string const name = plainName(cursor);
    for (CXCursor const& sight :
         {cursor, clang_getCanonicalCursor(cursor), clang_getCursorDefinition(cursor)}) {
        Place place;
        if (isNothing(sight)) continue;
        std::string const text = placeOf(sight, root_, place) ? placed(place, name) : "- " + name;
        if (groups_.contains(text)) return groupOf(text);
    }
    Place place;
    return placeOf(cursor, root_, place) ? placed(place, name) : "- " + name;
}

template <class List>
void InsightWalk::addAll(std::string const& owner, char const* use, List const& list) {
    for (auto const element : list) {
        std::string const target = keyOf(element);
        modelled_.insert(owner + ' ' + use + ' ' + target);
        targets_[use].insert(target);
    }
}

void InsightWalk::readModel(za::Project const& project) {
    std::vector<ci::CodeInsight> insights;
    for (za::source::CompilationUnit const unit : project.getCompilations()) {
        for (za::Annotation const annotation : unit.getAnnotations()) {
            if (auto const insight = ci::CodeInsight::cast(annotation)) insights.push_back(insight);
        }
    }
    for (ci::CodeInsight const& insight : insights)
        readInsight(insight);
    for (ci::CodeInsight const& insight : insights)
        readFlags(insight);
}

void InsightWalk::readInsight(ci::CodeInsight const& insight) {
    for (ci::FunctionInfo const record : insight.getFunctions()) {
        std::string const owner = keyOf(record.getFunction());
        addAll(owner, "calls", record.getCalledFuns());
        addAll(owner, "reads", record.getReadVars());
        addAll(owner, "writes", record.getWrittenVars());
        if (record.getHasASMBlock()) modelled_.insert(owner + " assembler");
        for (za::Annotation const annotation : record.getAnnotations()) {
            if (auto const pointers = ci::PtrInfo::cast(annotation))
                addAll(owner, "address", pointers.getPointsTo());
            if (auto const overriders = ci::FunInfo::cast(annotation)) {
                for (za::Function const method : overriders.getCalledFuns())
                    modelled_.insert(keyOf(method) + " overrides " + owner);
            }
        }
    }
    for (ci::VariableInfo const record : insight.getVariables()) {
        std::string const owner = keyOf(record.getVariable());
        for (za::Annotation const annotation : record.getAnnotations()) {
            if (auto const uses = ci::FunInfo::cast(annotation)) {
                addAll(owner, "calls", uses.getCalledFuns());
                addAll(owner, "reads", uses.getReadVars());
                addAll(owner, "writes", uses.getWrittenVars());
            }
            if (auto const pointers = ci::PtrInfo::cast(annotation)) {
                // Assignments in functions put something there as well.
                for (za::Symbol const target : pointers.getPointsTo())
                    mayHave_.insert(owner + " address " + keyOf(target));
            }
        }
    }
    for (ci::MacroInfo const record : insight.getMacros()) {
        for (za::source::SourcePosition const position : record.getInvocationPositions())
            modelled_.insert("macro " + placed(ModelIndex::placeOf(position),
                                               brant::zero::toUtf8(record.getMacro().getName())));
    }
}

void InsightWalk::readFlags(ci::CodeInsight const& insight) {
    auto const expect = [&](za::Symbol const& symbol, char const* use, bool isSet, char const* flag) {
        // Instantiations share their place with others, and may differ from them.
        bool const isUsed = targets_[use].contains(keyOf(symbol));
        if (isSet && !isUsed) mismatches_.push_back(keyOf(symbol) + ": " + flag + " without a use");
    };
    for (ci::FunctionInfo const record : insight.getFunctions())
        expect(record.getFunction(), "calls", record.getIsCalled(), "IsCalled");
    for (ci::VariableInfo const record : insight.getVariables()) {
        expect(record.getVariable(), "reads", record.getIsRead(), "IsRead");
        expect(record.getVariable(), "writes", record.getIsWritten(), "IsWritten");
    }
}

void InsightWalk::walk(WalkedUnit const& unit) {
    ParsedUnit const parsed(unit, resourceDirectory_,
                            CXTranslationUnit_IncludeAttributedTypes |
                                CXTranslationUnit_DetailedPreprocessingRecord);
    if (!parsed.isValid()) {
        mismatches_.push_back("cannot parse " + unit.arguments.back());
        return;
    }
    locals_.clear();
    instances_.clear();
    waiting_.clear();
    isInstance_ = false;
    for (CXCursor const& child : childrenOf(parsed.root())) {
        Place place;
        if (!placeOf(child, root_, place)) continue;
        CXCursorKind const kind = clang_getCursorKind(child);
        if (isInProject(place) && kind == CXCursor_MacroExpansion)
            seen_.insert("macro " + placed(place, take(clang_getCursorSpelling(child))));
        // A block of linkage may begin in one file and hold others.
        if (clang_isPreprocessing(kind) || (!isInProject(place) && kind != CXCursor_LinkageSpec)) continue;
        Path path{{child, kind, 0, CXCursor_FirstInvalid}};
        descend(path);
    }
    walkInstances();
}

void InsightWalk::walkInstances() {
    isInstance_ = true;
    while (!waiting_.empty()) {
        CXCursor const function = waiting_.back();
        waiting_.pop_back();
        Path path{{function, clang_getCursorKind(function), 0, CXCursor_FirstInvalid}};
        if (!isDropped(function)) descend(path);
    }
}

void InsightWalk::descend(Path& path) {
    CXCursor const cursor = path.back().cursor;
    CXCursorKind const kind = path.back().kind;
    Place place;
    bool const isDeclaration = clang_isDeclaration(kind) && kind != CXCursor_LinkageSpec;
    if (isDeclaration && placeOf(cursor, root_, place)) {
        if (!isInProject(place) || isDropped(cursor)) return;
    }
    examine(path);
    std::size_t index = 0;
    CXCursorKind previous = CXCursor_FirstInvalid;
    for (CXCursor const& child : childrenOf(cursor)) {
        CXCursorKind const childKind = clang_getCursorKind(child);
        path.push_back({child, childKind, index, previous});
        // What an instantiation declares is that of the pattern.
        bool const isRepeated =
            isInstance_ && (childKind == CXCursor_ParmDecl || childKind == CXCursor_StructDecl ||
                            childKind == CXCursor_ClassDecl);
        if (!isRepeated) descend(path);
        path.pop_back();
        if (clang_isExpression(childKind) || clang_isStatement(childKind)) ++index;
        previous = childKind;
    }
}

void InsightWalk::examine(Path const& path) {
    CXCursor const cursor = path.back().cursor;
    switch (path.back().kind) {
    case CXCursor_VarDecl: {
        Place place;
        if (!isInstance_ && placeOf(cursor, root_, place)) locals_.insert(placed(place, plainName(cursor)));
        CX_StorageClass const storage = clang_Cursor_getStorageClass(cursor);
        bool const isAutomatic = clang_getCursorLinkage(cursor) == CXLinkage_NoLinkage &&
                                 storage != CX_SC_Static && storage != CX_SC_Extern &&
                                 clang_getCursorTLSKind(cursor) == CXTLS_None;
        if (isAutomatic && path.size() > 1) addDestructor(path, clang_getCursorType(cursor));
        break;
    }
    case CXCursor_CXXDeleteExpr:
        for (CXCursor const& child : childrenOf(cursor))
            addDestructor(path, clang_getPointeeType(clang_getCursorType(child)));
        break;
    case CXCursor_CallExpr: {
        CXCursor const function = clang_getCursorReferenced(cursor);
        if (!isNothing(function) && isFunctionKind(clang_getCursorKind(function))) {
            meet(function);
            add(path, "calls", function);
        }
        break;
    }
    case CXCursor_DeclRefExpr:
    case CXCursor_MemberRefExpr:
        examineName(path);
        break;
    case CXCursor_MemberRef:
        examineMember(path);
        break;
    case CXCursor_GCCAsmStmt:
    case CXCursor_MSAsmStmt:
        seen_.insert(ownerKey(path) + " assembler");
        break;
    case CXCursor_CXXMethod:
    case CXCursor_Destructor:
    case CXCursor_ConversionFunction:
        if (!isInstance_) addOverrides(cursor);
        break;
    default:
        break;
    }
}

void InsightWalk::examineName(Path const& path) {
    CXCursor const named = clang_getCursorReferenced(path.back().cursor);
    if (isNothing(named)) return;
    CXCursorKind const kind = clang_getCursorKind(named);
    bool const isFunction = isFunctionKind(kind);
    if (!isFunction && (!isVariableKind(kind) || isLocalOfNothing(named))) return;
    if (isFunction) meet(named);
    Outcome const outcome = outcomeOf(path);
    if (outcome.isCalled) add(path, "calls", named);
    if (outcome.isRead) add(path, "reads", named);
    if (outcome.isWritten) add(path, "writes", named);
    if (outcome.isAddressed) add(path, "address", named);
}

// Locals of instantiations, and those that the front end made for itself.
bool InsightWalk::isLocalOfNothing(CXCursor variable) const {
    if (clang_getCursorKind(variable) != CXCursor_VarDecl) return false;
    if (clang_getCursorLinkage(variable) != CXLinkage_NoLinkage) return false;
    Place place;
    return isInstance_ || !placeOf(variable, root_, place) ||
           !locals_.contains(placed(place, plainName(variable)));
}

void InsightWalk::examineMember(Path const& path) {
    if (path.size() < 2) return;
    Step const& parent = path[path.size() - 2];
    bool const isInitialised = isFunctionKind(parent.kind) || parent.kind == CXCursor_FunctionTemplate;
    bool const isDesignated =
        parent.kind == CXCursor_UnexposedExpr && clang_getCursorType(parent.cursor).kind == CXType_Void;
    CXCursor const field = clang_getCursorReferenced(path.back().cursor);
    if ((isInitialised || isDesignated) && !isNothing(field)) add(path, "writes", field);
}

void InsightWalk::addDestructor(Path const& path, CXType type) {
    CXType object = clang_getCanonicalType(type);
    for (CXType next = clang_getArrayElementType(object); next.kind != CXType_Invalid;
         next = clang_getArrayElementType(object))
        object = next;
    if (object.kind != CXType_Record) return;
    CXCursor const definition = clang_getCursorDefinition(clang_getTypeDeclaration(object));
    if (isNothing(definition)) return;
    for (CXCursor const& child : childrenOf(definition)) {
        if (clang_getCursorKind(child) == CXCursor_Destructor) add(path, "calls", child);
    }
}

void InsightWalk::addOverrides(CXCursor method) {
    CXCursor* overridden = nullptr;
    unsigned count = 0;
    clang_getOverriddenCursors(method, &overridden, &count);
    for (unsigned i = 0; i < count; ++i)
        seen_.insert(keyOf(method) + " overrides " + keyOf(overridden[i]));
    clang_disposeOverriddenCursors(overridden);
}

void InsightWalk::add(Path const& path, char const* use, CXCursor target) {
    if (!isEvaluated(path)) return;
    std::string const owner = ownerKey(path);
    if (!owner.empty()) seen_.insert(owner + ' ' + use + ' ' + keyOf(target));
}

std::string InsightWalk::ownerKey(Path const& path) {
    CXCursor const owner = ownerOf(path);
    if (isNothing(owner)) return {};
    Place place;
    if (clang_getCursorKind(owner) == CXCursor_LambdaExpr && placeOf(owner, root_, place))
        return groupOf(placed(place, "operator()"));
    return keyOf(owner);
}

// Instantiations stand nowhere in the text; only what names them leads to them.
void InsightWalk::meet(CXCursor function) {
    CXCursor const definition = clang_getCursorDefinition(function);
    Place place;
    if (isNothing(definition) || isNothing(clang_getSpecializedCursorTemplate(definition))) return;
    if (!placeOf(definition, root_, place) || !isInProject(place)) return;
    std::vector<CXCursor>& known = instances_[clang_hashCursor(definition)];
    bool const isKnown = std::any_of(known.begin(), known.end(), [&](CXCursor const& other) {
        return clang_equalCursors(other, definition) != 0;
    });
    if (isKnown) return;
    known.push_back(definition);
    waiting_.push_back(definition);
}

bool InsightWalk::isDropped(CXCursor cursor) const {
    for (CXCursor const& sight : {cursor, clang_getCursorDefinition(cursor)}) {
        Place place;
        if (!isNothing(sight) && placeOf(sight, root_, place) &&
            dropped_.contains(placed(place, plainName(sight))))
            return true;
    }
    return false;
}

void InsightWalk::compare() {
    auto const kindOf = [](std::string const& use) {
        for (char const* const kind : {" calls ", " reads ", " writes ", " address ", " overrides "}) {
            if (use.find(kind) != std::string::npos) return std::string(kind + 1);
        }
        return use.substr(0, use.find(' ')) + ' ';
    };
    for (std::string const& use : seen_) {
        if (modelled_.contains(use) || mayHave_.contains(use)) {
            ++agreed_[kindOf(use)];
        } else {
            mismatches_.push_back("not in the model: " + use);
        }
    }
    for (std::string const& use : modelled_) {
        if (!seen_.contains(use)) mismatches_.push_back("in the model only: " + use);
    }
}

} // namespace zelkor::producer::test
