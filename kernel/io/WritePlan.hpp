// What is written of each class, worked out once from its table, so that the walk over the elements asks no
// questions of the schema.
#pragma once

#include "Step.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace brant::zero::io {

struct WriteField {
    Step step;
    std::uint32_t offset;
    schema::PropertyRow const* row;
    std::uint64_t defaultBits;  ///< of a scalar
    std::string defaultBytes;   ///< of a StdString
    std::u16string defaultText; ///< of a String
    std::string key;            ///< the property's name with what the form puts around it
    std::string end;            ///< what closes the property, for a form that has such a thing
};

struct WritePlan {
    std::string opening; ///< all in front of the identity
    std::string closing; ///< the end of an element with content
    std::vector<WriteField> fields;
    std::size_t inlineFields; ///< these first ones stand inside the opening; the others are content
};

/// How a form spells what a plan holds ready.
class PlanSpelling {
  public:
    virtual ~PlanSpelling() = default;
    virtual void spell(WritePlan& plan, schema::ClassTable const& table) const = 0;
    virtual void spell(WriteField& field) const = 0;
    /// Whether single values and references come in front of everything else.
    [[nodiscard]] virtual bool scalarsFirst() const noexcept = 0;
};

class WritePlans {
  public:
    explicit WritePlans(PlanSpelling const& spelling) noexcept : spelling_(spelling) {}
    [[nodiscard]] WritePlan const& of(schema::ClassTable const& table) {
        // Neighbours are often of one class.
        if (&table != last_) {
            std::unique_ptr<WritePlan>& plan = plans_[&table];
            if (plan == nullptr) plan = make(table);
            last_ = &table;
            lastPlan_ = plan.get();
        }
        return *lastPlan_;
    }

  private:
    [[nodiscard]] std::unique_ptr<WritePlan> make(schema::ClassTable const& table) const;

    PlanSpelling const& spelling_;
    std::unordered_map<schema::ClassTable const*, std::unique_ptr<WritePlan>> plans_;
    schema::ClassTable const* last_ = nullptr;
    WritePlan const* lastPlan_ = nullptr;
};

} // namespace brant::zero::io
