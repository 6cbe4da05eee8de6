#include "Busy.hpp"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace zelkor::python {

namespace {

// Never destroyed: a thread may still wait while the process ends.
struct Waiting {
    std::vector<brant::zero::ModelImpl const*> models; ///< under the interpreter's lock
    std::mutex mutex;
    std::condition_variable changed;
    unsigned long ended = 0; ///< how often work has ended
};

Waiting& waiting() {
    static auto* const instance = new Waiting;
    return *instance;
}

} // namespace

int busy::models = 0;

void busy::waitFor(brant::zero::ModelImpl const* model) {
    Waiting& all = waiting();
    while (std::find(all.models.begin(), all.models.end(), model) != all.models.end()) {
        std::unique_lock guard(all.mutex);
        unsigned long const before = all.ended;
        PyThreadState* const state = PyEval_SaveThread();
        all.changed.wait(guard, [&] { return all.ended != before; });
        guard.unlock();
        PyEval_RestoreThread(state);
    }
}

Unlocked::Unlocked(brant::zero::Model const& model) : model_(model.get()) {
    awaitModel(model_);
    if (model_ != nullptr) {
        waiting().models.push_back(model_);
        ++busy::models;
    }
    state_ = PyEval_SaveThread();
}

Unlocked::~Unlocked() {
    PyEval_RestoreThread(state_);
    if (model_ == nullptr) return;
    Waiting& all = waiting();
    all.models.erase(std::find(all.models.begin(), all.models.end(), model_));
    --busy::models;
    {
        std::lock_guard const guard(all.mutex);
        ++all.ended;
    }
    all.changed.notify_all();
}

} // namespace zelkor::python
