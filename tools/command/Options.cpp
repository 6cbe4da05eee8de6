#include "Options.hpp"

#include <algorithm>
#include <charconv>
#include <limits>
#include <numeric>
#include <utility>

namespace zelkor::command {

namespace {

Option const* findOption(std::vector<Option> const& known, std::string_view name) {
    auto const found = std::find_if(known.begin(), known.end(), [&](Option const& option) {
        return name == option.name || (option.shortName != nullptr && name == option.shortName);
    });
    return found == known.end() ? nullptr : &*found;
}

[[noreturn]] void unknownOption(std::vector<Option> const& known, std::string const& word) {
    std::vector<std::string> names;
    for (Option const& option : known)
        names.emplace_back(option.name);
    std::string const near = nearest(word, names);
    throw UsageError("unknown option '" + word + "'" +
                     (near.empty() ? "" : "; did you mean '" + near + "'?"));
}

} // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t const change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, change}));
        }
    }
    return row.back();
}

std::string nearest(std::string_view word, std::vector<std::string> const& candidates) {
    std::string best;
    std::size_t bestDistance = std::max<std::size_t>(2, word.size() / 3) + 1;
    for (std::string const& candidate : candidates)
        if (std::size_t const distance = editDistance(word, candidate); distance < bestDistance) {
            best = candidate;
            bestDistance = distance;
        }
    return best;
}

Arguments Arguments::parse(std::vector<Option> const& known, std::vector<std::string> const& words) {
    Arguments arguments;
    bool onlyOperands = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string const& word = words[i];
        if (onlyOperands || word.size() < 2 || word[0] != '-') {
            arguments.operands_.push_back(word); // "-" alone is standard input or output
            continue;
        }
        if (word == "--") {
            onlyOperands = true;
            continue;
        }
        // "--name=value", "-oFILE" and "-j2" as well as two words.
        std::string name = word;
        std::string attached;
        bool hasAttached = false;
        if (std::size_t const equals = word.find('=');
            word.starts_with("--") && equals != std::string::npos) {
            name = word.substr(0, equals);
            attached = word.substr(equals + 1);
            hasAttached = true;
        } else if (!word.starts_with("--") && word.size() > 2) {
            name = word.substr(0, 2);
            attached = word.substr(2);
            hasAttached = true;
        }
        Option const* option = findOption(known, name);
        if (option == nullptr) unknownOption(known, name);
        std::vector<std::string>& values = arguments.given_[option->name];
        if (!values.empty() && !option->repeatable) throw UsageError("option '" + name + "' is given twice");
        if (option->value == nullptr) {
            if (hasAttached) throw UsageError("option '" + name + "' takes no value");
            values.emplace_back();
        } else if (hasAttached) {
            values.push_back(attached);
        } else if (++i < words.size()) {
            values.push_back(words[i]);
        } else {
            throw UsageError("option '" + name + "' needs a value: " + option->value);
        }
    }
    return arguments;
}

std::string Arguments::value(std::string_view option, std::string fallback) const {
    auto const found = given_.find(std::string(option));
    return found == given_.end() ? fallback : found->second.back();
}

std::vector<std::string> Arguments::values(std::string_view option) const {
    auto const found = given_.find(std::string(option));
    return found == given_.end() ? std::vector<std::string>() : found->second;
}

unsigned Arguments::number(std::string_view option, unsigned fallback) const {
    if (!has(option)) return fallback;
    std::string const text = value(option);
    unsigned result = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error != std::errc() || end != text.data() + text.size())
        throw UsageError("option '" + std::string(option) + "' needs a number from 0 to " +
                         std::to_string(std::numeric_limits<unsigned>::max()) + ", not '" + text + "'");
    return result;
}

void Arguments::requireOperands(std::vector<std::string> const& names, char const* meant) const {
    if (operands_.size() > names.size()) {
        std::string const& extra = operands_[names.size()];
        throw UsageError(
            "unexpected argument '" + extra + "'" +
            (meant == nullptr ? "" : "; did you mean " + std::string(meant) + " '" + extra + "'?"));
    }
    if (operands_.size() < names.size() && names[operands_.size()].front() != '[')
        throw UsageError("missing argument: " + names[operands_.size()]);
}

} // namespace zelkor::command
