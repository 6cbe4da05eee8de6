// Builds the floor's trees from a plan, and gives access to their features by tables: one row a feature, with
// functions that read and write it, made from the list of features.
#pragma once

#include "Floor.hpp"

#include <memory>

namespace zelkor::bench::floor {

/// A built tree and what was created for it. Elements die with the model.
template <bool tracks>
struct Model {
    using Types = Tree<tracks>;
    typename Types::template Counted<typename Types::Project> project;
    std::vector<typename Types::Node*>
        created; // filled by `tracked` only: what an abandoned creation would undo
};

template <bool tracks>
class Builder {
  public:
    using Types = Tree<tracks>;
    using Node = typename Types::Node;
    using Scope = typename Types::Scope;
    using Symbol = typename Types::Symbol;
    template <class T>
    using Counted = typename Types::template Counted<T>;

    Builder(Model<tracks>& model_, std::uint64_t seed) : model(model_), identities(seed) {}

    void project(ProjectRecord const& record) { model.project = make(record, nullptr); }

    void file(FileRecord const& record) {
        auto& all = model.project->files;
        all.push_back(make(record, model.project.get()));
        files.push_back(all.back().get());
    }

    void openScope(UnitRecord const& record) {
        auto& all = model.project->compilations;
        all.push_back(make(record, model.project.get()));
        scopes.push_back(all.back().get());
    }

    void openScope(NamespaceRecord const& record) {
        auto& all = scopes.back()->namespaces;
        all.push_back(make(record, scopes.back()));
        scopes.push_back(all.back().get());
    }

    void closeScope() { scopes.pop_back(); }

    template <class Record>
    void symbol(Record const& record) {
        auto& all = scopes.back()->symbols;
        auto made = make(record, scopes.back());
        if constexpr (isTypeRecord<Record>) types.push_back(made.get());
        all.push_back(std::move(made));
    }

  private:
    template <class Record>
    auto make(Record const& record, Node* container) {
        using T = typename decltype(Types::classOf(record))::type;
        Counted<T> made(new T);
        made->container = container;
        made->identity = identities.next();
        if constexpr (tracks) model.created.push_back(made.get());
        forEachShared<Record, T>(
            [&](auto const& from, auto const& to) { copy(record.*(from.member), *made, to); });
        return made;
    }

    template <class From, class T, class To>
    void copy(From const& value, T& owner, To const& to) {
        auto& member = owner.*(to.member);
        if constexpr (To::form == Form::Reference) {
            if (value) member.assign(owner, target(value));
        } else if constexpr (To::form == Form::References) {
            member.resize(value.size());
            for (std::size_t at = 0; at < value.size(); ++at)
                member[at].assign(owner, target(value[at]));
        } else if constexpr (To::form == Form::Child) {
            if (value) member = make(*value, &owner);
        } else if constexpr (To::form == Form::Children) {
            member.reserve(value.size());
            for (auto const& record : value)
                member.push_back(make(record, &owner));
        } else {
            member = value;
        }
    }

    typename Types::Type& target(TypeIndex index) { return *types[index.at]; }
    typename Types::File& target(FileIndex index) { return *files[index.at]; }

    Model<tracks>& model;
    IdentitySource identities;
    std::vector<Scope*> scopes;
    std::vector<typename Types::Type*> types;
    std::vector<typename Types::File*> files;
};

} // namespace zelkor::bench::floor
