#include "Programs.hpp"

#include "FactFields.hpp"

#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <optional>

namespace zelkor::producer {

namespace {

class RivalFinder {
  public:
    RivalFinder(UnitFacts const& unit, std::function<Entity const*(Id const&)> const& known,
                IdSet const& mainFiles)
        : unit_(unit), known_(known), mainFiles_(mainFiles) {
        for (Entity const& entity : unit.entities) {
            if (entity.kind == EntityKind::Namespace) namespaces_.insert(entity.id);
        }
    }

    // A typedef may be a rival only because of its type, and an instance because of its arguments: hence
    // until nothing more is found. Without any rival the first round is the last.
    Renaming find() && {
        std::size_t before;
        do {
            before = renaming_.size();
            for (Entity const& entity : unit_.entities) {
                if (!renaming_.contains(entity.id)) look(entity);
            }
            for (TypeFact const& type : unit_.types) {
                if (!renaming_.empty() && !renaming_.contains(type.id)) look(type);
            }
        } while (renaming_.size() != before);
        return std::move(renaming_);
    }

  private:
    void look(Entity const& entity) {
        std::optional<Id> file;
        if (!renaming_.empty()) file = inheritedFile(entity);
        if (!file && isRival(entity)) file = entity.definition->file;
        if (file) add(entity, *file);
    }

    void look(TypeFact const& type) {
        std::optional<Id> file = fileOf(type.base);
        for (Id const& parameter : type.parameters)
            file = file ? file : fileOf(parameter);
        if (file) add(type.id, *file);
    }

    // Of what the entity stands in, is an instance of, or has as an argument.
    std::optional<Id> inheritedFile(Entity const& entity) const {
        std::optional<Id> file = fileOf(entity.owner);
        if (!file) file = fileOf(entity.templateOf);
        for (TemplateArgumentFact const& argument : entity.arguments)
            file = file ? file : fileOf(argument.type);
        // The arguments of a pack of a function show only in its parameters.
        if (!file && !entity.templateOf.is_nil()) file = fileOf(entity.type);
        return file;
    }

    std::optional<Id> fileOf(Id const& id) const {
        auto const found = files_.find(id);
        return found == files_.end() ? std::nullopt : std::optional(found->second);
    }

    void add(Id const& id, Id const& file) {
        renaming_.emplace(id, makeId(id, "in " + to_string(file)));
        files_.emplace(id, file);
    }

    void add(Entity const& entity, Id const& file) {
        add(entity.id, file);
        std::size_t parts = 0;
        if (FunctionFacts const* const function = entity.as<FunctionFacts>())
            parts = function->parameters.size();
        if (TemplateFacts const* const facts = entity.as<TemplateFacts>()) parts = facts->parameters.size();
        for (std::size_t i = 0; i < parts; ++i)
            renaming_.emplace(makeId(entity.id, "parameter", i),
                              makeId(renaming_.at(entity.id), "parameter", i));
    }

    bool isRival(Entity const& entity) const {
        if (!entity.inProject || !entity.isDefined || !entity.definition) return false;
        if (!entity.owner.is_nil() && !namespaces_.contains(entity.owner)) return false;
        Entity const* const known = known_(entity.id);
        if (!known || !known->inProject || !known->isDefined || !known->definition) return false;
        if (entity.definition->file == known->definition->file) return false;
        switch (entity.kind) {
        case EntityKind::Function:
            return isInMainFile(entity) || isInMainFile(*known);
        case EntityKind::Variable:
            return (isInMainFile(entity) || isInMainFile(*known)) && !isTentative(entity) &&
                   !isTentative(*known);
        case EntityKind::Typedef:
            // Equal ones may stand anywhere.
            return isRivalType(entity, *known) && typeOf(entity) != known->type;
        case EntityKind::Struct:
        case EntityKind::Class:
        case EntityKind::Union:
        case EntityKind::Enum:
        case EntityKind::Template:
            return isRivalType(entity, *known);
        case EntityKind::Namespace:
        case EntityKind::Method:
        case EntityKind::Member:
            return false;
        }
        return false;
    }

    bool isRivalType(Entity const& entity, Entity const& known) const {
        return isPrivate(entity) || isPrivate(known);
    }

    bool isInMainFile(Entity const& entity) const { return mainFiles_.contains(entity.definition->file); }

    // What a header declares is common to those that include it, also where each has a definition of its own.
    bool isPrivate(Entity const& entity) const {
        return isInMainFile(entity) &&
               std::all_of(entity.declarations.begin(), entity.declarations.end(),
                           [&](Position const& place) { return place.file == entity.definition->file; });
    }

    Id typeOf(Entity const& entity) const {
        auto const found = renaming_.find(entity.type);
        return found == renaming_.end() ? entity.type : found->second;
    }

    UnitFacts const& unit_;
    std::function<Entity const*(Id const&)> const& known_;
    IdSet const& mainFiles_;
    IdSet namespaces_;
    Renaming renaming_;
    IdMap<Id> files_; // of the definition that each renamed thing belongs to
};

// An archive that neither writes nor reads: it comes by every identity of a fact.
class Renamer {
  public:
    explicit Renamer(Renaming const& renaming) : renaming_(renaming) {}

    template <class... Fields>
    void operator()(Fields&... fields) {
        (visit(fields), ...);
    }

  private:
    void visit(Id& id) {
        auto const found = renaming_.find(id);
        if (found != renaming_.end()) id = found->second;
    }

    template <class Value>
    void visit(Value& value) {
        if constexpr (requires { value.index(); }) {
            std::visit([this](auto& held) { visit(held); }, value);
        } else if constexpr (requires { value.has_value(); }) {
            if (value) visit(*value);
        } else if constexpr (requires { value.begin(); }) {
            if constexpr (!std::is_same_v<Value, std::string>) {
                for (auto& element : value)
                    visit(element);
            }
        } else if constexpr (std::is_class_v<Value>) {
            serialize(*this, value);
        }
    }

    Renaming const& renaming_;
};

} // namespace

Renaming findRivals(UnitFacts const& unit, std::function<Entity const*(Id const&)> const& known,
                    IdSet const& mainFiles) {
    return RivalFinder(unit, known, mainFiles).find();
}

void rename(UnitFacts& unit, Renaming const& renaming) {
    Renamer renamer(renaming);
    renamer(unit);
}

} // namespace zelkor::producer
