#include "WritePlan.hpp"

#include "brant/zero/Text.hpp"

#include <algorithm>

namespace brant::zero::io {

std::unique_ptr<WritePlan> WritePlans::make(schema::ClassTable const& table) const {
    auto plan = std::make_unique<WritePlan>();
    for (std::size_t i = 1; i < table.count; ++i) {
        schema::PropertyRow const& row = *table.stored[i];
        if (!isText(row)) continue;
        WriteField field{stepOf(row), row.offset, &row, row.defaultBits, {}, {}, {}, {}};
        if (row.kind == schema::PropertyKind::Attribute && row.defaultText != nullptr) {
            field.defaultBytes = row.defaultText;
            field.defaultText = toUtf16(row.defaultText).value_or(std::u16string());
        }
        if (field.step == Step::Integer || field.step == Step::Natural || field.step == Step::Enumeration)
            field.defaultBits = static_cast<std::uint32_t>(field.defaultBits);
        spelling_.spell(field);
        plan->fields.push_back(std::move(field));
    }
    plan->inlineFields = plan->fields.size();
    if (spelling_.scalarsFirst()) {
        auto const content =
            std::stable_partition(plan->fields.begin(), plan->fields.end(),
                                  [](WriteField const& field) { return field.step <= Step::Reference; });
        plan->inlineFields = static_cast<std::size_t>(content - plan->fields.begin());
    }
    spelling_.spell(*plan, table);
    return plan;
}

} // namespace brant::zero::io
