// Random operations, in nested levels that are committed or abandoned at random.

#include "kernel/RandomWalk.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <stdexcept>

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

/// What users of a model do, and what it refuses.
class UserWalk : public RandomWalk {
  public:
    explicit UserWalk(std::uint64_t seed) : RandomWalk(seed) {
        operations_ = {
            {"create", [this] { createElement(); }},
            {"create with a taken identity", [this] { createTaken(); }},
            {"create with a freed identity", [this] { createAgain(); }},
            {"set attribute", [this] { setAttribute(); }},
            {"set plain reference", [this] { setPlainReference(); }},
            {"set owned reference", [this] { setOwnedReference(); }},
            {"set container end", [this] { setContainerEnd(); }},
            {"add plain", [this] { addTo(false); }},
            {"add owned", [this] { addTo(true); }},
            {"insert", [this] { insertMember(); }},
            {"ensure at", [this] { ensureMember(); }},
            {"replace", [this] { replaceMember(); }},
            {"remove", [this] { removeMember(); }},
            {"remove at", [this] { removeMemberAt(); }},
            {"erase range", [this] { eraseMembers(); }},
            {"clear", [this] { clearMembers(); }},
            {"assign", [this] { assignMembers(); }},
            {"reserve", [this] { reserveMembers(); }},
            {"map insert", [this] { insertFile(); }},
            {"set path", [this] { renameFile(); }},
            {"map erase", [this] { eraseFile(); }},
            {"map clear", [this] { clearFiles(); }},
            {"list of values", [this] { changeList(); }},
            {"view", [this] { changeView(); }},
            {"builder", [this] { buildTree(); }},
            {"create into", [this] { createInto(); }},
            {"destroy", [this] { destroyElement(); }},
            {"proxy", [this] { placeProxy(); }},
            {"resolve", [this] { resolveProxies(); }},
            {"replace proxy", [this] { replaceProxy(); }},
            {"subscribe", [this] { subscribe(); }},
            {"callback throws", [this] { throwInCallback(); }},
            {"callback writes", [this] { writeInCallback(); }},
            {"wrong class", [this] { addWrongClass(); }},
            {"wrong value", [this] { setWrongValue(); }},
            {"other model", [this] { linkOtherModel(); }},
            {"nest in itself", [this] { nestInItself(); }},
            {"second object", [this] { addSecond(); }},
            {"throw in mid-level", [this] { failInMidLevel(); }},
        };
    }
    /// \returns the names of all operations that a run must have done at least once.
    [[nodiscard]] std::vector<std::string> operationNames() const {
        std::vector<std::string> all = {"level committed", "level abandoned", "depth 5", "notice"};
        for (Operation const& operation : operations_)
            all.emplace_back(operation.name);
        return all;
    }

  private:
    static meta::Property propertyOf(PropertyRow const& row) { return Core::propertyOf(&row); }

    // Elements.

    void createElement() { make(model_, anyClass()); }

    void createTaken() {
        ModelElement const present = pick(anyClass());
        EXPECT_EQ(failureOf([&] { Core::create(anyClass(), model_, present.uuid()); }),
                  "UniquenessConstraint")
            << history();
    }

    void createAgain() {
        ModelElement const old = make(model_, anyClass());
        boost::uuids::uuid const identity = old.uuid();
        ended_.push_back(old);
        old.destroy();
        ModelElement const again = Core::create(anyClass(), model_, identity);
        EXPECT_EQ(model_.findElement(identity), again) << history();
    }

    void destroyElement() {
        ModelElement const element = pick(anyClass());
        ended_.push_back(element);
        element.destroy();
        EXPECT_FALSE(element) << history();
    }

    // Single values.

    void setAttribute() {
        Place const at = place(PropertyKind::Attribute);
        count("value kind " + std::to_string(static_cast<int>(at.row->valueKind)));
        at.element.setPropertyValue(propertyOf(*at.row), sampleValue(*at.row, variant()));
    }

    void setPlainReference() {
        Place const at = place(PropertyKind::Reference, 0);
        ModelElement const target = oneIn(4) ? ModelElement() : pick(*at.row->target);
        at.element.setPropertyValue(propertyOf(*at.row),
                                    Value::createElementValue(propertyOf(*at.row), target));
    }

    void setOwnedReference() {
        Place const at = place(PropertyKind::Reference, 1);
        ModelElement const target = oneIn(4) ? ModelElement() : pick(*at.row->target);
        at.element.setPropertyValue(propertyOf(*at.row),
                                    Value::createElementValue(propertyOf(*at.row), target));
    }

    void setContainerEnd() {
        Place const at = place(PropertyKind::ContainerEnd);
        ModelElement const target = oneIn(4) ? ModelElement() : pick(*at.row->target);
        at.element.setPropertyValue(propertyOf(*at.row),
                                    Value::createElementValue(propertyOf(*at.row), target));
    }

    // Sequences.

    void addTo(bool contained) {
        Place const at = sequence(contained);
        collection(at).genericAdd(pick(*at.row->target));
    }

    void insertMember() {
        Place const at = sequence(oneIn(2));
        auto& members = Core::sequence(*at.element.get(), *at.row);
        members.genericInsert(pick(*at.row->target), below(members.size() + 1));
    }

    void ensureMember() {
        Place const at = sequence(oneIn(2));
        auto& members = Core::sequence(*at.element.get(), *at.row);
        members.genericEnsureAt(pick(*at.row->target), below(members.size() + 1));
    }

    void replaceMember() {
        Place const at = sequence(oneIn(2));
        auto& members = Core::sequence(*at.element.get(), *at.row);
        if (members.size() > 0) members.genericReplace(pick(*at.row->target), below(members.size()));
    }

    void removeMember() {
        Place const at = sequence(oneIn(2));
        auto& members = Core::sequence(*at.element.get(), *at.row);
        if (members.size() > 0) members.genericRemove(members.genericAt(below(members.size())));
    }

    void removeMemberAt() {
        Place const at = sequence(oneIn(2));
        auto& members = Core::sequence(*at.element.get(), *at.row);
        if (members.size() > 0) members.genericRemoveAt(below(members.size()));
    }

    void eraseMembers() {
        auto& symbols = za::Scope::cast(pick(za::Scope::Impl::table)).getSymbolsMutable();
        auto const first = static_cast<std::ptrdiff_t>(below(symbols.size() + 1));
        auto const last = first + static_cast<std::ptrdiff_t>(below(symbols.size() - std::size_t(first) + 1));
        symbols.erase(symbols.begin() + first, symbols.begin() + last);
    }

    void clearMembers() { collection(sequence(oneIn(2))).genericClear(); }

    void assignMembers() {
        Place const from = sequence(oneIn(2));
        // The content of one element replaces that of another of its class.
        ModelElement const to = pick(*from.row->owner);
        to.setPropertyValue(propertyOf(*from.row), from.element.getPropertyValue(propertyOf(*from.row)));
    }

    void reserveMembers() {
        Place const at = sequence(oneIn(2));
        Core::sequence(*at.element.get(), *at.row).reserve(below(40));
    }

    // The map.

    void insertFile() {
        za::Project const project = za::Project::cast(pick(za::Project::Impl::table));
        auto const file = za::source::SourceFile::cast(pick(za::source::SourceFile::Impl::table));
        auto const resolution = static_cast<CollisionResolution>(below(3));
        count("map insert, resolution " + std::to_string(static_cast<int>(resolution)));
        project.getFilesMutable().insert(file, resolution);
    }

    void renameFile() {
        auto const file = za::source::SourceFile::cast(pick(za::source::SourceFile::Impl::table));
        file.setPath(std::u16string(u"/f") + char16_t(u'a' + below(5)));
    }

    void eraseFile() {
        za::Project const project = za::Project::cast(pick(za::Project::Impl::table));
        if (oneIn(2))
            project.getFilesMutable().erase(std::u16string(u"/f") + char16_t(u'a' + below(5)));
        else if (project.hasFiles())
            project.getFilesMutable().remove(*project.getFiles().begin());
    }

    void clearFiles() { za::Project::cast(pick(za::Project::Impl::table)).getFilesMutable().clear(); }

    // Values, views.

    void changeList() {
        Place const at = place(PropertyKind::ManyAttribute);
        auto& values =
            static_cast<GenericPrimitiveSequenceInterface&>(Core::collection(*at.element.get(), *at.row));
        Value const value = sampleValue(*at.row, static_cast<unsigned>(below(4)));
        std::size_t const action = below(8);
        count("list action " + std::to_string(action));
        count("list of value kind " + std::to_string(static_cast<int>(at.row->valueKind)));
        std::size_t const size = values.size();
        switch (action) {
        case 0:
            return values.genericRemove(value);
        case 1:
            return values.genericInsert(value, below(size + 1));
        case 2:
            return size == 0 ? values.clear() : values.genericReplace(value, below(size));
        case 3:
            return size == 0 ? values.clear() : values.genericRemoveAt(below(size));
        case 4:
            return values.clear();
        case 5:
            return at.element.setPropertyValue(propertyOf(*at.row),
                                               pick(*at.row->owner).getPropertyValue(propertyOf(*at.row)));
        default:
            return values.genericAdd(value);
        }
    }

    void changeView() {
        Place const at = place(PropertyKind::View);
        ReferenceCollection& view = collection(at);
        std::size_t const action = below(4);
        count("view action " + std::to_string(action));
        if (action == 0)
            view.genericClear();
        else if (action == 1)
            view.genericRemove(pick(*at.row->target));
        else
            view.genericAdd(pick(*at.row->target));
    }

    // Builders.

    void buildTree() {
        std::unique_ptr<Builder> const root = builder(anyClass(), 3);
        root->createElement();
        if (oneIn(2)) root->createElement(); // a builder makes as many as it is asked for
    }

    void createInto() {
        Place const at = oneIn(2) ? place(PropertyKind::ManyReference, 1)
                                  : place(oneIn(4) ? PropertyKind::Map : PropertyKind::Reference, 1);
        std::unique_ptr<Builder> const part = builder(*at.row->target, 1);
        ModelElement const made = Core::createInto(*at.element.get(), *at.row, *part, {});
        EXPECT_EQ(made.container(), at.element) << history();
    }

    // Proxies.

    void placeProxy() {
        if (oneIn(2)) {
            Place const at = sequence(oneIn(3));
            return collection(at).genericAdd(proxy(*at.row->target));
        }
        Place const at = place(PropertyKind::Reference);
        at.element.setPropertyValue(propertyOf(*at.row),
                                    Value::createElementValue(propertyOf(*at.row), proxy(*at.row->target)));
    }

    void resolveProxies() {
        Place const at = oneIn(2) ? sequence(oneIn(3)) : place(PropertyKind::Reference);
        static_cast<void>(at.element.getPropertyValue(propertyOf(*at.row)));
    }

    void replaceProxy() {
        Place const at = place(PropertyKind::Reference);
        ModelElement const target = pick(*at.row->target);
        at.element.setPropertyValue(propertyOf(*at.row),
                                    Value::createElementValue(propertyOf(*at.row), target),
                                    ReflectionPrivateTag::NO_PROXY_RESOLVE);
    }

    // Callbacks.

    void subscribe() {
        if (subscriptions_.size() > 2) subscriptions_.erase(subscriptions_.begin());
        subscriptions_.push_back(model_.onCommit([this](CommitNotice const& notice) {
            ++notices_;
            for (auto const* changes : {&notice.changed, &notice.destroyed})
                for (ElementChange const& change : *changes)
                    for (meta::Property const& property : change.properties())
                        static_cast<void>(change.oldValue(property));
            if (std::exchange(callbackWrites_, false)) make(model_, anyClass());
            if (std::exchange(callbackThrows_, false)) throw std::runtime_error("callback");
        }));
    }

    void throwInCallback() {
        if (depth_ > 0) return;
        subscribe();
        callbackThrows_ = true;
        EXPECT_EQ(failureOf([&] { make(model_, anyClass()); }), "callback") << history();
    }

    void writeInCallback() {
        if (depth_ > 0) return;
        subscribe();
        callbackWrites_ = true;
        std::size_t const before = model_.size();
        make(model_, anyClass());
        EXPECT_EQ(model_.size(), before + 2) << history();
    }

    // What is refused.

    void addWrongClass() {
        Place const at = sequence(oneIn(2));
        ModelElement const stranger =
            pick(at.row->target->conformsTo(za::Macro::Impl::table) ? za::Scope::Impl::table
                                                                    : za::Macro::Impl::table);
        if (!stranger.get()->classTable().conformsTo(*at.row->target)) collection(at).genericAdd(stranger);
    }

    void setWrongValue() {
        Place const at = place(oneIn(2) ? PropertyKind::Attribute : PropertyKind::Reference);
        at.element.setPropertyValue(
            propertyOf(*at.row),
            Value::own<unsigned long>(meta::requireType("UInteger64"), ValueFlags::One, 5));
    }

    void linkOtherModel() {
        Place const at = oneIn(2) ? sequence(oneIn(2)) : place(PropertyKind::ContainerEnd);
        ModelElement const stranger = make(other_, *at.row->target);
        if (at.row->kind == PropertyKind::ContainerEnd)
            at.element.setPropertyValue(propertyOf(*at.row),
                                        Value::createElementValue(propertyOf(*at.row), stranger));
        else
            collection(at).genericAdd(stranger);
        ADD_FAILURE() << "a link into another model was taken" << history();
    }

    void nestInItself() {
        za::Scope const scope = za::Scope::cast(pick(za::Scope::Impl::table));
        za::Namespace const inner = za::Namespace::create(model_);
        scope.getNamespacesMutable().add(inner);
        inner.getNamespacesMutable().add(za::Namespace::create(model_));
        za::Scope const deepest = inner.getNamespaces()[0];
        std::string const before = dump(model_);
        EXPECT_EQ(failureOf([&] { deepest.getNamespacesMutable().add(inner); }), "CircularContainment")
            << history();
        EXPECT_EQ(failureOf([&] { inner.setParent(deepest); }), "CircularContainment") << history();
        check(before, "a circular containment");
    }

    void addSecond() {
        Place const at = sequence(true);
        auto& members = Core::sequence(*at.element.get(), *at.row);
        if (members.size() < 2) return;
        ModelElement const second = members.genericAt(1);
        if (second) members.genericReplace(second, 0);
    }

    void failInMidLevel() {
        struct Refused : std::exception {};
        std::string const before = dump(model_);
        try {
            Transaction const level = model_.beginTransaction();
            for (std::size_t i = 0; i < 4; ++i)
                addTo(true);
            throw Refused();
        } catch (std::exception const&) {
        }
        check(before, "an exception inside a level");
    }

    std::vector<Subscription> subscriptions_;
    bool callbackThrows_ = false;
    bool callbackWrites_ = false;
};

/// More seeds than the usual ones by the environment: ZELKOR_RANDOM_SEEDS, and steps by ZELKOR_RANDOM_STEPS.
std::size_t setting(char const* name, std::size_t usual) {
    char const* const text = std::getenv(name);
    return text == nullptr ? usual : std::strtoul(text, nullptr, 10);
}

void print(char const* what, std::map<std::string, std::size_t> const& counts) {
    std::cout << what << ':';
    for (auto const& [name, count] : counts)
        std::cout << "\n  " << count << ' ' << name;
    std::cout << '\n';
}

} // namespace

TEST(RandomOperation, AbandonedLevelsLeaveNoTrace) {
    std::map<std::string, std::size_t> counts;
    std::map<std::string, std::size_t> refusals;
    std::size_t const seeds = setting("ZELKOR_RANDOM_SEEDS", 3);
    for (std::size_t seed = 1; seed <= seeds && !HasFailure(); ++seed) {
        UserWalk walk(seed);
        walk.run(setting("ZELKOR_RANDOM_STEPS", 2000));
        for (auto const& [name, count] : walk.counts())
            counts[name] += count;
        for (auto const& [name, count] : walk.refusals())
            refusals[name] += count;
    }
    print("operations", counts);
    print("refused", refusals);
    for (std::string const& name : UserWalk(1).operationNames())
        EXPECT_GT(counts[name], 0u) << name;
    for (char const* const message :
         {"UniquenessConstraint", "CannotAddIncompatibleTypes", "CannotCastIncompatibleTypes",
          "CannotCreateCrossModelAssociation", "CircularContainment", "CannotAddSecondObject"})
        EXPECT_GT(refusals[message], 0u) << message;
}
