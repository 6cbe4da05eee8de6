#include "brant/zero/query/Pattern.hpp"

#include "brant/zero/Text.hpp"

#include <regex>
#include <stdexcept>

namespace brant::zero::query {

namespace {

/// A pattern is compiled by recursion over its nesting and repetitions are written out, so both are bounded.
constexpr std::size_t longestPattern = 2000;

/// The library's default matcher recurses for every character of the text. This one walks all alternatives at
/// once.
std::regex compile(std::string const& text) {
    if (text.size() > longestPattern)
        throw std::invalid_argument("a pattern of " + std::to_string(text.size()) +
                                    " bytes is too long; at most " + std::to_string(longestPattern) +
                                    " are taken");
    try {
        return std::regex(text, std::regex::ECMAScript | std::regex_constants::__polynomial);
    } catch (std::regex_error const& error) {
        throw std::invalid_argument("'" + text + "' is no pattern that can be used: " + error.what());
    }
}

} // namespace

struct Pattern::Compiled {
    explicit Compiled(std::string pattern) : text(std::move(pattern)), regex(compile(text)) {}
    std::string text;
    std::regex regex;
};

Pattern::Pattern(std::string text) : compiled_(std::make_shared<Compiled const>(std::move(text))) {}

bool Pattern::matches(std::string_view subject) const {
    return std::regex_match(subject.begin(), subject.end(), compiled_->regex);
}

bool Pattern::matches(std::u16string_view subject) const {
    return matches(std::string_view(toUtf8(subject)));
}

std::string const& Pattern::text() const noexcept {
    return compiled_->text;
}

} // namespace brant::zero::query
