#include "Emitter.hpp"

#include <brant/zero/Text.hpp>
#include <brant/zero/meta/Names.hpp>

namespace zelkor::producer {

namespace za = zelkor::ast;

std::u16string toModelText(std::string_view bytes) {
    if (auto text = brant::zero::toUtf16(bytes)) return *std::move(text);
    std::u16string text;
    while (!bytes.empty()) {
        std::size_t length = 1;
        while (length < 4 && length < bytes.size() && !brant::zero::isValidUtf8(bytes.substr(0, length)))
            ++length;
        if (auto const part = brant::zero::toUtf16(bytes.substr(0, length))) {
            text += *part;
            bytes.remove_prefix(length);
        } else {
            text += static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(bytes.front()));
            bytes.remove_prefix(1);
        }
    }
    return text;
}

Emitter::Emitter(za::Ast& ast, ProjectFacts& facts)
    : model_(ast.getModel()), facts_(facts), project_(create<za::Project>(makeId("project", ""))) {}

void Emitter::emit(Insight insight) {
    describeProject();
    for (FileFact const& file : facts_.files())
        describeFile(file);
    std::size_t number = 0;
    for (MergedUnit const& unit : facts_.units())
        emitUnit(unit, number++);
    std::vector<MergedEntity*> const entities = facts_.entities();
    // All before any link, since links go both ways.
    for (MergedEntity const* const merged : entities) {
        elements_.emplace(merged->facts.id, createEntity(merged->facts));
        if (TemplateFacts const* const facts = merged->facts.as<TemplateFacts>()) createParameters(*facts);
    }
    for (ProjectFacts::MergedType const& type : facts_.types()) {
        elements_.emplace(type.facts.id, createType(type.facts));
    }
    for (MergedEntity const* const merged : entities)
        linkEntity(*merged);
    for (ProjectFacts::MergedType const& type : facts_.types())
        linkType(type.facts, type.unit);
    if (insight != Insight::None) emitInsight(entities, insight == Insight::Transitive);
}

std::map<std::string, std::size_t> Emitter::created() const {
    static constexpr std::string_view package = "zelkor.ast.";
    std::map<std::string, std::size_t> counts;
    for (auto const& [metaClass, count] : created_) {
        std::string const name = brant::zero::meta::qualifiedNameUtf8(*metaClass);
        counts[name.starts_with(package) ? name.substr(package.size()) : name] += count;
    }
    return counts;
}

} // namespace zelkor::producer
