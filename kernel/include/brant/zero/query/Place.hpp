/// \file
/// Places: the attribute or reference at the end of a path of single references, seen from one element.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Query.hpp"
#include "brant/zero/ReferenceSequence.hpp"

#include <array>
#include <concepts>
#include <cstddef>
#include <ostream>
#include <string>

namespace brant::zero::query {

/// One property on a path.
struct Step {
    schema::PropertyRow const* row;
    schema::ClassTable const* written;  ///< the class that the term was written with
    schema::ClassTable const* narrowed; ///< only elements of this class are gone to; null for all
};

/// \returns the element that a single reference leads to; null for null, a dead element, and one of another
/// class than the step asks for.
inline ModelElementImpl const* follow(ModelElementImpl const& from, Step const& step) {
    schema::PropertyRow const& row = *step.row;
    ModelElementImpl const* const to = row.kind == schema::PropertyKind::Reference
                                           ? Core::readReference(from, row)
                                           : Core::readContainerEnd(from, row);
    if (to == nullptr || !to->valid()) return nullptr;
    return step.narrowed == nullptr || to->classTable().conformsTo(*step.narrowed) ? to : nullptr;
}

/// Writes the name of a step as it was composed, `.as(...)` included.
ZELKOR_API void print(std::ostream& out, Step const& step);
/// \throws std::invalid_argument when the step refers to many elements.
ZELKOR_API void requireSingle(Step const& step);
/// \throws std::invalid_argument when elements of class `asked` are not what the condition is about.
ZELKOR_API void requireSubject(schema::ClassTable const& asked, schema::ClassTable const& subject);

/// `Depth` single references, one after the other.
template <std::size_t Depth>
class Path {
  public:
    Path() noexcept = default;
    explicit Path(std::array<Step, Depth> const& steps) noexcept : steps_(steps) {}

    /// \returns the element at the end, or null.
    [[nodiscard]] ModelElementImpl const* end(ModelElementImpl const& from) const {
        ModelElementImpl const* at = &from;
        for (Step const& step : steps_) {
            at = follow(*at, step);
            if (at == nullptr) return nullptr;
        }
        return at;
    }
    /// \returns this path, one further step and another path.
    template <std::size_t Rest>
    [[nodiscard]] Path<Depth + 1 + Rest> then(Step const& step, Path<Rest> const& rest) const {
        std::array<Step, Depth + 1 + Rest> steps;
        std::copy(steps_.begin(), steps_.end(), steps.begin());
        steps[Depth] = step;
        std::copy(rest.steps().begin(), rest.steps().end(), steps.begin() + Depth + 1);
        return Path<Depth + 1 + Rest>(steps);
    }
    [[nodiscard]] std::array<Step, Depth> const& steps() const noexcept { return steps_; }
    /// \returns the class whose elements the path can start from, when `last` is its last step.
    [[nodiscard]] schema::ClassTable const& subject(Step const& last) const noexcept {
        return *(Depth == 0 ? last : *steps_.data()).row->owner;
    }
    void print(std::ostream& out, Step const& last) const {
        for (std::size_t i = 0; i < Depth; ++i) {
            query::print(out, steps_[i]);
            out << ".then(";
        }
        query::print(out, last);
        out << std::string(Depth, ')');
    }

  private:
    std::array<Step, Depth> steps_;
};

template <>
class Path<0> {
  public:
    [[nodiscard]] ModelElementImpl const* end(ModelElementImpl const& from) const noexcept { return &from; }
    template <std::size_t Rest>
    [[nodiscard]] Path<1 + Rest> then(Step const& step, Path<Rest> const& rest) const {
        std::array<Step, 1 + Rest> steps;
        steps[0] = step;
        for (std::size_t i = 0; i < Rest; ++i)
            steps[i + 1] = rest.steps()[i];
        return Path<1 + Rest>(steps);
    }
    [[nodiscard]] std::array<Step, 0> steps() const noexcept { return {}; }
    [[nodiscard]] schema::ClassTable const& subject(Step const& last) const noexcept {
        return *last.row->owner;
    }
    void print(std::ostream& out, Step const& last) const { query::print(out, last); }
};

class Pattern;
enum class TextTest : int { StartsWith, EndsWith, Contains };
enum class Quantifier : int { Any, All, None };
template <class Place>
class TextCondition;
template <class Place>
class MatchCondition;
template <class Place, class Condition>
class QuantifiedCondition;
template <class Place, class Condition>
class Count;
template <class Place>
class ClassCondition;
template <class Place>
class ReferenceCondition;

/// How tightly a condition binds in print.
enum Binding : int { Loose, Or, And };

/// Base of all conditions. Each has `Subject`, the handle class that it asks, `test(body)`, `subject()`, the
/// table of that class, and `print(out, binding)`: how tightly what stands around it binds, so that it knows
/// whether to bracket itself.
struct ConditionBase {};

/// True for every element.
class Anything : public ConditionBase {
  public:
    using Subject = ModelElement;
    [[nodiscard]] static bool test(ModelElementImpl const&) noexcept { return true; }
    [[nodiscard]] static schema::ClassTable const& subject() noexcept { return modelElementTable; }
    static void print(std::ostream&, Binding) noexcept {}
};

/// An attribute of type `T`, asked of elements of class `Owner`. Comparisons are free operators.
template <class Owner, class T, std::size_t Depth>
class AttributePlace {
  public:
    using Subject = Owner;
    using Value = T;

    AttributePlace(Path<Depth> path, Step last) noexcept : path_(std::move(path)), last_(last) {}

    /// \returns the field, or null where the path ends early.
    [[nodiscard]] T const* read(ModelElementImpl const& from) const {
        ModelElementImpl const* const holder = path_.end(from);
        return holder == nullptr ? nullptr : &Core::field<T>(*holder, *last_.row);
    }

    /// Whether the text begins with, ends with or has that text in it; an empty one is in every text.
    [[nodiscard]] TextCondition<AttributePlace> startsWith(T const& text) const;
    [[nodiscard]] TextCondition<AttributePlace> endsWith(T const& text) const;
    [[nodiscard]] TextCondition<AttributePlace> contains(T const& text) const;
    /// Whether the whole text matches. \throws std::invalid_argument for a faulty pattern given as text.
    [[nodiscard]] MatchCondition<AttributePlace> matches(Pattern const& pattern) const;
    [[nodiscard]] MatchCondition<AttributePlace> matches(std::string const& pattern) const;

    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return path_.subject(last_); }
    [[nodiscard]] Path<Depth> const& path() const noexcept { return path_; }
    [[nodiscard]] Step const& last() const noexcept { return last_; }
    void print(std::ostream& out) const { path_.print(out, last_); }

  private:
    Path<Depth> path_;
    Step last_;
};

/// A reference to elements of class `T`, single or many, asked of elements of class `Owner`.
template <class Owner, class T, std::size_t Depth>
class RelationPlace {
  public:
    using Subject = Owner;
    using Target = T;

    RelationPlace(Path<Depth> path, Step last) noexcept : path_(std::move(path)), last_(last) {}

    /// \returns what a single reference refers to, or null. \requires a single reference.
    [[nodiscard]] ModelElementImpl const* read(ModelElementImpl const& from) const {
        ModelElementImpl const* const holder = path_.end(from);
        return holder == nullptr ? nullptr : follow(*holder, last_);
    }
    /// \returns whether `test` is true for one of the elements that are referred to; asks no further then.
    template <class Test>
    [[nodiscard]] bool some(ModelElementImpl const& from, Test const& test) const {
        ModelElementImpl const* const holder = path_.end(from);
        if (holder == nullptr) return false;
        schema::PropertyRow const& row = *last_.row;
        if (row.kind == schema::PropertyKind::ManyReference) {
            ReferenceSequence const& sequence = Core::sequence(*holder, row);
            for (std::size_t i = 0, size = sequence.size(); i < size; ++i) {
                ModelElementImpl const* member = sequence.slot(i);
                if (member->isProxy()) member = sequence.resolved(i);
                if (admits(*member) && test(*member)) return true;
            }
            return false;
        }
        if (row.kind == schema::PropertyKind::Map) {
            for (auto const& [key, member] : Core::field<ReferenceMap>(*holder, row).entries())
                if (admits(*member.get()) && test(*member.get())) return true;
            return false;
        }
        ModelElementImpl const* const target = follow(*holder, last_);
        return target != nullptr && test(*target);
    }

    /// Whether some element that is referred to meets the condition; without one, whether there is any.
    template <class Condition>
    [[nodiscard]] auto any(Condition const& condition) const {
        return QuantifiedCondition<RelationPlace, Condition>(Quantifier::Any, *this, condition);
    }
    /// Whether all do; true when there is none.
    template <class Condition>
    [[nodiscard]] auto all(Condition const& condition) const {
        return QuantifiedCondition<RelationPlace, Condition>(Quantifier::All, *this, condition);
    }
    /// Whether none does.
    template <class Condition>
    [[nodiscard]] auto none(Condition const& condition) const {
        return QuantifiedCondition<RelationPlace, Condition>(Quantifier::None, *this, condition);
    }
    /// How many do; compare it with a number.
    template <class Condition>
    [[nodiscard]] auto count(Condition const& condition) const {
        return Count<RelationPlace, Condition>(*this, condition);
    }
    [[nodiscard]] auto any() const { return any(Anything()); }
    [[nodiscard]] auto none() const { return none(Anything()); }
    [[nodiscard]] auto count() const { return count(Anything()); }

    // For single references. \throws std::invalid_argument for a collection.

    /// Whether it refers to a `Class`, subclasses included.
    template <std::derived_from<T> Class>
    [[nodiscard]] ClassCondition<RelationPlace> is() const;
    /// Whether it refers to an element whose class is `Class`.
    template <std::derived_from<T> Class>
    [[nodiscard]] ClassCondition<RelationPlace> isExactly() const;
    [[nodiscard]] ReferenceCondition<RelationPlace> isNull() const;
    /// The attribute or reference `term` of the element that is referred to.
    template <class Term>
    [[nodiscard]] auto then(Term const& term) const;

    /// The same reference, as far as it leads to elements of class `Class`.
    template <std::derived_from<T> Class>
    [[nodiscard]] RelationPlace<Owner, Class, Depth> as() const {
        return {path_, Step{last_.row, last_.written, &Class::Impl::table}};
    }

    [[nodiscard]] schema::ClassTable const& subject() const noexcept { return path_.subject(last_); }
    /// \returns the class that what is referred to is known to have.
    [[nodiscard]] schema::ClassTable const& target() const noexcept {
        return last_.narrowed == nullptr ? *last_.row->target : *last_.narrowed;
    }
    [[nodiscard]] Path<Depth> const& path() const noexcept { return path_; }
    [[nodiscard]] Step const& last() const noexcept { return last_; }
    void print(std::ostream& out) const { path_.print(out, last_); }

  private:
    [[nodiscard]] bool admits(ModelElementImpl const& member) const noexcept {
        return member.valid() &&
               (last_.narrowed == nullptr || member.classTable().conformsTo(*last_.narrowed));
    }

    Path<Depth> path_;
    Step last_;
};

// From a term to its place. Terms call these by their own names, so that their header stays small.

template <class X>
[[nodiscard]] schema::ClassTable const& writtenClass(MetaclassAttachment<X> const&) noexcept {
    return X::Impl::table;
}
[[nodiscard]] ZELKOR_API schema::ClassTable const& writtenClass(InstanceAttachment const& attachment);

template <class T, class Attachment, bool B, class V>
[[nodiscard]] auto placeOf(ConstrainableWithAttachment<T, Attachment, B, V> const& term) {
    return AttributePlace<typename AskedBy<Attachment>::Class, T, 0>(
        {}, {&term.row(), &writtenClass(term.attachment()), nullptr});
}
template <class T, class Attachment>
[[nodiscard]] auto placeOf(ConstrainableRelationWithAttachment<T, Attachment> const& term) {
    return RelationPlace<typename AskedBy<Attachment>::Class, T, 0>(
        {}, {&term.row(), &writtenClass(term.attachment()), nullptr});
}
template <class Owner, class T, std::size_t Depth>
[[nodiscard]] AttributePlace<Owner, T, Depth> const& placeOf(AttributePlace<Owner, T, Depth> const& place) {
    return place;
}
template <class Owner, class T, std::size_t Depth>
[[nodiscard]] RelationPlace<Owner, T, Depth> const& placeOf(RelationPlace<Owner, T, Depth> const& place) {
    return place;
}

namespace detail {

template <class Place>
struct WithSubject;
template <class Owner, class T, std::size_t Depth>
struct WithSubject<AttributePlace<Owner, T, Depth>> {
    template <class First, std::size_t Longer>
    using From = AttributePlace<First, T, Longer>;
};
template <class Owner, class T, std::size_t Depth>
struct WithSubject<RelationPlace<Owner, T, Depth>> {
    template <class First, std::size_t Longer>
    using From = RelationPlace<First, T, Longer>;
};
template <std::size_t Depth>
constexpr std::size_t depthOf(Path<Depth> const*) noexcept {
    return Depth;
}

} // namespace detail

template <class Owner, class T, std::size_t Depth>
template <class Term>
auto RelationPlace<Owner, T, Depth>::then(Term const& term) const {
    auto const& rest = placeOf(term);
    using Rest = std::remove_cvref_t<decltype(rest)>;
    static_assert(
        std::derived_from<T, typename Rest::Subject>,
        "the term behind `then` belongs to another class than the reference in front of it leads to");
    static_assert(!std::same_as<typename Rest::Subject, ModelElement>,
                  "a term that is bound to a query cannot stand behind `then`");
    requireSingle(last_);
    constexpr std::size_t restDepth =
        detail::depthOf(static_cast<std::remove_cvref_t<decltype(rest.path())> const*>(nullptr));
    using Longer = typename detail::WithSubject<Rest>::template From<Owner, Depth + 1 + restDepth>;
    return Longer(path_.then(last_, rest.path()), rest.last());
}

} // namespace brant::zero::query
