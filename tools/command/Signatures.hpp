// What a person may call an element: ends of names, and functions by their parameters.
#pragma once

#include <zelkor/ast.hpp>

#include <optional>
#include <string>
#include <vector>

namespace zelkor::command {

/// Compares a word with the ends of qualified names, as sources write them: template arguments and inline
/// namespaces may be left out.
class NameEnds {
  public:
    /// \param inlineNamespaces their qualified names
    explicit NameEnds(std::vector<std::string> inlineNamespaces);

    /// \returns whether `end` is the name or what stands behind a `::` in it.
    [[nodiscard]] bool fit(std::string const& end, std::string const& name) const;

  private:
    std::vector<std::string> inlineNamespaces_; ///< the innermost before those around it
};

/// A function name with a parameter list, a declaration as it stands in the sources, or a whole signature as
/// `zelkor signature` prints it.
///
/// Blanks do not count, `const int *` and `int const *` are the same, `()` and `(void)` too; types are taken
/// as written or with their typedefs resolved. The name may leave out what `NameEnds` allows, and parameters
/// their names; the type of the result does not count. Without a `const` behind it the list fits both.
class SignaturePattern {
  public:
    /// \returns none for a word that does not end with a parameter list.
    static std::optional<SignaturePattern> of(std::string const& word);

    /// With `skipScopes` the types on both sides are compared without their scopes.
    [[nodiscard]] bool fits(zelkor::ast::Function const& function, NameEnds const& ends,
                            bool skipScopes) const;
    /// \returns the word without its parameters and without the type of its result.
    [[nodiscard]] std::string const& name() const noexcept { return name_; }

  private:
    std::string whole_; ///< the word, without blanks that do not count
    std::string name_;
    std::string types_; ///< in the form that is compared
    bool isConst_ = false;
};

} // namespace zelkor::command
