#include "SourceScanner.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>

namespace zelkor::producer {

namespace {

enum class Kind : unsigned char { Other, Blank, Newline, Word, Digit };

constexpr std::array<Kind, 256> makeKinds() {
    std::array<Kind, 256> kinds{};
    for (unsigned c = 0; c < 256; ++c) {
        bool const isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$';
        // Beyond ASCII what is no letter is no mark of any piece either.
        if (isLetter || c >= 0x80) kinds[c] = Kind::Word;
        if (c >= '0' && c <= '9') kinds[c] = Kind::Digit;
    }
    for (char const c : {' ', '\t', '\f', '\v', '\0'})
        kinds[static_cast<unsigned char>(c)] = Kind::Blank;
    for (char const c : {'\n', '\r'})
        kinds[static_cast<unsigned char>(c)] = Kind::Newline;
    return kinds;
}

constexpr std::array<Kind, 256> kinds = makeKinds();

Kind kindOf(char c) {
    return kinds[static_cast<unsigned char>(c)];
}

bool isNewline(char c) {
    return c == '\n' || c == '\r';
}

bool isHorizontalBlank(char c) {
    return c == ' ' || c == '\t' || c == '\f' || c == '\v';
}

// Counts lines as far as it is asked for; the front end takes each of "\n", "\r" and "\r\n" for one end.
class LineCounter {
  public:
    explicit LineCounter(std::string_view bytes)
        : bytes_(bytes), hasReturns_(bytes.find('\r') != std::string_view::npos) {}

    // Each offset is at or behind the one before.
    TextPlace at(std::size_t offset) {
        std::size_t end = nextEnd(counted_);
        while (end < offset) {
            ++line_;
            lineStart_ = counted_ = end + 1;
            end = nextEnd(counted_);
        }
        return {line_, static_cast<unsigned>(offset - lineStart_) + 1};
    }

  private:
    // The last character of the line's end.
    std::size_t nextEnd(std::size_t from) {
        if (known_ != std::string_view::npos && from <= known_) return known_;
        std::size_t const end = hasReturns_ ? bytes_.find_first_of("\r\n", from) : bytes_.find('\n', from);
        known_ = end;
        if (end != std::string_view::npos && bytes_[end] == '\r' && end + 1 < bytes_.size() &&
            bytes_[end + 1] == '\n')
            ++known_;
        return known_;
    }

    std::string_view bytes_;
    bool hasReturns_;
    unsigned line_ = 1;
    std::size_t lineStart_ = 0;
    std::size_t counted_ = 0;
    std::size_t known_ = std::string_view::npos;
};

class Scanner {
  public:
    Scanner(std::string_view bytes, LexicalRules const& rules)
        : bytes_(bytes), rules_(rules), lines_(bytes), hasLineComments_(rules.hasLineComments) {}

    SourceScan run() {
        while (at_ < bytes_.size())
            step();
        return std::move(scan_);
    }

  private:
    // How far a directive has come on the line.
    enum class Line { Start, Hash, Undef, Other };

    // A null character at the end, as the front end's buffers have one.
    char byte(std::size_t at) const { return at < bytes_.size() ? bytes_[at] : '\0'; }

    // The length of a backslash, or of what a trigraph makes one.
    std::size_t backslash(std::size_t at) const {
        if (byte(at) == '\\') return 1;
        return rules_.hasTrigraphs && bytes_.substr(std::min(at, bytes_.size()), 3) == "?\?/" ? 3 : 0;
    }

    // The length of an escaped end of line; blanks may stand before the end.
    std::size_t splice(std::size_t at) const {
        std::size_t const mark = backslash(at);
        if (mark == 0) return 0;
        std::size_t end = at + mark;
        while (isHorizontalBlank(byte(end)))
            ++end;
        if (!isNewline(byte(end))) return 0;
        bool const isPair = isNewline(byte(end + 1)) && byte(end + 1) != byte(end);
        return end + (isPair ? 2 : 1) - at;
    }

    // The first character at or behind `at` that is not part of an escaped end of line.
    std::size_t skipSplices(std::size_t at) const {
        while (byte(at) == '\\' || byte(at) == '?') {
            std::size_t const length = splice(at);
            if (length == 0) break;
            at += length;
        }
        return at;
    }

    void step() {
        switch (kindOf(bytes_[at_])) {
        case Kind::Blank: // in runs, as lines are indented
            while (kindOf(byte(++at_)) == Kind::Blank && at_ < bytes_.size()) {
            }
            break;
        case Kind::Newline:
            line_ = Line::Start;
            ++at_;
            break;
        case Kind::Word:
            takeWord();
            break;
        case Kind::Digit:
            takeNumber();
            break;
        case Kind::Other:
            takeOther();
            break;
        }
    }

    void takeOther() {
        char const c = bytes_[at_];
        std::size_t const next = skipSplices(at_);
        if (next != at_) {
            at_ = next;
            return;
        }
        if (c == '/' && takeComment()) return;
        line_ = c == '#' && line_ == Line::Start ? Line::Hash : Line::Other;
        if (c == '"' || c == '\'')
            takeLiteral(c);
        else if (c == '.' && kindOf(byte(skipSplices(at_ + 1))) == Kind::Digit)
            takeNumber();
        else
            at_ += std::max<std::size_t>(backslash(at_), 1);
    }

    bool takeComment() {
        std::size_t const mark = skipSplices(at_ + 1);
        if (byte(mark) == '*') {
            takeBlockComment(mark + 1);
            return true;
        }
        if (byte(mark) != '/') return false;
        if (!hasLineComments_ && byte(skipSplices(mark + 1)) == '*') return false;
        hasLineComments_ = true; // the front end takes the first one for a word on the whole file
        takeLineComment(mark + 1);
        return true;
    }

    void takeLineComment(std::size_t from) {
        std::size_t end = from;
        for (;;) {
            end = lineEnd(end);
            if (end == bytes_.size()) break;
            std::size_t const next = spliceEndingAt(end, from);
            if (next == 0) break;
            end = next;
        }
        addPiece(scan_.comments, at_, end);
        at_ = end;
    }

    std::size_t lineEnd(std::size_t from) const {
        std::size_t const rest = bytes_.size() - from;
        void const* const feed = std::memchr(bytes_.data() + from, '\n', rest);
        std::size_t const end =
            feed ? static_cast<std::size_t>(static_cast<char const*>(feed) - bytes_.data()) : bytes_.size();
        void const* const carriage = std::memchr(bytes_.data() + from, '\r', end - from);
        return carriage ? static_cast<std::size_t>(static_cast<char const*>(carriage) - bytes_.data()) : end;
    }

    // Behind the end of line at `end` when it is escaped, else 0.
    std::size_t spliceEndingAt(std::size_t end, std::size_t from) const {
        std::size_t mark = end;
        while (mark > from && isHorizontalBlank(bytes_[mark - 1]))
            --mark;
        for (std::size_t const length : {std::size_t{1}, std::size_t{3}}) {
            if (mark >= from + length && backslash(mark - length) == length) {
                std::size_t const start = mark - length;
                return start + splice(start);
            }
        }
        return 0;
    }

    // One without an end is none, and nothing follows it.
    void takeBlockComment(std::size_t from) {
        std::size_t const first = skipSplices(from);
        std::size_t const search = byte(first) == '/' ? first + 1 : first; // `/*/` is open
        for (std::size_t slash = bytes_.find('/', search); slash != std::string_view::npos;
             slash = bytes_.find('/', slash + 1)) {
            char const before = bytes_[slash - 1];
            if (before != '*' && !(isNewline(before) && isStarBeforeSplices(slash))) continue;
            addPiece(scan_.comments, at_, slash + 1);
            at_ = slash + 1;
            return;
        }
        at_ = bytes_.size();
    }

    bool isStarBeforeSplices(std::size_t at) const {
        while (at > 0 && isNewline(bytes_[at - 1])) {
            std::size_t mark = at - 1;
            if (mark > 0 && isNewline(bytes_[mark - 1]) && bytes_[mark - 1] != bytes_[mark]) --mark;
            while (mark > 0 && isHorizontalBlank(bytes_[mark - 1]))
                --mark;
            if (mark >= 1 && backslash(mark - 1) == 1)
                at = mark - 1;
            else if (mark >= 3 && backslash(mark - 3) == 3)
                at = mark - 3;
            else
                return false;
        }
        return at > 0 && bytes_[at - 1] == '*';
    }

    void takeLiteral(char quote) {
        std::size_t end = skipSplices(at_ + 1);
        // The end of the line ends what has no other end.
        while (end < bytes_.size() && byte(end) != quote && !isNewline(byte(end))) {
            if (std::size_t const mark = backslash(end)) {
                end = skipSplices(end + mark);
                if (end >= bytes_.size() || isNewline(byte(end))) break;
            }
            end = skipSplices(end + 1);
        }
        at_ = end < bytes_.size() && byte(end) == quote ? end + 1 : end;
    }

    void takeNumber() {
        std::size_t end = at_;
        for (;;) {
            Kind const kind = kindOf(byte(end));
            bool const isWord = kind == Kind::Word && byte(end) != '$';
            if (kind == Kind::Digit || isWord || byte(end) == '.') {
                end = skipSplices(end + 1);
                continue;
            }
            if (byte(end) != '\'' || !rules_.hasDigitSeparators) break;
            std::size_t const next = skipSplices(end + 1);
            Kind const nextKind = kindOf(byte(next));
            bool const isAscii = static_cast<unsigned char>(byte(next)) < 0x80 && byte(next) != '$';
            if (!isAscii || (nextKind != Kind::Digit && nextKind != Kind::Word)) break;
            end = next;
        }
        line_ = Line::Other;
        at_ = end;
    }

    void takeWord() {
        std::size_t const start = at_;
        std::size_t end = at_ + 1;
        bool isSpliced = false;
        for (;;) {
            while (kindOf(byte(end)) == Kind::Word || kindOf(byte(end)) == Kind::Digit)
                ++end;
            std::size_t const next = skipSplices(end);
            Kind const kind = kindOf(byte(next));
            if (next == end || (kind != Kind::Word && kind != Kind::Digit)) break;
            isSpliced = true;
            end = next;
        }
        std::size_t const quote = skipSplices(end);
        bool const isLiteral = byte(quote) == '"' && rules_.hasRawStrings;
        if (isLiteral || line_ == Line::Hash || line_ == Line::Undef) {
            std::string_view const written = bytes_.substr(start, end - start);
            std::string const plain = isSpliced ? withoutSplices(written) : std::string();
            std::string_view const word = isSpliced ? std::string_view(plain) : written;
            if (isLiteral && isRawPrefix(word)) {
                line_ = Line::Other;
                takeRawString(quote + 1);
                return;
            }
            if (line_ == Line::Undef) addPiece(scan_.undefinitions, start, end);
            line_ = line_ == Line::Hash && word == "undef" ? Line::Undef : Line::Other;
        } else {
            line_ = Line::Other;
        }
        at_ = end;
    }

    bool isRawPrefix(std::string_view word) const {
        if (word == "R" || word == "LR") return true;
        return rules_.hasUnicodeStrings && (word == "uR" || word == "UR" || word == "u8R");
    }

    std::string withoutSplices(std::string_view text) const {
        std::string plain;
        std::size_t const first = static_cast<std::size_t>(text.data() - bytes_.data());
        for (std::size_t at = skipSplices(first); at < first + text.size(); at = skipSplices(at + 1))
            plain += bytes_[at];
        return plain;
    }

    // In it nothing is escaped.
    void takeRawString(std::size_t from) {
        constexpr std::size_t longest = 16;
        constexpr std::string_view excluded(" ()\\\t\v\f\n\r\0$@`", 13);
        std::size_t open = from;
        while (open < bytes_.size() && open - from < longest &&
               excluded.find(bytes_[open]) == std::string_view::npos &&
               static_cast<unsigned char>(bytes_[open]) < 0x80)
            ++open;
        std::string closing(1, '"');
        std::size_t search = from; // where the front end goes on behind a delimiter that is none
        if (byte(open) == '(') {
            closing = ')';
            closing.append(bytes_.substr(from, open - from)).append(1, '"');
            search = open;
        }
        std::size_t const end = bytes_.find(closing, search);
        at_ = end == std::string_view::npos ? bytes_.size() : end + closing.size();
    }

    void addPiece(std::vector<ScannedPiece>& pieces, std::size_t start, std::size_t end) {
        TextPlace const first = lines_.at(start);
        TextPlace last = lines_.at(end);
        if (last.column > 1) --last.column;
        pieces.push_back({bytes_.substr(start, end - start), first, last});
    }

    std::string_view bytes_;
    LexicalRules const& rules_;
    LineCounter lines_;
    bool hasLineComments_;
    std::size_t at_ = 0;
    Line line_ = Line::Start;
    SourceScan scan_;
};

} // namespace

SourceScan scanSource(std::string_view bytes, LexicalRules const& rules) {
    return Scanner(bytes, rules).run();
}

} // namespace zelkor::producer
