#include "NearName.hpp"

#include <algorithm>

namespace brant::zero::io {

namespace {

char lower(char character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

/// Optimal string alignment distance.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t const change = lower(a[i - 1]) == lower(b[j - 1]) ? 0 : 1;
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]))
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        std::swap(before, last);
        std::swap(last, row);
    }
    return last[b.size()];
}

} // namespace

std::string quote(std::string_view text) {
    constexpr std::size_t longest = 80;
    std::string result("'");
    if (text.size() <= longest) return result.append(text).append("'");
    std::size_t end = longest;
    while ((text[end] & 0xC0) == 0x80)
        --end;
    return result.append(text.substr(0, end)).append("...'");
}

std::string_view nearName(std::string_view name, std::vector<std::string_view> const& names) {
    constexpr std::size_t longestName = 128; // longer ones are no misspellings, and the effort is quadratic
    if (name.size() > longestName) return {};
    std::string_view best;
    std::size_t nearest = name.size() / 3 + 1;
    for (std::string_view const candidate : names) {
        // A name without its package is near, too.
        std::size_t const dot = candidate.rfind('.');
        bool const bare = dot != std::string_view::npos && candidate.substr(dot + 1) == name;
        std::size_t const far = bare ? 0 : distance(name, candidate);
        if (far < nearest) {
            nearest = far;
            best = candidate;
        }
    }
    return best;
}

std::string suggestion(std::string_view name, std::vector<std::string_view> const& names) {
    std::string_view const near = nearName(name, names);
    return near.empty() ? std::string() : std::string("; did you mean ").append(quote(near)) + "?";
}

} // namespace brant::zero::io
