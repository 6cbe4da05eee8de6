#include "JsonStream.hpp"

#include "TextClass.hpp"
#include "brant/zero/Text.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <string_view>

namespace brant::zero::io {

namespace {

std::optional<unsigned> fourDigits(char const* text) noexcept {
    unsigned value = 0;
    for (int i = 0; i < 4; ++i) {
        char const digit = text[i];
        unsigned const lower = static_cast<unsigned char>(digit | 0x20);
        if (digit >= '0' && digit <= '9')
            value = value << 4 | static_cast<unsigned>(digit - '0');
        else if (lower >= 'a' && lower <= 'f')
            value = value << 4 | (lower - 'a' + 10);
        else
            return std::nullopt;
    }
    return value;
}

constexpr std::size_t escapeSize = 6; // \uXXXX
constexpr std::size_t surrogateSize = 3;

} // namespace

JsonStream::JsonStream(ModelReader& reader, TextSource& source)
    : reader_(reader), source_(source), buffer_(new char[capacity + slack]()), at_(begin()), end_(begin()),
      token_(begin()), counted_(begin()) {
    reader.locateBy(*this);
    refill();
}

void JsonStream::refill() {
    if (last_) return;
    if (token_ != nullptr) before_ = locate(std::max(token_, counted_));
    token_ = nullptr;
    static_cast<void>(locate(end_));
    base_ += static_cast<std::size_t>(end_ - begin());
    at_ = end_ = begin();
    counted_ = begin();
    replaced_.clear();
    nextReplaced_ = 0;
    // What waits is a part of one character or of two escapes, so reading on always completes it.
    while (end_ == begin() && !last_) {
        std::size_t size = rest_.copy(begin(), rest_.size());
        std::size_t const count = source_.read(begin() + size, capacity - size);
        last_ = count == 0;
        size += count;
        auto const [used, left] = replaceEscapes(checkEncoding(size));
        rest_.assign(begin() + used, size - used);
        end_ = begin() + left;
    }
    *end_ = '\0';
}

std::size_t JsonStream::checkEncoding(std::size_t size) {
    std::size_t whole = size;
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, size) && !last_; ++back) {
        auto const byte = static_cast<unsigned char>(begin()[size - back]);
        if (byte >= 0xC0 && back < (byte >= 0xF0 ? 4u : byte >= 0xE0 ? 3u : 2u)) whole = size - back;
        if (byte < 0x80 || byte >= 0xC0) break;
    }
    std::string_view const text(begin(), whole);
    if ((classify(text) & BeyondBit) == 0 || isValidUtf8(text)) return whole;
    // Halving finds the first fault: a prefix is good up to it, give or take its last character.
    std::size_t good = 0;
    for (std::size_t step = std::bit_floor(whole); step > 0; step /= 2) {
        std::size_t end = good + step;
        while (end < whole && end > good && (begin()[end] & 0xC0) == 0x80)
            --end;
        if (end <= whole && isValidUtf8(text.substr(good, end - good))) good = end;
    }
    reader_.failAt(locate(begin() + good), "the text is no valid UTF-8 here",
                   "UTF-8, or UTF-16 with a byte order mark");
}

std::pair<std::size_t, std::size_t> JsonStream::replaceEscapes(std::size_t size) {
    char* const end = begin() + size;
    char* from = begin();
    char* to = begin();
    auto const keep = [&](char* until) {
        if (to != from) std::memmove(to, from, static_cast<std::size_t>(until - from));
        to += until - from;
        from = until;
    };
    char* at = begin();
    while ((at = static_cast<char*>(std::memchr(at, '\\', static_cast<std::size_t>(end - at)))) != nullptr) {
        auto const room = static_cast<std::size_t>(end - at);
        if (!last_ && (room < 2 || (at[1] == 'u' && room < 2 * escapeSize))) {
            keep(at);
            return {static_cast<std::size_t>(at - begin()), static_cast<std::size_t>(to - begin())};
        }
        if (room < escapeSize || at[1] != 'u') {
            at += std::min<std::size_t>(room, 2);
            continue;
        }
        std::optional<unsigned> const unit = fourDigits(at + 2);
        bool const surrogate = unit && *unit >= 0xD800 && *unit < 0xE000;
        std::optional<unsigned> const next =
            surrogate && room >= 2 * escapeSize && at[6] == '\\' && at[7] == 'u' ? fourDigits(at + 8)
                                                                                 : std::nullopt;
        if (!surrogate) {
            at += 2;
        } else if (*unit < 0xDC00 && next && *next >= 0xDC00 && *next < 0xE000) {
            at += 2 * escapeSize;
        } else {
            keep(at);
            *to++ = static_cast<char>(0xE0 | *unit >> 12);
            *to++ = static_cast<char>(0x80 | (*unit >> 6 & 0x3f));
            *to++ = static_cast<char>(0x80 | (*unit & 0x3f));
            at = from = at + escapeSize;
            replaced_.push_back(to);
        }
    }
    keep(end);
    return {size, static_cast<std::size_t>(to - begin())};
}

Position JsonStream::locate(char const* place) {
    constexpr std::uint32_t shorter = escapeSize - surrogateSize;
    while (counted_ < place) {
        auto const* newline =
            static_cast<char const*>(std::memchr(counted_, '\n', static_cast<std::size_t>(place - counted_)));
        char const* const until = newline == nullptr ? place : newline + 1;
        column_ += static_cast<std::uint32_t>(until - counted_);
        for (; nextReplaced_ < replaced_.size() && replaced_[nextReplaced_] <= until; ++nextReplaced_)
            column_ += shorter;
        if (newline != nullptr) {
            ++line_;
            column_ = 1;
        }
        counted_ = until;
    }
    return {line_, column_};
}

Position JsonStream::position() {
    return token_ == nullptr ? before_ : locate(std::max(token_, counted_));
}
Position JsonStream::here() {
    return locate(std::max<char const*>(at_, counted_));
}

char const* JsonStream::endOfPlain(char const* text) noexcept {
#if defined(__SSE2__)
    for (;; text += 16) {
        __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(text));
        __m128i const control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(0x1f)), bytes);
        __m128i const stop = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')),
                                                       _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))),
                                          control);
        if (int const mask = _mm_movemask_epi8(stop); mask != 0)
            return text + std::countr_zero(static_cast<unsigned>(mask));
    }
#else
    while ((classify(*text) & (ControlBit | QuoteBit | BackslashBit)) == 0)
        ++text;
    return text;
#endif
}

void JsonStream::skipWhitespace() {
    for (;;) {
        while (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t')
            ++at_;
        if (at_ != end_) break;
        refill();
        if (at_ == end_) break;
    }
    token_ = at_;
}

} // namespace brant::zero::io
