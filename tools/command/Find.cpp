// `zelkor find`: symbols by class and name, one line each.

#include "Answers.hpp"
#include "Classes.hpp"

#include <brant/zero/meta/Names.hpp>
#include <brant/zero/query/Pattern.hpp>

#include <iostream>
#include <optional>

namespace zelkor::command {

namespace za = zelkor::ast;
namespace meta = brant::zero::meta;
using brant::zero::ModelElement;
using brant::zero::query::Pattern;

namespace {

/// What is looked for.
class Wanted {
  public:
    explicit Wanted(Arguments const& arguments)
        : wanted_(classNamed(arguments.value("--class", "Symbol"), {za::Symbol::metaClass()})),
          options_(optionsOf(arguments)) {
        std::vector<std::pair<char const*, za::NameFinderKind>> const ways = {
            {"--name", za::NameFinderKind::Name},
            {"--qualified", za::NameFinderKind::FullyQualifiedName},
            {"--signature", za::NameFinderKind::Signature}};
        std::string given;
        auto const take = [&](char const* option) {
            if (!arguments.has(option)) return false;
            if (!given.empty()) throw UsageError(given + " and " + option + " exclude each other");
            given = option;
            if (arguments.value(option).empty()) throw UsageError(given + " needs a text that is not empty");
            return true;
        };
        for (auto const& [option, strategy] : ways)
            if (take(option)) {
                name_ = arguments.value(option);
                options_.setNameResolutionStrategy(strategy);
            }
        if (take("--regex")) pattern_ = searched(arguments.value("--regex"));
    }

    [[nodiscard]] std::vector<za::Symbol> in(za::Scope const& scope) const {
        std::vector<za::Symbol> found = scope.findSymbolByMetaClassAndName(wanted_, name_, options_);
        if (pattern_) std::erase_if(found, [this](za::Symbol const& symbol) { return !fitsPattern(symbol); });
        addParts(scope, found);
        return found;
    }
    /// \returns the text to suggest names for, or an empty one.
    [[nodiscard]] std::string const& name() const noexcept { return name_; }

  private:
    static za::FinderOptions optionsOf(Arguments const& arguments) {
        return za::FinderOptions()
            .setIncludeSubScopes(!arguments.has("--no-namespaces"))
            .setIncludeDerivedClasses(!arguments.has("--exact-class"))
            .setIncludeStdNs(!arguments.has("--no-std"))
            .setIncludeSystemHeaders(!arguments.has("--no-system-headers"))
            .setIncludeTemplateScope(!arguments.has("--no-templates"))
            .setIncludeAggregateScope(!arguments.has("--no-aggregates"));
    }

    /// A pattern that is found anywhere in a text.
    static Pattern searched(std::string const& text) {
        try {
            static_cast<void>(Pattern(text));
            return Pattern("[\\s\\S]*(?:" + text + ")[\\s\\S]*");
        } catch (std::invalid_argument const& error) {
            throw UsageError(std::string("--regex: ") + error.what());
        }
    }

    [[nodiscard]] bool fitsPattern(za::Symbol const& symbol) const {
        return pattern_->matches(std::string_view(symbol.getFullyQualifiedName()));
    }

    /// Data members and methods belong to their class, not to a scope; a user looks for them all the same.
    /// Where the class is looked at, they are.
    void addParts(za::Scope const& scope, std::vector<za::Symbol>& found) const {
        if (!options_.getIncludeAggregateScope()) return;
        if (!mayHold(za::types::Member::metaClass()) && !mayHold(za::types::Method::metaClass())) return;
        za::FinderOptions const all = za::FinderOptions(options_).setIncludeDerivedClasses(true);
        for (za::Symbol const& symbol :
             scope.findSymbolByMetaClass(za::types::AggregateType::metaClass(), all)) {
            for (za::types::Member const& member : za::types::AggregateType::cast(symbol).getMembers())
                addPart(member, found);
            if (auto const type = za::types::StructType::cast(symbol))
                for (za::types::Method const& method : type.getMethods())
                    addPart(method, found);
        }
    }
    void addPart(za::Symbol const& part, std::vector<za::Symbol>& found) const {
        if (part && mayHold(part.getMetaClass()) && fitsName(part)) found.push_back(part);
    }
    [[nodiscard]] bool mayHold(meta::Class const& cls) const {
        return options_.getIncludeDerivedClasses() ? meta::isSubclassOf(cls, wanted_) : cls == wanted_;
    }
    [[nodiscard]] bool fitsName(za::Symbol const& symbol) const {
        if (pattern_) return fitsPattern(symbol);
        if (name_.empty()) return true;
        switch (options_.getNameResolutionStrategy()) {
        case za::NameFinderKind::Name:
            return symbol.getName() == name_;
        case za::NameFinderKind::Signature:
            return symbol.generateSignature() == name_;
        default:
            return symbol.getFullyQualifiedName() == name_;
        }
    }

    meta::Class wanted_;
    za::FinderOptions options_;
    std::string name_;
    std::optional<Pattern> pattern_;
};

/// The scopes that lie in no other: the units of projects, and what stands alone.
std::vector<za::Scope> outermostScopes(za::Ast const& ast) {
    std::vector<za::Scope> scopes;
    for (ModelElement const& root : ast.getModel().getTopLevelElements()) {
        if (auto const project = za::Project::cast(root))
            for (za::source::CompilationUnit const& unit : project.getCompilations())
                scopes.push_back(unit);
        else if (auto const scope = za::Scope::cast(root))
            scopes.push_back(scope);
    }
    return scopes;
}

/// In the order of places.
Section found(za::Ast const& ast, Wanted const& wanted) {
    Section section;
    for (za::Scope const& scope : outermostScopes(ast))
        for (za::Symbol const& symbol : wanted.in(scope))
            section.rows.push_back({symbol});
    sortByPlace(section.rows);
    return section;
}

/// Says why nothing was found: such a name is there but left out, or names like it are.
int reportNothing(za::Ast const& ast, Wanted const& wanted) {
    if (wanted.name().empty()) {
        std::cerr << "zelkor: no symbol fits\n";
        return Difference;
    }
    Lookup const lookup = lookUp(ast, wanted.name());
    if (lookup.elements.empty()) return reportMissing(wanted.name(), lookup);
    std::cerr << "zelkor: no symbol fits; of that name there is:\n";
    for (ModelElement const& element : lookup.elements)
        std::cerr << "  " << className(element) << ' ' << qualifiedName(element) << '\n';
    return Difference;
}

} // namespace

int runFind(Arguments const& arguments) {
    arguments.requireOperands({"FILE"}, "--name");
    Wanted const wanted(arguments);
    za::Ast const ast = readModel(arguments.operands()[0]);
    int const code = printAnswer(arguments, "find", {found(ast, wanted)});
    return code == Ok ? Ok : reportNothing(ast, wanted);
}

} // namespace zelkor::command
