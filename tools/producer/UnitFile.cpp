#include "UnitFile.hpp"

#include "Clang.hpp"
#include "ExtractionStamp.hpp"
#include "FactFields.hpp"

#include <cereal/archives/portable_binary.hpp>
#include <zstd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <random>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace zelkor::producer {

namespace fs = std::filesystem;

// The file: a line that names the tools; compressed, the heads; compressed, the facts of each unit; the
// digest of all before it.
namespace {

constexpr std::string_view firstWords = "zelkor unit file ";
constexpr std::string_view formatVersion = "1";
constexpr int compressionLevel = 1; // reading is what counts, and higher levels save little

template <class Value>
std::string pack(Value const& value) {
    std::ostringstream stream;
    {
        cereal::PortableBinaryOutputArchive archive(stream);
        archive(value);
    }
    std::string const plain = stream.str();
    std::string packed(ZSTD_compressBound(plain.size()), '\0');
    std::size_t const size =
        ZSTD_compress(packed.data(), packed.size(), plain.data(), plain.size(), compressionLevel);
    if (ZSTD_isError(size))
        throw ImportError(std::string("cannot compress facts: ") + ZSTD_getErrorName(size));
    packed.resize(size);
    return packed;
}

// Anything thrown here means that the bytes are none of ours.
template <class Value>
Value unpack(std::string_view packed) {
    unsigned long long const size = ZSTD_getFrameContentSize(packed.data(), packed.size());
    if (size == ZSTD_CONTENTSIZE_ERROR || size == ZSTD_CONTENTSIZE_UNKNOWN)
        throw std::runtime_error("no compressed data");
    std::string plain(size, '\0');
    std::size_t const got = ZSTD_decompress(plain.data(), plain.size(), packed.data(), packed.size());
    if (ZSTD_isError(got)) throw std::runtime_error(ZSTD_getErrorName(got));
    std::istringstream stream(std::move(plain));
    cereal::PortableBinaryInputArchive archive(stream);
    Value value;
    archive(value);
    return value;
}

UnitFileError damaged(std::string const& path) {
    return UnitFileError(path + ": is damaged; make it again with zelkor import --unit");
}

// Cuts the first compressed part off `rest`.
std::string_view takePart(std::string_view& rest, std::string const& path) {
    std::size_t const size = ZSTD_findFrameCompressedSize(rest.data(), rest.size());
    if (ZSTD_isError(size)) throw damaged(path);
    std::string_view const part = rest.substr(0, size);
    rest.remove_prefix(size);
    return part;
}

std::string_view asText(Digest const& digest) {
    return {reinterpret_cast<char const*>(digest.data()), digest.size()};
}

} // namespace

template <class Archive>
void serialize(Archive& archive, UnitHead& head) {
    auto& [root, file, command, hasUses, inputs] = head;
    archive(root, file, command, hasUses, inputs);
}

std::string const& toolLine() {
    static std::string const line = std::string(firstWords) + std::string(formatVersion) +
                                    ", zelkor " ZELKOR_VERSION " (" + extractionStamp + "), " +
                                    toText(clang_getClangVersion());
    return line;
}

void UnitFileWriter::add(UnitHead const& head, UnitFacts const& facts) {
    heads_.push_back(head);
    bodies_ += pack(facts);
}

std::string UnitFileWriter::finish() const {
    std::string bytes = toolLine() + '\n' + pack(heads_) + bodies_;
    bytes += asText(digestOf(bytes));
    return bytes;
}

UnitFile::UnitFile(std::string const& path) : path_(path) {
    errno = 0;
    std::optional<std::string> bytes = readWholeFile(path);
    if (!bytes)
        throw UnitFileError(path + ": " + std::generic_category().message(errno == 0 ? EINVAL : errno));
    bytes_ = *std::move(bytes);
    std::string_view rest = bytes_;
    if (!rest.starts_with(firstWords)) {
        throw UnitFileError(path + ": is no unit file; zelkor import --unit writes them");
    }
    std::string_view const line = rest.substr(0, rest.find('\n'));
    if (line != toolLine()) {
        throw UnitFileError(path + ": was made by other tools; make it again with these ones\n  made by: " +
                            std::string(line.substr(0, 200)) + "\n  this is: " + toolLine());
    }
    Digest digest;
    if (rest.size() < line.size() + 1 + digest.size()) throw damaged(path);
    std::string_view const end = rest.substr(rest.size() - digest.size());
    rest.remove_suffix(digest.size());
    digest = digestOf(rest);
    if (end != asText(digest)) throw damaged(path);
    rest.remove_prefix(line.size() + 1);
    try {
        heads_ = unpack<std::vector<UnitHead>>(takePart(rest, path));
    } catch (std::exception const&) {
        throw damaged(path);
    }
    for (std::size_t i = 0; i < heads_.size(); ++i)
        bodies_.push_back(takePart(rest, path));
}

UnitFacts UnitFile::facts(std::size_t number) const {
    try {
        UnitFacts facts = unpack<UnitFacts>(bodies_.at(number));
        facts.inputs = heads_[number].inputs;
        return facts;
    } catch (std::exception const&) {
        throw damaged(path_);
    }
}

void replaceFile(std::string const& path, std::string_view bytes) {
    auto const fail = [&](int reason) {
        return ImportError(path + ": cannot be written: " + std::generic_category().message(reason));
    };
    std::error_code error;
    if (fs::path(path).has_parent_path()) fs::create_directories(fs::path(path).parent_path(), error);
    if (error) throw fail(error.value());
    // Another process, or another machine on the same file system, may be writing the same file.
    static thread_local std::random_device random;
    std::string const temporary = path + '.' + std::to_string(random()) + ".tmp";
    int const file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) throw fail(errno);
    int reason = 0;
    while (!bytes.empty() && reason == 0) {
        ssize_t const written = ::write(file, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            reason = errno;
        }
    }
    // Not flushed to the disk: a file that a crash of the machine cuts off is found to be damaged.
    if (::close(file) != 0 && reason == 0) reason = errno;
    if (reason == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) reason = errno;
    if (reason == 0) return;
    ::unlink(temporary.c_str());
    throw fail(reason);
}

} // namespace zelkor::producer
