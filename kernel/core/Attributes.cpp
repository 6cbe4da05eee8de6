#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"

#include <bit>

namespace brant::zero {

namespace {

UndoEntry elementEntry(ModelElementImpl& element, schema::PropertyRow const* row, UndoOp op,
                       std::uint64_t payload) noexcept {
    UndoEntry entry{};
    entry.element = &element;
    entry.row = row;
    entry.op = op;
    entry.payload = payload;
    return entry;
}

} // namespace

bool Core::records(Body const& element) noexcept {
    ModelImpl* model = element.model();
    return model != nullptr && model->transactions().records(element);
}

bool Core::isNew(Body const& element) noexcept {
    ModelImpl* model = element.model();
    return model != nullptr && model->transactions().createdInside(element);
}

std::uint64_t Core::readBits(Body const& self, Row const& row) noexcept {
    switch (row.valueKind) {
    case schema::ValueKind::Boolean:
        return field<bool>(self, row) ? 1 : 0;
    case schema::ValueKind::Integer64:
    case schema::ValueKind::UInteger64:
    case schema::ValueKind::Real:
        return field<std::uint64_t>(self, row);
    default:
        return field<std::uint32_t>(self, row);
    }
}

void Core::restoreBits(Body& self, Row const& row, std::uint64_t bits) noexcept {
    switch (row.valueKind) {
    case schema::ValueKind::Boolean:
        field<bool>(self, row) = bits != 0;
        break;
    case schema::ValueKind::Integer64:
    case schema::ValueKind::UInteger64:
    case schema::ValueKind::Real:
        field<std::uint64_t>(self, row) = bits;
        break;
    default:
        field<std::uint32_t>(self, row) = static_cast<std::uint32_t>(bits);
    }
}

void Core::recordAttribute(Body& self, Row const& row) {
    if (!records(self)) return;
    UndoLog& log = self.model()->transactions().log();
    switch (row.valueKind) {
    case schema::ValueKind::StdString:
        log.push(elementEntry(self, &row, UndoOp::StdText,
                              asPayload(new std::string(field<std::string>(self, row)))));
        break;
    case schema::ValueKind::String:
        log.push(elementEntry(self, &row, UndoOp::Text,
                              asPayload(new std::u16string(field<std::u16string>(self, row)))));
        break;
    default:
        log.push(elementEntry(self, &row, UndoOp::Bits, readBits(self, row)));
    }
}

void Core::recordReference(Body& self, Row const& row) {
    if (!records(self)) return;
    Body* old = field<Body*>(self, row);
    UndoLog& log = self.model()->transactions().log();
    if (old != nullptr) old->addRef();
    log.push(elementEntry(self, &row, UndoOp::Reference, asPayload(old)));
}

void Core::recordLink(Body& child) {
    if (!records(child)) return;
    UndoEntry entry = elementEntry(child, child.feature_, UndoOp::Link, asPayload(child.container_));
    entry.position = child.order_;
    child.model()->transactions().log().push(entry);
}

void Core::recordTouch(AbstractOwnedCollection& collection) {
    UndoLog* log = logFor(collection);
    if (log == nullptr) return;
    log->push(collectionEntry(collection, UndoOp::Touch));
}

void Core::notifyModifying(Body& self, Row const& row) {
    switch (row.kind) {
    case schema::PropertyKind::Attribute:
        recordAttribute(self, row);
        break;
    case schema::PropertyKind::Reference:
        recordReference(self, row);
        break;
    case schema::PropertyKind::ContainerEnd:
        recordLink(self);
        break;
    case schema::PropertyKind::ManyAttribute:
    case schema::PropertyKind::ManyReference:
    case schema::PropertyKind::Map:
        recordTouch(collection(self, row));
        break;
    default:
        break;
    }
}

namespace {

/// A level only where none is open: storing a plain value cannot fail once its old value is recorded.
template <class Store>
void inLevel(ModelElementImpl& self, Store store) {
    ModelImpl* model = self.model();
    if (model != nullptr && model->transactions().depth() > 0) {
        store();
        return;
    }
    Core::Level level(self);
    store();
    level.commit();
}

} // namespace

template <class T>
void Core::setScalar(Body& self, Row const& row, T value) {
    requireWritable(self);
    if (field<T>(self, row) == value) return;
    inLevel(self, [&] {
        recordAttribute(self, row);
        field<T>(self, row) = value;
    });
}

template <class T>
void Core::setText(Body& self, Row const& row, T value) {
    requireWritable(self);
    if (field<T>(self, row) == value) return;
    inLevel(self, [&] {
        if (!records(self)) {
            field<T>(self, row) = std::move(value);
            return;
        }
        // The old text moves into the record instead of being copied.
        UndoLog& log = self.model()->transactions().log();
        auto old = std::make_unique<T>(std::move(value));
        old->swap(field<T>(self, row));
        UndoOp const op = std::is_same_v<T, std::string> ? UndoOp::StdText : UndoOp::Text;
        log.push(elementEntry(self, &row, op, asPayload(old.release())));
    });
}

void Core::setBoolean(Body& self, Row const& row, bool value) {
    setScalar(self, row, value);
}
void Core::setWord(Body& self, Row const& row, std::uint32_t value) {
    setScalar(self, row, value);
}
void Core::setLong(Body& self, Row const& row, std::uint64_t value) {
    setScalar(self, row, value);
}
void Core::setReal(Body& self, Row const& row, double value) {
    setScalar(self, row, value);
}
void Core::setStdString(Body& self, Row const& row, std::string value) {
    setText(self, row, std::move(value));
}
void Core::setString(Body& self, Row const& row, std::u16string value) {
    setText(self, row, std::move(value));
}

Core::Level::Level(ModelImpl& model) : model_(model), level_(model.transactions().begin()) {}

namespace {
ModelImpl& modelFor(ModelElementImpl const& element) {
    if (element.model() == nullptr) reportException(brant0::messages::CannotCreateWithoutModel());
    return *element.model();
}
} // namespace

Core::Level::Level(Body const& element) : Level(modelFor(element)) {}

Core::Level::~Level() {
    if (open_) model_.transactions().abandon(level_);
}

void Core::Level::commit() {
    open_ = false;
    try {
        model_.transactions().commit(level_);
    } catch (...) {
        // Either the commit stood and a callback threw, or it was refused and the level is still open.
        model_.transactions().abandon(level_);
        throw;
    }
}

bool Core::isField(AbstractOwnedCollection const& collection) noexcept {
    schema::PropertyRow const& row = collection.row();
    Body const* owner = collection.owner();
    return owner != nullptr && row.stored() && ownerOf(&collection, row) == owner;
}

UndoLog* Core::logFor(AbstractOwnedCollection const& collection) {
    Body* owner = collection.owner();
    if (owner == nullptr || !collection.row().stored() || !records(*owner)) return nullptr;
    return &owner->model()->transactions().log();
}

void Core::forget(AbstractOwnedCollection const& collection) noexcept {
    Body* owner = collection.owner();
    if (owner != nullptr && owner->model() != nullptr) owner->model()->transactions().forget(collection);
}

} // namespace brant::zero
