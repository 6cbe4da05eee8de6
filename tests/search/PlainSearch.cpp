#include "search/PlainSearch.hpp"

#include "brant/zero/meta/Names.hpp"

#include <algorithm>

namespace testsearch {

namespace meta = brant::zero::meta;

namespace {

class PlainWalk {
  public:
    PlainWalk(Question const& question, Fault fault) : question_(question), fault_(fault) {}

    std::vector<za::Symbol> found;

    void walk(za::Scope const& scope) {
        if (!scope) return;
        if (!options().getIncludeStdNs() && isStd(scope)) return;
        if (fault_ == Fault::NamespacesFirst) walkNamespaces(scope);
        for (za::Symbol const& symbol : scope.getSymbols()) {
            bool const foreign = !options().getIncludeSystemHeaders() && isForeign(symbol);
            if (foreign && fault_ != Fault::SkipsOnlySymbol) continue;
            if (!foreign && fitsClass(symbol) && fitsName(symbol)) take(symbol);
            if (fault_ != Fault::InsideBehindScope) walkInside(symbol);
        }
        if (fault_ == Fault::InsideBehindScope)
            for (za::Symbol const& symbol : scope.getSymbols())
                if (options().getIncludeSystemHeaders() || !isForeign(symbol)) walkInside(symbol);
        if (fault_ != Fault::NamespacesFirst) walkNamespaces(scope);
    }

  private:
    [[nodiscard]] FinderOptions const& options() const { return question_.options; }

    [[nodiscard]] bool isStd(za::Scope const& scope) const {
        za::Namespace const space = za::Namespace::cast(scope);
        if (!space) return false;
        return fault_ == Fault::StdByName ? space.getName() == "std" : space.getIsStd();
    }

    void walkNamespaces(za::Scope const& scope) {
        if (!options().getIncludeSubScopes()) return;
        for (za::Scope const& inner : scope.getNamespaces())
            walk(inner);
    }

    void walkInside(za::Symbol const& symbol) {
        if (auto const made = za::Template::cast(symbol); made && options().getIncludeTemplateScope())
            walk(made.getScope());
        else if (auto const type = zt::AggregateType::cast(symbol);
                 type && options().getIncludeAggregateScope())
            walk(type.getScope());
        else if (auto const function = za::Function::cast(symbol);
                 function && fault_ == Fault::EntersFunctions)
            walk(function.getScope());
    }

    [[nodiscard]] bool isForeign(za::Symbol const& symbol) const {
        za::source::SourcePosition position = symbol.getDefPos();
        if (!position && fault_ == Fault::DeclarationIsEnough && symbol.hasDeclPos())
            position = symbol.getDeclPos()[0];
        if (!position || !position.getFile()) return true;
        return position.getFile().getIsIncludedFromSystemIncludeDir();
    }

    [[nodiscard]] bool fitsClass(za::Symbol const& symbol) const {
        if (options().getIncludeDerivedClasses() || fault_ == Fault::SubclassesAlways)
            return meta::isSubclassOf(symbol.getMetaClass(), question_.wanted);
        return meta::qualifiedName(symbol.getMetaClass()) == meta::qualifiedName(question_.wanted);
    }

    [[nodiscard]] bool fitsName(za::Symbol const& symbol) const {
        std::string const& name = question_.name;
        if (name.empty()) return fault_ != Fault::EmptyNameIsCompared || symbol.getName().empty();
        NameFinderKind const strategy = options().getNameResolutionStrategy();
        if (fault_ == Fault::OddStrategyIsName && static_cast<unsigned>(strategy) > 2)
            return symbol.getName() == name;
        if (fault_ == Fault::NameNeedsByteInFront && strategy == NameFinderKind::FullyQualifiedName &&
            name.size() <= symbol.getName().size())
            return false;
        if (fault_ == Fault::NameEndsText && strategy == NameFinderKind::FullyQualifiedName &&
            !name.ends_with(symbol.getName()))
            return false;
        if (fault_ == Fault::SignatureHoldsName && strategy == NameFinderKind::Signature &&
            name.find(symbol.getName()) == std::string::npos)
            return false;
        return nameFor(symbol, strategy) == name;
    }

    void take(za::Symbol const& symbol) {
        if (fault_ == Fault::RemovesDuplicates)
            for (za::Symbol const& other : found)
                if (other.getFullyQualifiedName() == symbol.getFullyQualifiedName()) return;
        found.push_back(symbol);
    }

    Question const& question_;
    Fault fault_;
};

} // namespace

std::string nameFor(za::Symbol const& symbol, NameFinderKind strategy) {
    if (strategy == NameFinderKind::Name) return symbol.getName();
    return strategy == NameFinderKind::Signature ? symbol.generateSignature()
                                                 : symbol.getFullyQualifiedName();
}

std::vector<za::Symbol> plainSearch(Question const& question, Fault fault) {
    PlainWalk walk(question, fault);
    walk.walk(question.start);
    return walk.found;
}

std::vector<za::Symbol> search(Question const& question) {
    return question.start.findSymbolByMetaClassAndName(question.wanted, question.name, question.options);
}

std::ostream& operator<<(std::ostream& out, Question const& question) {
    FinderOptions const& o = question.options;
    return out << meta::qualifiedNameUtf8(question.wanted) << " '" << question.name << "', strategy "
               << static_cast<unsigned>(o.getNameResolutionStrategy())
               << (o.getIncludeSubScopes() ? ", sub scopes" : "")
               << (o.getIncludeDerivedClasses() ? ", derived" : "") << (o.getIncludeStdNs() ? ", std" : "")
               << (o.getIncludeSystemHeaders() ? ", system" : "")
               << (o.getIncludeTemplateScope() ? ", templates" : "")
               << (o.getIncludeAggregateScope() ? ", aggregates" : "");
}

std::string namesOf(std::vector<za::Symbol> const& symbols) {
    std::string names;
    for (za::Symbol const& symbol : symbols)
        names += symbol.getFullyQualifiedName() + " ";
    return names;
}

} // namespace testsearch
