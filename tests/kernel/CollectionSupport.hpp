// What the tests of the kinds of collections share.
#pragma once

#include "TestSchema.hpp"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace shop {

namespace m = brant0::messages;

template <class Message, class F>
void expectReport(F action) {
    EXPECT_THROW(action(), MessageException<Message>);
}

/// The open levels of a random walk, each with the content that must be there again once it is abandoned.
template <class Content>
class OpenLevels {
  public:
    explicit OpenLevels(Model const& model) : model_(model) {}
    ~OpenLevels() { abandonAll(); }

    void begin(Content const& content) {
        if (levels_.size() < 4) levels_.push_back({model_.beginTransaction(), content});
    }
    /// Ends the innermost level, if any; `content` becomes what is expected now.
    void end(bool isKept, Content& content) {
        if (levels_.empty()) return;
        if (isKept) {
            levels_.back().transaction.commit();
        } else {
            levels_.back().transaction.rollback();
            content = std::move(levels_.back().before);
        }
        levels_.pop_back();
    }
    void abandonAll() {
        while (!levels_.empty())
            levels_.pop_back();
    }

  private:
    struct Level {
        Transaction transaction;
        Content before;
    };
    Model model_;
    std::vector<Level> levels_;
};

} // namespace shop
