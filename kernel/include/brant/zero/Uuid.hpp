#pragma once

#include <boost/uuid/uuid.hpp>
#include <string>
#include <string_view>

#include "brant/zero/Export.hpp"

namespace brant::zero {

using boost::uuids::uuid;

/// Length of the canonical text, hyphens included; a terminating zero is not counted.
inline constexpr std::size_t uuidTextSize = 36;

/// A fresh random identity (version 4). Each thread draws from its own generator, seeded once from the
/// operating system and again in a forked child; the identities are unique, not secret.
/// Throws std::system_error when the operating system gives no entropy for the first one of a thread.
ZELKOR_API uuid generateUuid();

/// Name-based identities: the same namespace and name always give the same identity.
/// Version 3 is by MD5, version 5 by SHA-1. Cost: one digest, about a microsecond for short names.
ZELKOR_API uuid nameUuid3(uuid const& nameSpace, std::string_view name);
ZELKOR_API uuid nameUuid5(uuid const& nameSpace, std::string_view name);

/// Reads the canonical form, 8-4-4-4-12 hexadecimal digits of either case and nothing around them.
/// Returns false and leaves `result` alone on any other text.
[[nodiscard]] ZELKOR_API bool parseUuid(std::string_view text, uuid& result) noexcept;

/// Writes the canonical lower-case form, exactly `uuidTextSize` characters and no terminating zero.
ZELKOR_API void formatUuid(uuid const& id, char* out) noexcept;

ZELKOR_API std::string toString(uuid const& id);

namespace detail {
// The forms for processors without SSE2; exported so that both forms can be held against each other.
[[nodiscard]] ZELKOR_API bool parseUuidPortable(std::string_view text, uuid& result) noexcept;
ZELKOR_API void formatUuidPortable(uuid const& id, char* out) noexcept;
} // namespace detail

} // namespace brant::zero
