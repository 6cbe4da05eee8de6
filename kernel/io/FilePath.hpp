// Paths and the system's reasons, as the messages show them.
#pragma once

#include "brant/zero/Exceptions.hpp"
#include "brant/zero/Text.hpp"

#include <cerrno>
#include <string>
#include <system_error>

namespace brant::zero::io {

inline std::string reasonOf(int code) {
    return std::generic_category().message(code);
}

/// \throws FileError for a path that no file can have.
inline std::string toFilePath(std::u16string const& path) {
    std::string bytes;
    if (!appendUtf8(bytes, path))
        throw FileError(toUtf8(path), "the path holds a lone surrogate; no file can be named so");
    if (bytes.find('\0') != std::string::npos)
        throw FileError(bytes.substr(0, bytes.find('\0')),
                        "the path holds a zero character; no file can be named so");
    if (bytes.empty()) throw FileError(bytes, "the path is empty; give the name of a file");
    return bytes;
}

} // namespace brant::zero::io
