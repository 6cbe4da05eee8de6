// Bodies of WithProxies.hpp, for the files that instantiate it.
#pragma once

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/WithProxies.hpp"

namespace brant::zero {

template <class Base, class Members>
auto ReferenceCollectionWithProxies<Base, Members>::entries() const noexcept -> Container const& {
    static Container const none;
    return content_ == nullptr ? none : content_->members;
}

template <class Base, class Members>
auto ReferenceCollectionWithProxies<Base, Members>::content() -> Content& {
    if (content_ == nullptr) content_ = std::make_unique<Content>();
    return *content_;
}

template <class Base, class Members>
template <class Table>
Table& ReferenceCollectionWithProxies<Base, Members>::table() {
    if constexpr (part<Table> == ProxyPart)
        return content().proxies;
    else
        return content().members;
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::copyContent(ReferenceCollectionWithProxies const& other) {
    content_ = other.content_ == nullptr ? nullptr : std::make_unique<Content>(*other.content_);
}

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::owns() const noexcept {
    return this->row().owning() && Core::isField(*this);
}

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::holds(ModelElementImpl const& element) const noexcept {
    return element.containerBody() == this->owner() && element.containmentRow() == &this->row() &&
           !element.isProxy();
}

// Reading.

template <class Base, class Members>
std::vector<ModelElement> ReferenceCollectionWithProxies<Base, Members>::getAllValues() const {
    std::vector<ModelElement> values;
    values.reserve(size());
    for (auto const& entry : entries())
        values.push_back(Members::member(entry));
    return values;
}

template <class Base, class Members>
std::vector<ModelElement> ReferenceCollectionWithProxies<Base, Members>::getAllValuesAndProxies() const {
    std::vector<ModelElement> values = getAllValues();
    if (content_ != nullptr)
        for (auto const& [id, proxy] : content_->proxies)
            values.push_back(proxy);
    return values;
}

template <class Base, class Members>
auto ReferenceCollectionWithProxies<Base, Members>::locate(ModelElementImpl const* element) const
    -> Iterator {
    Iterator const entry = entries().find(Members::key(this->row(), *element));
    return entry != entries().end() && Members::member(*entry).get() == element ? entry : entries().end();
}

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::genericContains(ModelElement const& element) const {
    return element && this->conforms(element) && locate(element.get()) != entries().end();
}

// Placeholders.

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::resolveAdd(ModelElement const& element) {
    return content().members.insert(Members::entry(this->row(), element)).second;
}

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::replaceEntry(typename ProxyTable::const_iterator entry,
                                                                 ModelElement const& target) {
    // This is no change of the model, but a target that may vanish again must give the placeholder back.
    if (Core::isNew(*target.get())) {
        if (!recordedEmplace(target.get())) return false;
        recordedExtract<ProxyTable>(entry);
        return true;
    }
    if (!resolveAdd(target)) return false;
    content_->proxies.erase(entry);
    return true;
}

template <class Base, class Members>
template <class Accept>
void ReferenceCollectionWithProxies<Base, Members>::resolveProxies(Accept accept) {
    if (content_ == nullptr) return;
    ProxyTable& proxies = content_->proxies;
    for (auto next = proxies.begin(); next != proxies.end();) {
        auto const entry = next++;
        if (!accept(*entry)) continue;
        ModelElement const target = this->resolveProxy(entry->second);
        if (target && !target.get()->isProxy()) replaceEntry(entry, target);
    }
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::resolveAll() {
    ModelElementImpl const* const owner = this->owner();
    if (owner == nullptr) return;
    schema::PropertyRow const* const opposite = this->row().opposite;
    resolveProxies([&](auto const& entry) {
        ModelElement const target = this->peekResolveProxy(entry.second);
        return target && (opposite == nullptr || Core::inverseContains(*target.get(), owner, *opposite));
    });
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::resolveLocal() {
    resolveProxies([](auto const& entry) { return !entry.first.isExternal(); });
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::replaceProxy(ModelElement const& element, unsigned long) {
    if (content_ == nullptr) return;
    auto const entry = content_->proxies.find(element.get()->getPersistentProxyId(true));
    if (entry == content_->proxies.end() || !replaceEntry(entry, element)) return;
    if (!owns() || holds(*element.get()) || this->owner()->model() == nullptr) return;
    Core::Level level(*this->owner());
    Core::requireAcyclic(*element.get(), this->owner());
    Core::takeOut(*element.get());
    Core::relink(*element.get(), this->owner(), &this->row());
    level.commit();
}

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::basicContainsProxyTo(ModelElement const& element) {
    if (content_ == nullptr) return false;
    for (auto entry = content_->proxies.begin(); entry != content_->proxies.end(); ++entry)
        if (this->peekResolveProxy(entry->second) == element && replaceEntry(entry, element)) return true;
    return false;
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::addProxy(ModelElement const& proxy) {
    ProxyId const id = proxy.get()->getProxyId();
    if (this->isComposite() && id.isExternal())
        reportException(brant0::messages::CannotCreateCrossModelAssociation());
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    if (content().proxies.count(id) == 0) recordedInsert(ProxyTable{{id, proxy}});
    operation.commit();
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::removeProxy(ModelElement const& proxy) {
    if (content_ == nullptr) return;
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    auto const entry = content_->proxies.find(proxy.get()->getProxyId());
    if (entry != content_->proxies.end()) recordedExtract<ProxyTable>(entry);
    operation.commit();
}

// Mutations with upkeep.

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::removeOne(ModelElementImpl* element) {
    if (element == nullptr) return;
    if (element->isProxy()) return removeProxy(ModelElement(element));
    Iterator const entry = locate(element);
    if (entry == entries().end()) return;
    AbstractOwnedCollection::Operation operation(*this);
    eraseEntry(entry);
    operation.commit();
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::eraseEntry(Iterator entry) {
    ModelElement const element = Members::member(*entry);
    recordedExtract(entry);
    if (owns() && element && holds(*element.get())) Core::relink(*element.get(), nullptr, nullptr);
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::genericRemove(ModelElement const& element) {
    if (!element) return;
    this->requireConforming(element);
    removeOne(element.get());
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::genericClear() {
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    std::vector<ModelElement> const gone = getAllValues();
    recordedReplace(Container());
    if (owns())
        for (ModelElement const& element : gone)
            if (element && holds(*element.get())) Core::relink(*element.get(), nullptr, nullptr);
    recordedReplace(ProxyTable());
    operation.commit();
}

// Mutations without upkeep.

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::basicAdd(ModelElement const& element) {
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    recordedEmplace(element.get());
    operation.commit();
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::basicAddWithProxy(ModelElement const& element) {
    if (element.get()->isProxy())
        addProxy(element);
    else
        basicAdd(element);
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::basicRemove(ModelElement const& element) {
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    if (Iterator const entry = locate(element.get()); entry != entries().end()) recordedExtract(entry);
    operation.commit();
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::basicClear() {
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    recordedReplace(Container());
    operation.commit();
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::basicCopyValues(ReferenceCollection const& other) {
    auto const& source = static_cast<ReferenceCollectionWithProxies const&>(other);
    Content copy = source.content_ == nullptr ? Content() : *source.content_;
    AbstractOwnedCollection::Operation operation(*this);
    this->modifying();
    recordedReplace(std::move(copy.members));
    recordedReplace(std::move(copy.proxies));
    operation.commit();
}

// Recorded steps, and taking them back.

template <class Base, class Members>
bool ReferenceCollectionWithProxies<Base, Members>::recordedEmplace(ModelElementImpl* element) {
    ModelElement const handle(element);
    auto entry = Members::entry(this->row(), handle);
    if (entries().find(Members::key(this->row(), *element)) != entries().end()) return false;
    Container inserted;
    inserted.insert(std::move(entry));
    recordedInsert(std::move(inserted));
    return true;
}

template <class Base, class Members>
template <class Table>
void ReferenceCollectionWithProxies<Base, Members>::recordedInsert(Table entry) {
    UndoLog* const log = Core::logFor(*this);
    if (log == nullptr) {
        table<Table>().merge(entry);
        return;
    }
    auto payload = std::make_unique<Table>(std::move(entry));
    table<Table>().insert(payload->begin(), payload->end());
    log->push(collectionEntry(*this, UndoOp::Insert, part<Table>, asPayload(payload.release())));
}

template <class Base, class Members>
template <class Table>
void ReferenceCollectionWithProxies<Base, Members>::recordedExtract(typename Table::const_iterator entry) {
    UndoLog* const log = Core::logFor(*this);
    if (log == nullptr) {
        auto const node = table<Table>().extract(entry);
        return;
    }
    auto payload = std::make_unique<Table>();
    if constexpr (requires { payload->reserve(1); })
        payload->reserve(1); // room now, so that nothing can fail once the node is out
    payload->insert(table<Table>().extract(entry));
    log->push(collectionEntry(*this, UndoOp::Erase, part<Table>, asPayload(payload.release())));
}

template <class Base, class Members>
template <class Table>
void ReferenceCollectionWithProxies<Base, Members>::recordedReplace(Table fresh) {
    if (content_ == nullptr && fresh.empty()) return;
    UndoLog* const log = Core::logFor(*this);
    auto old = std::make_unique<Table>(std::move(fresh));
    table<Table>().swap(*old);
    if (log != nullptr)
        log->push(collectionEntry(*this, UndoOp::Contents, part<Table>, asPayload(old.release())));
}

template <class Base, class Members>
template <class Table>
void ReferenceCollectionWithProxies<Base, Members>::takeBack(Table const& inserted) noexcept {
    for (auto const& entry : inserted) {
        if constexpr (part<Table> == MemberPart) {
            if constexpr (requires { entry.first; })
                content_->members.erase(entry.first);
            else
                content_->members.erase(entry);
        } else if (content_->proxies.erase(entry.first) == 0) {
            // The placeholder became its target meanwhile, which goes in its stead.
            ModelElementImpl* const proxy = entry.second.get();
            ModelElementImpl* const target = proxy->model()->peekResolveProxy(nullptr, proxy);
            if (Iterator const member = locate(target); member != entries().end())
                content_->members.erase(member);
        }
    }
}

template <class Base, class Members>
template <class Table>
void ReferenceCollectionWithProxies<Base, Members>::undoStep(UndoEntry& entry) noexcept {
    std::unique_ptr<Table> const payload(entry.pointer<Table>());
    Table& present = table<Table>();
    switch (entry.op) {
    case UndoOp::Insert:
        takeBack(*payload);
        break;
    case UndoOp::Erase:
        present.merge(*payload);
        break;
    case UndoOp::Contents:
        present.swap(*payload);
        break;
    default:
        break;
    }
}

template <class Base, class Members>
template <class Table>
void ReferenceCollectionWithProxies<Base, Members>::invertStep(UndoEntry const& entry) {
    Table const& payload = *entry.pointer<Table>();
    Table& present = table<Table>();
    switch (entry.op) {
    case UndoOp::Insert:
        takeBack(payload);
        break;
    case UndoOp::Erase:
        present.insert(payload.begin(), payload.end());
        break;
    case UndoOp::Contents:
        present = payload;
        break;
    default:
        break;
    }
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::undo(UndoEntry& entry) noexcept {
    if (entry.position == ProxyPart)
        undoStep<ProxyTable>(entry);
    else
        undoStep<Container>(entry);
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::applyInverse(UndoEntry const& entry) {
    if (entry.op == UndoOp::Touch) return;
    if (entry.position == ProxyPart)
        invertStep<ProxyTable>(entry);
    else
        invertStep<Container>(entry);
}

template <class Base, class Members>
void ReferenceCollectionWithProxies<Base, Members>::discard(UndoEntry& entry) noexcept {
    if (entry.op == UndoOp::Touch) return;
    if (entry.position == ProxyPart)
        delete entry.pointer<ProxyTable>();
    else
        delete entry.pointer<Container>();
}

} // namespace brant::zero
