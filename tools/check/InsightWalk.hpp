// The independent check of code insight: every use that the front end shows, against the lists of the
// records.
#pragma once

#include "ParsedUnit.hpp"
#include "UseClimb.hpp"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace zelkor::producer::test {

class InsightWalk {
  public:
    // `dropped` holds "file:line:column name" of definitions that lost against another.
    InsightWalk(ModelIndex const& index, zelkor::ast::Project const& project, std::string root,
                std::string resourceDirectory, std::set<std::string> dropped);

    void walk(WalkedUnit const& unit);
    // After all units: both directions, and the flags.
    void compare();

    std::vector<std::string> const& mismatches() const { return mismatches_; }
    // Kinds of uses, with the number of those that both sides have.
    std::map<std::string, std::size_t> const& agreed() const { return agreed_; }

  private:
    // "owner use target"; elements are told by place and name, so that a pattern and its instantiations are
    // one.
    using Uses = std::set<std::string>;

    void join(std::string const& first, std::string const& second);
    std::string groupOf(std::string const& placed);
    std::string keyOf(zelkor::ast::Symbol const& symbol);
    std::string keyOf(CXCursor cursor);
    std::string ownerKey(Path const& path);

    void addElement(zelkor::ast::Symbol const& symbol);
    void readModel(zelkor::ast::Project const& project);
    void readInsight(zelkor::ast::codeinsight::CodeInsight const& insight);
    void readFlags(zelkor::ast::codeinsight::CodeInsight const& insight);
    template <class List>
    void addAll(std::string const& owner, char const* use, List const& list);

    void walkInstances();
    void descend(Path& path);
    void examine(Path const& path);
    void examineName(Path const& path);
    void examineMember(Path const& path);
    void addDestructor(Path const& path, CXType type);
    void addOverrides(CXCursor method);
    void add(Path const& path, char const* use, CXCursor target);
    void meet(CXCursor function);
    bool isDropped(CXCursor cursor) const;
    bool isLocalOfNothing(CXCursor variable) const;

    ModelIndex const& index_;
    std::string root_;
    std::string resourceDirectory_;
    std::set<std::string> dropped_;
    std::map<std::string, std::string> groups_; // towards the representative
    std::map<brant::zero::ModelElementImpl*, std::string> parameters_;
    Uses modelled_;
    std::set<std::string> mayHave_; // uses of the model that need no counterpart
    Uses seen_;
    std::map<std::string, std::set<std::string>> targets_; // by use, as the lists of the records tell
    std::vector<std::string> mismatches_;
    std::map<std::string, std::size_t> agreed_;
    std::set<std::string> locals_;                        // of the present unit
    std::map<unsigned, std::vector<CXCursor>> instances_; // by hash; unified ids are not unique
    std::vector<CXCursor> waiting_;
    bool isInstance_ = false;
};

} // namespace zelkor::producer::test
