// Fills a model from a compile database. The one public header of the producer.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace zelkor::ast {
class Ast;
}

namespace zelkor::producer {

// Input that makes an import impossible; `what()` names the file and what to do about it.
class ImportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct ImportProgress {
    std::size_t unitsDone = 0;
    std::size_t unitsTotal = 0;
    std::string file; // main file of the unit that was merged last
};

// What bodies call, read and write: not at all, each by itself, or also everything that is reached along
// calls.
enum class Insight { None, Direct, Transitive };

struct ImportOptions {
    std::string database;                    // build directory, or the compile database itself
    std::string root;                        // project root; empty: the common directory of the main files
    std::string resourceDirectory;           // of the front end; empty: the one found when this was built
    std::vector<std::string> extraArguments; // added to each command
    std::string cacheDirectory;              // of units that were read before; empty: each is parsed
    bool needsCache = true;                  // a cache that cannot be kept is an error, else a warning
    unsigned jobs = 0;                       // threads that parse; 0: one per processor
    Insight insight = Insight::Direct;
    std::atomic<bool> const* cancelled = nullptr;        // read between units; may be set by a signal handler
    std::function<void(ImportProgress const&)> progress; // called on the importing thread, after each unit
};

enum class UnitState { Complete, Incomplete, Failed };

struct UnitReport {
    std::string file;
    UnitState state = UnitState::Complete;
    std::string reason; // first error of an incomplete unit, or why there is nothing of a failed one
    std::string advice; // what to do about it, when that is known
};

enum class DiagnosticSeverity { Note, Warning, Error, Fatal };

struct ImportDiagnostic {
    std::string file; // empty for what concerns the command
    unsigned line = 0;
    unsigned column = 0;
    DiagnosticSeverity severity = DiagnosticSeverity::Error;
    std::string text;
};

struct VariantReport {
    std::string name;
    std::string kept;    // file:line:column of the definition in the model
    std::string dropped; // of the one that differs
    std::string reason;
};

struct ImportResult {
    std::string root;
    std::vector<UnitReport> units; // in the order of the database
    std::vector<ImportDiagnostic> diagnostics;
    std::map<std::string, std::size_t> rejectedOptions; // compiler option, units whose command has it
    std::map<std::string, std::size_t> missingHeaders;  // as written, units that lack it
    std::map<std::string, std::size_t> created;         // class in short form, elements of it
    std::vector<VariantReport> variants;
    std::vector<std::string> leftOut;  // main files of commands that compile neither C nor C++
    std::vector<std::string> warnings; // of the project as a whole
    std::vector<std::string> notes;    // of the cache
    std::size_t unchangedUnits = 0;    // that were taken from the cache
    bool isCancelled = false;
    // What the model was made from. Freeing it takes a while, which a process that ends soon can spare
    // itself.
    std::shared_ptr<void const> workspace;

    std::size_t countUnits(UnitState state) const;
};

struct UnitOptions {
    std::string file; // main file, as in the model or as a path
    std::vector<std::string>
        arguments;              // of the compiler, where no database has them; may begin with its name
    std::string output;         // unit file to write; a folder: under a name that depends on the unit
    std::string dependencyFile; // for a build engine, in Make's syntax; empty: none
};

// Where the command keeps units by default: $XDG_CACHE_HOME/zelkor/units or ~/.cache/zelkor/units, or nowhere
// (empty) when the user has no home.
std::string defaultCacheDirectory();

// Reads all units of the database and fills the model of `ast`, which must be empty, in one transaction.
// The project becomes the one top-level element.
// Units that cannot be read are reported and do not stop the others. When cancelled, or when anything is
// thrown, the model is as before. Throws ImportError for an unusable database or front end. Time is linear in
// the sources that the front end reads; memory holds the facts of all units, and the parsed form of at most
// `jobs` units.
ImportResult importProject(zelkor::ast::Ast& ast, ImportOptions const& options);

// Main files of the database as they are in the model, each once, in its order. Throws ImportError.
std::vector<std::string> listUnits(ImportOptions const& options);

// Reads one main file, by all commands that the database has for it or by the given arguments, into a unit
// file. Without a database and a root in `options` the project root is the current directory. The file is
// written, and whole, also when the unit cannot be read, so that a merge can tell. Throws ImportError when
// there is no such unit or the file cannot be written.
ImportResult importUnit(ImportOptions const& options, UnitOptions const& unit);

// Fills the model from unit files; of a folder, from all that are below it. With a database the units come in
// its order and the model is the one that `importProject` gives; units without a file are reported as failed.
// Without one they come in the order of their paths. The order of `unitFiles` has no influence.
// Throws ImportError for what is no unit file, is damaged, or was made by other tools, and for a unit that is
// there twice; the model is as before then. Time and memory as those of `importProject`, without parsing.
ImportResult mergeUnits(zelkor::ast::Ast& ast, std::vector<std::string> const& unitFiles,
                        ImportOptions const& options);

} // namespace zelkor::producer
