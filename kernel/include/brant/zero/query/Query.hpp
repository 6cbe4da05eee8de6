/// \file
/// Queries: the elements of a class, below an element or in a model, that meet a condition.
#pragma once

#include "brant/zero/Model.hpp"
#include "brant/zero/query/Operators.hpp"
#include "brant/zero/query/Walk.hpp"

#include <cstddef>
#include <iterator>
#include <ranges>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace brant::zero::query {

/// A query for elements of class `X` that meet a condition of type `C`: a value, and an input range of
/// handles in the order of containment. It holds the element or model that it starts from. Nothing is looked
/// up before `begin()`.
template <class X, IsCondition C = Anything>
class Query : public AbstractQuery {
  public:
    class Iterator;
    using Root = std::variant<ModelElement, Model>;

    Query(Root root, SearchClassMatchMode mode, C condition)
        : root_(std::move(root)), mode_(mode), condition_(std::move(condition)) {
        requireSubject(X::Impl::table, condition_.subject());
    }

    /// The same query with a further condition. \throws std::invalid_argument when the condition is about
    /// another class.
    template <IsCondition D>
    [[nodiscard]] auto where(D const& condition) const {
        static_assert(std::derived_from<X, typename D::Subject>,
                      "the condition is about another class than the query");
        if constexpr (std::same_as<C, Anything>)
            return Query<X, D>(root_, mode_, condition);
        else
            return Query<X, Connection<C, D, And>>(root_, mode_,
                                                   Connection<C, D, And>(condition_, condition));
    }
    /// The same with a function that makes the condition from the terms bound to this query.
    template <class Compose>
    requires std::invocable<Compose, typename X::Constrainables const&>
    [[nodiscard]] auto where(Compose const& compose) const {
        Query self = *this;
        typename X::Constrainables const terms(
            std::pair<AbstractQuery&, SearchClassMatchMode const>(self, mode_));
        return where(compose(terms));
    }
    /// The same query for elements whose class is `X`, subclasses left out.
    [[nodiscard]] Query exactly() const { return Query(root_, SearchClassMatchMode::ExactClass, condition_); }
    [[nodiscard]] SearchClassMatchMode mode() const noexcept { return mode_; }
    [[nodiscard]] C const& condition() const noexcept { return condition_; }

    /// Starts a walk; the iterator refers to this query. \throws DeadHandle when the start is null or dead.
    [[nodiscard]] Iterator begin() const { return Iterator(*this); }
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

    // Each starts a walk of its own.

    [[nodiscard]] std::size_t count() const {
        std::size_t number = 0;
        Walk walk = start();
        while (next(walk) != nullptr)
            ++number;
        return number;
    }
    /// \returns the first element that is found, or a null handle.
    [[nodiscard]] X first() const {
        Walk walk = start();
        return handleOn<X>(next(walk));
    }
    [[nodiscard]] bool exists() const {
        Walk walk = start();
        return next(walk) != nullptr;
    }
    [[nodiscard]] std::vector<X> toVector() const {
        std::vector<X> found;
        Walk walk = start();
        while (ModelElementImpl* const body = next(walk))
            found.push_back(handleOn<X>(body));
        return found;
    }

    /// \returns the query in words; where it starts is left out.
    [[nodiscard]] std::string toText() const {
        std::string text = X::Impl::table.shortName;
        if (mode_ == SearchClassMatchMode::ExactClass) text += " exactly";
        std::string const condition = query::toText(condition_);
        return condition.empty() ? text : text + " where " + condition;
    }
    friend std::ostream& operator<<(std::ostream& out, Query const& query) { return out << query.toText(); }

  private:
    [[nodiscard]] Walk start() const {
        static WalkPlan const& plan = WalkPlan::of(X::Impl::table);
        if (Model const* model = std::get_if<Model>(&root_)) return Walk(plan, *model);
        ModelElement const& element = std::get<ModelElement>(root_);
        (void)element.uuid(); // throws for a null or dead handle
        return Walk(plan, *element.get());
    }
    [[nodiscard]] ModelElementImpl* next(Walk& walk) const {
        ModelElementImpl* body = walk.next();
        while (body != nullptr && !accepts(*body))
            body = walk.next();
        return body;
    }
    [[nodiscard]] bool accepts(ModelElementImpl const& body) const {
        if (mode_ == SearchClassMatchMode::ExactClass && &body.classTable() != &X::Impl::table) return false;
        return condition_.test(body);
    }

    Root root_;
    SearchClassMatchMode mode_;
    C condition_;
};

template <class X, IsCondition C>
class Query<X, C>::Iterator {
  public:
    using iterator_concept = std::input_iterator_tag;
    using value_type = X;
    using difference_type = std::ptrdiff_t;

    [[nodiscard]] X operator*() const { return handleOn<X>(body_); }
    [[nodiscard]] HandleArrow<X> operator->() const { return HandleArrow<X>(**this); }
    Iterator& operator++() {
        body_ = query_->next(walk_);
        return *this;
    }
    void operator++(int) { ++*this; }
    [[nodiscard]] bool operator==(std::default_sentinel_t) const noexcept { return body_ == nullptr; }

  private:
    friend class Query;
    explicit Iterator(Query const& query) : query_(&query), walk_(query.start()), body_(query.next(walk_)) {}

    Query const* query_;
    Walk walk_;
    ModelElementImpl* body_;
};

/// All elements of class `X`, subclasses included, below `start`, at any depth; `start` itself is none of
/// them.
template <std::derived_from<ModelElement> X>
[[nodiscard]] Query<X> query(ModelElement const& start) {
    return Query<X>(start, SearchClassMatchMode::ClassAndSubclasses, Anything());
}
/// All elements of class `X` in a model, subclasses included.
template <std::derived_from<ModelElement> X>
[[nodiscard]] Query<X> query(Model const& model) {
    return Query<X>(model, SearchClassMatchMode::ClassAndSubclasses, Anything());
}

} // namespace brant::zero::query
