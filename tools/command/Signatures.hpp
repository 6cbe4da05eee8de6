// Functions by their parameters: `f(int, char const *)` tells overloads apart.
#pragma once

#include <zelkor/ast.hpp>

#include <optional>
#include <string>

namespace zelkor::command {

/// \returns whether `end` is the name or what stands behind a `::` in it.
[[nodiscard]] bool isEndOfName(std::string const& end, std::string const& name);

/// \returns a qualified name without the template arguments in it: `A::f` for `A<int>::f<B<C>>`.
[[nodiscard]] std::string withoutArguments(std::string const& name);

/// A function name with a parameter list, or a whole signature as `zelkor signature` prints it.
///
/// Blanks do not count, `const int *` and `int const *` are the same, `()` and `(void)` too; types are taken
/// as written or with their typedefs resolved. The name may leave out outer scopes. Without a `const` behind
/// it the list fits both.
class SignaturePattern {
  public:
    /// \returns none for a word that does not end with a parameter list.
    static std::optional<SignaturePattern> of(std::string const& word);

    /// With `skipScopes` the types on both sides are compared without their scopes.
    [[nodiscard]] bool fits(zelkor::ast::Function const& function, bool skipScopes) const;
    /// \returns the word without its parameters.
    [[nodiscard]] std::string const& name() const noexcept { return name_; }

  private:
    std::string whole_; ///< the word, without blanks that do not count
    std::string name_;
    std::string types_; ///< in the form that is compared
    bool isConst_ = false;
};

} // namespace zelkor::command
