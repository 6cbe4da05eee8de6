// Which query terms a class has, and that each names its property and the class that was written.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <iostream>
#include <set>
#include <tuple>

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

// All property names of the schema, as a term spells them. One that is missing here shows as a missing term.
#define FOR_EACH_NAME(X)                                                                                                           \
    X(access)                                                                                                                      \
    X(aggregate) X(alias) X(annotations) X(assocTemplate) X(attributes) X(baseClasses) X(                                          \
        befriendingAggregates) X(bitSize) X(bodyPosition) X(calledFuns) X(charNumBits) X(col) X(columnMajor)                       \
        X(comments) X(compilations) X(constants) X(declPos) X(declarationSourceRange) X(defPos) X(                                 \
            definitionSourceRange) X(dimensions) X(doubleNumBits) X(end) X(entryPoints)                                            \
            X(enumeratorComments) X(file) X(files) X(float16NumBits) X(floatNumBits) X(friendAggregates) X(                        \
                friendFuns) X(function) X(functions) X(funs) X(hasASMBlock) X(hasExplicitEnumBase)                                 \
                X(includedFileWrittenNames) X(includedFiles) X(inheritance) X(initVal) X(intNumBits) X(                            \
                    invocationPositions) X(isAbstract) X(isAddressTaken) X(isAlias) X(isBitField)                                  \
                    X(isCalled) X(isCmdDef) X(isCompilerGenerated) X(isCompliant) X(                                               \
                        isCompliantAsAggregateField) X(isCompliantAsFunctionArg)                                                   \
                        X(isCompliantAsFunctionReturn) X(isCompliantAsImportedType) X(                                             \
                            isCompliantIgnoreDeclarationPos) X(isConst) X(isDeclared) X(isDeclaredInHeader)                        \
                            X(isDefined) X(isDefinedInFriendDecl) X(isDefinedInHeader) X(isDeleted) X(                             \
                                isDependent) X(isDirect) X(isEmpty) X(isExported) X(isFinal) X(isInclude)                          \
                                X(isIncludedByPreinclude) X(isIncludedBySystemIncludeSyntax) X(                                    \
                                    isIncludedFromSystemIncludeDir) X(isIncomplete) X(isInline)                                    \
                                    X(isLambdaClosure) X(isLittleEndian) X(isMutable) X(isPack) X(                                 \
                                        isParameterPack) X(isPreDef) X(isPrototypeInstantiation)                                   \
                                        X(isProxyClass) X(isQualifier) X(isRead) X(isReferenced) X(                                \
                                            isRestrict) X(isScopedEnum) X(isSigned) X(isStd) X(isTemplate) X(isTemplateAlias)      \
                                            X(isTemplatePrototype) X(isTextBuffer) X(isThisConst) X(                               \
                                                isTopLevelFile) X(isUndef) X(isVariadic) X(isVirtual)                              \
                                                X(isVolatile) X(isWritten) X(kind) X(language) X(line) X(linkage) X(               \
                                                    longDoubleNumBits) X(longLongNumBits) X(longNumBits)                           \
                                                    X(macro) X(macros) X(members) X(methods) X(name) X(                            \
                                                        namespaces) X(needsImplicitConstructor) X(needsImplicitCopyConstructor)    \
                                                        X(numBits) X(                                                              \
                                                            numOptionalParams) X(owningAggregate) X(owningFun)                     \
                                                            X(owningFunPrototype) X(owningProject) X(                              \
                                                                owningScope) X(owningTemplate) X(paramTypes) X(params)             \
                                                                X(parent) X(path) X(plainCharsAreSigned) X(                        \
                                                                    pointerNumBits) X(pointsTo) X(position)                        \
                                                                    X(protoTypeInstantiation) X(proxyOfType) X(                    \
                                                                        ptrDiffTypeKind) X(readVars) X(referencedMacros)           \
                                                                        X(referencedTypes) X(retType) X(                           \
                                                                            sSizeTypeKind)                                         \
                                                                            X(scope) X(shortLongNumBits) X(shortNumBits) X(        \
                                                                                sizeTypeKind) X(specialKind)                       \
                                                                                X(start) X(storageClass) X(                        \
                                                                                    storageType) X(strings)                        \
                                                                                    X(symbols) X(templateArgs) X(                  \
                                                                                        templates) X(text) X(transitiveCalledFuns) \
                                                                                        X(transitiveReadVars) X(                   \
                                                                                            transitiveWrittenVars) X(type)         \
                                                                                            X(typeArg) X(                          \
                                                                                                types) X(val)                      \
                                                                                                X(value) X(                        \
                                                                                                    values) X(variable)            \
                                                                                                    X(variables) X(                \
                                                                                                        vars) X(wcharTypeKind)     \
                                                                                                        X(width) X(                \
                                                                                                            writtenName)           \
                                                                                                            X(writtenVars)

using Classes = std::tuple<
    za::Annotation, za::Comment, za::Macro, za::Project, za::Scope, za::Namespace, za::Symbol,
    za::Declaration, za::Function, za::Variable, za::TemplateArg, za::Template,
    za::codeinsight::VandorTeskImportCompliance, za::codeinsight::VandorTeskTypeImportCompliance,
    za::codeinsight::FunctionInfo, za::codeinsight::MacroInfo, za::codeinsight::TypeInfo,
    za::codeinsight::VariableInfo, za::codeinsight::CodeInsight, za::codeinsight::FunInfo,
    za::codeinsight::PtrInfo, za::constants::Constant, za::constants::AddressConstant,
    za::constants::AggregateConstant, za::constants::DesignatorConstant, za::constants::DynamicInitConstant,
    za::constants::ErrorConstant, za::constants::InitRepeatConstant, za::constants::NumericConstant,
    za::constants::PointerToMemberConstant, za::constants::StringConstant,
    za::constants::TemplateParamConstant, za::constants::VoidConstant, za::constants::FloatConstant,
    za::constants::IntegerConstant, za::source::LocatedObject, za::source::SourceFile,
    za::source::SourcePosition, za::source::SourceRange, za::source::CompilationUnit, za::types::BaseClass,
    za::types::AggregateType, za::types::Member, za::types::Method, za::types::StructType,
    za::types::UnionType, za::types::ClassType, za::types::BasedType, za::types::ArrayType,
    za::types::PointerToMemberType, za::types::PointerType, za::types::ReferenceType, za::types::TyperefType,
    za::types::VectorType, za::types::LValueReferenceType, za::types::QualifiedType,
    za::types::RValueReferenceType, za::types::TypeAttrType, za::types::TypeOpType, za::types::TypedefType,
    za::types::FunctionType, za::types::EnumType, za::types::Type, za::types::BooleanType,
    za::types::ErrorType, za::types::NullPtrType, za::types::OpaqueType, za::types::QuasiNumericType,
    za::types::TemplateParamType, za::types::VoidType, za::types::FloatType, za::types::IntegerType>;

struct Found {
    std::set<std::string> names;
    std::size_t wrongProperty = 0;
    std::size_t wrongClass = 0;
    std::size_t unstable = 0;
};

template <class X, class Term>
void note(Found& found, char const* name, Term const& term, Term const& again) {
    found.names.insert(name);
    PropertyRow const& row = Core::rowOf(term.getProperty());
    std::string spelled = row.name;
    spelled[0] = static_cast<char>(std::tolower(spelled[0]));
    found.wrongProperty += spelled != name || !X::Impl::table.conformsTo(*row.owner);
    found.wrongClass += term.attachment().metaClass() != X::metaClass();
    found.unstable += &term != &again;
}

template <class X>
Found termsOf() {
    Found found;
#define TRY(name)                                                                                            \
    if constexpr (requires { X::name().getProperty(); }) note<X>(found, #name, X::name(), X::name());
    FOR_EACH_NAME(TRY)
#undef TRY
    return found;
}

/// The rule: every stored property but the lists of plain values.
std::set<std::string> expected(ClassTable const& table) {
    std::set<std::string> names;
    for (PropertyRow const* row : propertiesOf(table)) {
        if (!row->stored() || row->kind == PropertyKind::ManyAttribute) continue;
        std::string name = row->name;
        name[0] = static_cast<char>(std::tolower(name[0]));
        names.insert(name);
    }
    return names;
}

template <class... X>
void checkAll(std::tuple<X...>*) {
    std::size_t classCount = 0;
    std::size_t termCount = 0;
    auto check = [&](ClassTable const& table, Found const& found) {
        SCOPED_TRACE(table.shortName);
        ++classCount;
        termCount += found.names.size();
        EXPECT_EQ(found.names, expected(table));
        EXPECT_EQ(found.wrongProperty, 0u);
        EXPECT_EQ(found.wrongClass, 0u);
        EXPECT_EQ(found.unstable, 0u);
    };
    (check(X::Impl::table, termsOf<X>()), ...);
    EXPECT_EQ(classCount, classes().size());
    std::cout << "query terms: " << termCount << " of " << classCount << " classes\n";
    EXPECT_GT(termCount, 0u);
}

} // namespace

TEST(QueryTerm, EveryStoredPropertyButListsOfValuesHasOne) {
    checkAll(static_cast<Classes*>(nullptr));
}

TEST(QueryTerm, ASubclassHasItsOwnObjectForTheSameProperty) {
    EXPECT_NE(static_cast<void const*>(&za::Function::name()), static_cast<void const*>(&za::Symbol::name()));
    EXPECT_EQ(za::Function::name().getProperty(), za::Symbol::name().getProperty());
    EXPECT_EQ(za::Scope::parent().getProperty(), Core::propertyOf(&za::Scope::Impl::rows[0]));
}

TEST(QueryTerm, TermsOfARunningQueryAreMembers) {
    struct Query : query::AbstractQuery {
    } query;
    za::Function::Constrainables const terms({query, query::SearchClassMatchMode::ClassAndSubclasses});
    EXPECT_EQ(&terms.query(), &query);
    EXPECT_EQ(terms.queriedClass(), za::Function::metaClass());
    EXPECT_EQ(&terms.Scope.attachment().query(), &terms);
    EXPECT_EQ(terms.Name.getProperty(), za::Function::name().getProperty());
}
