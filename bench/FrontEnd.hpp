// The front end without the producer: units parsed as their commands say, and nothing taken from them.
#pragma once

#include "Clang.hpp"
#include "CompileDatabase.hpp"

#include <string>
#include <vector>

namespace zelkor::producer {

/// \returns the unit, or null when the front end gives up on it. `options` are CXTranslationUnit_Flags.
inline ClangUnit parseAlone(CXIndex index, CompileCommand const& command, std::string const& resources,
                            unsigned options) {
    std::vector<std::string> arguments = cleanArguments(command.arguments);
    arguments.insert(arguments.begin() + 1,
                     {"-resource-dir", resources, "-working-directory", command.directory});
    std::vector<char const*> words;
    for (std::string const& argument : arguments)
        words.push_back(argument.c_str());
    CXTranslationUnit unit = nullptr;
    clang_parseTranslationUnit2FullArgv(index, nullptr, words.data(), static_cast<int>(words.size()), nullptr,
                                        0, options, &unit);
    return ClangUnit(unit);
}

} // namespace zelkor::producer
