// What is made from the table of verbs: the list, the help pages, the manual page and the completion of bash.

#include "Verbs.hpp"

#include <sstream>

namespace zelkor::command {

namespace {

constexpr char const* exitCodes =
    "0 done; 1 nothing found, or faults found by validate; 2 wrong usage or input; 3 import read no "
    "unit, or not all with --fail-on-error; 130 interrupted";

std::string withOperands(Verb const& verb) {
    std::string const operands = verb.operands;
    return std::string("zelkor ") + verb.name + (operands.empty() ? "" : " " + operands);
}

std::string optionText(Option const& option) {
    std::string text = option.shortName != nullptr ? std::string(option.shortName) + ", " : "";
    text += option.name;
    return option.value == nullptr ? text : text + ' ' + option.value;
}

/// The text in lines of at most 80 columns, all but the first one indented, with a line break at the end.
std::string wrapped(std::string const& text, std::size_t indent) {
    constexpr std::size_t width = 80;
    std::string out;
    std::size_t column = indent;
    std::istringstream words(text);
    for (std::string word; words >> word; column += word.size()) {
        if (column > indent && column + 1 + word.size() > width) {
            out += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            out += ' ';
            ++column;
        }
        out += word;
    }
    return out + '\n';
}

constexpr char const* operandsText =
    "FILE is a model, JSON or XML; - is standard input. A NAME is a qualified or simple name, a name with "
    "parameter types such as 'f(int)', or an identity; all that it fits is answered.";

std::string firstSentence(std::string const& text) {
    return text.substr(0, text.find(". ")) + (text.find(". ") == std::string::npos ? "" : ".");
}

/// Text for troff: no line begins with a control character, and a minus stays one.
std::string troff(std::string const& text) {
    std::string out;
    for (char const c : text) {
        if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n')) out += "\\&";
        if (c == '-' || c == '\\') out += '\\';
        out += c == '\\' ? 'e' : c;
    }
    return out;
}

std::string manPage() {
    std::string out = ".TH ZELKOR 1\n.SH NAME\nzelkor \\- models of C and C++ sources, made and asked\n"
                      ".SH SYNOPSIS\n.B zelkor\nVERB [OPTIONS]\n.SH DESCRIPTION\n"
                      "The verb import makes a model of a code base from its compile database; the others "
                      "read such a file and answer one question each.\n" +
                      troff(operandsText) + "\n.SH VERBS\n";
    for (Verb const& verb : verbs()) {
        out += ".SS " + troff(withOperands(verb)) + '\n' + troff(verb.summary) + '\n';
        for (Option const& option : verb.options)
            out += ".TP\n.B " + troff(optionText(option)) + '\n' + troff(option.help) + '\n';
        out += ".PP\nExamples:\n.nf\n";
        for (char const* example : verb.examples)
            out += troff(std::string("  ") + example) + '\n';
        out += ".fi\n";
    }
    return out + ".SH EXIT STATUS\n" + troff(exitCodes) + ".\n.SH ENVIRONMENT\n" +
           troff(
               "NO_COLOR and CLICOLOR_FORCE turn colours off and on. Units that need not be parsed again are "
               "kept below XDG_CACHE_HOME. CI makes import tell its progress where there is no terminal.") +
           '\n';
}

/// Verbs first, then the options of the verb, else files.
std::string bashCompletion() {
    std::string names;
    std::string cases;
    for (Verb const& verb : verbs())
        names.append(names.empty() ? "" : " ").append(verb.name);
    for (Verb const& verb : verbs()) {
        std::string words = "--help";
        for (Option const& option : verb.options)
            words += std::string(" ") + option.name;
        cases += std::string("        ") + verb.name + ") words='" + words + "' ;;\n";
    }
    return "_zelkor() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} words=\n"
           "    COMPREPLY=()\n"
           "    if ((COMP_CWORD == 1)) || [[ ${COMP_WORDS[1]} == help && $word != -* ]]; then\n"
           "        COMPREPLY=($(compgen -W '" +
           names +
           "' -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case ${COMP_WORDS[1]} in\n" +
           cases +
           "    esac\n"
           "    if [[ $word == -* ]]; then COMPREPLY=($(compgen -W \"$words\" -- \"$word\")); fi\n"
           "}\n"
           "complete -o default -F _zelkor zelkor\n";
}

} // namespace

Verb const& verbNamed(std::string const& name) {
    std::vector<std::string> names;
    for (Verb const& verb : verbs()) {
        if (name == verb.name) return verb;
        names.emplace_back(verb.name);
    }
    std::string const near = nearest(name, names);
    throw UsageError("unknown verb '" + name + "'" +
                     (near.empty() ? "; zelkor --help lists the verbs" : "; did you mean '" + near + "'?"));
}

std::string usageText() {
    std::string out = "usage: zelkor VERB [OPTIONS]\n\nverbs:\n";
    for (Verb const& verb : verbs())
        out += std::string("  ") + verb.name + std::string(11 - std::string(verb.name).size(), ' ') +
               wrapped(firstSentence(verb.summary), 13);
    return out + "\nzelkor VERB --help tells about one verb; zelkor --version about this program.\n" +
           wrapped(std::string("exit codes: ") + exitCodes, 0);
}

std::string helpText(Verb const& verb) {
    std::string out =
        "usage: " + withOperands(verb) + " [OPTIONS]\n\n" + wrapped(verb.summary, 0) + "\noptions:\n";
    auto const line = [&out](std::string const& left, std::string const& help) {
        constexpr std::size_t column = 30;
        out += "  " + left;
        out += left.size() + 3 < column ? std::string(column - 2 - left.size(), ' ')
                                        : '\n' + std::string(column, ' ');
        out += wrapped(help, column);
    };
    for (Option const& option : verb.options)
        line((option.shortName == nullptr ? "    " : "") + optionText(option), option.help);
    line("-h, --help", "this text");
    if (std::string(verb.operands).starts_with("FILE")) out += '\n' + wrapped(operandsText, 0);
    out += "\nexamples:\n";
    for (char const* example : verb.examples)
        out += std::string("  ") + example + '\n';
    return out;
}

int runHelp(Arguments const& arguments) {
    arguments.requireOperands({"[VERB]"});
    if (arguments.has("--man"))
        print(manPage());
    else if (arguments.has("--bash-completion"))
        print(bashCompletion());
    else
        print(arguments.operands().empty() ? usageText() : helpText(verbNamed(arguments.operands()[0])));
    return Ok;
}

} // namespace zelkor::command
