// The command line: verbs, their options and operands, and what to say when one is wrong.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zelkor::command {

/// Exit codes of the command.
enum ExitCode : int { Ok = 0, Difference = 1, Usage = 2, UnitsFailed = 3, Interrupted = 130 };

/// Wrong usage or unusable input: printed as "zelkor: error: ..." with exit code 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Option {
    char const* name;      ///< with its dashes, such as "--format"
    char const* shortName; ///< such as "-o", or null
    char const* value;     ///< what to call its value in the help, null for a switch
    char const* help;
    bool repeatable = false;
};

/// What the user gave to one verb.
class Arguments {
  public:
    /// \throws UsageError for an unknown option (with the nearest known one), a missing value or a repeated
    /// option.
    static Arguments parse(std::vector<Option> const& known, std::vector<std::string> const& words);

    [[nodiscard]] bool has(std::string_view option) const { return given_.contains(std::string(option)); }
    /// \returns the last value of the option, or `fallback`.
    [[nodiscard]] std::string value(std::string_view option, std::string fallback = {}) const;
    [[nodiscard]] std::vector<std::string> values(std::string_view option) const;
    /// \returns the value as a number. \throws UsageError unless it is one.
    [[nodiscard]] unsigned number(std::string_view option, unsigned fallback) const;
    [[nodiscard]] std::vector<std::string> const& operands() const noexcept { return operands_; }
    /// \throws UsageError unless there is an operand for each name; the last ones, in brackets, may be
    /// missing. One more than that is told to belong to the option `meant`, if that is given.
    void requireOperands(std::vector<std::string> const& names, char const* meant = nullptr) const;

  private:
    std::map<std::string, std::vector<std::string>> given_;
    std::vector<std::string> operands_;
};

/// \returns how many characters must be inserted, left out or changed to come from one text to the other.
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);
/// \returns the candidate nearest to `word`, or an empty text when none is near.
[[nodiscard]] std::string nearest(std::string_view word, std::vector<std::string> const& candidates);

} // namespace zelkor::command
