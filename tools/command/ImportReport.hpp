// What an import has to say about its units, on standard error.
#pragma once

#include "Producer.hpp"

namespace zelkor::command {

struct ReportOptions {
    unsigned errorLimit = 20; ///< errors of the front end that are shown; 0: all
    bool isVerbose = false;   ///< also each variant, and what was wrong with the cache
    bool isQuiet = false;     ///< no closing line
};

/// Prints the errors, the units that are not whole and what to do about them, and a closing line that begins
/// with `done` ("imported").
void printReport(producer::ImportResult const& result, char const* done, ReportOptions const& options);

/// Tells which folder the paths of the model begin at, unless the user is there.
void printRoot(producer::ImportResult const& result);

/// \returns the exit code.
int exitCodeOf(producer::ImportResult const& result, bool failOnError);

} // namespace zelkor::command
