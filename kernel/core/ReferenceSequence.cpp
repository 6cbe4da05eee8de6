#include "brant/zero/ReferenceSequence.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Standalone.hpp"

#include <algorithm>
#include <numeric>

namespace brant::zero {

ReferenceSequence::~ReferenceSequence() {
    freeBlock(block_);
}

bool ReferenceSequence::keepsOrder() const noexcept {
    return row().owning() && Core::isField(*this);
}

bool ReferenceSequence::holds(ModelElementImpl const& element) const noexcept {
    return element.containerBody() == owner() && element.containmentRow() == &row() && !element.isProxy();
}

// Reading.

ModelElementImpl* ReferenceSequence::resolved(std::size_t index) const {
    ModelElementImpl*& stored = const_cast<ModelElementImpl**>(block_->items())[index];
    if (!stored->isProxy() || !stored->valid()) return stored;
    ModelElement const target = resolveProxy(ModelElement(stored));
    if (!target || target.get()->isProxy()) return stored;
    schema::PropertyRow const& property = row();
    if (property.opposite != nullptr && !property.contained() && owner() != nullptr &&
        !Core::inverseContains(*target.get(), owner(), *property.opposite))
        return stored;
    // Reading moves nothing: what a unique collection owns is in it already, and what it does not own stays
    // away.
    if (property.unique() && keepsOrder()) return stored;
    auto& self = const_cast<ReferenceSequence&>(*this);
    // Resolution is no change, but a target that may vanish again must give the placeholder back.
    UndoLog* const log = Core::isNew(*target.get()) ? Core::logFor(self) : nullptr;
    target.addRef();
    ModelElementImpl* const proxy = std::exchange(stored, target.get());
    if (log != nullptr)
        log->push(collectionEntry(self, UndoOp::Store, index, asPayload(proxy)));
    else
        proxy->removeRef();
    return stored;
}

std::vector<ModelElement> ReferenceSequence::getAllValues() const {
    std::vector<ModelElement> values;
    values.reserve(size());
    for (std::size_t i = 0; i < size(); ++i)
        if (ModelElementImpl* element = resolved(i); !element->isProxy()) values.emplace_back(element);
    return values;
}

std::vector<ModelElement> ReferenceSequence::getAllValuesAndProxies() const {
    std::vector<ModelElement> values;
    values.reserve(size());
    for (std::size_t i = 0; i < size(); ++i)
        values.emplace_back(slot(i));
    return values;
}

void ReferenceSequence::resolveAll() {
    for (std::size_t i = 0; i < size(); ++i)
        static_cast<void>(resolved(i));
}

void ReferenceSequence::resolveLocal() {
    for (std::size_t i = 0; i < size(); ++i)
        if (slot(i)->isProxy() && slot(i)->valid() && !slot(i)->getProxyId().isExternal())
            static_cast<void>(resolved(i));
}

std::size_t ReferenceSequence::find(ModelElementImpl const* element) const noexcept {
    if (empty()) return npos;
    if (!block_->irregular && keepsOrder()) return holds(*element) ? findByOrder(element) : npos;
    ModelElementImpl* const* const begin = slots();
    ModelElementImpl* const* const end = begin + size();
    ModelElementImpl* const* const found = std::find(begin, end, element);
    return found == end ? npos : static_cast<std::size_t>(found - begin);
}

std::size_t ReferenceSequence::findResolving(ModelElementImpl const* element) {
    // A sequence in order by key holds no placeholders.
    if (empty() || orderedByKey()) return find(element);
    for (std::size_t i = 0; i < size(); ++i)
        if (slot(i) == element || resolved(i) == element) return i;
    return npos;
}

std::size_t ReferenceSequence::findByOrder(ModelElementImpl const* element) const noexcept {
    ModelElementImpl* const* const items = block_->items();
    // In order and in reverse are the common ways through a collection.
    if (items[0] == element) return 0;
    if (items[block_->size - 1] == element) return block_->size - 1;
    ModelElementImpl* const* const found = std::lower_bound(
        items, items + block_->size, element, [](ModelElementImpl const* a, ModelElementImpl const* b) {
            return Core::order(*a) < Core::order(*b);
        });
    return found != items + block_->size && *found == element ? static_cast<std::size_t>(found - items)
                                                              : npos;
}

bool ReferenceSequence::containsOne(ModelElementImpl const* element) const {
    if (element == nullptr || element->isProxy()) return false;
    // A single-valued other end answers for the collection.
    if (row().opposite != nullptr && row().opposite->kind == schema::PropertyKind::ContainerEnd &&
        keepsOrder())
        return holds(*element);
    return find(element) != npos;
}

bool ReferenceSequence::genericContains(ModelElement const& element) const {
    return element && conforms(element) && containsOne(element.get());
}

ModelElement ReferenceSequence::genericAt(unsigned long index) const {
    return ModelElement(resolved(index));
}

std::uint32_t ReferenceSequence::genericIndexOf(ModelElement const& element) const {
    if (!element || !conforms(element)) return ~std::uint32_t{0};
    return static_cast<std::uint32_t>(find(element.get()));
}

// Mutations with upkeep. Each is one level: checks, the other side, the record, the change.

void ReferenceSequence::addOne(ModelElementImpl* element) {
    insertOne(size(), element);
}

std::size_t ReferenceSequence::insertOne(std::size_t index, ModelElementImpl* element) {
    if (element == nullptr || !element->valid()) return npos;
    Core::requireSameModel(owner(), element);
    if (row().unique() && containsOne(element)) return find(element);
    Operation operation(*this);
    if (keepsOrder() && !element->isProxy() && !holds(*element))
        Core::contain(*owner(), row(), *element, index);
    else
        recordedInsert(index, element, keepsOrder());
    operation.commit();
    return std::min(index, size() - 1);
}

void ReferenceSequence::removeOne(ModelElementImpl* element) {
    if (element == nullptr) return;
    if (std::size_t const index = findResolving(element); index != npos) eraseAt(index);
}

void ReferenceSequence::eraseAt(std::size_t index) {
    Operation operation(*this);
    ModelElement const element(resolved(index));
    recordedErase(index);
    if (keepsOrder() && element.get()->valid() && holds(*element.get()))
        Core::relink(*element.get(), nullptr, nullptr);
    operation.commit();
}

void ReferenceSequence::eraseRange(std::size_t first, std::size_t last) {
    Operation operation(*this);
    if (first == 0 && last == size()) {
        modifying();
        for (ModelElement const& element : recordedClear())
            if (keepsOrder() && element.get()->valid() && holds(*element.get()))
                Core::relink(*element.get(), nullptr, nullptr);
    } else {
        std::vector<std::size_t> positions(last - first);
        std::iota(positions.begin(), positions.end(), first);
        eraseEach(positions);
    }
    operation.commit();
}

void ReferenceSequence::eraseEach(std::vector<std::size_t> const& positions) {
    Operation operation(*this);
    modifying();
    for (ModelElement const& element : recordedErase(positions))
        if (keepsOrder() && element.get()->valid() && holds(*element.get()))
            Core::relink(*element.get(), nullptr, nullptr);
    operation.commit();
}

void ReferenceSequence::replaceAt(std::size_t index, ModelElementImpl* element) {
    if (resolved(index) == element) return;
    if (element == nullptr || !element->valid())
        reportException(brant0::messages::CannotAddNonExistentObject());
    if (row().unique() && containsOne(element)) reportException(brant0::messages::CannotAddSecondObject());
    basicReplace(index, ModelElement(element));
}

void ReferenceSequence::basicReplace(std::size_t index, ModelElement const& element) {
    Core::requireSameModel(owner(), element.get());
    Operation operation(*this);
    ModelElement const old(resolved(index));
    bool const repeated = keepsOrder() && holds(*element.get());
    if (keepsOrder() && !element.get()->isProxy() && !holds(*element.get())) {
        Core::requireAcyclic(*element.get(), owner());
        Core::takeOut(*element.get());
        Core::relink(*element.get(), owner(), &row());
    }
    recordedStore(index, element.get(), repeated);
    if (keepsOrder() && old.get()->valid() && holds(*old.get())) Core::relink(*old.get(), nullptr, nullptr);
    operation.commit();
}

void ReferenceSequence::genericAdd(ModelElement const& element) {
    if (!element) return;
    requireConforming(element);
    addOne(element.get());
}

void ReferenceSequence::genericInsert(ModelElement const& element, unsigned long index) {
    if (!element) return;
    requireConforming(element);
    insertOne(index, element.get());
}

void ReferenceSequence::genericEnsureAt(ModelElement const& element, unsigned long index) {
    if (!element) return;
    requireConforming(element);
    Operation operation(*this);
    std::size_t const position = insertOne(index, element.get());
    modifying();
    recordedSwap(position, std::min<std::size_t>(index, size() - 1));
    operation.commit();
}

void ReferenceSequence::genericRemove(ModelElement const& element) {
    if (!element) return;
    requireConforming(element);
    removeOne(element.get());
}

void ReferenceSequence::genericReplace(ModelElement const& element, unsigned long index) {
    if (!element) return;
    requireConforming(element);
    replaceAt(index, element.get());
}

void ReferenceSequence::genericRemoveAt(unsigned long index) {
    eraseAt(index);
}

void ReferenceSequence::genericClear() {
    eraseRange(0, size());
}

// Mutations without upkeep.

void ReferenceSequence::basicAdd(ModelElement const& element) {
    Operation operation(*this);
    recordedInsert(size(), element.get(), keepsOrder());
    operation.commit();
}

void ReferenceSequence::basicRemove(ModelElement const& element) {
    Operation operation(*this);
    if (std::size_t const index = find(element.get()); index != npos) recordedErase(index);
    operation.commit();
}

void ReferenceSequence::basicClear() {
    Operation operation(*this);
    modifying();
    recordedClear();
    operation.commit();
}

void ReferenceSequence::basicCopyValues(ReferenceCollection const& other) {
    auto const& source = static_cast<ReferenceSequence const&>(other);
    Operation operation(*this);
    modifying();
    recordedClear();
    for (std::size_t i = 0; i < source.size(); ++i)
        recordedInsert(i, source.slot(i), keepsOrder());
    operation.commit();
}

bool ReferenceSequence::basicContainsProxyTo(ModelElement const& element) {
    if (owner() == nullptr || !conforms(element)) return false;
    for (std::size_t i = 0; i < size(); ++i) {
        ModelElementImpl*& stored = block_->items()[i];
        if (!stored->isProxy() || !stored->valid()) continue;
        if (peekResolveProxy(ModelElement(stored)) == element) {
            element.addRef();
            std::exchange(stored, element.get())->removeRef();
            return true;
        }
    }
    return false;
}

void ReferenceSequence::replaceProxy(ModelElement const& element, unsigned long index) {
    if (keepsOrder() && !holds(*element.get()) && owner()->model() != nullptr) {
        basicReplace(index, element);
        return;
    }
    ModelElementImpl*& stored = block_->items()[index];
    element.addRef();
    std::exchange(stored, element.get())->removeRef();
}

} // namespace brant::zero
