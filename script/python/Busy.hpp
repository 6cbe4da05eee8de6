/// \file
/// Long work without the interpreter's lock, and what keeps others away from the model meanwhile.
#pragma once

#include "Python.hpp"

#include <brant/zero/Model.hpp>

namespace zelkor::python {

namespace busy {

/// How many models are being worked on. Read and written under the interpreter's lock only.
extern int models;
/// Waits until no other thread works on the model, without the interpreter's lock.
void waitFor(brant::zero::ModelImpl const* model);

} // namespace busy

/// Every use of a model begins here: a model that another thread loads, saves or searches is waited for.
inline void awaitModel(brant::zero::ModelImpl const* model) {
    if (busy::models != 0) [[unlikely]]
        busy::waitFor(model);
}

/// The span of work on a model without the interpreter's lock. Whoever makes one holds the model for longer.
/// Nothing of Python may be touched meanwhile.
class Unlocked {
  public:
    /// A null model stands for one that nobody else can know yet.
    explicit Unlocked(brant::zero::Model const& model);
    Unlocked(Unlocked const&) = delete;
    Unlocked& operator=(Unlocked const&) = delete;
    ~Unlocked();

  private:
    brant::zero::ModelImpl const* model_;
    PyThreadState* state_;
};

} // namespace zelkor::python
