// The question that all contenders are asked: the functions of one qualified name, among the symbols of units
// and namespaces.
#pragma once

#include "Stage.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zelkor::bench {

struct SearchQuestion {
    std::string name;
    std::size_t answers = 0;
};

/// Names of functions in namespaces, spread evenly over the model, with how many functions have each.
class SearchQuestions {
  public:
    static constexpr std::size_t count = 5;

    static std::array<SearchQuestion, count> of(Plan const& plan) {
        SearchQuestions all;
        plan.replay(all);
        std::array<SearchQuestion, count> chosen;
        for (std::size_t i = 0; i < count; ++i) {
            std::string const& name = all.inOrder_[(2 * i + 1) * all.inOrder_.size() / (2 * count)];
            chosen[i] = {name, all.counts_.at(name)};
        }
        return chosen;
    }

    void project(ProjectRecord const&) {}
    void file(FileRecord const&) {}
    void openScope(UnitRecord const&) { open_.emplace_back(); }
    void openScope(NamespaceRecord const& space) {
        std::string const& outer = open_.back();
        open_.push_back(outer.empty() ? std::string(space.name) : outer + "::" + std::string(space.name));
    }
    void closeScope() { open_.pop_back(); }
    template <class Record>
    void symbol(Record const& record) {
        // What has template arguments has them in its name.
        if constexpr (Record::kind == Kind::Function) {
            if (!record.templateArgs.empty() || open_.back().empty()) return;
            inOrder_.push_back(open_.back() + "::" + std::string(record.name));
            ++counts_[inOrder_.back()];
        }
    }

  private:
    std::vector<std::string> open_;
    std::vector<std::string> inOrder_;
    std::map<std::string, std::size_t> counts_;
};

/// Asks every question by `find(name)`, which gives the number of answers. Per element of the model and
/// question.
template <class Find>
void measureSearch(Stage& stage, Find const& find) {
    auto const questions = SearchQuestions::of(stage.plan);
    std::array<std::size_t, SearchQuestions::count> found{};
    stage.countUnits(std::uint64_t{stage.plan.elements()} * questions.size());
    stage.measure([&] {
        for (std::size_t i = 0; i < questions.size(); ++i)
            found[i] = find(questions[i].name);
    });
    for (std::size_t i = 0; i < questions.size(); ++i)
        stage.expect(found[i] == questions[i].answers, questions[i].name + " was found " +
                                                           std::to_string(found[i]) + " times, not " +
                                                           std::to_string(questions[i].answers));
}

} // namespace zelkor::bench
