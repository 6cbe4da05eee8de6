#include "Digest.hpp"

#include <xxhash.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace zelkor::producer {

Digest digestOf(std::string_view bytes) {
    XXH128_canonical_t canonical; // the same bytes on every machine
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
    Digest digest;
    static_assert(sizeof canonical.digest == sizeof digest);
    std::copy(std::begin(canonical.digest), std::end(canonical.digest), digest.begin());
    return digest;
}

std::optional<std::string> readWholeFile(std::string const& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt; // a folder opens, too
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) return std::nullopt;
    std::streamoff const size = file.tellg();
    if (size < 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    file.seekg(0);
    if (!file.read(bytes.data(), size)) return std::nullopt;
    return bytes;
}

std::optional<Digest> digestOfFile(std::string const& path) {
    std::optional<std::string> const bytes = readWholeFile(path);
    if (!bytes) return std::nullopt;
    return digestOf(*bytes);
}

std::string toHex(Digest const& digest) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::uint8_t const byte : digest) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace zelkor::producer
