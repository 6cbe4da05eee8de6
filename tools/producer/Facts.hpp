// Plain data that one translation unit yields. It neither holds model elements nor cursors of the front end,
// so that it may cross threads and outlive the front end's translation unit.
#pragma once

#include "Digest.hpp"
#include "Identity.hpp"
#include "UseFacts.hpp"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace zelkor::producer {

// Line and column count from 1, columns in bytes; a nil file means that there is no place in a file.
struct Position {
    Id file{};
    unsigned line = 0;
    unsigned column = 0;

    friend bool operator==(Position const&, Position const&) = default;
};

struct Range {
    Position start;
    Position end;

    friend bool operator==(Range const&, Range const&) = default;
};

enum class StorageClass { None, Extern, Static, Auto, Register };
enum class Linkage { None, Internal, C, Cxx };
enum class Access { None, Public, Protected, Private };
enum class SpecialFunction {
    None,
    Constructor,
    CopyConstructor,
    Destructor,
    Conversion,
    UdlOperator,
    Operator
};

enum class TypeKind {
    Void,
    Bool,
    NullPtr,
    Opaque,
    Integer,
    Float,
    Pointer,
    LValueReference,
    RValueReference,
    MemberPointer,
    Array,
    Vector,
    Qualified,
    Attribute,
    TypeOperator,
    Function,
};

enum class IntegerKind {
    Char,
    SignedChar,
    UnsignedChar,
    Short,
    UnsignedShort,
    Int,
    UnsignedInt,
    Long,
    UnsignedLong,
    LongLong,
    UnsignedLongLong,
    Int128,
    UnsignedInt128,
    Wchar,
    Char16,
    Char32,
};
enum class FloatKind { Half, Single, Float128, Double, LongDouble };
enum class TypeOperator { DeclType, TypeOf, UnderlyingType };

// A type without a declaration of its own; declared types are entities and share the identities' space with
// these.
struct TypeFact {
    Id id{};
    TypeKind kind = TypeKind::Opaque;
    Id base{}; // pointee, element, qualified, resulting or returned type
    std::string name;
    std::vector<Id> parameters;
    std::vector<std::int64_t> extents; // of an array, outermost first; the width of a vector
    std::vector<std::string> attributes;
    IntegerKind integer = IntegerKind::Int;
    FloatKind floating = FloatKind::Double;
    TypeOperator op = TypeOperator::DeclType;
    unsigned bits = 0;
    bool isSigned = false;
    bool isConst = false;
    bool isVolatile = false;
    bool isRestrict = false;
    bool isVariadic = false;
};

enum class ConstantKind {
    Integer,
    Float,
    String,
    Address,
    Aggregate,
    PointerToMember,
    TemplateParam,
    DynamicInit,
    InitRepeat,
    Designator,
};
enum class AddressOf { Unknown, Function, Variable };

struct ConstantFact {
    ConstantKind kind = ConstantKind::DynamicInit;
    std::string name;
    Id type{};
    std::string value; // digits, the bytes of a string in UTF-8, or the name of what an address refers to
    AddressOf address = AddressOf::Unknown;
    std::vector<ConstantFact> elements;

    friend bool operator==(ConstantFact const&, ConstantFact const&) = default;
};

enum class ArgumentKind { Unknown, Type, NonType, TemplateTemplate, PackStart };

struct TemplateArgumentFact {
    ArgumentKind kind = ArgumentKind::Unknown;
    std::string name;
    Id type{};
    std::optional<ConstantFact> value;
    Id parameter{}; // the template's own non-type parameter, when a prototype names it
};

struct NamespaceFacts {
    bool isInline = false;
    bool isStd = false;
    Id alias{};
};

struct ParameterFact {
    std::string name;
    Id type{};
    std::optional<Position> position;
    std::optional<ConstantFact> defaultValue;
    StorageClass storage = StorageClass::None;
    bool isPack = false;
};

struct FunctionFacts {
    std::vector<ParameterFact> parameters;
    std::optional<Range> body;
    std::vector<Id> contents; // locals, to tell one definition from another
    unsigned optionalParameters = 0;
    SpecialFunction special = SpecialFunction::None;
    bool isCompilerGenerated = false;
    bool isInline = false;
    bool isVariadic = false;
    bool isDeleted = false;
    bool isDefinedInFriend = false;
    bool isVirtual = false;
    bool isAbstract = false;
    bool isFinal = false;
    bool isThisConst = false;
};

struct VariableFacts {
    std::optional<ConstantFact> initialiser;
    std::optional<unsigned> bits; // of a bit field
    bool isMutable = false;
    bool isTentative = false; // a definition of C unless there is a real one
};

struct BaseFact {
    Id type{};
    Access access = Access::Public;
    bool isVirtual = false;

    friend bool operator==(BaseFact const&, BaseFact const&) = default;
};

struct RecordFacts {
    std::vector<BaseFact> bases;
    std::vector<Id> friendTypes;
    std::vector<Id> friendFunctions;
    std::vector<Id> contents; // fields and methods, to tell one definition from another
    bool isFinal = false;
    bool isAbstract = false;
    bool isEmpty = false;
    bool needsConstructor = false;
    bool needsCopyConstructor = false;
    bool isLambda = false;
    bool isInstantiated = false; // implicit, so that later units may know further methods
};

struct EnumeratorFact {
    std::string name;
    std::string value;
    std::string comment;

    friend bool operator==(EnumeratorFact const&, EnumeratorFact const&) = default;
};

struct EnumFacts {
    std::vector<EnumeratorFact> enumerators;
    unsigned bits = 0;
    bool isScoped = false;
    bool hasExplicitBase = false;
};

struct TypedefFacts {
    bool isAlias = false;
    bool isTemplateAlias = false;
    bool isDependent = false;
};

enum class TemplateKind {
    Unknown,
    Class,
    Function,
    Variable,
    MemberFunction,
    StaticDataMember,
    MemberClass,
    TemplateTemplateParam,
};
enum class TemplateParameterKind { Type, NonType, Template };

struct TemplateParameterFact {
    Id id{};
    TemplateParameterKind kind = TemplateParameterKind::Type;
    std::string name;
    Id type{}; // of a non-type parameter
    std::optional<Position> position;
    bool isPack = false;
};

struct TemplateFacts {
    TemplateKind kind = TemplateKind::Unknown;
    Id prototype{};
    std::vector<TemplateParameterFact> parameters;
};

enum class EntityKind {
    Namespace,
    Function,
    Method,
    Variable,
    Member,
    Struct,
    Class,
    Union,
    Enum,
    Typedef,
    Template,
};

using EntityDetail = std::variant<NamespaceFacts, FunctionFacts, VariableFacts, RecordFacts, EnumFacts,
                                  TypedefFacts, TemplateFacts>;

struct ExtentFact {
    Position place;
    Range range;
};

struct Entity {
    Id id{};
    EntityKind kind = EntityKind::Namespace;
    Id owner{}; // nil: the unit's own scope
    std::string name;
    bool inProject = false;
    bool isDefined = false;
    std::optional<Position> definition;
    std::vector<Position> declarations;
    std::vector<ExtentFact> extents; // of what stands at these places
    Id type{};                       // declared, aliased or underlying type
    StorageClass storage = StorageClass::None;
    Linkage linkage = Linkage::None;
    Access access = Access::None;
    std::vector<std::string> comments;
    Id templateOf{};
    std::vector<TemplateArgumentFact> arguments;
    bool isPrototype = false;
    EntityDetail detail;

    template <class Facts>
    Facts* as() {
        return std::get_if<Facts>(&detail);
    }
    template <class Facts>
    Facts const* as() const {
        return std::get_if<Facts>(&detail);
    }
};

// Of C, which lets such a definition stand beside others, and counts it where there is no real one.
inline bool isTentative(Entity const& entity) {
    VariableFacts const* const variable = entity.as<VariableFacts>();
    return entity.isDefined && variable && variable->isTentative;
}

struct MacroFact {
    Id id{};
    std::string name;
    std::string text;
    std::optional<Position> position;
    bool isUndef = false;
    bool isCommandLine = false;
    bool isPredefined = false;
    bool isReferenced = false;
};

// Where a project file expands a macro, or tests it while it is defined.
struct MacroUse {
    Id macro{};
    Position place;

    friend bool operator==(MacroUse const&, MacroUse const&) = default;
};

struct CommentFact {
    Range range;
    std::string text;
};

struct IncludeFact {
    Id file{};
    std::string writtenName;
    unsigned line = 0;

    friend bool operator==(IncludeFact const&, IncludeFact const&) = default;
};

struct FileFact {
    Id id{};
    std::string path; // as in the model
    std::string writtenName;
    std::vector<IncludeFact> includes;
    std::vector<CommentFact> comments;
    bool inProject = false;
    bool isInclude = false;
    bool isSystemSyntax = false;
    bool isPreinclude = false;
    bool isFromSystemDirectory = false;
    bool isTopLevel = false;
};

enum class Language { C, C89, C99, C11, C17, Cxx, Cxx03, Cxx11, Cxx14, Cxx17 };

struct TargetFacts {
    bool isLittleEndian = true;
    bool charIsSigned = true;
    unsigned charBits = 8;
    unsigned shortBits = 16;
    unsigned intBits = 32;
    unsigned longBits = 64;
    unsigned longLongBits = 64;
    unsigned floatBits = 32;
    unsigned doubleBits = 64;
    unsigned longDoubleBits = 128;
    unsigned pointerBits = 64;
    IntegerKind ptrDiffType = IntegerKind::Long;
    IntegerKind sizeType = IntegerKind::UnsignedLong;
    IntegerKind signedSizeType = IntegerKind::Long;
    IntegerKind wcharType = IntegerKind::Int;

    friend bool operator==(TargetFacts const&, TargetFacts const&) = default;
};

enum class Severity { Note, Warning, Error, Fatal };

struct Diagnostic {
    std::string file;
    unsigned line = 0;
    unsigned column = 0;
    Severity severity = Severity::Error;
    std::string text;
};

// A file that the front end read for a unit.
struct InputFile {
    std::string path; // real
    Digest content{};
};

struct UnitFacts {
    std::string file;    // main file, as in the model
    std::string failure; // set when there are no facts at all
    std::string advice;  // against the failure
    Language language = Language::C;
    TargetFacts target;
    std::vector<FileFact> files; // main file first
    std::vector<MacroFact> macros;
    std::vector<MacroUse> macroUses;
    std::vector<UseFacts> uses;
    std::vector<OverrideFact> overrides;
    std::deque<Entity> entities; // in the order of the source, referenced ones last; the addresses are stable
    std::deque<TypeFact> types;  // parts before wholes
    std::vector<Diagnostic> diagnostics;
    std::vector<std::string> rejectedOptions;
    std::vector<std::string> missingHeaders; // as they are written
    std::vector<InputFile> inputs;           // main file first

    bool hasErrors() const {
        for (Diagnostic const& diagnostic : diagnostics) {
            if (diagnostic.severity >= Severity::Error) return true;
        }
        return false;
    }
};

// Takes a unit from the thread that reads it, in one step or in two.
struct UnitSink {
    std::function<void(UnitFacts&&)> unit; // once
    // Before that, when there is such a function: the files as they will be in the unit, and at their place
    // in memory, so that others may go on with their comments while declarations are read.
    std::function<void(std::span<FileFact const>)> files = nullptr;
};

} // namespace zelkor::producer
