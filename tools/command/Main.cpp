#include "Producer.hpp"
#include "Terminal.hpp"
#include "Verbs.hpp"

#include <csignal>
#include <iostream>

namespace zelkor::command {

namespace {

Option const json{"--json", nullptr, nullptr, "as JSON"};

/// The options of verbs that list elements.
std::vector<Option> withReply(std::vector<Option> options) {
    options.push_back({"--limit", "-n", "N", "the first N only; 0 or absent: all"});
    options.push_back(json);
    options.push_back({"--color", nullptr, "auto|always|never", "colours (default auto: on a terminal)"});
    return options;
}

Option const exact{"--exact", nullptr, nullptr,
                   "only calls that name the function: no overrides, templates and pointers"};

/// The options of verbs that follow calls.
std::vector<Option> withCalls(char const* depth) {
    return withReply(
        {{"--depth", nullptr, "N", depth}, {"--transitive", nullptr, nullptr, "all the way"}, exact});
}

int run(std::vector<std::string> words) {
    if (words.empty()) {
        std::cerr << usageText();
        return Usage;
    }
    std::string const name = words.front();
    words.erase(words.begin());
    if (name == "-h" || name == "--help") {
        print(usageText());
        return Ok;
    }
    if (name == "-V" || name == "--version") {
        print(std::string("zelkor ") + ZELKOR_VERSION + "\n");
        return Ok;
    }
    Verb const& verb = verbNamed(name);
    for (std::string const& word : words) {
        if (word == "--") break;
        if (word != "-h" && word != "--help") continue;
        print(helpText(verb));
        return Ok;
    }
    Arguments const arguments = Arguments::parse(verb.options, words);
    decideColours(arguments.value("--color"));
    return verb.run(arguments);
}

} // namespace

std::vector<Verb> const& verbs() {
    static std::vector<Verb> const all = {
        {"import",
         "-p BUILD_DIR -o FILE",
         "Read the sources of a compile database into one model file, or one of its units into a unit file.",
         {{"--project", "-p", "BUILD_DIR", "folder with compile_commands.json, or that file"},
          {"--output", "-o", "FILE", "model file to write; - is standard output"},
          {"--format", nullptr, "json|xml", "format of the file; by default its ending tells"},
          {"--jobs", "-j", "N", "units parsed at a time; 0 or absent: one per processor"},
          {"--root", nullptr, "DIR",
           "project root that paths are told from; by default the sources' common folder"},
          {"--extra-arg", nullptr, "ARG", "argument added to each compile command", true},
          {"--no-insight", nullptr, nullptr, "without what bodies call, read and write"},
          {"--transitive", nullptr, nullptr, "with everything that each function reaches along calls"},
          {"--cache", nullptr, "DIR",
           "folder for units that need not be parsed again; default ~/.cache/zelkor/units"},
          {"--no-cache", nullptr, nullptr, "parse every unit and keep none"},
          {"--unit", nullptr, "SOURCE",
           "read this unit only; -o is a unit file (.zku) or a folder for it; without -p, compiler "
           "arguments may follow after --"},
          {"--depfile", nullptr, "FILE", "with --unit: also write what was read, as Make and Ninja want it"},
          {"--list-units", nullptr, nullptr, "print the units of the database, and read none"},
          {"--error-limit", nullptr, "N", "errors of the front end that are shown; 0 shows all (default 20)"},
          {"--fail-on-error", nullptr, nullptr, "exit with 3 when a unit failed or is incomplete"},
          {"--progress", nullptr, "auto|always|never", "auto: on a terminal, and in tenths where CI is set"},
          {"--verbose", "-v", nullptr, "also what differs between units, and trouble with the cache"},
          {"--quiet", "-q", nullptr, "no progress and no summary"}},
         {"zelkor import -p build -o model.json",
          "zelkor import -p build/compile_commands.json -j 4 -o model.xml",
          "zelkor import -p build --unit src/a.c -o units/"},
         &runImport},
        {"merge",
         "UNIT... -o FILE",
         "Make one model of unit files, or of all those in a folder.",
         {{"--output", "-o", "FILE", "model file to write; - is standard output"},
          {"--format", nullptr, "json|xml", "format of the file; by default its ending tells"},
          {"--project", "-p", "BUILD_DIR",
           "compile database that orders the units; by default their paths do"},
          {"--root", nullptr, "DIR", "project root of the database, as it was given to import"},
          {"--jobs", "-j", "N", "unit files read at a time; 0 or absent: one per processor"},
          {"--no-insight", nullptr, nullptr, "without what bodies call, read and write"},
          {"--transitive", nullptr, nullptr, "with everything that each function reaches along calls"},
          {"--error-limit", nullptr, "N", "errors of the front end that are shown; 0 shows all (default 20)"},
          {"--fail-on-error", nullptr, nullptr, "exit with 3 when a unit failed or is incomplete"},
          {"--progress", nullptr, "auto|always|never", "auto: on a terminal, and in tenths where CI is set"},
          {"--verbose", "-v", nullptr, "also what differs between units"},
          {"--quiet", "-q", nullptr, "no progress and no summary"}},
         {"zelkor merge units/ -p build -o model.json", "zelkor merge a.zku b.zku -o model.xml"},
         &runMerge},
        {"convert",
         "IN OUT",
         "Read a model and write it, in the format that the ending of OUT tells.",
         {{"--from", nullptr, "json|xml", "format of IN; by default its content tells"},
          {"--format", nullptr, "json|xml", "format of OUT when its ending does not tell"}},
         {"zelkor convert model.json model.xml", "zelkor convert - model.json < model.xml"},
         &runConvert},
        {"stats",
         "FILE",
         "Count the elements of a model by class, with their bytes in memory, its units and files.",
         {json, {"--files", nullptr, nullptr, "list the files"}},
         {"zelkor stats model.json", "zelkor stats --json model.xml"},
         &runStats},
        {"validate",
         "FILE",
         "Look for faults in a model file: its syntax, its rules, what it refers to and does not hold, its "
         "records.",
         withReply({}),
         {"zelkor validate model.json", "zelkor validate --json - < model.xml"},
         &runValidate},
        {"list",
         "FILE",
         "List what has a name in columns: place, class, name. Parameters and what stands inside of "
         "functions are left out.",
         withReply(
             {{"--class", "-k", "CLASS",
               "of this class or a subclass; also Namespace and Macro, predefined ones included"},
              {"--file", nullptr, "PATH", "in this file or folder; the end of a path will do"},
              {"--in", nullptr, "NAME", "inside of this namespace, class or function"},
              {"--locals", nullptr, nullptr, "also parameters and what stands inside of functions"},
              {"--no-system-headers", nullptr, nullptr, "not in system headers, and only what has a place"}}),
         {"zelkor list model.json --no-system-headers -k Function",
          "zelkor list model.json --in ns::Foo --json"},
         &runList},
        {"find",
         "FILE",
         "List symbols by class and name, each with its place. Everything in the model is looked at unless "
         "an option leaves it out.",
         withReply({
             {"--class", "-k", "CLASS", "of this class or a subclass, such as Function or types.ClassType"},
             {"--name", nullptr, "NAME", "whose simple name is NAME"},
             {"--qualified", nullptr, "NAME", "whose name from the outermost scope inward is NAME"},
             {"--signature", nullptr, "TEXT", "whose declaration, as zelkor signature prints it, is TEXT"},
             {"--regex", "-E", "REGEX", "whose qualified name holds a match of the ECMAScript pattern"},
             {"--exact-class", nullptr, nullptr, "of the class itself, not of a subclass"},
             {"--no-namespaces", nullptr, nullptr, "not in namespaces and blocks inside a unit"},
             {"--no-std", nullptr, nullptr, "not in namespace std"},
             {"--no-system-headers", nullptr, nullptr,
              "not in system headers, and only what has a definition"},
             {"--no-templates", nullptr, nullptr, "not inside of templates"},
             {"--no-aggregates", nullptr, nullptr, "not inside of classes, structs and unions"},
         }),
         {"zelkor find model.json --class Function --no-system-headers --regex '::get[A-Z]'",
          "zelkor find model.json --qualified ns::Foo --json"},
         &runFind},
        {"tree",
         "FILE [NAME]",
         "Show what contains what, from the project or from one element down.",
         withReply(
             {{"--depth", nullptr, "N", "levels below the first (default 2)"},
              {"--transitive", nullptr, nullptr, "all levels"},
              {"--all", nullptr, nullptr,
               "also predefined macros and elements without a name, such as positions and pointer types"}}),
         {"zelkor tree model.json", "zelkor tree model.json ns::Foo --transitive"},
         &runTree},
        {"show",
         "FILE NAME|UUID",
         "Tell everything about one element.",
         withReply({{"--all", nullptr, nullptr,
                     "also values that are the default, computed ones, and lists in full"}}),
         {"zelkor show model.json ns::Foo",
          "zelkor show --json model.xml 3f2c1f3a-58a0-4f3e-9d0c-2f1f9a6c7e11"},
         &runShow},
        {"type",
         "FILE NAME|UUID",
         "Print the type of a symbol as a declaration of its name.",
         withReply(
             {{"--declare", nullptr, "NAME", "name to declare instead of the symbol's own; may be empty"},
              {"--skip-typedefs", nullptr, nullptr, "what typedefs stand for instead of their names"}}),
         {"zelkor type model.json std::size_t", "zelkor type --skip-typedefs model.json ns::Foo::m"},
         &runType},
        {"signature",
         "FILE NAME|UUID",
         "Print the declaration of a symbol in one line.",
         withReply({}),
         {"zelkor signature model.json ns::f", "zelkor signature --json model.xml f"},
         &runSignature},
        {"callers",
         "FILE NAME|UUID",
         "List the functions that call one, and those that may: through a base's method, a template, a "
         "pointer.",
         withCalls("calls away (default 1)"),
         {"zelkor callers model.json ns::Foo::bar", "zelkor callers model.json 'f(int)' --transitive --json"},
         &runCallers},
        {"callees",
         "FILE NAME|UUID",
         "List the functions that one calls, and those that may run: overrides, patterns of templates, "
         "behind pointers.",
         withCalls("calls away (default 1)"),
         {"zelkor callees model.json main", "zelkor callees model.json main --depth 3"},
         &runCallees},
        {"path",
         "FILE FROM TO",
         "Show a shortest way of calls from one function to another, or how far the calls lead.",
         withReply({exact}),
         {"zelkor path model.json main ns::Foo::bar", "zelkor path model.json main abort --json"},
         &runPath},
        {"reads",
         "FILE NAME|UUID",
         "List the functions that read a variable or field; of a function the variables that it reads.",
         withCalls("calls between the function and the access (default 1)"),
         {"zelkor reads model.json ns::Foo::size_", "zelkor reads model.json main --transitive"},
         &runReads},
        {"writes",
         "FILE NAME|UUID",
         "List the functions that write a variable or field; of a function the variables that it writes.",
         withCalls("calls between the function and the access (default 1)"),
         {"zelkor writes model.json counter", "zelkor writes model.json ns::Foo::clear --json"},
         &runWrites},
        {"refs",
         "FILE NAME|UUID",
         "List every element that refers to one, and the property through which it does. Pointers and the "
         "like count for what they point at.",
         withReply({}),
         {"zelkor refs model.json ns::Foo", "zelkor refs model.json MACRO --limit 20"},
         &runRefs},
        {"includes",
         "FILE [SOURCE]",
         "Show what a source file includes and what includes it; without one, how often each file is "
         "included.",
         withReply({{"--depth", nullptr, "N", "levels of the trees (default 1)"},
                    {"--transitive", nullptr, nullptr, "all levels"},
                    {"--direction", nullptr, "out|in|both",
                     "what it includes, what includes it, or both (default)"}}),
         {"zelkor includes model.json src/a.cpp --transitive",
          "zelkor includes model.json a.hpp --direction in"},
         &runIncludes},
        {"export",
         "FILE",
         "Print the calls, the includes or the inheritance as a graph for other tools.",
         {{"--what", nullptr, "calls|includes|inherits", "which graph (default calls)"},
          {"--format", nullptr, "dot|graphml|csv", "in which form (default dot)"},
          {"--no-system-headers", nullptr, nullptr, "without what lies in system headers or nowhere"}},
         {"zelkor export model.json --no-system-headers | dot -Tsvg > calls.svg",
          "zelkor export model.json --what includes --format csv > includes.csv"},
         &runExport},
        {"schema",
         "",
         "Show the classes, properties, operations and enumerations of the model.",
         {json},
         {"zelkor schema | less", "zelkor schema --json > schema.json"},
         &runSchema},
        {"help",
         "[VERB]",
         "Tell about one verb, or list them all.",
         {{"--man", nullptr, nullptr, "the manual page instead, as troff"},
          {"--bash-completion", nullptr, nullptr, "a script that completes verbs and options in bash"}},
         {"zelkor help callers", "source <(zelkor help --bash-completion)"},
         &runHelp},
    };
    return all;
}

} // namespace zelkor::command

int main(int argc, char** argv) {
    // A reader that has seen enough closes the pipe; that is no error worth a word.
    std::signal(SIGPIPE, SIG_DFL);
    try {
        return zelkor::command::run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (zelkor::command::UsageError const& error) {
        std::cerr << "zelkor: error: " << error.what() << '\n';
    } catch (brant::zero::io::ParseError const& error) {
        std::cerr << error.what() << "\nzelkor: the model cannot be read; make it again with zelkor import\n";
    } catch (brant::zero::io::FileError const& error) {
        std::cerr << error.what() << '\n'; // begins with the file, as those above do
    } catch (std::exception const& error) {
        std::cerr << "zelkor: error: " << error.what() << '\n';
    }
    return zelkor::command::Usage;
}
