// The benched model as plain data: what is to be built, in the order in which a producer would meet it. Drawn
// once from a seed before anything is timed, then replayed on each contender, so that all of them build the
// same model.
#pragma once

#include "Features.hpp"

#include <cstdint>
#include <memory_resource>
#include <span>
#include <string_view>
#include <vector>

namespace zelkor::bench {

/// The number of a type or file among those built before; a target always precedes its references.
template <class Tag>
struct Index {
    static constexpr std::uint32_t nothing = ~std::uint32_t{0};
    std::uint32_t at = nothing;
    explicit operator bool() const { return at != nothing; }
};
using TypeIndex = Index<struct TypeTag>;
using FileIndex = Index<struct FileTag>;

struct PositionRecord {
    static constexpr Kind kind = Kind::SourcePosition;
    unsigned line = 0;
    unsigned col = 0;
    FileIndex file;
};

struct ConstantRecord {
    static constexpr Kind kind = Kind::IntegerConstant;
    std::string_view value;
    TypeIndex type;
};

struct TemplateArgRecord {
    static constexpr Kind kind = Kind::TemplateArg;
    TemplateArgKind argKind = TemplateArgKind::Type;
    TypeIndex type;
};

struct SymbolRecord {
    PositionRecord const* defPos = nullptr;
    std::span<PositionRecord const> declPos;
    std::string_view name;
};

struct VariableRecord : SymbolRecord {
    static constexpr Kind kind = Kind::Variable;
    TypeIndex type;
    StorageClass storageClass = StorageClass::None;
    Linkage linkage = Linkage::None;
    ConstantRecord const* initVal = nullptr;
};

struct MemberRecord : VariableRecord {
    static constexpr Kind kind = Kind::Member;
    Access access = Access::None;
    bool isMutable = false;
};

/// A function's body: its local variables.
struct BodyRecord {
    static constexpr Kind kind = Kind::Scope;
    std::span<VariableRecord const> symbols;
};

struct FunctionRecord : SymbolRecord {
    static constexpr Kind kind = Kind::Function;
    TypeIndex type;
    StorageClass storageClass = StorageClass::None;
    Linkage linkage = Linkage::None;
    BodyRecord const* scope = nullptr;
    std::span<VariableRecord const> params;
    std::span<TemplateArgRecord const> templateArgs;
    unsigned numOptionalParams = 0;
    bool isInline = false;
    bool isVariadic = false;
};

struct MethodRecord : FunctionRecord {
    static constexpr Kind kind = Kind::Method;
    Access access = Access::Public;
    bool isVirtual = false;
    bool isThisConst = false;
};

struct StructRecord : SymbolRecord {
    static constexpr Kind kind = Kind::StructType;
    std::span<MemberRecord const> members;
    std::span<MethodRecord const> methods;
    bool isAbstract = false;
};

struct PointerRecord : SymbolRecord {
    static constexpr Kind kind = Kind::PointerType;
    TypeIndex type;
};

struct QualifiedRecord : SymbolRecord {
    static constexpr Kind kind = Kind::QualifiedType;
    TypeIndex type;
    bool isConst = false;
    bool isVolatile = false;
};

struct TypedefRecord : SymbolRecord {
    static constexpr Kind kind = Kind::TypedefType;
    TypeIndex type;
    bool isAlias = false;
};

struct IntegerRecord : SymbolRecord {
    static constexpr Kind kind = Kind::IntegerType;
    unsigned numBits = 0;
    bool isSigned = true;
    IntegerKind integerKind = IntegerKind::SignedInt;
};

struct NamespaceRecord {
    static constexpr Kind kind = Kind::Namespace;
    std::string_view name;
    bool isInline = false;
    bool hasNamespaces = false;
};

struct UnitRecord {
    static constexpr Kind kind = Kind::CompilationUnit;
    static constexpr bool hasNamespaces = true;
    Language language = Language::CXX17;
    std::span<FileIndex const> files;
};

struct FileRecord {
    static constexpr Kind kind = Kind::SourceFile;
    std::string_view path;
    std::string_view writtenName;
    bool isInclude = false;
    bool isTopLevelFile = false;
    std::span<FileIndex const> includedFiles;
};

struct ProjectRecord {
    static constexpr Kind kind = Kind::Project;
    unsigned longNumBits = 64;
    unsigned longDoubleNumBits = 128;
    unsigned pointerNumBits = 64;
};

template <class Record>
constexpr bool isTypeRecord = Record::kind == Kind::StructType || Record::kind == Kind::PointerType ||
                              Record::kind == Kind::QualifiedType || Record::kind == Kind::TypedefType ||
                              Record::kind == Kind::IntegerType;

/// What a contender offers to be built: the project, then its files, then each unit with its namespaces and
/// symbols. `symbol` takes every symbol record (a concept cannot name overloads; two stand for all) and adds
/// it, with all that it contains, to the scope opened last.
template <class Sink>
concept ModelSink = requires(Sink sink, ProjectRecord project, FileRecord file, UnitRecord unit,
                             NamespaceRecord space, FunctionRecord function, StructRecord type) {
    sink.project(project);
    sink.file(file);
    sink.openScope(unit);
    sink.openScope(space);
    sink.closeScope();
    sink.symbol(function);
    sink.symbol(type);
};

/// A drawn model. Owns all records and texts; not copyable because records point at each other.
class Plan {
  public:
    /// Draws a model of at least `elements` elements (a few dozen more: what is begun is finished).
    Plan(std::uint64_t seed, unsigned elements);
    Plan(Plan const&) = delete;
    Plan& operator=(Plan const&) = delete;

    unsigned elements() const { return total; }
    unsigned count(Kind kind) const { return counts[static_cast<std::size_t>(kind)]; }
    std::uint64_t seed() const { return seedValue; }

    template <ModelSink Sink>
    void replay(Sink& sink) const;

  private:
    friend class Generator;
    struct Step {
        Kind kind;
        void const* record; // null: the scope opened last is closed
    };

    std::uint64_t seedValue;
    unsigned total = 0;
    std::array<unsigned, classNames.size()> counts{};
    std::pmr::monotonic_buffer_resource arena;
    std::vector<Step> steps;
};

template <ModelSink Sink>
void Plan::replay(Sink& sink) const {
    for (Step const& step : steps) {
        switch (step.record ? step.kind : Kind::Scope) {
        case Kind::Project:
            sink.project(*static_cast<ProjectRecord const*>(step.record));
            break;
        case Kind::SourceFile:
            sink.file(*static_cast<FileRecord const*>(step.record));
            break;
        case Kind::CompilationUnit:
            sink.openScope(*static_cast<UnitRecord const*>(step.record));
            break;
        case Kind::Namespace:
            sink.openScope(*static_cast<NamespaceRecord const*>(step.record));
            break;
        case Kind::Function:
            sink.symbol(*static_cast<FunctionRecord const*>(step.record));
            break;
        case Kind::Variable:
            sink.symbol(*static_cast<VariableRecord const*>(step.record));
            break;
        case Kind::StructType:
            sink.symbol(*static_cast<StructRecord const*>(step.record));
            break;
        case Kind::PointerType:
            sink.symbol(*static_cast<PointerRecord const*>(step.record));
            break;
        case Kind::QualifiedType:
            sink.symbol(*static_cast<QualifiedRecord const*>(step.record));
            break;
        case Kind::TypedefType:
            sink.symbol(*static_cast<TypedefRecord const*>(step.record));
            break;
        case Kind::IntegerType:
            sink.symbol(*static_cast<IntegerRecord const*>(step.record));
            break;
        default:
            sink.closeScope();
            break;
        }
    }
}

} // namespace zelkor::bench
