/// \file
/// The writer behind names, types and signatures. See docs/names.md for the rules.
#pragma once

#include "Names.hpp"
#include "TypeRules.hpp"
#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/Function.hpp"
#include "zelkor/ast/Variable.hpp"
#include "zelkor/ast/types/AggregateType.hpp"
#include "zelkor/ast/types/EnumType.hpp"
#include "zelkor/ast/types/FunctionType.hpp"

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace zelkor::ast::names {

using brant::zero::isA;

/// Writes into one buffer. Layers of types and chains of scopes lie on two stacks that all nested texts
/// share; only lists (template arguments, parameter types) are written by recursion.
class NameWriter {
  public:
    /// Lists inside each other.
    static constexpr std::size_t maximumNesting = 512;
    /// Layers, scopes and arguments looked at in one call.
    static constexpr std::size_t maximumVisits = std::size_t{1} << 20;
    /// Bytes behind which no further list begins.
    static constexpr std::size_t maximumLength = std::size_t{4} << 20;

    [[nodiscard]] std::string take() noexcept { return std::move(out_); }

    void writeType(Body const* type, std::string_view declared, bool skipTypedefs);
    void writeQualifiedName(Body const& element);
    void writeArgument(TemplateArg::Impl const& argument, bool afterPackMark);
    void writeSignature(Body const& symbol);

  private:
    using Arguments = brant::zero::ElementSequence<TemplateArg>;

    /// What a type adds around the declared name.
    struct Layer {
        Body const* type;
        TypeRule rule;
        bool parentheses; ///< around the prefix and all that it wraps
        bool blank;       ///< the prefix stands before a text that is not empty
    };
    /// A declaration in the making: the layers from `firstLayer` on, and what they wrap.
    struct Declarator {
        std::size_t firstLayer;  ///< of this declaration
        std::size_t firstPrefix; ///< behind the layers that a function type has dropped
        std::string_view declared;
        types::FunctionType::Impl const* function = nullptr; ///< takes the place of the declared name
        bool functionSkips = false;                          ///< how typedefs in its parameters are written
        bool empty;                                          ///< wraps no text so far
    };
    /// What is left of a type when all its layers are on the stack.
    struct Innermost {
        Body const* type;
        TypeRule rule;
    };
    /// One name of a chain of scopes.
    struct Link {
        Body const* element;
        bool hasOwner;
    };
    /// Marks an element's list as open; `entered` is false when the guard refuses it.
    class OpenList {
      public:
        OpenList(NameWriter& writer, Body const& element);
        OpenList(OpenList const&) = delete;
        OpenList& operator=(OpenList const&) = delete;
        ~OpenList();
        bool const entered;

      private:
        NameWriter& writer_;
    };
    /// Tells when a walk along single references comes back to where it was (Brent).
    class CycleDetector;

    [[nodiscard]] bool spent() const noexcept {
        return visits_ >= maximumVisits || out_.size() >= maximumLength;
    }

    // Types.
    [[nodiscard]] Innermost walkInward(Body const* type, bool skipTypedefs, Declarator& declarator);
    void pushPrefix(Layer layer, Declarator& declarator);
    void writeInnermost(Innermost const& innermost, Declarator const& declarator);
    void writeTail(Declarator const& declarator);
    void writeDeclarator(Declarator const& declarator);
    void writeBrackets(Declarator const& declarator);
    void writeFunctionType(types::FunctionType::Impl const& function, bool skipTypedefs);
    void writeNameWithoutMarker(Body const& type);
    void writeAggregate(types::AggregateType::Impl const& aggregate, TypeRule rule);
    void writeTemplateParam(Body const& param, Declarator const& declarator);

    // Qualified names.
    /// Puts the names of the chain on the stack, innermost first. \returns false when it never ends.
    [[nodiscard]] bool collectChain(Body const& element);
    void writeLink(Link const& link);
    void writeArguments(Body const& owner, Arguments const& arguments);
    void writePlainArguments(Body const& owner, Arguments const& arguments);
    void writeTypeArgument(Body const* type, bool afterPackMark);
    void writeValueArgument(Body const* value, bool afterPackMark);
    void writeEnumerator(types::EnumType::Impl const& enumeration, std::string const& name);

    // Signatures.
    void writeFunctionSignature(Function::Impl const& function);
    void writeParameters(Function::Impl const& function);
    void writeVariableSignature(Variable::Impl const& variable);

    std::string out_;
    boost::container::small_vector<Layer, 12> layers_;
    boost::container::small_vector<Link, 12> chain_;
    boost::container::small_vector<Body const*, 8> open_;
    std::size_t visits_ = 0;
    unsigned openTypes_ = 0; ///< blanks are collapsed once, by the outermost type
};

class NameWriter::CycleDetector {
  public:
    /// \returns whether `element` was seen before. A cycle is found within three rounds.
    bool returned(Body const& element) noexcept {
        if (&element == mark_) return true;
        if (++steps_ == limit_) {
            mark_ = &element;
            limit_ *= 2;
        }
        return false;
    }

  private:
    Body const* mark_ = nullptr;
    std::size_t steps_ = 0;
    std::size_t limit_ = 1;
};

/// \returns the body when it is there and alive, else null.
inline Body const* alive(Body const* body) noexcept {
    return body != nullptr && body->valid() ? body : nullptr;
}

/// \requires the body to be a `T`.
template <class T>
[[nodiscard]] typename T::Impl const& as(Body const& body) noexcept {
    return static_cast<typename T::Impl const&>(body);
}

} // namespace zelkor::ast::names
