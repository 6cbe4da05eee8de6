#include "ImportCheck.hpp"

#include "ClangText.hpp"
#include "FrontEndWalk.hpp"
#include "InsightWalk.hpp"
#include "ModelIndex.hpp"

#include <zelkor/ast/io.hpp>

#include <clang-c/CXCompilationDatabase.h>

#include <set>
#include <sstream>

namespace zelkor::producer::test {

namespace za = zelkor::ast;

za::Project Imported::project() const {
    std::vector<brant::zero::ModelElement> const top = ast.getModel().getTopLevelElements();
    return top.size() == 1 ? za::Project::cast(top.front()) : za::Project();
}

std::string Imported::json() const {
    za::Ast copy = ast; // of the handle; writing resolves proxies, so it takes one that is not const
    return za::io::serializeToUTF8String(copy, za::io::IoFormat::json);
}

Imported import(std::filesystem::path const& database, unsigned jobs, std::string const& root) {
    Imported imported;
    ImportOptions options;
    options.database = database.string();
    options.jobs = jobs;
    options.root = root;
    imported.result = importProject(imported.ast, options);
    return imported;
}

namespace {

std::vector<WalkedUnit> readDatabase(std::filesystem::path const& database) {
    CXCompilationDatabase_Error error = CXCompilationDatabase_NoError;
    CXCompilationDatabase const handle =
        clang_CompilationDatabase_fromDirectory(database.string().c_str(), &error);
    CXCompileCommands const commands = clang_CompilationDatabase_getAllCompileCommands(handle);
    std::vector<WalkedUnit> units;
    for (unsigned i = 0; i < clang_CompileCommands_getSize(commands); ++i) {
        CXCompileCommand const command = clang_CompileCommands_getCommand(commands, i);
        WalkedUnit unit;
        unit.directory = take(clang_CompileCommand_getDirectory(command));
        for (unsigned j = 0; j < clang_CompileCommand_getNumArgs(command); ++j) {
            unit.arguments.push_back(take(clang_CompileCommand_getArg(command, j)));
        }
        units.push_back(std::move(unit));
    }
    clang_CompileCommands_dispose(commands);
    clang_CompilationDatabase_dispose(handle);
    return units;
}

void checkTexts(Imported const& imported, std::filesystem::path const& database, std::string const& root,
                std::vector<std::string>& faults) {
    std::string const json = imported.json();
    if (import(database, 1, root).json() != json) faults.push_back("a second import gives other bytes");
    if (import(database, 3, root).json() != json) faults.push_back("three threads give other bytes");
    za::Ast fromJson = za::io::deserializeFromUTF8String(json, za::io::IoFormat::json);
    std::string const xml = za::io::serializeToUTF8String(fromJson, za::io::IoFormat::xml);
    za::Ast fromXml = za::io::deserializeFromUTF8String(xml, za::io::IoFormat::xml);
    if (za::io::serializeToUTF8String(fromXml, za::io::IoFormat::json) != json) {
        faults.push_back("JSON to XML to JSON gives other bytes");
    }
    if (json.find(imported.result.root) != std::string::npos)
        faults.push_back("the text names the project root");
}

} // namespace

CheckReport checkImport(std::filesystem::path const& database, std::string const& root,
                        std::string const& resourceDirectory) {
    CheckReport report;
    Imported const imported = import(database, 1, root);
    if (auto const violation = imported.ast.getModel().verify()) {
        report.faults.push_back("the model breaks the rule " + violation->rule);
    }
    if (!imported.project()) {
        report.faults.push_back("the project is not the one top-level element");
        return report;
    }
    checkTexts(imported, database, root, report.faults);
    std::set<std::string> dropped;
    for (VariantReport const& variant : imported.result.variants)
        dropped.insert(variant.dropped + ' ' + variant.name);
    ModelIndex const index(imported.project());
    FrontEndWalk walk(index, imported.result.root, resourceDirectory, dropped);
    for (WalkedUnit const& unit : readDatabase(database))
        walk.walk(unit);
    walk.checkLeftOver();
    InsightWalk uses(index, imported.project(), imported.result.root, resourceDirectory, dropped);
    for (WalkedUnit const& unit : readDatabase(database))
        uses.walk(unit);
    uses.compare();
    report.faults.insert(report.faults.end(), uses.mismatches().begin(), uses.mismatches().end());
    report.faults.insert(report.faults.end(), walk.mismatches().begin(), walk.mismatches().end());
    std::ostringstream text;
    for (auto const& [kind, tally] : walk.tallies()) {
        text << kind << ": " << tally.declarations << " declarations, " << tally.elements << " elements\n";
        if (tally.declarations != tally.elements)
            report.faults.push_back("the numbers of " + kind + " differ");
    }
    for (auto const& [use, count] : uses.agreed())
        text << use << count << '\n';
    for (auto const& [name, count] : imported.result.created)
        text << name << ' ' << count << '\n';
    text << "variants " << imported.result.variants.size() << '\n';
    report.text = text.str();
    return report;
}

} // namespace zelkor::producer::test
