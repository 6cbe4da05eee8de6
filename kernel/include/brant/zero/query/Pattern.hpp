/// \file
/// Regular expressions that are safe on any text.
#pragma once

#include "brant/zero/Export.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace brant::zero::query {

/// A regular expression in ECMAScript grammar. A value; copies share the compiled form.
///
/// Time is proportional to the length of the text times that of the pattern, and the stack does not grow with
/// the text. That excludes back references.
class ZELKOR_API Pattern {
  public:
    /// \throws std::invalid_argument with the pattern and what is wrong with it.
    explicit Pattern(std::string text);

    /// \returns whether the whole of `subject` matches. Bytes are characters.
    [[nodiscard]] bool matches(std::string_view subject) const;
    /// The same for the UTF-8 form of the text; lone surrogates count as U+FFFD.
    [[nodiscard]] bool matches(std::u16string_view subject) const;
    [[nodiscard]] std::string const& text() const noexcept;

  private:
    struct Compiled;
    std::shared_ptr<Compiled const> compiled_;
};

} // namespace brant::zero::query
