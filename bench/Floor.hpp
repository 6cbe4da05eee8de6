// Hand-written trees of the benched model, to see what its duties cost at least. Two of them:
// `counted`: atomic counts, container links, random identities, one allocation an element by the C library;
// `tracked`: the same in slabs, each element also knowing who refers to it, and a log of what was created.
// Everything is inlined into one program; a library cannot be faster than this, only nearer.
#pragma once

#include "Features.hpp"
#include "FloorMemory.hpp"
#include "Identity.hpp"
#include "Plan.hpp"

#include <algorithm>
#include <atomic>
#include <string>
#include <type_traits>
#include <vector>

namespace zelkor::bench::floor {

struct Nothing {};

template <bool tracks>
struct Tree {
    struct Node;

    /// A counted pointer.
    template <class T>
    class Counted {
      public:
        Counted() = default;
        explicit Counted(T* to) : target(to) {
            if (target) target->count.fetch_add(1, std::memory_order_relaxed);
        }
        Counted(Counted const& other) : Counted(other.target) {}
        Counted(Counted&& other) noexcept : target(std::exchange(other.target, nullptr)) {}
        template <class Derived>
        requires std::is_convertible_v<Derived*, T*> Counted(Counted<Derived>&& other)
        noexcept : target(other.release()) {}
        Counted& operator=(Counted other) noexcept {
            std::swap(target, other.target);
            return *this;
        }
        ~Counted() {
            if (target && target->count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete target;
        }
        T* get() const { return target; }
        T* operator->() const { return target; }
        T& operator*() const { return *target; }
        explicit operator bool() const { return target != nullptr; }
        T* release() { return std::exchange(target, nullptr); }

      private:
        T* target = nullptr;
    };

    /// A reference to an element that is contained elsewhere.
    template <class T>
    class Link {
      public:
        Link() = default;
        Link(Node& owner, T& to) : target(&to) {
            if constexpr (tracks) to.incoming.push_back(&owner);
        }
        void assign(Node& owner, T& to) {
            if constexpr (tracks) {
                if (target) {
                    auto& known = target->incoming;
                    known.erase(std::prev(std::find(known.rbegin(), known.rend(), &owner).base()));
                }
            }
            *this = Link(owner, to);
        }
        T* get() const { return target.get(); }
        explicit operator bool() const { return static_cast<bool>(target); }

      private:
        Counted<T> target;
    };

    struct Node {
        Kind const kind;
        std::atomic<unsigned> count{0};
        Node* container = nullptr;
        Identity identity;
        [[no_unique_address]] std::conditional_t<tracks, std::vector<Node*>, Nothing> incoming;

        explicit Node(Kind kind_) : kind(kind_) {}
        Node(Node const&) = delete;
        Node& operator=(Node const&) = delete;
        virtual ~Node() = default;

        static void* operator new(std::size_t size) {
            if constexpr (tracks)
                return Slabs::take(size);
            else
                return ::operator new(size);
        }
        static void operator delete(void* object, std::size_t size) {
            if constexpr (tracks)
                Slabs::giveBack(object, size);
            else
                ::operator delete(object);
        }
    };

    template <Kind kind_, class Base>
    struct Of : Base {
        static constexpr Kind kind = kind_;
        Of() : Base(kind_) {}
        explicit Of(Kind derived) : Base(derived) {}
    };

    struct File;
    struct Position : Of<Kind::SourcePosition, Node> {
        unsigned line = 0;
        unsigned col = 0;
        Link<File> file;
    };
    struct Symbol : Node {
        using Node::Node;
        Counted<Position> defPos;
        std::vector<Counted<Position>> declPos;
        std::string name;
    };
    struct Type : Symbol {
        using Symbol::Symbol;
    };
    struct Constant : Of<Kind::IntegerConstant, Node> {
        Link<Type> type;
        std::string value;
    };
    struct TemplateArgument : Of<Kind::TemplateArg, Node> {
        TemplateArgKind argKind = TemplateArgKind::Unknown;
        Link<Type> type;
    };
    struct Variable : Of<Kind::Variable, Symbol> {
        using Of<Kind::Variable, Symbol>::Of;
        Link<Type> type;
        StorageClass storageClass = StorageClass::None;
        Linkage linkage = Linkage::None;
        Counted<Constant> initVal;
    };
    struct Member : Of<Kind::Member, Variable> {
        Access access = Access::None;
        bool isMutable = false;
    };
    struct Scope : Of<Kind::Scope, Node> {
        using Of<Kind::Scope, Node>::Of;
        std::vector<Counted<Scope>> namespaces;
        std::vector<Counted<Symbol>> symbols;
    };
    struct Function : Of<Kind::Function, Symbol> {
        using Of<Kind::Function, Symbol>::Of;
        Link<Type> type;
        StorageClass storageClass = StorageClass::None;
        Linkage linkage = Linkage::None;
        Counted<Scope> scope;
        std::vector<Counted<Variable>> params;
        std::vector<Counted<TemplateArgument>> templateArgs;
        unsigned numOptionalParams = 0;
        bool isInline = false;
        bool isVariadic = false;
    };
    struct Method : Of<Kind::Method, Function> {
        Access access = Access::Public;
        bool isVirtual = false;
        bool isThisConst = false;
    };
    struct Struct : Of<Kind::StructType, Type> {
        std::vector<Counted<Member>> members;
        std::vector<Counted<Method>> methods;
        bool isAbstract = false;
    };
    struct Pointer : Of<Kind::PointerType, Type> {
        Link<Type> type;
    };
    struct Qualified : Of<Kind::QualifiedType, Type> {
        Link<Type> type;
        bool isConst = false;
        bool isVolatile = false;
    };
    struct Typedef : Of<Kind::TypedefType, Type> {
        Link<Type> type;
        bool isAlias = false;
    };
    struct Integer : Of<Kind::IntegerType, Type> {
        unsigned numBits = 0;
        bool isSigned = true;
        IntegerKind integerKind = IntegerKind::SignedInt;
    };
    struct Namespace : Of<Kind::Namespace, Scope> {
        std::string name;
        bool isInline = false;
    };
    struct Unit : Of<Kind::CompilationUnit, Scope> {
        Language language = Language::C;
        std::vector<Link<File>> files;
    };
    struct File : Of<Kind::SourceFile, Node> {
        std::string path;
        std::string writtenName;
        bool isInclude = false;
        bool isTopLevelFile = false;
        std::vector<Link<File>> includedFiles;
    };
    struct Project : Of<Kind::Project, Node> {
        std::vector<Counted<File>> files;
        std::vector<Counted<Unit>> compilations;
        unsigned longNumBits = 32;
        unsigned longDoubleNumBits = 96;
        unsigned pointerNumBits = 32;
    };

    /// Calls `visit` with `node` as its own class.
    template <class Visit>
    static decltype(auto) withClass(Node const& node, Visit&& visit) {
        switch (node.kind) {
        case Kind::Project:
            return visit(static_cast<Project const&>(node));
        case Kind::SourceFile:
            return visit(static_cast<File const&>(node));
        case Kind::CompilationUnit:
            return visit(static_cast<Unit const&>(node));
        case Kind::Namespace:
            return visit(static_cast<Namespace const&>(node));
        case Kind::Scope:
            return visit(static_cast<Scope const&>(node));
        case Kind::Function:
            return visit(static_cast<Function const&>(node));
        case Kind::Method:
            return visit(static_cast<Method const&>(node));
        case Kind::Variable:
            return visit(static_cast<Variable const&>(node));
        case Kind::Member:
            return visit(static_cast<Member const&>(node));
        case Kind::StructType:
            return visit(static_cast<Struct const&>(node));
        case Kind::PointerType:
            return visit(static_cast<Pointer const&>(node));
        case Kind::QualifiedType:
            return visit(static_cast<Qualified const&>(node));
        case Kind::TypedefType:
            return visit(static_cast<Typedef const&>(node));
        case Kind::IntegerType:
            return visit(static_cast<Integer const&>(node));
        case Kind::TemplateArg:
            return visit(static_cast<TemplateArgument const&>(node));
        case Kind::IntegerConstant:
            return visit(static_cast<Constant const&>(node));
        case Kind::SourcePosition:
            break;
        }
        return visit(static_cast<Position const&>(node));
    }

    template <class Record>
    static auto classOf(Record const&) {
        if constexpr (Record::kind == Kind::Project)
            return std::type_identity<Project>();
        else if constexpr (Record::kind == Kind::SourceFile)
            return std::type_identity<File>();
        else if constexpr (Record::kind == Kind::CompilationUnit)
            return std::type_identity<Unit>();
        else if constexpr (Record::kind == Kind::Namespace)
            return std::type_identity<Namespace>();
        else if constexpr (Record::kind == Kind::Scope)
            return std::type_identity<Scope>();
        else if constexpr (Record::kind == Kind::Function)
            return std::type_identity<Function>();
        else if constexpr (Record::kind == Kind::Method)
            return std::type_identity<Method>();
        else if constexpr (Record::kind == Kind::Variable)
            return std::type_identity<Variable>();
        else if constexpr (Record::kind == Kind::Member)
            return std::type_identity<Member>();
        else if constexpr (Record::kind == Kind::StructType)
            return std::type_identity<Struct>();
        else if constexpr (Record::kind == Kind::PointerType)
            return std::type_identity<Pointer>();
        else if constexpr (Record::kind == Kind::QualifiedType)
            return std::type_identity<Qualified>();
        else if constexpr (Record::kind == Kind::TypedefType)
            return std::type_identity<Typedef>();
        else if constexpr (Record::kind == Kind::IntegerType)
            return std::type_identity<Integer>();
        else if constexpr (Record::kind == Kind::TemplateArg)
            return std::type_identity<TemplateArgument>();
        else if constexpr (Record::kind == Kind::IntegerConstant)
            return std::type_identity<Constant>();
        else
            return std::type_identity<Position>();
    }
};

} // namespace zelkor::bench::floor
