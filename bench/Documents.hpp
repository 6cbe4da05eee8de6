// The frame of both text forms, told once for every contender that writes or reads them, and the buffered
// output of the floor's writers.
#pragma once

#include "Identity.hpp"

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

namespace zelkor::bench {

inline constexpr std::string_view jsonHead = "{\"format\":\"zelkor-ast\",\"version\":\"1.0\",\"elements\":[";
inline constexpr std::string_view jsonTail = "]}\n";
inline constexpr std::string_view xmlHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<model format=\"zelkor-ast\" version=\"1.0\">";
inline constexpr std::string_view xmlTail = "</model>\n";

/// What replaces a character in JSON text; empty when it stands for itself.
inline std::string_view jsonEscape(char letter) {
    switch (letter) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    default:
        return {};
    }
}

inline std::string_view xmlEscape(char letter) {
    switch (letter) {
    case '"':
        return "&quot;";
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '\n':
        return "&#10;";
    case '\t':
        return "&#9;";
    default:
        return {};
    }
}

/// Appends to a string through a buffer of 32 KiB.
class Output {
  public:
    explicit Output(std::string& target_) : target(target_) {}
    Output(Output const&) = delete;
    Output& operator=(Output const&) = delete;

    void put(char letter) {
        ensure(1);
        buffer[used++] = letter;
    }
    void put(std::string_view text) {
        if (text.size() > capacity / 2) return putLong(text);
        ensure(text.size());
        std::memcpy(buffer + used, text.data(), text.size());
        used += text.size();
    }
    void put(Identity const& identity) {
        ensure(identityLength);
        formatIdentity(identity, buffer + used);
        used += identityLength;
    }
    void putNumber(unsigned number) {
        ensure(16);
        used =
            static_cast<std::size_t>(std::to_chars(buffer + used, buffer + used + 16, number).ptr - buffer);
    }
    template <class Escape>
    void putEscaped(std::string_view text, Escape const& escape) {
        std::size_t from = 0;
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string_view const replaced = escape(text[at]);
            if (replaced.empty()) continue;
            put(text.substr(from, at - from));
            put(replaced);
            from = at + 1;
        }
        put(text.substr(from));
    }
    void flush() {
        target.append(buffer, used);
        used = 0;
    }

  private:
    static constexpr std::size_t capacity = 32 * 1024;

    void ensure(std::size_t more) {
        if (used + more > capacity) flush();
    }
    void putLong(std::string_view text) {
        flush();
        target.append(text);
    }

    std::string& target;
    std::size_t used = 0;
    char buffer[capacity];
};

} // namespace zelkor::bench
