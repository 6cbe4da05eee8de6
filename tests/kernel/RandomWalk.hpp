/// \file
/// Random operations on a model, chosen by a seed; which operations there are, a subclass says.
#pragma once

#include "model/ModelSupport.hpp"

#include "brant/zero/Builder.hpp"

#include <cstdint>
#include <deque>
#include <functional>
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
    /// \returns how often each operation ran.
    [[nodiscard]] std::map<std::string, std::size_t> const& counts() const noexcept { return counts_; }
    /// \returns how often the model refused, by message.
    [[nodiscard]] std::map<std::string, std::size_t> const& refusals() const noexcept { return refusals_; }

  protected:
    struct Operation {
        char const* name;
        std::function<void()> run;
    };
    std::vector<Operation> operations_;

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

    std::mt19937_64 random_;
    std::uint64_t seed_;
    Model model_;
    Model other_;                     ///< for links across models
    std::vector<ModelElement> ended_; ///< handles on elements that may come back
    std::map<std::string, std::size_t> counts_;
    std::map<std::string, std::size_t> refusals_;
    std::deque<std::string> history_;
    std::size_t depth_ = 0;
    std::size_t notices_ = 0;
};

} // namespace testmodel
