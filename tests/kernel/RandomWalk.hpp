/// \file
/// Random operations on a model of the generated schema, chosen by a seed.
#pragma once

#include "model/ModelSupport.hpp"

#include "brant/zero/Builder.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace testmodel {

/// One run. Every operation may throw what the model refuses; the model must then be as before. Levels are
/// opened at random around the operations, committed or abandoned at random; an abandoned one must leave no
/// trace.
class RandomWalk {
  public:
    explicit RandomWalk(std::uint64_t seed);

    void run(std::size_t steps);
    /// \returns the names of all operations that a run must have done at least once.
    [[nodiscard]] static std::vector<std::string> const& operationNames();
    /// \returns how often each operation ran.
    [[nodiscard]] std::map<std::string, std::size_t> const& counts() const noexcept { return counts_; }
    /// \returns how often the model refused, by message.
    [[nodiscard]] std::map<std::string, std::size_t> const& refusals() const noexcept { return refusals_; }

  private:
    using Walk = RandomWalk;
    struct Operation {
        char const* name;
        void (Walk::*run)();
    };
    static std::vector<Operation> const& operations();

    void level(std::size_t depth);
    void step();
    void check(std::string const& before, std::string const& what);
    [[nodiscard]] std::string history() const;

    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    bool oneIn(std::size_t n) { return below(n) == 0; }
    unsigned variant() { return static_cast<unsigned>(below(2)); }
    void count(std::string const& what) { ++counts_[what]; }

    struct Place {
        ModelElement element;
        PropertyRow const* row;
    };
    ModelElement pick(ClassTable const& table);
    ClassTable const& anyClass();
    /// An element and one of its properties of that kind.
    Place place(PropertyKind kind, int contained = -1);
    Place sequence(bool contained);
    ReferenceCollection& collection(Place const& at);
    std::unique_ptr<Builder> builder(ClassTable const& table, std::size_t depth);
    ModelElement proxy(ClassTable const& table);

    // The operations.
    void createElement();
    void createTaken();
    void createAgain();
    void setAttribute();
    void setPlainReference();
    void setOwnedReference();
    void setContainerEnd();
    void addPlain() { addTo(false); }
    void addOwned() { addTo(true); }
    void addTo(bool contained);
    void insertMember();
    void ensureMember();
    void replaceMember();
    void removeMember();
    void removeMemberAt();
    void eraseMembers();
    void clearMembers();
    void assignMembers();
    void reserveMembers();
    void insertFile();
    void renameFile();
    void eraseFile();
    void clearFiles();
    void changeList();
    void changeView();
    void buildTree();
    void createInto();
    void destroyElement();
    void placeProxy();
    void resolveProxies();
    void replaceProxy();
    void subscribe();
    void throwInCallback();
    void writeInCallback();
    void addWrongClass();
    void setWrongValue();
    void linkOtherModel();
    void nestInItself();
    void addSecond();
    void failInMidLevel();

    std::mt19937_64 random_;
    std::uint64_t seed_;
    Model model_;
    Model other_;                     ///< for links across models
    std::vector<ModelElement> ended_; ///< handles on elements that may come back
    std::map<std::string, std::size_t> counts_;
    std::map<std::string, std::size_t> refusals_;
    std::deque<std::string> history_;
    std::vector<Subscription> subscriptions_;
    std::size_t depth_ = 0;
    std::size_t notices_ = 0;
    bool callbackThrows_ = false;
    bool callbackWrites_ = false;
};

} // namespace testmodel
