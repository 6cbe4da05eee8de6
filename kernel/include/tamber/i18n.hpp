#pragma once

#include "brant/zero/Text.hpp"

namespace tamber::i18n {

/// Lone surrogates become U+FFFD; brant::zero::appendUtf8 is the form that refuses them.
inline std::string utf16ToUtf8(std::u16string_view text) {
    return brant::zero::toUtf8(text);
}

} // namespace tamber::i18n
