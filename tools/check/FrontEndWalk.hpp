// A second way from the front end to what a model should hold. It shares no code with the producer: it asks
// libclang about each declaration of the project again and compares the answer with the element at that
// place.
#pragma once

#include "ParsedUnit.hpp"

#include <clang-c/Index.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace zelkor::producer::test {

class FrontEndWalk {
  public:
    struct Tally {
        std::size_t declarations = 0; // distinct ones that the front end shows
        std::size_t elements = 0;     // elements of the model that were found for them
    };

    // `dropped` holds "file:line:column name" of definitions that lost against another.
    FrontEndWalk(ModelIndex const& index, std::string root, std::string resourceDirectory,
                 std::set<std::string> dropped);

    void walk(WalkedUnit const& unit);
    // Elements at places of the project that no declaration led to.
    void checkLeftOver();

    std::vector<std::string> const& mismatches() const { return mismatches_; }
    std::map<std::string, Tally> const& tallies() const { return tallies_; }

  private:
    struct Seen {
        Place place;
        std::string kind; // of the model, coarse
        std::string name;
    };

    CXChildVisitResult visit(CXCursor cursor, CXCursor parent);
    void check(CXCursor cursor, std::string const& kind);
    void checkNamespace(CXCursor cursor);
    zelkor::ast::Symbol match(CXCursor cursor, std::string const& kind, Place const& place);
    void compare(CXCursor cursor, zelkor::ast::Symbol const& symbol);
    void compareFunction(CXCursor cursor, zelkor::ast::Function const& function);
    void compareNames(CXCursor cursor, zelkor::ast::Function const& function);
    void compareQualifiedName(CXCursor cursor, zelkor::ast::Function const& function);
    void compareParameters(CXCursor cursor, zelkor::ast::Function const& function);
    void compareVariable(CXCursor cursor, zelkor::ast::Variable const& variable);
    void compareAggregate(CXCursor cursor, zelkor::ast::types::AggregateType const& aggregate);
    void compareEnum(CXCursor cursor, zelkor::ast::types::EnumType const& type);
    void compareTemplate(CXCursor cursor, zelkor::ast::Template const& made);
    void expect(bool isRight, CXCursor cursor, std::string const& what);
    void expectType(CXCursor cursor, zelkor::ast::types::Type const& type, CXType expected,
                    std::string const& what);
    bool agrees(zelkor::ast::types::Type const& type, CXType expected, unsigned depth) const;
    bool agreesLayer(zelkor::ast::types::Type const& type, CXType expected, unsigned depth) const;
    bool agreesArray(zelkor::ast::types::Type const& type, CXType expected, unsigned depth) const;
    bool agreesDeclared(zelkor::ast::types::Type const& type, CXType expected) const;
    bool agreesUnexposed(zelkor::ast::types::Type const& type, CXType expected, unsigned depth) const;
    bool agreesFunction(zelkor::ast::types::FunctionType const& type, CXType expected, bool hasResult,
                        unsigned depth) const;
    std::string ownerText(CXCursor cursor) const;
    bool placeOf(CXCursor cursor, Place& place) const { return test::placeOf(cursor, root_, place); }
    bool isDropped(CXCursor cursor) const;

    ModelIndex const& index_;
    std::string root_;
    std::string resourceDirectory_;
    std::set<std::string> dropped_;
    std::vector<std::string> mismatches_;
    std::map<std::string, Tally> tallies_;
    std::set<std::string> seen_;
    std::set<std::string> friends_; // places of functions that class templates declare as friends
    std::set<brant::zero::ModelElementImpl*> found_;
    std::map<brant::zero::ModelElementImpl*, std::string> matched_; // with the front end's identity
};

bool isInTemplate(CXCursor cursor);
bool isPrototype(zelkor::ast::Symbol const& symbol);
zelkor::ast::types::AccessSpecifierKind accessOf(CXCursor cursor);

} // namespace zelkor::producer::test
