#include "TextSource.hpp"

#include "FilePath.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brant::zero::io {

namespace {

class StringSource final : public TextSource {
  public:
    explicit StringSource(std::string_view text) noexcept : rest_(text) {}
    std::size_t read(char* to, std::size_t size) override {
        std::size_t const count = std::min(size, rest_.size());
        std::memcpy(to, rest_.data(), count);
        rest_.remove_prefix(count);
        return count;
    }

  private:
    std::string_view rest_;
};

/// Turns code units into UTF-8; a lone surrogate becomes its three bytes, which no valid UTF-8 has.
class Narrower {
  public:
    /// Appends the unit. \returns the end of what was written, at most four bytes.
    char* put(char16_t unit, char* to) noexcept {
        if (high_ != 0) {
            char32_t const high = std::exchange(high_, u'\0');
            if (unit >= 0xDC00 && unit < 0xE000)
                return encode(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00u), to);
            to = encode(high, to);
        }
        if (unit >= 0xD800 && unit < 0xDC00) {
            high_ = unit;
            return to;
        }
        return encode(unit, to);
    }
    char* end(char* to) noexcept { return high_ == 0 ? to : encode(std::exchange(high_, u'\0'), to); }

  private:
    static char* encode(char32_t point, char* to) noexcept {
        auto const tail = [point](int shift) { return static_cast<char>(0x80 | (point >> shift & 0x3f)); };
        if (point < 0x80) {
            *to++ = static_cast<char>(point);
        } else if (point < 0x800) {
            *to++ = static_cast<char>(0xC0 | point >> 6);
            *to++ = tail(0);
        } else if (point < 0x10000) {
            *to++ = static_cast<char>(0xE0 | point >> 12);
            *to++ = tail(6);
            *to++ = tail(0);
        } else {
            *to++ = static_cast<char>(0xF0 | point >> 18);
            *to++ = tail(12);
            *to++ = tail(6);
            *to++ = tail(0);
        }
        return to;
    }
    char16_t high_ = 0;
};

constexpr std::size_t longestUnit = 7; // a held surrogate and the unit after it

class Utf16Source final : public TextSource {
  public:
    explicit Utf16Source(std::u16string_view text) noexcept : rest_(text) {
        if (rest_.starts_with(u'\uFEFF')) rest_.remove_prefix(1);
    }
    std::size_t read(char* to, std::size_t size) override {
        char* at = to;
        std::size_t used = 0;
        while (used < rest_.size() && static_cast<std::size_t>(to + size - at) >= longestUnit)
            at = narrower_.put(rest_[used++], at);
        rest_.remove_prefix(used);
        if (rest_.empty()) at = narrower_.end(at);
        return static_cast<std::size_t>(at - to);
    }
    [[nodiscard]] bool forcesUtf8() const noexcept override { return true; }

  private:
    std::u16string_view rest_;
    Narrower narrower_;
};

class FileSource final : public TextSource {
  public:
    explicit FileSource(std::string const& path)
        : path_(path), file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (file_ < 0) fail();
    }
    ~FileSource() override { ::close(file_); }

    std::size_t read(char* to, std::size_t size) override {
        for (;;) {
            ssize_t const count = ::read(file_, to, size);
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) fail();
        }
    }

  private:
    [[noreturn]] void fail() const { throw FileError(path_, reasonOf(errno)); }

    std::string path_;
    int file_;
};

/// Looks at the first bytes once, then passes on or transcodes.
class DecodingSource final : public TextSource {
  public:
    explicit DecodingSource(TextSource& source) : source_(source) {
        constexpr std::size_t longestMark = 3;
        while (head_.size() < longestMark) {
            char block[64];
            std::size_t const count = source_.read(block, sizeof block);
            if (count == 0) break;
            head_.append(block, count);
        }
        std::string_view const head = head_;
        if (head.starts_with("\xEF\xBB\xBF"))
            head_.erase(0, 3);
        else if (head.starts_with("\xFF\xFE"))
            transcode(0, 1);
        else if (head.starts_with("\xFE\xFF"))
            transcode(1, 0);
    }

    std::size_t read(char* to, std::size_t size) override {
        return wide_ ? readWide(to, size) : readBytes(to, size);
    }
    [[nodiscard]] bool forcesUtf8() const noexcept override { return wide_ || source_.forcesUtf8(); }

  private:
    void transcode(int low, int high) {
        head_.erase(0, 2);
        wide_ = true;
        low_ = low;
        high_ = high;
    }

    std::size_t readBytes(char* to, std::size_t size) {
        if (head_.empty()) return source_.read(to, size);
        std::size_t const count = std::min(size, head_.size());
        std::memcpy(to, head_.data(), count);
        head_.erase(0, count);
        return count;
    }

    std::size_t readWide(char* to, std::size_t size) {
        char* at = to;
        while (at == to) {
            // A unit of two bytes becomes at most three, and one may have been held back.
            char block[4096];
            std::size_t const count = readBytes(block, std::min(sizeof block, (size - longestUnit) / 2));
            if (count == 0) {
                at = narrower_.end(at);
                if (pending_ >= 0) at = narrower_.put(0xDC00, at); // half a unit is no text
                pending_ = -1;
                break;
            }
            for (std::size_t i = 0; i < count; ++i) {
                int const byte = static_cast<unsigned char>(block[i]);
                if (pending_ < 0) {
                    pending_ = byte;
                    continue;
                }
                int const pair[] = {pending_, byte};
                at = narrower_.put(static_cast<char16_t>(pair[low_] | pair[high_] << 8), at);
                pending_ = -1;
            }
        }
        return static_cast<std::size_t>(at - to);
    }

    TextSource& source_;
    std::string head_;
    bool wide_ = false;
    int low_ = 0;
    int high_ = 1;
    int pending_ = -1;
    Narrower narrower_;
};

} // namespace

std::unique_ptr<TextSource> makeTextSource(std::string const& text) {
    return std::make_unique<StringSource>(text);
}
std::unique_ptr<TextSource> makeTextSource(std::u16string const& text) {
    return std::make_unique<Utf16Source>(text);
}
std::unique_ptr<TextSource> openTextSource(std::string const& path) {
    return std::make_unique<FileSource>(path);
}
std::unique_ptr<TextSource> decode(TextSource& source) {
    return std::make_unique<DecodingSource>(source);
}

} // namespace brant::zero::io
