/// \file
/// Walking the elements of one class in containment order, past everything that cannot lead to one.
#pragma once

#include "brant/zero/Model.hpp"
#include "brant/zero/ModelElement.hpp"

#include <cstddef>
#include <memory>
#include <vector>

namespace brant::zero::query {

/// What a walk in search of one class does in each class: a fact of the schema, worked out once.
class ZELKOR_API WalkPlan {
  public:
    struct Entry {
        schema::ClassTable const* table = nullptr;
        bool wanted = false; ///< of the class looked for, or of a subclass
        /// Owning properties that may lead to a wanted element, by index.
        std::vector<schema::PropertyRow const*> rows;
    };

    /// \returns the plan for a class and its subclasses. The first call for a class takes time in proportion
    /// to the schema; from any thread.
    static WalkPlan const& of(schema::ClassTable const& wanted);

    /// \returns what to do in an element of that class; null where there is nothing to do. Constant time.
    [[nodiscard]] Entry const* find(schema::ClassTable const& table) const noexcept {
        for (std::size_t i = hash(table);; ++i) {
            Entry const& entry = entries_[i & mask_];
            if (entry.table == &table) return &entry;
            if (entry.table == nullptr) return nullptr;
        }
    }

    explicit WalkPlan(schema::ClassTable const& wanted);

  private:
    [[nodiscard]] static std::size_t hash(schema::ClassTable const& table) noexcept {
        auto const address = reinterpret_cast<std::size_t>(&table);
        return (address >> 4) ^ (address >> 9);
    }
    void insert(Entry entry);

    std::vector<Entry> entries_; ///< open addressing; at most a quarter is used
    std::size_t mask_ = 0;
};

/// One walk: every wanted element below an element, or in a model, each once, containers first. Placeholders
/// and dead elements are passed over. Memory grows with the depth, the stack does not. The model must not
/// change meanwhile.
class ZELKOR_API Walk {
  public:
    Walk(WalkPlan const& plan, ModelElementImpl const& root);
    Walk(WalkPlan const& plan, Model const& model);

    /// \returns the next element, or null behind the last one.
    [[nodiscard]] ModelElementImpl* next();

  private:
    using Slots = std::unique_ptr<ModelElementImpl*[]>;
    /// An element whose properties are being walked; without owner, the top level of a model.
    struct Frame {
        ModelElementImpl const* owner;
        schema::PropertyRow const* const* row; ///< the one behind the present
        schema::PropertyRow const* const* lastRow;
        ModelElementImpl* const* slot;
        ModelElementImpl* const* lastSlot;
        Slots gathered; ///< the slots of a property that has none to point at
    };

    void enter(ModelElementImpl const& owner, WalkPlan::Entry const& entry);
    static void open(Frame& frame, schema::PropertyRow const& row);
    static void gather(Frame& frame, std::vector<ModelElementImpl*> const& members);

    WalkPlan const* plan_;
    std::vector<Frame> frames_;
};

} // namespace brant::zero::query
