#include "kernel/RandomWalk.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace testmodel {

namespace za = zelkor::ast;

namespace {

meta::Property propertyOf(PropertyRow const& row) {
    return Core::propertyOf(&row);
}

} // namespace

std::vector<RandomWalk::Operation> const& RandomWalk::operations() {
    static std::vector<Operation> const all = {
        {"create", &Walk::createElement},
        {"create with a taken identity", &Walk::createTaken},
        {"create with a freed identity", &Walk::createAgain},
        {"set attribute", &Walk::setAttribute},
        {"set plain reference", &Walk::setPlainReference},
        {"set owned reference", &Walk::setOwnedReference},
        {"set container end", &Walk::setContainerEnd},
        {"add plain", &Walk::addPlain},
        {"add owned", &Walk::addOwned},
        {"insert", &Walk::insertMember},
        {"ensure at", &Walk::ensureMember},
        {"replace", &Walk::replaceMember},
        {"remove", &Walk::removeMember},
        {"remove at", &Walk::removeMemberAt},
        {"erase range", &Walk::eraseMembers},
        {"clear", &Walk::clearMembers},
        {"assign", &Walk::assignMembers},
        {"reserve", &Walk::reserveMembers},
        {"map insert", &Walk::insertFile},
        {"set path", &Walk::renameFile},
        {"map erase", &Walk::eraseFile},
        {"map clear", &Walk::clearFiles},
        {"list of values", &Walk::changeList},
        {"view", &Walk::changeView},
        {"builder", &Walk::buildTree},
        {"create into", &Walk::createInto},
        {"destroy", &Walk::destroyElement},
        {"proxy", &Walk::placeProxy},
        {"resolve", &Walk::resolveProxies},
        {"replace proxy", &Walk::replaceProxy},
        {"subscribe", &Walk::subscribe},
        {"callback throws", &Walk::throwInCallback},
        {"callback writes", &Walk::writeInCallback},
        {"wrong class", &Walk::addWrongClass},
        {"wrong value", &Walk::setWrongValue},
        {"other model", &Walk::linkOtherModel},
        {"nest in itself", &Walk::nestInItself},
        {"second object", &Walk::addSecond},
        {"throw in mid-level", &Walk::failInMidLevel},
    };
    return all;
}

std::vector<std::string> const& RandomWalk::operationNames() {
    static std::vector<std::string> const names = [] {
        std::vector<std::string> all = {"level committed", "level abandoned", "depth 5", "notice"};
        for (Operation const& operation : operations())
            all.emplace_back(operation.name);
        return all;
    }();
    return names;
}

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
    Operation const& operation = operations()[below(operations().size())];
    history_.emplace_back(operation.name);
    if (history_.size() > 40) history_.pop_front();
    std::string const before = oneIn(4) ? dump(model_) : std::string();
    try {
        (this->*operation.run)();
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
            result->setOrAdd(propertyOf(*row),
                             row->refersToElements()
                                 ? Value::createElementValue(propertyOf(*row), pick(*row->target))
                                 : sampleValue(*row, variant()));
        } else if (depth > 0) {
            std::unique_ptr<Builder> sub = builder(*row->target, depth - 1);
            result->setOrAdd(propertyOf(*row), sub);
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

// Elements.

void RandomWalk::createElement() {
    make(model_, anyClass());
}

void RandomWalk::createTaken() {
    ModelElement const present = pick(anyClass());
    EXPECT_EQ(failureOf([&] { Core::create(anyClass(), model_, present.uuid()); }), "UniquenessConstraint")
        << history();
}

void RandomWalk::createAgain() {
    ModelElement const old = make(model_, anyClass());
    boost::uuids::uuid const identity = old.uuid();
    ended_.push_back(old);
    old.destroy();
    ModelElement const again = Core::create(anyClass(), model_, identity);
    EXPECT_EQ(model_.findElement(identity), again) << history();
}

void RandomWalk::destroyElement() {
    ModelElement const element = pick(anyClass());
    ended_.push_back(element);
    element.destroy();
    EXPECT_FALSE(element) << history();
}

// Single values.

void RandomWalk::setAttribute() {
    Place const at = place(PropertyKind::Attribute);
    count("value kind " + std::to_string(static_cast<int>(at.row->valueKind)));
    at.element.setPropertyValue(propertyOf(*at.row), sampleValue(*at.row, variant()));
}

void RandomWalk::setPlainReference() {
    Place const at = place(PropertyKind::Reference, 0);
    ModelElement const target = oneIn(4) ? ModelElement() : pick(*at.row->target);
    at.element.setPropertyValue(propertyOf(*at.row), Value::createElementValue(propertyOf(*at.row), target));
}

void RandomWalk::setOwnedReference() {
    Place const at = place(PropertyKind::Reference, 1);
    ModelElement const target = oneIn(4) ? ModelElement() : pick(*at.row->target);
    at.element.setPropertyValue(propertyOf(*at.row), Value::createElementValue(propertyOf(*at.row), target));
}

void RandomWalk::setContainerEnd() {
    Place const at = place(PropertyKind::ContainerEnd);
    ModelElement const target = oneIn(4) ? ModelElement() : pick(*at.row->target);
    at.element.setPropertyValue(propertyOf(*at.row), Value::createElementValue(propertyOf(*at.row), target));
}

// Sequences.

void RandomWalk::addTo(bool contained) {
    Place const at = sequence(contained);
    collection(at).genericAdd(pick(*at.row->target));
}

void RandomWalk::insertMember() {
    Place const at = sequence(oneIn(2));
    auto& members = Core::sequence(*at.element.get(), *at.row);
    members.genericInsert(pick(*at.row->target), below(members.size() + 1));
}

void RandomWalk::ensureMember() {
    Place const at = sequence(oneIn(2));
    auto& members = Core::sequence(*at.element.get(), *at.row);
    members.genericEnsureAt(pick(*at.row->target), below(members.size() + 1));
}

void RandomWalk::replaceMember() {
    Place const at = sequence(oneIn(2));
    auto& members = Core::sequence(*at.element.get(), *at.row);
    if (members.size() > 0) members.genericReplace(pick(*at.row->target), below(members.size()));
}

void RandomWalk::removeMember() {
    Place const at = sequence(oneIn(2));
    auto& members = Core::sequence(*at.element.get(), *at.row);
    if (members.size() > 0) members.genericRemove(members.genericAt(below(members.size())));
}

void RandomWalk::removeMemberAt() {
    Place const at = sequence(oneIn(2));
    auto& members = Core::sequence(*at.element.get(), *at.row);
    if (members.size() > 0) members.genericRemoveAt(below(members.size()));
}

void RandomWalk::eraseMembers() {
    auto& symbols = za::Scope::cast(pick(za::Scope::Impl::table)).getSymbolsMutable();
    auto const first = static_cast<std::ptrdiff_t>(below(symbols.size() + 1));
    auto const last = first + static_cast<std::ptrdiff_t>(below(symbols.size() - std::size_t(first) + 1));
    symbols.erase(symbols.begin() + first, symbols.begin() + last);
}

void RandomWalk::clearMembers() {
    collection(sequence(oneIn(2))).genericClear();
}

void RandomWalk::assignMembers() {
    Place const from = sequence(oneIn(2));
    // The content of one element replaces that of another of its class.
    ModelElement const to = pick(*from.row->owner);
    to.setPropertyValue(propertyOf(*from.row), from.element.getPropertyValue(propertyOf(*from.row)));
}

void RandomWalk::reserveMembers() {
    Place const at = sequence(oneIn(2));
    Core::sequence(*at.element.get(), *at.row).reserve(below(40));
}

// The map.

void RandomWalk::insertFile() {
    za::Project const project = za::Project::cast(pick(za::Project::Impl::table));
    auto const file = za::source::SourceFile::cast(pick(za::source::SourceFile::Impl::table));
    auto const resolution = static_cast<CollisionResolution>(below(3));
    count("map insert, resolution " + std::to_string(static_cast<int>(resolution)));
    project.getFilesMutable().insert(file, resolution);
}

void RandomWalk::renameFile() {
    auto const file = za::source::SourceFile::cast(pick(za::source::SourceFile::Impl::table));
    file.setPath(std::u16string(u"/f") + char16_t(u'a' + below(5)));
}

void RandomWalk::eraseFile() {
    za::Project const project = za::Project::cast(pick(za::Project::Impl::table));
    if (oneIn(2))
        project.getFilesMutable().erase(std::u16string(u"/f") + char16_t(u'a' + below(5)));
    else if (project.hasFiles())
        project.getFilesMutable().remove(*project.getFiles().begin());
}

void RandomWalk::clearFiles() {
    za::Project::cast(pick(za::Project::Impl::table)).getFilesMutable().clear();
}

// Values, views.

void RandomWalk::changeList() {
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

void RandomWalk::changeView() {
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

void RandomWalk::buildTree() {
    std::unique_ptr<Builder> const root = builder(anyClass(), 3);
    root->createElement();
    if (oneIn(2)) root->createElement(); // a builder makes as many as it is asked for
}

void RandomWalk::createInto() {
    Place const at = oneIn(2) ? place(PropertyKind::ManyReference, 1)
                              : place(oneIn(4) ? PropertyKind::Map : PropertyKind::Reference, 1);
    std::unique_ptr<Builder> const part = builder(*at.row->target, 1);
    ModelElement const made = Core::createInto(*at.element.get(), *at.row, *part, {});
    EXPECT_EQ(made.container(), at.element) << history();
}

// Proxies.

void RandomWalk::placeProxy() {
    if (oneIn(2)) {
        Place const at = sequence(oneIn(3));
        return collection(at).genericAdd(proxy(*at.row->target));
    }
    Place const at = place(PropertyKind::Reference);
    at.element.setPropertyValue(propertyOf(*at.row),
                                Value::createElementValue(propertyOf(*at.row), proxy(*at.row->target)));
}

void RandomWalk::resolveProxies() {
    Place const at = oneIn(2) ? sequence(oneIn(3)) : place(PropertyKind::Reference);
    static_cast<void>(at.element.getPropertyValue(propertyOf(*at.row)));
}

void RandomWalk::replaceProxy() {
    Place const at = place(PropertyKind::Reference);
    ModelElement const target = pick(*at.row->target);
    at.element.setPropertyValue(propertyOf(*at.row), Value::createElementValue(propertyOf(*at.row), target),
                                ReflectionPrivateTag::NO_PROXY_RESOLVE);
}

// Callbacks.

void RandomWalk::subscribe() {
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

void RandomWalk::throwInCallback() {
    if (depth_ > 0) return;
    subscribe();
    callbackThrows_ = true;
    EXPECT_EQ(failureOf([&] { make(model_, anyClass()); }), "callback") << history();
}

void RandomWalk::writeInCallback() {
    if (depth_ > 0) return;
    subscribe();
    callbackWrites_ = true;
    std::size_t const before = model_.size();
    make(model_, anyClass());
    EXPECT_EQ(model_.size(), before + 2) << history();
}

// What is refused.

void RandomWalk::addWrongClass() {
    Place const at = sequence(oneIn(2));
    ModelElement const stranger = pick(
        at.row->target->conformsTo(za::Macro::Impl::table) ? za::Scope::Impl::table : za::Macro::Impl::table);
    if (!stranger.get()->classTable().conformsTo(*at.row->target)) collection(at).genericAdd(stranger);
}

void RandomWalk::setWrongValue() {
    Place const at = place(oneIn(2) ? PropertyKind::Attribute : PropertyKind::Reference);
    at.element.setPropertyValue(
        propertyOf(*at.row), Value::own<unsigned long>(meta::requireType("UInteger64"), ValueFlags::One, 5));
}

void RandomWalk::linkOtherModel() {
    Place const at = oneIn(2) ? sequence(oneIn(2)) : place(PropertyKind::ContainerEnd);
    ModelElement const stranger = make(other_, *at.row->target);
    if (at.row->kind == PropertyKind::ContainerEnd)
        at.element.setPropertyValue(propertyOf(*at.row),
                                    Value::createElementValue(propertyOf(*at.row), stranger));
    else
        collection(at).genericAdd(stranger);
    ADD_FAILURE() << "a link into another model was taken" << history();
}

void RandomWalk::nestInItself() {
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

void RandomWalk::addSecond() {
    Place const at = sequence(true);
    auto& members = Core::sequence(*at.element.get(), *at.row);
    if (members.size() < 2) return;
    ModelElement const second = members.genericAt(1);
    if (second) members.genericReplace(second, 0);
}

void RandomWalk::failInMidLevel() {
    struct Refused : std::exception {};
    std::string const before = dump(model_);
    try {
        Transaction const level = model_.beginTransaction();
        for (std::size_t i = 0; i < 4; ++i)
            addOwned();
        throw Refused();
    } catch (std::exception const&) {
    }
    check(before, "an exception inside a level");
}

} // namespace testmodel
