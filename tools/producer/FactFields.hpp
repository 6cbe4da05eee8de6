// The fields of each fact, listed once, for whoever turns facts into bytes and back.
//
// Each list takes its struct apart, which compiles only with as many names as the struct has fields: whoever
// adds a field is told to add it here.
#pragma once

#include "Facts.hpp"

#include <cereal/cereal.hpp>
#include <cereal/types/array.hpp>
#include <cereal/types/deque.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/variant.hpp>
#include <cereal/types/vector.hpp>

namespace cereal {

template <class Archive>
void serialize(Archive& archive, zelkor::producer::Id& id) {
    archive(binary_data(id.data, sizeof id.data));
}

} // namespace cereal

namespace zelkor::producer {

template <class Archive>
void serialize(Archive& archive, Position& fact) {
    auto& [file, line, column] = fact;
    archive(file, line, column);
}

template <class Archive>
void serialize(Archive& archive, Range& fact) {
    auto& [start, end] = fact;
    archive(start, end);
}

template <class Archive>
void serialize(Archive& archive, TypeFact& fact) {
    auto& [id, kind, base, name, parameters, extents, attributes, integer, floating, op, bits, isSigned,
           isConst, isVolatile, isRestrict, isVariadic] = fact;
    archive(id, kind, base, name, parameters, extents, attributes, integer, floating, op, bits, isSigned,
            isConst, isVolatile, isRestrict, isVariadic);
}

template <class Archive>
void serialize(Archive& archive, ConstantFact& fact) {
    auto& [kind, name, type, value, address, elements] = fact;
    archive(kind, name, type, value, address, elements);
}

template <class Archive>
void serialize(Archive& archive, TemplateArgumentFact& fact) {
    auto& [kind, name, type, value, parameter] = fact;
    archive(kind, name, type, value, parameter);
}

template <class Archive>
void serialize(Archive& archive, NamespaceFacts& fact) {
    auto& [isInline, isStd, alias] = fact;
    archive(isInline, isStd, alias);
}

template <class Archive>
void serialize(Archive& archive, ParameterFact& fact) {
    auto& [name, type, position, defaultValue, storage, isPack] = fact;
    archive(name, type, position, defaultValue, storage, isPack);
}

template <class Archive>
void serialize(Archive& archive, FunctionFacts& fact) {
    auto& [parameters, body, contents, optionalParameters, special, isCompilerGenerated, isInline, isVariadic,
           isDeleted, isDefinedInFriend, isVirtual, isAbstract, isFinal, isThisConst] = fact;
    archive(parameters, body, contents, optionalParameters, special, isCompilerGenerated, isInline,
            isVariadic, isDeleted, isDefinedInFriend, isVirtual, isAbstract, isFinal, isThisConst);
}

template <class Archive>
void serialize(Archive& archive, VariableFacts& fact) {
    auto& [initialiser, bits, isMutable, isTentative] = fact;
    archive(initialiser, bits, isMutable, isTentative);
}

template <class Archive>
void serialize(Archive& archive, BaseFact& fact) {
    auto& [type, access, isVirtual] = fact;
    archive(type, access, isVirtual);
}

template <class Archive>
void serialize(Archive& archive, RecordFacts& fact) {
    auto& [bases, friendTypes, friendFunctions, contents, isFinal, isAbstract, isEmpty, needsConstructor,
           needsCopyConstructor, isLambda, isInstantiated] = fact;
    archive(bases, friendTypes, friendFunctions, contents, isFinal, isAbstract, isEmpty, needsConstructor,
            needsCopyConstructor, isLambda, isInstantiated);
}

template <class Archive>
void serialize(Archive& archive, EnumeratorFact& fact) {
    auto& [name, value, comment] = fact;
    archive(name, value, comment);
}

template <class Archive>
void serialize(Archive& archive, EnumFacts& fact) {
    auto& [enumerators, bits, isScoped, hasExplicitBase] = fact;
    archive(enumerators, bits, isScoped, hasExplicitBase);
}

template <class Archive>
void serialize(Archive& archive, TypedefFacts& fact) {
    auto& [isAlias, isTemplateAlias, isDependent] = fact;
    archive(isAlias, isTemplateAlias, isDependent);
}

template <class Archive>
void serialize(Archive& archive, TemplateParameterFact& fact) {
    auto& [id, kind, name, type, position, isPack] = fact;
    archive(id, kind, name, type, position, isPack);
}

template <class Archive>
void serialize(Archive& archive, TemplateFacts& fact) {
    auto& [kind, prototype, parameters] = fact;
    archive(kind, prototype, parameters);
}

template <class Archive>
void serialize(Archive& archive, ExtentFact& fact) {
    auto& [place, range] = fact;
    archive(place, range);
}

template <class Archive>
void serialize(Archive& archive, Entity& fact) {
    auto& [id, kind, owner, name, inProject, isDefined, definition, declarations, extents, type, storage,
           linkage, access, comments, templateOf, arguments, isPrototype, detail] = fact;
    archive(id, kind, owner, name, inProject, isDefined, definition, declarations, extents, type, storage,
            linkage, access, comments, templateOf, arguments, isPrototype, detail);
}

template <class Archive>
void serialize(Archive& archive, MacroFact& fact) {
    auto& [id, name, text, position, isUndef, isCommandLine, isPredefined, isReferenced] = fact;
    archive(id, name, text, position, isUndef, isCommandLine, isPredefined, isReferenced);
}

template <class Archive>
void serialize(Archive& archive, MacroUse& fact) {
    auto& [macro, place] = fact;
    archive(macro, place);
}

template <class Archive>
void serialize(Archive& archive, PointerFact& fact) {
    auto& [pointer, target] = fact;
    archive(pointer, target);
}

template <class Archive>
void serialize(Archive& archive, UseFacts& fact) {
    auto& [owner, lists, pointers, hasBody, hasAssembler] = fact;
    archive(owner, lists, pointers, hasBody, hasAssembler);
}

template <class Archive>
void serialize(Archive& archive, OverrideFact& fact) {
    auto& [method, overridden] = fact;
    archive(method, overridden);
}

template <class Archive>
void serialize(Archive& archive, CommentFact& fact) {
    auto& [range, text] = fact;
    archive(range, text);
}

template <class Archive>
void serialize(Archive& archive, IncludeFact& fact) {
    auto& [file, writtenName, line] = fact;
    archive(file, writtenName, line);
}

template <class Archive>
void serialize(Archive& archive, FileFact& fact) {
    auto& [id, path, writtenName, includes, comments, inProject, isInclude, isSystemSyntax, isPreinclude,
           isFromSystemDirectory, isTopLevel] = fact;
    archive(id, path, writtenName, includes, comments, inProject, isInclude, isSystemSyntax, isPreinclude,
            isFromSystemDirectory, isTopLevel);
}

template <class Archive>
void serialize(Archive& archive, TargetFacts& fact) {
    auto& [isLittleEndian, charIsSigned, charBits, shortBits, intBits, longBits, longLongBits, floatBits,
           doubleBits, longDoubleBits, pointerBits, ptrDiffType, sizeType, signedSizeType, wcharType] = fact;
    archive(isLittleEndian, charIsSigned, charBits, shortBits, intBits, longBits, longLongBits, floatBits,
            doubleBits, longDoubleBits, pointerBits, ptrDiffType, sizeType, signedSizeType, wcharType);
}

template <class Archive>
void serialize(Archive& archive, Diagnostic& fact) {
    auto& [file, line, column, severity, text] = fact;
    archive(file, line, column, severity, text);
}

template <class Archive>
void serialize(Archive& archive, InputFile& fact) {
    auto& [path, content] = fact;
    archive(path, content);
}

template <class Archive>
void serialize(Archive& archive, UnitFacts& fact) {
    auto& [file, failure, advice, language, target, files, macros, macroUses, uses, overrides, entities,
           types, diagnostics, rejectedOptions, missingHeaders, inputs] = fact;
    archive(file, failure, advice, language, target, files, macros, macroUses, uses, overrides, entities,
            types, diagnostics, rejectedOptions, missingHeaders);
    static_cast<void>(inputs); // stand in the head of a unit file, to be looked at before all this is read
}

} // namespace zelkor::producer
