// The target and the language, as the predefined macros tell them.
#pragma once

#include "Facts.hpp"
#include "SourceScanner.hpp"

#include <map>
#include <string>

namespace zelkor::producer {

using PredefinedMacros = std::map<std::string, std::string>; // name, replacement text

TargetFacts targetOf(PredefinedMacros const& macros);

// `Cxx` and `C` stand for the standards that have no literal in the model.
Language languageOf(PredefinedMacros const& macros);

LexicalRules lexicalRulesOf(PredefinedMacros const& macros);

} // namespace zelkor::producer
