// One translation unit from its command to facts.
#pragma once

#include "CompileDatabase.hpp"
#include "Facts.hpp"
#include "SourceIndex.hpp"

#include <string>
#include <vector>

namespace zelkor::producer {

struct ParserSettings {
    std::string resourceDirectory;
    std::vector<std::string> extraArguments;
    bool wantsUses = true; // what bodies call, read and write
};

// Where the front end's own headers are: the given directory, or the one found when this was built.
// Throws ImportError, with the package to install, when they are not there.
std::string findResourceDirectory(std::string const& given);

// Name of the command's main file in the model, whether the file exists or not.
std::string unitPath(CompileCommand const& command, ProjectPaths const& paths);

// Of all that decides what `parseUnit` gives, apart from the content of files.
Digest commandDigest(CompileCommand const& command, ParserSettings const& settings,
                     ProjectPaths const& paths);

// Parses with an index of its own, so that calls from different threads do not meet. Never throws for what
// the sources hold: trouble is in `failure` and `diagnostics`. The sink gets the facts, once, before what the
// front end holds of the unit is freed, which takes a while: others may go on with them meanwhile.
void parseUnit(CompileCommand const& command, ParserSettings const& settings, ProjectPaths const& paths,
               UnitSink const& sink);
UnitFacts parseUnit(CompileCommand const& command, ParserSettings const& settings, ProjectPaths const& paths);

} // namespace zelkor::producer
