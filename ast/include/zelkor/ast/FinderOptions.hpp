/// \file
/// The options of symbol search.
#pragma once

#include "brant/zero/Enumeration.hpp"
#include "zelkor/ast/Enums.hpp"

#include <cstddef>
#include <functional>

namespace zelkor::ast {

/// Which scopes a symbol search walks, which symbols it takes, and what it compares a name with. A plain
/// value; setters return the object, so that calls can be chained.
class ZELKOR_API FinderOptions {
  public:
    static ::brant::zero::schema::DatatypeTable const table;
    /// Makes the type known to the registries; for the assembly of its package.
    static void registerType(::brant::zero::meta::DataType const& type);

    /// Go down into the nested scopes of a scope. Default: true.
    [[nodiscard]] bool getIncludeSubScopes() const noexcept { return includeSubScopes_; }
    FinderOptions& setIncludeSubScopes(bool value) noexcept { return assign(includeSubScopes_, value); }

    /// Take symbols of subclasses of the class looked for; false takes that very class only. Default: true.
    [[nodiscard]] bool getIncludeDerivedClasses() const noexcept { return includeDerivedClasses_; }
    FinderOptions& setIncludeDerivedClasses(bool value) noexcept {
        return assign(includeDerivedClasses_, value);
    }

    /// Walk namespaces whose IsStd is true. Default: false.
    [[nodiscard]] bool getIncludeStdNs() const noexcept { return includeStdNs_; }
    FinderOptions& setIncludeStdNs(bool value) noexcept { return assign(includeStdNs_, value); }

    /// Take symbols defined in system headers, and symbols without a definition position. Default: false.
    [[nodiscard]] bool getIncludeSystemHeaders() const noexcept { return includeSystemHeaders_; }
    FinderOptions& setIncludeSystemHeaders(bool value) noexcept {
        return assign(includeSystemHeaders_, value);
    }

    /// Go down into the scopes of templates. Default: false.
    [[nodiscard]] bool getIncludeTemplateScope() const noexcept { return includeTemplateScope_; }
    FinderOptions& setIncludeTemplateScope(bool value) noexcept {
        return assign(includeTemplateScope_, value);
    }

    /// Go down into the scopes of structs, classes and unions. Default: true.
    [[nodiscard]] bool getIncludeAggregateScope() const noexcept { return includeAggregateScope_; }
    FinderOptions& setIncludeAggregateScope(bool value) noexcept {
        return assign(includeAggregateScope_, value);
    }

    /// What a name is compared with. Default: FullyQualifiedName.
    [[nodiscard]] NameFinderKind getNameResolutionStrategy() const noexcept {
        return nameResolutionStrategy_;
    }
    FinderOptions& setNameResolutionStrategy(NameFinderKind value) noexcept {
        return assign(nameResolutionStrategy_, value);
    }

    /// \returns -1, 0 or 1: the first field that differs decides, in the order above, false before true, the
    /// strategy by its number.
    [[nodiscard]] int compareWith(FinderOptions const& other) const noexcept;
    friend bool operator==(FinderOptions const& a, FinderOptions const& b) noexcept {
        return a.compareWith(b) == 0;
    }
    friend bool operator<(FinderOptions const& a, FinderOptions const& b) noexcept {
        return a.compareWith(b) < 0;
    }
    /// \returns a hash that depends on nothing but the fields.
    [[nodiscard]] std::size_t hash() const noexcept;

  private:
    friend class FinderOptionsDatatypeSerializer;
    /// The truth values among the fields, in order; the strategy follows.
    static bool FinderOptions::*const switches[6];

    template <class T>
    FinderOptions& assign(T& field, T value) noexcept {
        field = value;
        return *this;
    }

    bool includeSubScopes_ = true;
    bool includeDerivedClasses_ = true;
    bool includeStdNs_ = false;
    bool includeSystemHeaders_ = false;
    bool includeTemplateScope_ = false;
    bool includeAggregateScope_ = true;
    NameFinderKind nameResolutionStrategy_ = NameFinderKind::FullyQualifiedName;
};

} // namespace zelkor::ast

template <>
struct std::hash<zelkor::ast::FinderOptions> {
    std::size_t operator()(zelkor::ast::FinderOptions const& options) const noexcept {
        return options.hash();
    }
};
