// What the bytes of a source file tell that is in no tree of the front end: comments and undefinitions. The
// front end's own tokens would tell them too, at ten times the price.
#pragma once

#include <string_view>
#include <vector>

namespace zelkor::producer {

// How the standard of a unit changes what is a comment.
struct LexicalRules {
    bool hasRawStrings = true;
    bool hasUnicodeStrings = true; // u"", U"" and u8""
    bool hasDigitSeparators = true;
    bool hasLineComments = true; // else `//*` before the first one is a slash before a comment
    bool hasTrigraphs = false;
};

struct TextPlace {
    unsigned line = 0;   // from 1
    unsigned column = 0; // from 1, in bytes

    bool operator==(TextPlace const&) const = default;
};

struct ScannedPiece {
    std::string_view text;
    TextPlace start;
    TextPlace end; // of the last character

    bool operator==(ScannedPiece const&) const = default;
};

struct SourceScan {
    std::vector<ScannedPiece> comments;      // with their marks
    std::vector<ScannedPiece> undefinitions; // the names behind #undef, also where text is skipped
};

// In the order of the text; views into `bytes`. Never fails: what no language allows is stepped over as the
// front end does. Linear.
SourceScan scanSource(std::string_view bytes, LexicalRules const& rules);

} // namespace zelkor::producer
