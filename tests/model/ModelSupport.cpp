#include "model/ModelSupport.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"
#include "zelkor/ast/MetaPackageZelkor_ast.hpp"

#include <algorithm>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace testmodel {

Model newModel() {
    return Model::create({}, ModelConstellation(), DefaultWorkQueueFactory());
}

std::vector<ClassTable const*> const& classes() {
    static std::vector<ClassTable const*> const all = [] {
        std::vector<ClassTable const*> found;
        for (meta::NamedElement const& object : zelkor::ast::MetaPackageZelkor_ast::getInstance().objects())
            if (meta::Class const cls = meta::Class::cast(object)) found.push_back(meta::tableOf(cls));
        return found;
    }();
    return all;
}

ClassTable const& concrete(ClassTable const& table) {
    if (!table.isAbstract) return table;
    for (ClassTable const* other : classes())
        if (!other->isAbstract && other->conformsTo(table)) return *other;
    throw std::logic_error("an abstract class without subclass");
}

std::vector<PropertyRow const*> propertiesOf(ClassTable const& table) {
    std::vector<PropertyRow const*> rows;
    for (std::size_t level = 0; level <= table.depth; ++level)
        for (std::uint16_t i = 0; i < table.chain[level]->rowCount; ++i)
            rows.push_back(&table.chain[level]->rows[i]);
    return rows;
}

PropertyRow const& rowNamed(ClassTable const& table, std::string_view name) {
    for (PropertyRow const* candidate : propertiesOf(table))
        if (candidate->name == name) return *candidate;
    throw std::logic_error("no property " + std::string(name));
}

std::string nameOf(PropertyRow const& row) {
    return std::string(row.owner->qualifiedName) + "." + row.name;
}

ModelElement make(Model const& model, ClassTable const& table) {
    return Core::create(concrete(table), model, {});
}

ModelElement placeholderFor(Model const& model, meta::Class const& cls, boost::uuids::uuid const& target,
                            bool external) {
    ProxyId id{u"", toUtf16(toString(target)).value(), nullptr};
    if (external) id.external = std::make_shared<std::u16string>(u"elsewhere");
    return model.createProxy(cls, id);
}

std::map<std::string, Value> reported(ModelElement const& element, std::function<void()> const& call) {
    std::map<std::string, Value> old;
    Subscription const subscription = element.getModel().onCommit([&](CommitNotice const& notice) {
        for (ElementChange const& change : notice.changed)
            if (change.element() == element)
                for (meta::Property const& property : change.properties())
                    old.insert_or_assign(Core::rowOf(property).name, change.oldValue(property));
    });
    call();
    return old;
}

namespace {

Value enumerationValue(meta::Property const& property, PropertyRow const& row, unsigned variant) {
    auto const initial = static_cast<std::int64_t>(static_cast<std::int32_t>(row.defaultBits));
    for (std::uint16_t i = 0; i < row.enumeration->literalCount; ++i) {
        std::int64_t const number = row.enumeration->literals[i].value;
        if (number != initial && variant-- == 0)
            return Value(property.getType(), static_cast<unsigned long>(number), ValueFlags::One);
    }
    throw std::logic_error("too few literals for " + nameOf(row));
}

} // namespace

Value sampleValue(PropertyRow const& row, unsigned variant) {
    meta::Property const property = Core::propertyOf(&row);
    using schema::ValueKind;
    switch (row.valueKind) {
    case ValueKind::Boolean:
        return Value::createPrimitiveValue(property, (row.defaultBits == 0) == (variant % 2 == 0));
    case ValueKind::Integer:
        return Value::createPrimitiveValue(property,
                                           std::numeric_limits<int>::min() + static_cast<int>(variant));
    case ValueKind::UnlimitedNatural:
        return Value::createPrimitiveValue(property, 4294967295u - variant);
    case ValueKind::Integer64:
        return Value::createPrimitiveValue(property, -9000000000000000007l - static_cast<long>(variant));
    case ValueKind::UInteger64:
        return Value::createPrimitiveValue(property, 18000000000000000007ul + variant);
    case ValueKind::Real:
        return Value::createPrimitiveValue(property, 0.1 + variant);
    case ValueKind::StdString:
        return Value::createPrimitiveValue(property,
                                           " name<T&&>, \"x\" \\ ]]> \xc3\xa9" + std::to_string(variant));
    case ValueKind::String:
        return Value::createPrimitiveValue(
            property,
            std::u16string(u"wide \u20ac \uFFFD \U0001F600 <&> \"x\" \\ \t\r\n") + char16_t(u'a' + variant));
    default:
        return enumerationValue(property, row, variant);
    }
}

std::vector<ModelElement> prepareChange(Model const& model, PropertyRow const& row, unsigned variant) {
    std::size_t count = 0;
    switch (row.kind) {
    case PropertyKind::Reference:
    case PropertyKind::ContainerEnd:
        count = 1;
        break;
    case PropertyKind::ManyReference:
    case PropertyKind::View:
    case PropertyKind::Map:
        count = 2;
        break;
    default:
        break;
    }
    std::vector<ModelElement> others;
    for (std::size_t i = 0; i < count; ++i) {
        others.push_back(make(model, *row.target));
        if (row.kind == PropertyKind::Map)
            others.back().setPropertyValue(
                Core::propertyOf(row.related),
                Value::createPrimitiveValue(Core::propertyOf(row.related),
                                            u"/path/" + std::u16string(1, char16_t(u'a' + variant * 2 + i))));
    }
    return others;
}

void applyChange(ModelElement const& element, PropertyRow const& row, std::vector<ModelElement> const& others,
                 unsigned variant) {
    meta::Property const property = Core::propertyOf(&row);
    switch (row.kind) {
    case PropertyKind::Attribute:
        element.setPropertyValue(property, sampleValue(row, variant));
        break;
    case PropertyKind::ManyAttribute: {
        auto& values = static_cast<AbstractPrimitiveCollection&>(Core::collection(*element.get(), row));
        for (unsigned i = 0; i < 2; ++i)
            values.genericAdd(sampleValue(row, variant + i));
        break;
    }
    case PropertyKind::Reference:
    case PropertyKind::ContainerEnd:
        element.setPropertyValue(property, Value::createElementValue(property, others.at(0)));
        break;
    default:
        for (ModelElement const& other : others)
            Core::collection(*element.get(), row).asReferences()->genericAdd(other);
    }
}

std::size_t sizeOf(AbstractOwnedCollection const& collection) {
    auto& members = const_cast<AbstractOwnedCollection&>(collection);
    return members.asReferences() != nullptr ? members.asReferences()->genericSize()
                                             : static_cast<AbstractPrimitiveCollection&>(members).size();
}

namespace {

class Dumper {
  public:
    explicit Dumper(Model model) : model_(std::move(model)) {}

    std::string run() {
        for (ModelElement const& element : model_.getTopLevelElements()) {
            out_ << "top";
            reference(element.get());
            out_ << '\n';
        }
        std::vector<ModelElementImpl*> elements = model_->elements();
        std::sort(elements.begin(), elements.end(),
                  [](auto const* a, auto const* b) { return a->uuid() < b->uuid(); });
        for (ModelElementImpl* element : elements)
            show(*element);
        return out_.str();
    }

  private:
    void reference(ModelElementImpl const* target) {
        if (target == nullptr)
            out_ << " null";
        else if (!target->valid())
            out_ << " dead:" << target->identifier();
        else if (target->isProxy())
            out_ << ' ' << toUtf8(target->getProxyId().element);
        else
            out_ << ' ' << target->identifier();
    }

    void show(ModelElementImpl& element) {
        ClassTable const& table = element.classTable();
        out_ << element.identifier() << ' ' << table.shortName << " in";
        reference(element.containerBody());
        out_ << ' ' << (element.containmentRow() == nullptr ? "-" : element.containmentRow()->name) << '\n';
        for (std::size_t i = 1; i < table.count; ++i) {
            PropertyRow const& row = *table.stored[i];
            if (row.kind == PropertyKind::ContainerEnd) continue;
            out_ << "  " << element.identifier().substr(0, 8) << ' ' << row.name;
            value(element, row);
            out_ << '\n';
        }
    }

    void value(ModelElementImpl& element, PropertyRow const& row) {
        switch (row.kind) {
        case PropertyKind::Attribute:
            if (row.valueKind == schema::ValueKind::StdString)
                out_ << ' ' << Core::field<std::string>(element, row);
            else if (row.valueKind == schema::ValueKind::String)
                text(Core::field<std::u16string>(element, row));
            else
                out_ << ' ' << Core::readBits(element, row);
            break;
        case PropertyKind::Reference:
            reference(Core::field<ModelElementImpl*>(element, row));
            break;
        case PropertyKind::ManyReference:
            for (std::size_t i = 0; i < Core::sequence(element, row).size(); ++i)
                reference(Core::sequence(element, row).slot(i));
            break;
        case PropertyKind::Map:
            for (auto const& [key, member] : Core::field<ReferenceMap>(element, row).entries()) {
                text(key);
                reference(member.get());
            }
            break;
        default:
            for (Value const& one :
                 static_cast<AbstractPrimitiveCollection&>(Core::collection(element, row)).getAllValues())
                primitive(row, one);
        }
    }

    void primitive(PropertyRow const& row, Value const& one) {
        if (row.valueKind == schema::ValueKind::StdString)
            out_ << ' ' << one.getValue<std::string>();
        else if (row.valueKind == schema::ValueKind::String)
            text(one.getValue<std::u16string>());
        else
            out_ << ' ' << one.getValue<int>();
    }

    void text(std::u16string const& value) {
        out_ << ' ' << std::hex;
        for (char16_t const unit : value)
            out_ << unsigned(unit) << '.';
        out_ << std::dec << '|';
    }

    Model model_;
    std::ostringstream out_;
};

} // namespace

std::string dump(Model const& model) {
    return Dumper(model).run();
}

std::string firstDifference(std::string const& a, std::string const& b) {
    std::istringstream left(a);
    std::istringstream right(b);
    std::string one;
    std::string other;
    for (;;) {
        bool const more = static_cast<bool>(std::getline(left, one));
        bool const also = static_cast<bool>(std::getline(right, other));
        if (!more && !also) return {};
        if (one != other || more != also) return "before: " + one + "\nafter:  " + other;
        one.clear();
        other.clear();
    }
}

std::string violationOf(Model const& model) {
    std::optional<Violation> const violation = model.verify();
    return violation ? violation->rule + " " + violation->property + ": " + violation->detail : std::string();
}

std::string describe(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (tamber::core::except::IUserException const& known) {
        std::string const id = known.GetID();
        return id.substr(id.rfind(':') + 1);
    } catch (std::exception const& other) {
        return other.what();
    }
}

} // namespace testmodel
