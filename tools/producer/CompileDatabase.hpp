// Commands of a compile database, made fit for the front end.
#pragma once

#include <string>
#include <vector>

namespace zelkor::producer {

struct CompileCommand {
    std::string directory;
    std::string file;                   // absolute and normal
    std::vector<std::string> arguments; // compiler first, the main file among them
};

// Reads the database in a build directory, or the database that `path` names, in its order.
// Throws ImportError when there is none, when it is malformed, or when it is empty.
std::vector<CompileCommand> readCompileDatabase(std::string const& path);

// Leaves out what would make the front end write files, and launchers before the compiler.
std::vector<std::string> cleanArguments(std::vector<std::string> const& arguments);

// Removes the commands that compile neither C nor C++, such as those of assemblers and linkers, and gives
// them.
std::vector<CompileCommand> takeForeignCommands(std::vector<CompileCommand>& commands);

// The deepest directory that holds the main files of all commands, but those below /usr when there are
// others.
std::string commonDirectory(std::vector<CompileCommand> const& commands);

} // namespace zelkor::producer
