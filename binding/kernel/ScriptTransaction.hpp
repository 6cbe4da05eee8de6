/// \file
/// A transaction as scripts hold it.
#pragma once

#include "brant/zero/Model.hpp"

#include <boost/intrusive_ptr.hpp>

#include <optional>

namespace brant::zero::mi {

/// A counted handle on one open level, one pointer wide, false once the level has ended. The level is
/// abandoned with the last handle. Counts are plain: script objects belong to the host's thread.
class ScriptTransaction {
  public:
    class State {
      public:
        explicit State(Transaction transaction) : transaction_(std::move(transaction)) {}

      private:
        friend class ScriptTransaction;
        friend void intrusive_ptr_add_ref(State* state) noexcept { ++state->references_; }
        friend void intrusive_ptr_release(State* state) noexcept {
            if (--state->references_ == 0) delete state;
        }
        std::optional<Transaction> transaction_;
        std::size_t references_ = 0;
    };

    ScriptTransaction() noexcept = default;
    explicit ScriptTransaction(Transaction transaction) : state_(new State(std::move(transaction))) {}
    explicit ScriptTransaction(State* state) noexcept : state_(state) {}

    explicit operator bool() const noexcept { return state_ != nullptr && state_->transaction_.has_value(); }
    [[nodiscard]] State* get() const noexcept { return state_.get(); }

    /// \requires an open level. \throws as `Transaction::commit`; the level stays open when it refuses.
    void commit() {
        state_->transaction_->commit();
        state_->transaction_.reset();
    }
    /// \requires an open level.
    void rollback() {
        state_->transaction_->rollback();
        state_->transaction_.reset();
    }

  private:
    boost::intrusive_ptr<State> state_;
};

} // namespace brant::zero::mi
