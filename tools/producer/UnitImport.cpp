// Importing in two steps: units to unit files, unit files to a model.
#include "Assembly.hpp"
#include "ParallelReader.hpp"
#include "Session.hpp"

#include <algorithm>
#include <filesystem>
#include <set>
#include <tuple>

namespace zelkor::producer {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view suffix = ".zku";

CompileCommand commandOf(std::string const& file, std::vector<std::string> arguments) {
    CompileCommand command;
    command.directory = fs::current_path().string();
    command.file = fs::absolute(file).lexically_normal().string();
    for (std::string const& argument : arguments)
        if (argument.starts_with('@'))
            throw ImportError(
                argument +
                ": response files are read for compile databases only; give the arguments that are in it");
    if (arguments.empty() || arguments.front().starts_with('-')) arguments.insert(arguments.begin(), "cc");
    bool const isNamed =
        std::any_of(arguments.begin() + 1, arguments.end(), [&](std::string const& argument) {
            return fs::absolute(argument).lexically_normal() == command.file;
        });
    if (!isNamed) arguments.push_back(command.file);
    command.arguments = std::move(arguments);
    return command;
}

Session openUnit(ImportOptions options, UnitOptions const& unit) {
    if (!options.database.empty()) return Session(options);
    if (options.root.empty()) options.root = fs::current_path().string();
    return Session(options, {commandOf(unit.file, unit.arguments)});
}

// A database may name one main file several times. A name of the model goes before a path.
std::vector<std::size_t> commandsOf(Session const& session, std::string const& file) {
    std::map<std::string, std::vector<std::size_t>> numbers;
    for (std::size_t i = 0; i < session.commands().size(); ++i)
        numbers[unitPath(session.commands()[i], session.paths())].push_back(i);
    auto found = numbers.find(file);
    if (found == numbers.end()) {
        CompileCommand named;
        named.file = fs::absolute(file).lexically_normal().string();
        found = numbers.find(unitPath(named, session.paths()));
    }
    return found == numbers.end() ? std::vector<std::size_t>() : found->second;
}

// In a folder each unit has a name of its own, which stays the same.
std::string outputPath(std::string const& output, std::string const& unit) {
    std::error_code error;
    if (!output.ends_with('/') && !fs::is_directory(output, error)) return output;
    std::string const name = fs::path(unit).filename().string() + '-' + toHex(digestOf(unit)).substr(0, 12);
    return (fs::path(output) / (name + std::string(suffix))).string();
}

std::string escapedForMake(std::string const& path) {
    std::string text;
    for (char const c : path) {
        if (c == ' ' || c == '#' || c == '\\') text += '\\';
        if (c == '$') text += '$';
        text += c;
    }
    return text;
}

void writeDependencies(std::string const& path, std::string const& target,
                       std::set<std::string> const& inputs) {
    std::string text = escapedForMake(target) + ':';
    for (std::string const& input : inputs)
        text += " \\\n  " + escapedForMake(input);
    replaceFile(path, text + '\n');
}

// One operand of a merge: the units of one main file.
struct UnitGroup {
    std::string path;
    std::vector<UnitHead> heads;

    auto key() const { return std::tie(heads.front().file, heads.front().command); }
};

void addGroup(std::string const& path, std::vector<UnitGroup>& groups) {
    UnitGroup group{path, UnitFile(path).heads()};
    for (UnitHead& head : group.heads)
        head.inputs.clear(); // of many units this would be much
    if (!group.heads.empty()) groups.push_back(std::move(group));
}

std::vector<UnitGroup> readGroups(std::vector<std::string> const& operands) {
    std::vector<UnitGroup> groups;
    for (std::string const& operand : operands) {
        std::error_code error;
        if (!fs::is_directory(operand, error)) {
            addGroup(operand, groups);
            continue;
        }
        std::size_t const before = groups.size();
        for (fs::recursive_directory_iterator entry(operand); entry != fs::recursive_directory_iterator();
             ++entry) {
            if (entry->path().extension() == suffix) addGroup(entry->path().string(), groups);
        }
        if (groups.size() == before)
            throw ImportError(operand + ": holds no unit file (*" + std::string(suffix) + ")");
    }
    std::sort(groups.begin(), groups.end(), [](auto const& a, auto const& b) { return a.key() < b.key(); });
    auto const twice = std::adjacent_find(groups.begin(), groups.end(),
                                          [](auto const& a, auto const& b) { return a.key() == b.key(); });
    if (twice != groups.end()) {
        throw ImportError(twice->path + ": holds the same unit as " + (twice + 1)->path + ": " +
                          twice->heads.front().file + "; leave one of them out");
    }
    return groups;
}

// A unit of the merge, in its order.
struct PlannedUnit {
    std::string file;
    UnitGroup const* group = nullptr; // null when there is none for this unit of the database
    std::size_t number = 0;           // in its unit file
};

std::vector<PlannedUnit> planAll(std::vector<UnitGroup> const& groups) {
    std::vector<PlannedUnit> plan;
    for (UnitGroup const& group : groups) {
        for (std::size_t i = 0; i < group.heads.size(); ++i)
            plan.push_back({group.heads[i].file, &group, i});
    }
    return plan;
}

// As the database orders them. What it does not name is left out with a warning.
std::vector<PlannedUnit> planByDatabase(std::vector<UnitGroup> const& groups, ImportOptions options,
                                        ImportResult& result) {
    options.cacheDirectory.clear(); // nothing is parsed
    Session const session(options);
    result.leftOut = session.leftOut();
    std::map<std::string, std::vector<PlannedUnit>> given;
    for (PlannedUnit& unit : planAll(groups))
        given[unit.file].push_back(std::move(unit));
    std::map<std::string, std::size_t> used;
    std::vector<PlannedUnit> plan;
    for (CompileCommand const& command : session.commands()) {
        std::string const file = unitPath(command, session.paths());
        std::vector<PlannedUnit> const& units = given[file];
        std::size_t const rank = used[file]++;
        plan.push_back(rank < units.size() ? units[rank] : PlannedUnit{file, nullptr, 0});
    }
    for (auto const& [file, units] : given) {
        for (std::size_t rank = used[file]; rank < units.size(); ++rank)
            result.warnings.push_back(units[rank].group->path +
                                      ": left out, since the compile database does not name " + file);
    }
    return plan;
}

UnitFacts readPlanned(PlannedUnit const& unit) {
    if (unit.group) return UnitFile(unit.group->path).facts(unit.number);
    UnitFacts facts;
    facts.file = unit.file;
    facts.failure = "no unit file was given";
    facts.advice = "make it with zelkor import --unit";
    return facts;
}

void warnOfUses(std::vector<UnitGroup> const& groups, ImportOptions const& options, ImportResult& result) {
    auto const lacks = [](UnitGroup const& group) { return !group.heads.front().hasUses; };
    auto const found = std::find_if(groups.begin(), groups.end(), lacks);
    if (options.insight != Insight::None && found != groups.end()) {
        result.warnings.push_back(found->path +
                                  ": was made with --no-insight, as may be others; what its functions call, "
                                  "read and write is not in the model");
    }
}

void warnOfRoots(std::vector<UnitGroup> const& groups, ImportResult& result) {
    std::set<std::string> roots;
    for (UnitGroup const& group : groups)
        roots.insert(group.heads.front().root);
    if (roots.size() < 2) return;
    result.warnings.push_back("the units are told from different project roots, such as " + *roots.begin() +
                              " and " + *roots.rbegin() +
                              "; unless these are copies of one tree, make them again with one --root");
}

} // namespace

std::vector<std::string> listUnits(ImportOptions const& options) {
    Session const session(options);
    std::vector<std::string> files;
    std::set<std::string> known;
    for (CompileCommand const& command : session.commands()) {
        std::string file = unitPath(command, session.paths());
        if (known.insert(file).second) files.push_back(std::move(file));
    }
    return files;
}

ImportResult importUnit(ImportOptions const& options, UnitOptions const& unit) {
    Session session = openUnit(options, unit);
    std::vector<std::size_t> const numbers = commandsOf(session, unit.file);
    if (numbers.empty()) {
        throw ImportError(options.database + ": names no unit " + unit.file +
                          "; zelkor import --list-units lists those that it names");
    }
    ImportResult result;
    result.root = session.paths().root();
    UnitFileWriter writer;
    std::set<std::string> inputs;
    for (std::size_t const number : numbers) {
        UnitFacts facts;
        session.read(number, {[&facts](UnitFacts&& read) { facts = std::move(read); }});
        reportUnit(facts, result);
        writer.add(session.head(number, facts), facts);
        // What is missing belongs to them: while it is, a build engine tries again.
        inputs.insert(session.commands()[number].file);
        inputs.insert(facts.missingHeaders.begin(), facts.missingHeaders.end());
        for (InputFile const& input : facts.inputs)
            inputs.insert(input.path);
    }
    session.finish(result);
    result.isCancelled = options.cancelled && options.cancelled->load();
    if (result.isCancelled) return result;
    std::string const output = outputPath(unit.output, result.units.front().file);
    std::string const bytes = writer.finish();
    // A build engine goes by the time of the file to tell whether there is anything to merge again.
    if (readWholeFile(output) != bytes) replaceFile(output, bytes);
    if (!unit.dependencyFile.empty()) writeDependencies(unit.dependencyFile, output, inputs);
    return result;
}

ImportResult mergeUnits(zelkor::ast::Ast& ast, std::vector<std::string> const& unitFiles,
                        ImportOptions const& options) {
    Assembly assembly(ast, options);
    std::vector<UnitGroup> const groups = readGroups(unitFiles);
    ImportResult before;
    warnOfRoots(groups, before);
    warnOfUses(groups, options, before);
    std::vector<PlannedUnit> const plan =
        options.database.empty() ? planAll(groups) : planByDatabase(groups, options, before);
    {
        ParallelReader reader(
            plan.size(),
            [&plan](std::size_t number, UnitSink const& sink) { sink.unit(readPlanned(plan[number])); },
            threadCount(options.jobs, plan.size()));
        assembly.addAll(reader, plan.size());
    }
    ImportResult result = assembly.finish();
    result.root = groups.empty() ? std::string() : groups.front().heads.front().root;
    result.warnings.insert(result.warnings.begin(), before.warnings.begin(), before.warnings.end());
    result.leftOut = before.leftOut;
    return result;
}

} // namespace zelkor::producer
