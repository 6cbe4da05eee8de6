#include "TextPatterns.hpp"

#include <algorithm>

namespace zelkor::ast::names {

namespace {

/// The classic locale's white space, whatever the process has set.
constexpr bool isBlank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

void collapseBlanks(std::string& text, std::size_t start) {
    char* const begin = text.data();
    char* const end = begin + text.size();
    char* to = begin + start;
    bool behindBlank = false;
    for (char const* from = to; from != end; ++from) {
        bool const blank = isBlank(*from);
        if (!blank || !behindBlank) *to++ = blank ? ' ' : *from;
        behindBlank = blank;
    }
    text.resize(static_cast<std::size_t>(to - begin));
}

void eraseUnnamed(std::string& text, std::size_t start) {
    std::size_t found = text.find(unnamed, start);
    if (found == std::string::npos) return;
    std::size_t to = found;
    while (found != std::string::npos) {
        std::size_t const from = found + unnamed.size();
        found = text.find(unnamed, from);
        std::size_t const count = (found == std::string::npos ? text.size() : found) - from;
        std::copy_n(text.data() + from, count, text.data() + to);
        to += count;
    }
    text.resize(to);
}

} // namespace zelkor::ast::names
