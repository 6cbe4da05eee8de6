#include "kernel/RandomWalk.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace testmodel {

RandomWalk::RandomWalk(std::uint64_t seed)
    : random_(seed), seed_(seed), model_(newModel()), other_(newModel()) {
    for (std::size_t i = 0; i < 60; ++i)
        make(model_, anyClass());
}

void RandomWalk::run(std::size_t steps) {
    for (std::size_t done = 0; done < steps && !testing::Test::HasFailure(); done += 12) {
        if (oneIn(3))
            for (std::size_t i = 0; i < 12; ++i)
                step();
        else
            level(1);
    }
    counts_["notice"] = notices_;
}

void RandomWalk::level(std::size_t depth) {
    std::string const before = dump(model_);
    depth_ = depth;
    if (depth == 5) count("depth 5");
    Transaction transaction = model_.beginTransaction();
    std::size_t const steps = 1 + below(8);
    for (std::size_t i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
        if (depth < 5 && oneIn(4))
            level(depth + 1);
        else
            step();
    }
    depth_ = depth - 1;
    if (testing::Test::HasFailure()) return;
    if (oneIn(2)) {
        count("level committed");
        history_.emplace_back("commit");
        try {
            transaction.commit();
        } catch (std::exception const& failure) {
            EXPECT_STREQ(failure.what(), "callback") << history();
        }
        check({}, "a commit");
    } else {
        count("level abandoned");
        transaction.rollback();
        check(before, "an abandoned level");
        history_.emplace_back("abandon");
    }
    if (depth == 1) ended_.clear();
}

void RandomWalk::step() {
    if (testing::Test::HasFailure()) return;
    while (model_.size() > 250)
        ModelElement(model_->elements()[below(model_.size())]).destroy();
    // Few elements meet often, but no operation has to make one first.
    std::set<ClassTable const*> present;
    for (ModelElementImpl* element : model_->elements())
        present.insert(&element->classTable());
    for (ClassTable const* table : classes())
        if (!table->isAbstract && !present.contains(table)) make(model_, *table);
    Operation const& operation = operations_[below(operations_.size())];
    history_.emplace_back(operation.name);
    if (history_.size() > 40) history_.pop_front();
    std::string const before = oneIn(4) ? dump(model_) : std::string();
    try {
        operation.run();
        count(operation.name);
    } catch (std::logic_error const& failure) {
        ADD_FAILURE() << operation.name << ": " << failure.what() << history();
    } catch (...) {
        std::string const what = describe(std::current_exception());
        count(operation.name);
        ++refusals_[what];
        history_.back() += " refused: " + what;
        // What a callback throws comes after the change.
        if (what != "callback" && !before.empty()) check(before, "a refused operation");
    }
    if (oneIn(8)) check({}, "an operation");
}

void RandomWalk::check(std::string const& before, std::string const& what) {
    std::string const violation = violationOf(model_);
    if (!violation.empty()) ADD_FAILURE() << "after " << what << ": " << violation << history();
    if (before.empty()) return;
    std::string const difference = firstDifference(before, dump(model_));
    if (!difference.empty()) ADD_FAILURE() << "after " << what << ":\n" << difference << history();
}

std::string RandomWalk::history() const {
    std::string text = "\nseed " + std::to_string(seed_) + ":";
    for (std::string const& entry : history_)
        text += "\n  " + entry;
    return text;
}

// Choices.

ClassTable const& RandomWalk::anyClass() {
    for (;;)
        if (ClassTable const* table = classes()[below(classes().size())]; !table->isAbstract) return *table;
}

ModelElement RandomWalk::pick(ClassTable const& table) {
    auto const& elements = model_->elements();
    if (!elements.empty()) {
        std::size_t const start = below(elements.size());
        for (std::size_t i = 0; i < elements.size(); ++i) {
            ModelElementImpl* const element = elements[(start + i) % elements.size()];
            if (element->classTable().conformsTo(table)) return ModelElement(element);
        }
    }
    return make(model_, table);
}

RandomWalk::Place RandomWalk::place(PropertyKind kind, int contained) {
    for (;;) {
        ModelElement const element = pick(anyClass());
        std::vector<PropertyRow const*> fitting;
        for (PropertyRow const* row : propertiesOf(element.get()->classTable()))
            if (row->kind == kind && (contained < 0 || row->contained() == (contained == 1)))
                fitting.push_back(row);
        if (!fitting.empty()) return {element, fitting[below(fitting.size())]};
    }
}

RandomWalk::Place RandomWalk::sequence(bool contained) {
    Place best = place(PropertyKind::ManyReference, contained);
    // Full ones are rarer and more interesting.
    for (std::size_t i = 0; i < 6 && sizeOf(collection(best)) < 3; ++i)
        if (Place next = place(PropertyKind::ManyReference, contained);
            sizeOf(collection(next)) > sizeOf(collection(best)))
            best = next;
    return best;
}

ReferenceCollection& RandomWalk::collection(Place const& at) {
    return *Core::collection(*at.element.get(), *at.row).asReferences();
}

std::unique_ptr<Builder> RandomWalk::builder(ClassTable const& table, std::size_t depth) {
    std::unique_ptr<Builder> result = meta::instantiateBuilder(concrete(table).metaClass(), model_);
    for (PropertyRow const* row : propertiesOf(concrete(table))) {
        if (!row->stored() || row->kind == PropertyKind::ContainerEnd || !oneIn(3)) continue;
        if (!row->contained()) {
            result->setOrAdd(Core::propertyOf(row),
                             row->refersToElements()
                                 ? Value::createElementValue(Core::propertyOf(row), pick(*row->target))
                                 : sampleValue(*row, variant()));
        } else if (depth > 0) {
            std::unique_ptr<Builder> sub = builder(*row->target, depth - 1);
            result->setOrAdd(Core::propertyOf(row), sub);
        }
    }
    return result;
}

ModelElement RandomWalk::proxy(ClassTable const& table) {
    // Of something that is there, or that may never be.
    std::string const identity =
        oneIn(2) ? pick(table).get()->identifier() : toString(ElementImpl::generateNewUuid());
    return model_.createProxy(concrete(table).metaClass(), {u"", toUtf16(identity).value(), nullptr});
}

} // namespace testmodel
