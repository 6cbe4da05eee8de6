// How elements come to be: directly, and by builders in one orchestrated transaction.

#include "ModelImpl.hpp"
#include "brant/zero/Builder.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Reflection.hpp"

#include <algorithm>
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
    body.requireFree(uuid);
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
    if (row.kind == PropertyKind::ManyReference)
        sequence(owner, row).addOne(element.get());
    else
        addReference(owner, row, element.get());
    level.commit();
    return element;
}

void Core::takeValues(Body& element, Builder& builder) {
    schema::ClassTable const& table = builder.classTable();
    for (std::size_t i = 1; i < table.count; ++i) {
        Row const& row = *table.stored[i];
        if (!builder.isGiven(i) || row.contained()) continue;
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

void Core::cascade(Body& element, Builder& builder) {
    // Own containments in index order, then the superclass's: each child's subtree is whole before the next
    // begins.
    for (schema::ClassTable const* cls = &builder.classTable(); cls != nullptr; cls = cls->base)
        for (std::uint16_t i = 0; i < cls->rowCount; ++i) {
            Row const& row = cls->rows[i];
            if (!row.owning() || !builder.isGiven(row.index)) continue;
            auto make = [&](Builder& sub) {
                builder.orchestrator_->addBuilder(&sub);
                return sub.createElement();
            };
            if (row.kind == PropertyKind::Reference) {
                if (Owned const& sub = builderField<Owned>(builder, row))
                    setReference(element, row, make(*sub).get());
                continue;
            }
            auto const& subs = builderField<std::vector<Owned>>(builder, row);
            if (row.kind == PropertyKind::ManyReference) sequence(element, row).reserve(subs.size());
            for (Owned const& sub : subs)
                if (sub != nullptr) addReference(element, row, make(*sub).get());
        }
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
        builderField<std::uint32_t>(builder, row) = enumerationWord(row, value);
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
            throw std::length_error("builders are nested deeper than " + std::to_string(nestingLimit) +
                                    " levels; create the outer elements first and add the inner ones to them");
    height = sub->height_ + 1;
    for (Builder* at = this; at != nullptr && at->height_ < height; at = at->holder_)
        at->height_ = height++;
    sub->holder_ = this;
}

ModelElement Builder::doCreate(bool skipCascade, boost::uuids::uuid const& uuid) {
    if (orchestrator_ == nullptr) {
        Orchestrator orchestrator(this);
        ModelElement element = make(skipCascade, uuid);
        orchestrator.commit();
        return element;
    }
    ModelElement made = orchestrator_->getCreatedElement(this);
    return made ? made : make(skipCascade, uuid);
}

ModelElement Builder::make(bool skipCascade, boost::uuids::uuid const& uuid) {
    ModelImpl& model = *orchestrator_->model().get();
    model.requireFree(uuid);
    ModelElement element(classTable().construct(&model, uuid));
    // Known to the transaction before anything can fail, so that it vanishes then.
    model.transactions().addCreated(*element.get());
    Core::takeValues(*element.get(), *this);
    if (skipCascade) {
        Core::passOver(*element.get());
        return element;
    }
    Core::announce(*element.get());
    Core::cascade(*element.get(), *this);
    return element;
}

ModelElement Builder::createBody(boost::uuids::uuid const& uuid) {
    Orchestrator* const outer = orchestrator_;
    ModelElement element = doCreate(false, uuid);
    if (outer != nullptr) outer->enter(this, element);
    return element;
}

Builder::Orchestrator::Orchestrator(Builder* outermost)
    : model_(requireModel(outermost->model_).This()), transaction_(model_.beginTransaction()) {
    addBuilder(outermost);
}

Builder::Orchestrator::~Orchestrator() {
    for (Builder* builder : builders_) {
        builder->orchestrator_ = nullptr;
        builder->created_ = nullptr;
    }
}

void Builder::Orchestrator::addBuilder(Builder* builder) {
    builders_.push_back(builder);
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
