#include "Target.hpp"

#include <cstdlib>
#include <set>
#include <span>
#include <sstream>

namespace zelkor::producer {

namespace {

unsigned long numberOf(PredefinedMacros const& macros, std::string const& name, unsigned long otherwise) {
    auto const found = macros.find(name);
    if (found == macros.end()) return otherwise;
    char* end = nullptr;
    unsigned long const value = std::strtoul(found->second.c_str(), &end, 10);
    return end == found->second.c_str() ? otherwise : value;
}

// The words of an integer type come in any order: "long unsigned int".
IntegerKind kindOfWords(PredefinedMacros const& macros, std::string const& name, IntegerKind otherwise) {
    auto const found = macros.find(name);
    if (found == macros.end()) return otherwise;
    std::istringstream stream(found->second);
    std::multiset<std::string> words;
    for (std::string word; stream >> word;)
        words.insert(word);
    bool const isUnsigned = words.contains("unsigned");
    if (words.contains("char")) {
        if (isUnsigned) return IntegerKind::UnsignedChar;
        return words.contains("signed") ? IntegerKind::SignedChar : IntegerKind::Char;
    }
    if (words.count("long") == 2) return isUnsigned ? IntegerKind::UnsignedLongLong : IntegerKind::LongLong;
    if (words.contains("long")) return isUnsigned ? IntegerKind::UnsignedLong : IntegerKind::Long;
    if (words.contains("short")) return isUnsigned ? IntegerKind::UnsignedShort : IntegerKind::Short;
    return isUnsigned ? IntegerKind::UnsignedInt : IntegerKind::Int;
}

IntegerKind signedOf(IntegerKind kind) {
    switch (kind) {
    case IntegerKind::UnsignedShort:
        return IntegerKind::Short;
    case IntegerKind::UnsignedInt:
        return IntegerKind::Int;
    case IntegerKind::UnsignedLong:
        return IntegerKind::Long;
    case IntegerKind::UnsignedLongLong:
        return IntegerKind::LongLong;
    default:
        return kind;
    }
}

} // namespace

TargetFacts targetOf(PredefinedMacros const& macros) {
    TargetFacts target;
    unsigned const byte = static_cast<unsigned>(numberOf(macros, "__CHAR_BIT__", 8));
    target.charBits = byte;
    auto const bits = [&](char const* name, unsigned otherwise) {
        return static_cast<unsigned>(numberOf(macros, name, otherwise / byte)) * byte;
    };
    target.shortBits = bits("__SIZEOF_SHORT__", target.shortBits);
    target.intBits = bits("__SIZEOF_INT__", target.intBits);
    target.longBits = bits("__SIZEOF_LONG__", target.longBits);
    target.longLongBits = bits("__SIZEOF_LONG_LONG__", target.longLongBits);
    target.floatBits = bits("__SIZEOF_FLOAT__", target.floatBits);
    target.doubleBits = bits("__SIZEOF_DOUBLE__", target.doubleBits);
    target.longDoubleBits = bits("__SIZEOF_LONG_DOUBLE__", target.longDoubleBits);
    target.pointerBits = bits("__SIZEOF_POINTER__", target.pointerBits);
    auto const order = macros.find("__BYTE_ORDER__");
    target.isLittleEndian = order == macros.end() || order->second == "__ORDER_LITTLE_ENDIAN__";
    target.charIsSigned = !macros.contains("__CHAR_UNSIGNED__");
    target.sizeType = kindOfWords(macros, "__SIZE_TYPE__", target.sizeType);
    target.signedSizeType = signedOf(target.sizeType);
    target.ptrDiffType = kindOfWords(macros, "__PTRDIFF_TYPE__", target.ptrDiffType);
    target.wcharType = kindOfWords(macros, "__WCHAR_TYPE__", target.wcharType);
    return target;
}

Language languageOf(PredefinedMacros const& macros) {
    struct Standard {
        unsigned long number;
        Language language;
    };
    static constexpr Standard cxx[] = {{199711, Language::Cxx03},
                                       {201103, Language::Cxx11},
                                       {201402, Language::Cxx14},
                                       {201703, Language::Cxx17}};
    static constexpr Standard c[] = {{0, Language::C89},
                                     {199409, Language::C89},
                                     {199901, Language::C99},
                                     {201112, Language::C11},
                                     {201710, Language::C17}};
    bool const isCxx = macros.contains("__cplusplus");
    unsigned long const number = numberOf(macros, isCxx ? "__cplusplus" : "__STDC_VERSION__", 0);
    for (Standard const& standard : isCxx ? std::span<Standard const>(cxx) : std::span<Standard const>(c)) {
        if (standard.number == number) return standard.language;
    }
    return isCxx ? Language::Cxx : Language::C;
}

// As the front end has them for each standard; that in C raw strings are an extension is its choice too.
LexicalRules lexicalRulesOf(PredefinedMacros const& macros) {
    unsigned long const cxx = numberOf(macros, "__cplusplus", 0);
    unsigned long const c = numberOf(macros, "__STDC_VERSION__", 0);
    bool const isStrict = macros.contains("__STRICT_ANSI__");
    LexicalRules rules;
    if (cxx != 0) {
        rules.hasRawStrings = rules.hasUnicodeStrings = cxx >= 201103;
        rules.hasDigitSeparators = cxx >= 201402;
        rules.hasTrigraphs = isStrict && cxx < 201703;
    } else {
        rules.hasRawStrings = c >= 199901 && !isStrict;
        rules.hasUnicodeStrings = c >= 201112;
        rules.hasDigitSeparators = c > 201710;
        rules.hasLineComments = c >= 199901 || !isStrict;
        rules.hasTrigraphs = isStrict && c <= 201710;
    }
    return rules;
}

} // namespace zelkor::producer
