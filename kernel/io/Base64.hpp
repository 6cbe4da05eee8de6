// Base64 (RFC 4648) for texts that a form cannot hold as they are.
#pragma once

#include <string>
#include <string_view>

namespace brant::zero::io {

[[nodiscard]] std::string encodeBase64(std::string_view bytes);
/// The bytes of UTF-16LE.
[[nodiscard]] std::string encodeBase64(std::u16string_view text);

/// \returns false for anything but whole groups of the alphabet with its padding.
[[nodiscard]] bool decodeBase64(std::string_view text, std::string& bytes);
/// \returns false also when the bytes are no whole UTF-16LE units.
[[nodiscard]] bool decodeBase64(std::string_view text, std::u16string& units);

} // namespace brant::zero::io
