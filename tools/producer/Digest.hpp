// Digests that tell whether content is the same; not for protection against people.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zelkor::producer {

using Digest = std::array<std::uint8_t, 16>;

Digest digestOf(std::string_view bytes);

// Nothing when the file cannot be read.
std::optional<Digest> digestOfFile(std::string const& path);
std::optional<std::string> readWholeFile(std::string const& path);

std::string toHex(Digest const& digest);

} // namespace zelkor::producer
