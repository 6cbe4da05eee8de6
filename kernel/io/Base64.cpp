#include "Base64.hpp"

#include <array>
#include <cstdint>

namespace brant::zero::io {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> makeDigits() {
    std::array<std::int8_t, 256> digits{};
    digits.fill(-1);
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        digits[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
    return digits;
}
constexpr std::array<std::int8_t, 256> digits = makeDigits();

} // namespace

std::string encodeBase64(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::size_t const present = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (j < present ? static_cast<unsigned char>(bytes[i + j]) : 0u);
        for (std::size_t j = 0; j < 4; ++j)
            text += j <= present ? alphabet[group >> (18 - 6 * j) & 63] : '=';
    }
    return text;
}

std::string encodeBase64(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (char16_t const unit : text) {
        bytes += static_cast<char>(unit & 0xff);
        bytes += static_cast<char>(unit >> 8);
    }
    return encodeBase64(bytes);
}

bool decodeBase64(std::string_view text, std::string& bytes) {
    if (text.size() % 4 != 0) return false;
    std::size_t const padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    std::string result;
    result.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        std::size_t const missing = i + 4 == text.size() ? padding : 0;
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 4; ++j) {
            int const digit = j < 4 - missing ? digits[static_cast<unsigned char>(text[i + j])] : 0;
            if (digit < 0) return false;
            group = group << 6 | static_cast<std::uint32_t>(digit);
        }
        // Bits that no byte takes would let two texts stand for the same bytes.
        if ((missing == 1 && (group & 0xff) != 0) || (missing == 2 && (group & 0xffff) != 0)) return false;
        for (std::size_t j = 0; j < 3 - missing; ++j)
            result += static_cast<char>(group >> (16 - 8 * j) & 0xff);
    }
    bytes = std::move(result);
    return true;
}

bool decodeBase64(std::string_view text, std::u16string& units) {
    std::string bytes;
    if (!decodeBase64(text, bytes) || bytes.size() % 2 != 0) return false;
    units.clear();
    units.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2)
        units += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                       static_cast<unsigned char>(bytes[i + 1]) << 8);
    return true;
}

} // namespace brant::zero::io
