#include "Producer.hpp"
#include "Verbs.hpp"

#include <csignal>
#include <iostream>

namespace zelkor::command {

namespace {

std::vector<Verb> const& verbs() {
    static std::vector<Verb> const all = {
        {"import",
         "-p BUILD_DIR -o FILE",
         "Read the sources of a compile database into one model file.",
         {{"--project", "-p", "BUILD_DIR", "folder with compile_commands.json, or that file"},
          {"--output", "-o", "FILE", "model file to write; - is standard output"},
          {"--format", nullptr, "json|xml", "format of the file; by default its ending tells"},
          {"--jobs", "-j", "N", "units parsed at a time; 0 or absent: one per processor"},
          {"--root", nullptr, "DIR",
           "project root that paths are told from; by default the sources' common folder"},
          {"--extra-arg", nullptr, "ARG", "argument added to each compile command", true},
          {"--no-insight", nullptr, nullptr, "without what bodies call, read and write"},
          {"--transitive", nullptr, nullptr, "with everything that each function reaches along calls"},
          {"--error-limit", nullptr, "N", "errors of the front end that are shown; 0 shows all (default 20)"},
          {"--fail-on-error", nullptr, nullptr, "exit with 3 when a unit failed or is incomplete"},
          {"--quiet", "-q", nullptr, "no progress and no summary"}},
         {"zelkor import -p build -o model.json",
          "zelkor import -p build/compile_commands.json -j 4 -o model.xml"},
         &runImport},
        {"convert",
         "IN OUT",
         "Read a model and write it, in the format that the ending of OUT tells.",
         {{"--from", nullptr, "json|xml", "format of IN when its ending does not tell"},
          {"--format", nullptr, "json|xml", "format of OUT when its ending does not tell"}},
         {"zelkor convert model.json model.xml", "zelkor convert - model.json < model.xml"},
         &runConvert},
        {"stats",
         "FILE",
         "Count the elements of a model by class, with their bytes in memory, its units and files.",
         {{"--json", nullptr, nullptr, "as JSON"}, {"--files", nullptr, nullptr, "list the files"}},
         {"zelkor stats model.json", "zelkor stats --json model.xml"},
         &runStats},
        {"find",
         "FILE",
         "List symbols by class and name, each with its place. Everything in the model is looked at unless "
         "an "
         "option leaves it out.",
         {{"--class", "-k", "CLASS", "of this class or a subclass, such as Function or types.ClassType"},
          {"--name", nullptr, "NAME", "whose simple name is NAME"},
          {"--qualified", nullptr, "NAME", "whose name from the outermost scope inward is NAME"},
          {"--signature", nullptr, "TEXT", "whose declaration, as zelkor signature prints it, is TEXT"},
          {"--regex", "-E", "REGEX", "whose qualified name holds a match of the ECMAScript pattern"},
          {"--exact-class", nullptr, nullptr, "of the class itself, not of a subclass"},
          {"--no-namespaces", nullptr, nullptr, "not in namespaces and blocks inside a unit"},
          {"--no-std", nullptr, nullptr, "not in namespace std"},
          {"--no-system-headers", nullptr, nullptr, "not in system headers, and only what has a definition"},
          {"--no-templates", nullptr, nullptr, "not inside of templates"},
          {"--no-aggregates", nullptr, nullptr, "not inside of classes, structs and unions"},
          {"--limit", "-n", "N", "the first N only; 0 or absent: all"},
          {"--json", nullptr, nullptr, "as JSON"}},
         {"zelkor find model.json --class Function --no-system-headers --regex '::get[A-Z]'",
          "zelkor find model.json --qualified ns::Foo --json"},
         &runFind},
        {"show",
         "FILE NAME|UUID",
         "Tell everything about one element.",
         {{"--all", nullptr, nullptr, "also values that are the default, computed ones, and lists in full"},
          {"--json", nullptr, nullptr, "as JSON"}},
         {"zelkor show model.json ns::Foo",
          "zelkor show --json model.xml 3f2c1f3a-58a0-4f3e-9d0c-2f1f9a6c7e11"},
         &runShow},
        {"type",
         "FILE NAME|UUID",
         "Print the type of a symbol as a declaration of its name.",
         {{"--declare", nullptr, "NAME", "name to declare instead of the symbol's own; may be empty"},
          {"--skip-typedefs", nullptr, nullptr, "what typedefs stand for instead of their names"},
          {"--json", nullptr, nullptr, "as JSON"}},
         {"zelkor type model.json std::size_t", "zelkor type --skip-typedefs model.json ns::Foo::m"},
         &runType},
        {"signature",
         "FILE NAME|UUID",
         "Print the declaration of a symbol in one line.",
         {{"--json", nullptr, nullptr, "as JSON"}},
         {"zelkor signature model.json ns::f", "zelkor signature --json model.xml f"},
         &runSignature},
        {"schema",
         "",
         "Show the classes, properties, operations and enumerations of the model.",
         {{"--json", nullptr, nullptr, "as JSON"}},
         {"zelkor schema | less", "zelkor schema --json > schema.json"},
         &runSchema},
    };
    return all;
}

void printUsage(std::ostream& out) {
    out << "usage: zelkor VERB [OPTIONS]\n\nverbs:\n";
    for (Verb const& verb : verbs())
        out << "  " << verb.name << std::string(10 - std::string(verb.name).size(), ' ') << verb.summary
            << '\n';
    out << "\nzelkor VERB --help tells about one verb; zelkor --version about this program.\n"
           "exit codes: 0 done, 1 nothing found, 2 wrong usage or input, 3 units failed (with "
           "--fail-on-error), 130 "
           "interrupted\n";
}

void printHelp(Verb const& verb) {
    std::string out =
        std::string("usage: zelkor ") + verb.name + " " + verb.operands + " [OPTIONS]\n\n" + verb.summary;
    out += "\n\noptions:\n";
    for (Option const& option : verb.options) {
        std::string left = option.shortName != nullptr ? std::string(option.shortName) + ", " : "    ";
        left += option.name;
        if (option.value != nullptr) left += std::string(" ") + option.value;
        out += "  " + left + std::string(left.size() < 28 ? 28 - left.size() : 1, ' ') + option.help + '\n';
    }
    out += "  -h, --help                  this text\n\nexamples:\n";
    for (char const* example : verb.examples)
        out += std::string("  ") + example + '\n';
    print(out);
}

int run(std::vector<std::string> words) {
    if (words.empty()) {
        printUsage(std::cerr);
        return Usage;
    }
    std::string const name = words.front();
    words.erase(words.begin());
    if (name == "-h" || name == "--help" || name == "help") {
        printUsage(std::cout);
        return Ok;
    }
    if (name == "-V" || name == "--version") {
        print(std::string("zelkor ") + ZELKOR_VERSION + "\n");
        return Ok;
    }
    std::vector<std::string> names;
    for (Verb const& verb : verbs()) {
        names.emplace_back(verb.name);
        if (name != verb.name) continue;
        for (std::string const& word : words)
            if (word == "-h" || word == "--help") {
                printHelp(verb);
                return Ok;
            }
        return verb.run(Arguments::parse(verb.options, words));
    }
    std::string const near = nearest(name, names);
    throw UsageError("unknown verb '" + name + "'" +
                     (near.empty() ? "; zelkor --help lists the verbs" : "; did you mean '" + near + "'?"));
}

} // namespace

} // namespace zelkor::command

int main(int argc, char** argv) {
    // A reader that has seen enough closes the pipe; that is no error worth a word.
    std::signal(SIGPIPE, SIG_DFL);
    try {
        return zelkor::command::run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (zelkor::command::UsageError const& error) {
        std::cerr << "zelkor: error: " << error.what() << '\n';
    } catch (brant::zero::io::ParseError const& error) {
        std::cerr << error.what() << '\n';
    } catch (brant::zero::io::FileError const& error) {
        std::cerr << error.what() << '\n'; // begins with the file, as those above do
    } catch (std::exception const& error) {
        std::cerr << "zelkor: error: " << error.what() << '\n';
    }
    return zelkor::command::Usage;
}
