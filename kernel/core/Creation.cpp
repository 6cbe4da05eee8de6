// How elements come to be: directly, and by builders in one orchestrated transaction.

#include "ModelImpl.hpp"
#include "brant/zero/Builder.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Reflection.hpp"
#include "brant/zero/Slab.hpp"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace brant::zero {

using schema::PropertyKind;
using schema::PropertyRow;

namespace {

template <class T>
T& builderField(Builder& builder, PropertyRow const& row) noexcept {
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(&builder) + row.builderOffset);
}

using Owned = std::unique_ptr<Builder>;

template <class T>
void appendAll(ModelElementImpl& element, PropertyRow const& row, Builder& builder) {
    auto& list = Core::field<PrimitiveSequence<T>>(element, row);
    for (T const& value : builderField<std::vector<T>>(builder, row))
        list.push_back(value);
}

void takeList(ModelElementImpl& element, PropertyRow const& row, Builder& builder) {
    if (row.valueKind == schema::ValueKind::StdString)
        appendAll<std::string>(element, row, builder);
    else if (row.valueKind == schema::ValueKind::String)
        appendAll<std::u16string>(element, row, builder);
    else
        appendAll<int>(element, row, builder);
}

ModelImpl& requireModel(Model const& model) {
    if (!model) reportException(brant0::messages::CannotCreateWithoutModel());
    return *model.get();
}

} // namespace

void Core::announce(Body& element) {
    TransactionCoordinator& transactions = element.model()->transactions();
    if (!transactions.createdInside(element)) transactions.addCreated(element);
    element.state_ |= Body::Announced;
    element.didCreate();
}

ModelElement Core::create(schema::ClassTable const& table, Model const& model,
                          boost::uuids::uuid const& uuid) {
    ModelImpl& body = requireModel(model);
    Level level(body);
    body.expect(uuid);
    ModelElement element(table.construct(&body, uuid));
    announce(*element.get());
    level.commit();
    return element;
}

ModelElement Core::createInto(Body& owner, Row const& row, Builder& builder, boost::uuids::uuid const& uuid) {
    requireWritable(owner);
    builder.setModel(owner.getModel());
    Level level(owner);
    ModelElement element = builder.createElement(uuid);
    place(owner, row, *element.get());
    level.commit();
    return element;
}

void Core::place(Body& owner, Row const& row, Body& child) {
    if (child.container_ != nullptr || row.kind == PropertyKind::Map)
        addReference(owner, row, &child);
    else
        contain(owner, row, child, append);
}

std::uint64_t Core::takeValues(Body& element, Builder& builder) {
    schema::ClassTable const& table = builder.classTable();
    std::uint64_t containments = 0;
    for (std::uint64_t given = builder.given_; given != 0; given &= given - 1) {
        Row const& row = *table.stored[std::countr_zero(given)];
        if (row.contained()) {
            containments |= given & -given;
            continue;
        }
        switch (row.kind) {
        case PropertyKind::Attribute:
            takeAttribute(element, row, builder);
            break;
        case PropertyKind::ManyAttribute:
            takeList(element, row, builder);
            break;
        case PropertyKind::Reference: {
            ModelElement const& target = builderField<ModelElement>(builder, row);
            if (!target) break;
            requireSameModel(&element, target.get());
            basicSetReference(element, row, target.get());
            break;
        }
        case PropertyKind::ManyReference: {
            auto const& targets = builderField<std::vector<ModelElement>>(builder, row);
            ReferenceSequence& members = sequence(element, row);
            members.reserve(targets.size());
            for (ModelElement const& target : targets)
                if (target) {
                    requireSameModel(&element, target.get());
                    members.recordedInsert(members.size(), target.get());
                }
            break;
        }
        default:
            break;
        }
    }
    return containments;
}

void Core::takeAttribute(Body& element, Row const& row, Builder& builder) {
    switch (row.valueKind) {
    case schema::ValueKind::Boolean:
        field<bool>(element, row) = builderField<bool>(builder, row);
        break;
    case schema::ValueKind::StdString:
        field<std::string>(element, row) = builderField<std::string>(builder, row);
        break;
    case schema::ValueKind::String:
        field<std::u16string>(element, row) = builderField<std::u16string>(builder, row);
        break;
    case schema::ValueKind::Integer64:
    case schema::ValueKind::UInteger64:
    case schema::ValueKind::Real:
        field<std::uint64_t>(element, row) = builderField<std::uint64_t>(builder, row);
        break;
    default:
        field<std::uint32_t>(element, row) = builderField<std::uint32_t>(builder, row);
    }
}

void Core::cascade(Body& element, Builder& builder, std::uint64_t containments) {
    // Own containments in index order, then the superclass's: each child's subtree is whole before the next
    // begins.
    for (schema::ClassTable const* cls = &builder.classTable(); containments != 0; cls = cls->base) {
        std::uint64_t const inherited =
            (std::uint64_t{1} << (cls->base == nullptr ? 0 : cls->base->count)) - 1;
        for (std::uint64_t own = containments & ~inherited; own != 0; own &= own - 1)
            cascade(element, *cls->stored[std::countr_zero(own)], builder);
        containments &= inherited;
    }
}

void Core::cascade(Body& element, Row const& row, Builder& builder) {
    // The orchestration's level is abandoned when anything fails, so that no child needs one of its own.
    auto make = [&](Builder& sub) {
        builder.orchestrator_->addBuilder(&sub);
        place(element, row, sub.makeOnce(false, {}));
    };
    if (row.kind == PropertyKind::Reference) {
        if (Owned const& sub = builderField<Owned>(builder, row)) make(*sub);
        return;
    }
    auto const& subs = builderField<std::vector<Owned>>(builder, row);
    if (row.kind == PropertyKind::ManyReference) sequence(element, row).reserve(subs.size());
    for (Owned const& sub : subs)
        if (sub != nullptr) make(*sub);
}

namespace {

template <class T>
void storeScalar(Builder& builder, PropertyRow const& row, Value const& value) {
    builderField<T>(builder, row) = value.getValue<T>();
}

void storeAttribute(Builder& builder, PropertyRow const& row, Value const& value) {
    switch (row.valueKind) {
    case schema::ValueKind::Boolean:
        return storeScalar<bool>(builder, row, value);
    case schema::ValueKind::Integer:
        return storeScalar<int>(builder, row, value);
    case schema::ValueKind::UnlimitedNatural:
        return storeScalar<unsigned int>(builder, row, value);
    case schema::ValueKind::Integer64:
        return storeScalar<long>(builder, row, value);
    case schema::ValueKind::UInteger64:
        return storeScalar<unsigned long>(builder, row, value);
    case schema::ValueKind::Real:
        return storeScalar<double>(builder, row, value);
    case schema::ValueKind::StdString:
        return storeScalar<std::string>(builder, row, value);
    case schema::ValueKind::String:
        return storeScalar<std::u16string>(builder, row, value);
    default:
        builderField<std::uint32_t>(builder, row) =
            static_cast<std::uint32_t>(value.getEnumerationWord(*row.enumeration));
    }
}

template <class T>
void appendValue(Builder& builder, PropertyRow const& row, Value const& value) {
    builderField<std::vector<T>>(builder, row).push_back(value.getValue<T>());
}

} // namespace

void Core::setOrAdd(Builder& builder, Row const& row, Value const& value) {
    switch (row.kind) {
    case PropertyKind::Attribute:
        storeAttribute(builder, row, value);
        break;
    case PropertyKind::ManyAttribute:
        if (row.valueKind == schema::ValueKind::StdString)
            appendValue<std::string>(builder, row, value);
        else if (row.valueKind == schema::ValueKind::String)
            appendValue<std::u16string>(builder, row, value);
        else
            appendValue<int>(builder, row, value);
        break;
    case PropertyKind::Reference:
        builderField<ModelElement>(builder, row) = ModelElement(targetOf(row, value));
        break;
    default:
        builderField<std::vector<ModelElement>>(builder, row).emplace_back(targetOf(row, value));
    }
}

void Core::setOrAdd(Builder& builder, Row const& row, std::unique_ptr<Builder> sub) {
    if (row.kind == PropertyKind::Reference)
        builderField<Owned>(builder, row) = std::move(sub);
    else
        builderField<std::vector<Owned>>(builder, row).push_back(std::move(sub));
}

Builder::~Builder() = default;

void* Builder::operator new(std::size_t size) {
    return slab::allocate(size);
}
void Builder::operator delete(void* memory, std::size_t size) noexcept {
    slab::deallocate(memory, size);
}

meta::Class const& Builder::getMetaClass() const {
    return classTable().metaClass();
}

boost::dynamic_bitset<> Builder::setProperties() const {
    boost::dynamic_bitset<> bits(classTable().count);
    for (std::size_t i = 0; i < bits.size(); ++i)
        bits[i] = isGiven(i);
    return bits;
}

void Builder::countNesting(Builder* sub) {
    if (sub == nullptr) return;
    // What the builder already lies in gets deeper as well.
    std::uint32_t height = sub->height_ + 1;
    for (Builder const* at = this; at != nullptr && at->height_ < height; at = at->holder_, ++height)
        if (height > nestingLimit)
            throw std::length_error(
                "builders are nested deeper than " + std::to_string(nestingLimit) +
                " levels; create the outer elements first and add the inner ones to them");
    height = sub->height_ + 1;
    for (Builder* at = this; at != nullptr && at->height_ < height; at = at->holder_)
        at->height_ = height++;
    sub->holder_ = this;
}

ModelElement Builder::doCreate(bool skipCascade, boost::uuids::uuid const& uuid) {
    if (orchestrator_ != nullptr) return ModelElement(&makeOnce(skipCascade, uuid));
    Orchestrator orchestrator(this);
    ModelElement element(&make(skipCascade, uuid));
    orchestrator.commit();
    return element;
}

ModelElementImpl& Builder::makeOnce(bool skipCascade, boost::uuids::uuid const& uuid) {
    return created_ ? *created_.get() : make(skipCascade, uuid);
}

ModelElementImpl& Builder::make(bool skipCascade, boost::uuids::uuid const& uuid) {
    ModelImpl& model = *orchestrator_->model().get();
    model.expect(uuid);
    ModelElementImpl& element = *classTable().construct(&model, uuid);
    // Known to the transaction before anything can fail, so that it vanishes then.
    model.transactions().addCreated(element);
    std::uint64_t const containments = Core::takeValues(element, *this);
    if (skipCascade) {
        Core::passOver(element);
    } else {
        Core::announce(element);
        Core::cascade(element, *this, containments);
    }
    orchestrator_->enter(this, ModelElement(&element));
    return element;
}

ModelElement Builder::createBody(boost::uuids::uuid const& uuid) {
    return doCreate(false, uuid);
}

Builder::Orchestrator::Orchestrator(Builder* outermost)
    : model_(requireModel(outermost->model_).This()), transaction_(model_.beginTransaction()) {
    addBuilder(outermost);
}

Builder::Orchestrator::~Orchestrator() {
    for (Builder* builder = builders_; builder != nullptr;) {
        builder->orchestrator_ = nullptr;
        builder->created_ = nullptr;
        builder = std::exchange(builder->nextInOrchestration_, nullptr);
    }
}

void Builder::Orchestrator::addBuilder(Builder* builder) {
    if (builder->orchestrator_ == this) return;
    // Its link belongs to the list of the other one, which would lose all that follow.
    if (builder->orchestrator_ != nullptr) throw std::logic_error("the builder is being created already");
    builder->nextInOrchestration_ = std::exchange(builders_, builder);
    builder->orchestrator_ = this;
}

ModelElement Builder::Orchestrator::getCreatedElement(Builder const* builder) const {
    return builder->orchestrator_ == this ? builder->created_ : ModelElement();
}

void Builder::Orchestrator::enter(Builder* builder, ModelElement const& element) {
    builder->created_ = element;
}

void Builder::Orchestrator::commit() {
    transaction_.commit();
}

} // namespace brant::zero
