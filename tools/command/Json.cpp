#include "Json.hpp"

#include <brant/zero/Text.hpp>

namespace zelkor::command {

JsonMembers& JsonMembers::raw(char const* name, std::string const& value) {
    members_ += (members_.empty() ? "" : separator_) + jsonText(name) + ": " + value;
    return *this;
}

JsonMembers& JsonMembers::append(JsonMembers const& more) {
    if (!members_.empty() && !more.empty()) members_ += separator_;
    members_ += more.members_;
    return *this;
}

std::string jsonText(std::string const& text) {
    static char const digits[] = "0123456789abcdef";
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        auto const byte = static_cast<unsigned char>(text[i]);
        std::size_t const length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        std::string const character = text.substr(i, length);
        if (!brant::zero::isValidUtf8(character)) {
            out += std::string("\\udc") + digits[byte >> 4] + digits[byte & 15];
            ++i;
            continue;
        }
        if (byte < 0x20)
            out += std::string("\\u00") + digits[byte >> 4] + digits[byte & 15];
        else if (byte == '"' || byte == '\\')
            out += '\\' + character;
        else
            out += character;
        i += length;
    }
    return out + '"';
}

} // namespace zelkor::command
