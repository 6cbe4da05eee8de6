#include "SymbolSearch.hpp"

#include "NameTest.hpp"
#include "brant/zero/Bodies.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast/Namespace.hpp"
#include "zelkor/ast/Template.hpp"
#include "zelkor/ast/source/SourceFile.hpp"
#include "zelkor/ast/source/SourcePosition.hpp"
#include "zelkor/ast/types/AggregateType.hpp"

namespace zelkor::ast::search {

namespace {

using ::brant::zero::aliveAs;
using ::brant::zero::isA;
using ::brant::zero::ModelElementImpl;
using ::brant::zero::schema::ClassTable;

/// Whether a symbol's class is the wanted one.
class ClassTest {
  public:
    ClassTest(::brant::zero::meta::Class const& wanted, bool includeDerived)
        : table_(wanted.get()->description<ClassTable>()), includeDerived_(includeDerived),
          // By name, since a class may be described anew under the name of another.
          name_(::brant::zero::toUtf8(::brant::zero::meta::qualifiedName(wanted))) {}

    [[nodiscard]] bool operator()(ClassTable const& table) const {
        if (includeDerived_) return table_ != nullptr && table.conformsTo(*table_);
        return &table == table_ || table.qualifiedName == name_;
    }

  private:
    ClassTable const* table_;
    bool includeDerived_;
    std::string name_;
};

/// How many symbols ahead memory is asked for: the walk waits for it most of its time.
constexpr std::size_t lookahead = 4;

/// Asks for the header of a body and the name behind it.
inline void prefetch(ModelElementImpl const* body) {
    auto const* const bytes = reinterpret_cast<char const*>(body);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + 64);
}

class Walk {
  public:
    Walk(ClassTest classTest, names::NameTest nameTest, FinderOptions const& options)
        : fitsClass_(std::move(classTest)), fitsName_(std::move(nameTest)), options_(options) {}

    [[nodiscard]] std::vector<Symbol> run(Scope::Impl const& start) {
        found_.reserve(start.getSymbols().size());
        enter(&start);
        while (!open_.empty())
            step();
        return std::move(found_);
    }

  private:
    /// A scope being walked: its symbols, then its namespaces.
    struct Frame {
        Scope::Impl const* scope;
        std::size_t next = 0;
        bool amongNamespaces = false;
    };

    void enter(Scope::Impl const* scope) {
        if (scope == nullptr) return;
        bool const isStd = isA<Namespace>(*scope) && static_cast<Namespace::Impl const*>(scope)->getIsStd();
        if (!isStd || options_.getIncludeStdNs()) open_.push_back({scope});
    }

    /// Goes on in the innermost scope, up to the next one below it or to its end.
    void step() {
        Frame& frame = open_.back();
        if (!frame.amongNamespaces) {
            if (!visitSymbols(frame)) return;
            frame.amongNamespaces = true;
            frame.next = 0;
        }
        if (!options_.getIncludeSubScopes()) return open_.pop_back();
        auto const& namespaces = frame.scope->getNamespaces();
        if (frame.next == namespaces.size()) return open_.pop_back();
        enter(aliveAs<Scope>(namespaces.resolved(frame.next++)));
    }

    /// \returns false when the scope of a symbol was opened first; `frame` has moved then.
    bool visitSymbols(Frame& frame) {
        auto const& symbols = frame.scope->getSymbols();
        std::size_t const open = open_.size();
        for (std::size_t const count = symbols.size(); frame.next < count;) {
            std::size_t const at = frame.next++;
            if (at + lookahead < count) prefetch(symbols.slot(at + lookahead));
            ModelElementImpl const* body = symbols.slot(at);
            if (body->isProxy()) body = symbols.resolved(at);
            if (body->valid()) visit(static_cast<Symbol::Impl const&>(*body));
            if (open_.size() != open) return false;
        }
        return true;
    }

    void visit(Symbol::Impl const& symbol) {
        if (!options_.getIncludeSystemHeaders() && !isOfTheProject(symbol)) return;
        ClassTable const& table = symbol.classTable();
        if (fitsClass_(table) && fitsName_(symbol)) found_.emplace_back(const_cast<Symbol::Impl*>(&symbol));
        if (options_.getIncludeTemplateScope() && table.conformsTo(Template::Impl::table))
            enter(aliveAs<Scope>(static_cast<Template::Impl const&>(symbol).getScopeBody()));
        else if (options_.getIncludeAggregateScope() && table.conformsTo(types::AggregateType::Impl::table))
            enter(aliveAs<Scope>(static_cast<types::AggregateType::Impl const&>(symbol).getScopeBody()));
    }

    /// A symbol that is only declared has no definition and counts as foreign.
    static bool isOfTheProject(Symbol::Impl const& symbol) {
        auto const* position = aliveAs<source::SourcePosition>(symbol.getDefPosBody());
        if (position == nullptr) return false;
        auto const* file = aliveAs<source::SourceFile>(position->getFileBody());
        return file != nullptr && !file->getIsIncludedFromSystemIncludeDir();
    }

    ClassTest fitsClass_;
    names::NameTest fitsName_;
    FinderOptions const& options_;
    std::vector<Frame> open_;
    std::vector<Symbol> found_;
};

} // namespace

std::vector<Symbol> findSymbols(Scope::Impl const& start, ::brant::zero::meta::Class const& wanted,
                                std::string name, FinderOptions const& options) {
    if (!wanted) return {};
    return Walk(ClassTest(wanted, options.getIncludeDerivedClasses()),
                names::NameTest(std::move(name), options.getNameResolutionStrategy()), options)
        .run(start);
}

} // namespace zelkor::ast::search
