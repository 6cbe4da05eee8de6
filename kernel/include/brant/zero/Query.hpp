/// \file
/// Query terms: typed names of the properties that a query can constrain.
///
/// Terms are declared with every class, so this header stays small. What makes conditions of them stands in
/// "brant/zero/query/Query.hpp", which only those include who ask queries.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/Model.hpp"

#include <type_traits>
#include <utility>

namespace brant::zero {

class Constrainables;

namespace query {

/// A query in the making.
class ZELKOR_API AbstractQuery {
  public:
    virtual ~AbstractQuery();
};

/// Whether elements of subclasses take part in a query.
enum class SearchClassMatchMode : int { ExactClass, ClassAndSubclasses };

/// Binds a term to one running query.
class InstanceAttachment {
  public:
    InstanceAttachment(zero::Constrainables& query) noexcept : query_(&query) {}
    [[nodiscard]] zero::Constrainables& query() const noexcept { return *query_; }

  private:
    zero::Constrainables* query_;
};

/// Binds a term to the class `X`, no query.
template <class X>
class MetaclassAttachment {
  public:
    [[nodiscard]] meta::Class const& metaClass() const { return X::metaClass(); }
};

/// The property half of a term.
class ZELKOR_API PropertyTerm {
  public:
    explicit PropertyTerm(schema::PropertyRow const& row) noexcept : row_(&row) {}
    [[nodiscard]] meta::Property getProperty() const;
    [[nodiscard]] schema::PropertyRow const& row() const noexcept { return *row_; }

  private:
    schema::PropertyRow const* row_;
};

/// What all terms have: an attachment and a property.
template <class T, class Attachment, bool>
class AbstractConstrainable : public PropertyTerm {
  public:
    AbstractConstrainable(Attachment attachment, schema::PropertyRow const& row)
        : PropertyTerm(row), attachment_(std::move(attachment)) {}
    [[nodiscard]] Attachment const& attachment() const noexcept { return attachment_; }

  private:
    Attachment attachment_;
};

/// The class whose elements a term asks about; a term bound to a query is checked when it is used.
template <class Attachment>
struct AskedBy {
    using Class = ModelElement;
};
template <class X>
struct AskedBy<MetaclassAttachment<X>> {
    using Class = X;
};

/// A term for an attribute of type `T`. Compare it by `==`, `!=`, `<`, `<=`, `>`, `>=` with a value.
template <class T, class Attachment, bool B, class>
class ConstrainableWithAttachment : public AbstractConstrainable<T, Attachment, B> {
  public:
    using AbstractConstrainable<T, Attachment, B>::AbstractConstrainable;

    // Conditions on text; see `AttributePlace`.

    template <class Text>
    [[nodiscard]] auto startsWith(Text const& text) const {
        return placeOf(*this).startsWith(text);
    }
    template <class Text>
    [[nodiscard]] auto endsWith(Text const& text) const {
        return placeOf(*this).endsWith(text);
    }
    template <class Text>
    [[nodiscard]] auto contains(Text const& text) const {
        return placeOf(*this).contains(text);
    }
    template <class Text>
    [[nodiscard]] auto matches(Text const& pattern) const {
        return placeOf(*this).matches(pattern);
    }
};

/// A term for a reference to the class `T`, single or many, contained or not.
template <class T, class Attachment>
class ConstrainableRelationWithAttachment : public AbstractConstrainable<T, Attachment, false> {
  public:
    using AbstractConstrainable<T, Attachment, false>::AbstractConstrainable;

    // Conditions and paths; see `RelationPlace`.

    template <class... Condition>
    [[nodiscard]] auto any(Condition const&... condition) const {
        return placeOf(*this).any(condition...);
    }
    template <class Condition>
    [[nodiscard]] auto all(Condition const& condition) const {
        return placeOf(*this).all(condition);
    }
    template <class... Condition>
    [[nodiscard]] auto none(Condition const&... condition) const {
        return placeOf(*this).none(condition...);
    }
    template <class... Condition>
    [[nodiscard]] auto count(Condition const&... condition) const {
        return placeOf(*this).count(condition...);
    }
    template <class Class>
    [[nodiscard]] auto is() const {
        return placeOf(*this).template is<Class>();
    }
    template <class Class>
    [[nodiscard]] auto isExactly() const {
        return placeOf(*this).template isExactly<Class>();
    }
    [[nodiscard]] auto isNull() const { return placeOf(*this).isNull(); }
    template <class Class>
    [[nodiscard]] auto as() const {
        return placeOf(*this).template as<Class>();
    }
    template <class Term>
    [[nodiscard]] auto then(Term const& term) const {
        return placeOf(*this).then(term);
    }
};

template <class T, class X>
using Attribute = ConstrainableWithAttachment<T, MetaclassAttachment<X>, false, void>;
template <class T, class X>
using Relation = ConstrainableRelationWithAttachment<T, MetaclassAttachment<X>>;
template <class T>
using BoundAttribute = ConstrainableWithAttachment<T, InstanceAttachment, false, void>;
template <class T>
using BoundRelation = ConstrainableRelationWithAttachment<T, InstanceAttachment>;

/// \returns the one term of class `X` for a row. The same object on every call, from any thread.
template <class Term, class X, schema::ClassTable const& Table, std::size_t Row>
Term const& term() {
    static Term const instance(MetaclassAttachment<X>(), Table.rows[Row]);
    return instance;
}

} // namespace query

/// Root of the terms of a class that are bound to one query.
class ZELKOR_API Constrainables {
  public:
    Constrainables(query::AbstractQuery& query, meta::Class const& metaClass,
                   query::SearchClassMatchMode mode);
    Constrainables(Constrainables const&) = delete;
    Constrainables& operator=(Constrainables const&) = delete;

    [[nodiscard]] query::AbstractQuery& query() const noexcept { return query_; }
    /// \returns the class that the query asks for, as an element of the metamodel.
    [[nodiscard]] ModelElement const& queriedClass() const noexcept { return metaClass_; }
    [[nodiscard]] query::SearchClassMatchMode matchMode() const noexcept { return mode_; }

  private:
    query::AbstractQuery& query_;
    ModelElement metaClass_; ///< the class handle, untyped: this header stands before the metamodel's
    query::SearchClassMatchMode mode_;
};

} // namespace brant::zero
