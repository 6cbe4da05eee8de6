// `zelkor validate`: what is wrong in a model file.

#include "Records.hpp"

#include "Answers.hpp"
#include "Terminal.hpp"

#include <brant/zero/Visit.hpp>

#include <iostream>
#include <unordered_map>
#include <unordered_set>

namespace zelkor::command {

namespace za = zelkor::ast;
namespace insight = zelkor::ast::codeinsight;
namespace schema = brant::zero::schema;
using brant::zero::ModelElement;
using brant::zero::ModelElementImpl;

namespace {

struct Problem {
    std::string rule;     ///< such as "placeholder"
    ModelElement element; ///< null for a fault of the text
    std::string property; ///< empty when it is about the element as a whole
    std::string detail;
    std::string hint; ///< what to do
    Place place;      ///< of the element in the sources, or of the fault in the file
};

class Validator {
  public:
    explicit Validator(za::Ast const& ast) : ast_(ast) {}

    std::vector<Problem> run() {
        if (auto const violation = ast_.getModel().verify())
            add(violation->rule, violation->element, violation->property, violation->detail,
                "the file was not written by this library, or was changed since; import the sources again");
        forEachElement(ast_, [this](ModelElement const& element) {
            checkPlaceholders(element);
            checkLists(element);
            checkRecord(element);
        });
        checkUses();
        return std::move(problems_);
    }

  private:
    void add(std::string rule, ModelElement const& element, std::string property, std::string detail,
             std::string hint) {
        problems_.push_back({std::move(rule), element, std::move(property), std::move(detail),
                             std::move(hint), placeOf(element)});
    }

    void checkPlaceholders(ModelElement const& element) {
        auto const check = [&](schema::PropertyRow const& row, ModelElementImpl const* target) {
            if (target != nullptr && target->isProxy())
                add("placeholder", element, row.name,
                    "refers to " + std::string(target->classTable().shortName) + ' ' +
                        brant::zero::toUtf8(target->getProxyId().element) + ", which is not in the model",
                    "merge the model that holds it, or import again with all units");
        };
        brant::zero::visitFeatures(*element.get(), [&](schema::PropertyRow const& row, auto const& value) {
            using T = std::remove_cvref_t<decltype(value)>;
            if constexpr (std::is_same_v<T, ModelElementImpl*>) {
                check(row, value);
            } else if constexpr (std::is_same_v<T, brant::zero::ReferenceSequence>) {
                for (std::size_t i = 0; i < value.size(); ++i)
                    check(row, value.slot(i));
            } else if constexpr (std::is_base_of_v<brant::zero::ReferenceCollection, T>) {
                for (ModelElement const& member : value.getAllValuesAndProxies())
                    check(row, member.get());
            }
        });
    }

    void requireEqual(ModelElement const& element, char const* property, std::size_t count,
                      char const* beside, std::size_t expected) {
        if (count != expected)
            add("lists", element, property,
                "has " + std::to_string(count) + " entries beside " + std::to_string(expected) + " of " +
                    beside,
                "give both lists one entry each");
    }

    /// Lists that run side by side.
    void checkLists(ModelElement const& element) {
        if (auto const file = za::source::SourceFile::cast(element))
            requireEqual(file, "IncludedFileWrittenNames", file.getIncludedFileWrittenNames().size(),
                         "IncludedFiles", file.getIncludedFiles().size());
        if (auto const type = za::types::EnumType::cast(element))
            requireEqual(type, "Values", type.getValues().size(), "Strings", type.getStrings().size());
    }

    /// A record is about something, and nothing has two records in one summary.
    void checkRecord(ModelElement const& element) {
        auto const check = [&](char const* property, ModelElement const& subject) {
            if (!subject)
                add("record", element, property, "the record is about nothing",
                    "remove the record, or import again");
            else if (!recorded_
                          .insert(subject->identifier() +
                                  (element.container() ? element.container()->identifier() : ""))
                          .second)
                add("record", element, property, "there is a second record of " + title(subject),
                    "keep one of them, or import again");
        };
        if (auto const record = insight::FunctionInfo::cast(element)) {
            check("Function", record.getFunction());
            functions_.push_back(record);
        } else if (auto const record = insight::VariableInfo::cast(element)) {
            check("Variable", record.getVariable());
            variables_.push_back(record);
        } else if (auto const record = insight::TypeInfo::cast(element)) {
            check("Type", record.getType());
        } else if (auto const record = insight::MacroInfo::cast(element)) {
            check("Macro", record.getMacro());
        }
    }

    /// A flag that says "no" must not be contradicted by another record.
    void checkUses() {
        std::unordered_set<ModelElementImpl const*> called, read, written;
        auto const note = [](auto& set, auto const& elements) {
            for (auto const& element : elements)
                set.insert(element.get());
        };
        for (insight::FunctionInfo const& record : functions_) {
            note(called, record.getCalledFuns());
            note(read, record.getReadVars());
            note(written, record.getWrittenVars());
        }
        auto const check = [&](ModelElement const& record, char const* property, bool flag, bool used) {
            if (used && !flag)
                add("flag", record, property, "is false, and another record says otherwise",
                    "set it, or import again");
        };
        for (insight::FunctionInfo const& record : functions_)
            check(record, "IsCalled", record.getIsCalled(), called.contains(record.getFunction().get()));
        for (insight::VariableInfo const& record : variables_) {
            check(record, "IsRead", record.getIsRead(), read.contains(record.getVariable().get()));
            check(record, "IsWritten", record.getIsWritten(), written.contains(record.getVariable().get()));
        }
    }

    za::Ast const& ast_;
    std::vector<Problem> problems_;
    std::unordered_set<std::string> recorded_;
    std::vector<insight::FunctionInfo> functions_;
    std::vector<insight::VariableInfo> variables_;
};

/// Where a problem lies in words: the place, then class, name and property of the element.
std::string textOf(Problem const& problem) {
    std::string line = painted(Paint::Place, problem.place.text()) + (problem.place.known() ? ": " : "");
    line += painted(Paint::Note, "error") + ": ";
    if (problem.element) {
        line += className(problem.element) + ' ' + problem.element->identifier();
        if (std::string const name = qualifiedName(problem.element); !name.empty()) line += " (" + name + ')';
        if (!problem.property.empty()) line += ", " + problem.property;
        line += ": ";
    }
    return line + problem.detail + (problem.hint.empty() ? "" : "; " + problem.hint) + '\n';
}

JsonMembers recordOf(Problem const& problem) {
    JsonMembers members;
    if (problem.element)
        members = command::recordOf(problem.element);
    else
        members.text("file", problem.place.path)
            .number("line", problem.place.line)
            .number("column", problem.place.column);
    members.text("problem", problem.rule);
    if (!problem.property.empty()) members.text("property", problem.property);
    return members.text("detail", problem.detail).text("hint", problem.hint);
}

int report(Arguments const& arguments, std::vector<Problem> const& problems, std::size_t elements) {
    std::vector<std::string> texts;
    std::vector<std::string> records;
    for (Problem const& problem : problems) {
        texts.push_back(textOf(problem));
        records.push_back(recordLine(recordOf(problem)));
    }
    printLimited(arguments, "validate", texts, records, JsonMembers().number("elements", elements));
    if (problems.empty())
        std::cerr << "zelkor: valid, " << elements << " elements\n";
    else
        std::cerr << "zelkor: " << problems.size() << (problems.size() == 1 ? " problem\n" : " problems\n");
    return problems.empty() ? Ok : Difference;
}

} // namespace

int runValidate(Arguments const& arguments) {
    arguments.requireOperands({"FILE"});
    std::string const& path = arguments.operands()[0];
    try {
        za::Ast const ast = readModel(path);
        return report(arguments, Validator(ast).run(), ast.getModel().size());
    } catch (brant::zero::io::ParseError const& error) {
        Place const place{error.getFile(), static_cast<unsigned>(error.getLine()),
                          static_cast<unsigned>(error.getColumn())};
        std::string const expected = error.getExpected().empty() ? "" : ", expected " + error.getExpected();
        return report(
            arguments,
            {{"syntax", {}, {}, error.getMessage() + expected, "mend the file or write it anew", place}}, 0);
    }
}

} // namespace zelkor::command
