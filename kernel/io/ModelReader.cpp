#include "ModelReader.hpp"

#include "FormatNames.hpp"
#include "NearName.hpp"
#include "ReferenceResolver.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <algorithm>
#include <charconv>

namespace brant::zero::io {

namespace {

using schema::ClassTable;
using schema::PropertyRow;

} // namespace

ReadPlan::ReadPlan(ClassTable const& table)
    : table_(table), fields_([&] {
          std::vector<ReadField> fields;
          for (std::size_t i = 1; i < table.count; ++i)
              if (isText(*table.stored[i])) fields.push_back({stepOf(*table.stored[i]), table.stored[i]});
          return fields;
      }()),
      names_([&] {
          std::vector<NameTable<ReadField>::Entry> entries;
          for (ReadField const& field : fields_)
              entries.push_back({field.row->name, &field});
          return entries;
      }()) {}

std::vector<std::string_view> ReadPlan::names() const {
    std::vector<std::string_view> names;
    for (ReadField const& field : fields_)
        names.push_back(field.row->name);
    return names;
}

ModelReader::ModelReader(Parser& parser, ModelImpl& model, std::string file)
    : parser_(parser), model_(model), file_(std::move(file)), firstElement_(model.elements().size()) {
    std::vector<NameTable<ReadPlan>::Entry> entries;
    for (ClassTable const* table : meta::MetaRegistry::getInstance().modelClasses()) {
        plans_.push_back(std::make_unique<ReadPlan>(*table));
        entries.push_back({table->shortName, plans_.back().get()});
    }
    classes_ = std::make_unique<NameTable<ReadPlan>>(entries);
}

ModelReader::~ModelReader() = default;

void ModelReader::fail(std::string message, std::string expected) {
    failAt(position(), std::move(message), std::move(expected));
}
void ModelReader::failAt(Position position, std::string message, std::string expected) {
    throw ParseError(file_, position.line, position.column, std::move(message), std::move(expected));
}

void ModelReader::warn(std::string const& message) {
    Position const at = position();
    parser_.warnings_.push_back((file_.empty() ? "<string>" : file_) + ":" + std::to_string(at.line) + ":" +
                                std::to_string(at.column) + ": warning: " + message);
}

// The document.

void ModelReader::checkFormat(std::string_view name) {
    if (name != formatName) fail("the format " + quote(name) + " is not known", quote(formatName));
}

void ModelReader::checkVersion(std::string_view version) {
    unsigned major = 0;
    unsigned minor = 0;
    char const* const end = version.data() + version.size();
    auto const [dot, first] = std::from_chars(version.data(), end, major);
    if (first != std::errc() || dot == end || *dot != '.')
        fail(quote(version) + " is no version",
             "two numbers with a dot between them, such as " + quote(formatVersion));
    auto const [rest, second] = std::from_chars(dot + 1, end, minor);
    if (second != std::errc() || rest != end)
        fail(quote(version) + " is no version",
             "two numbers with a dot between them, such as " + quote(formatVersion));
    if (major != formatMajor)
        fail("the text is of version " + std::string(version) + ", which this reader does not know",
             "version " + std::to_string(formatMajor) + ".x");
    later_ = minor > formatMinor;
}

void ModelReader::enterLevel() {
    if (++depth_ > parser_.depthLimit())
        fail("the text is nested deeper than " + std::to_string(parser_.depthLimit()) +
             " levels; raise the limit of the parser if that is meant");
}

// Elements.

ReadPlan const& ModelReader::classNamed(std::string_view name) {
    ReadPlan const* plan = classes_->find(name);
    if (plan == nullptr) {
        std::vector<std::string_view> names;
        for (auto const& known : plans_)
            names.emplace_back(known->table().shortName);
        fail("NoSuchType: " + brant0::messages::NoSuchType(name).format() + suggestion(name, names));
    }
    if (plan->table().isAbstract)
        fail("the class " + quote(name) + " is abstract: it has no elements of its own",
             "one of its subclasses");
    return *plan;
}

uuid ModelReader::identity(std::string_view text) {
    uuid result;
    if (!parseUuid(text, result))
        fail(quote(text) + " is no identity", "a UUID such as '123e4567-e89b-42d3-a456-426614174000'");
    return result;
}

void ModelReader::requireFit(ClassTable const& table, PropertyRow const& row) {
    if (!table.conformsTo(*row.target))
        fail("CannotAddIncompatibleTypes: an element of type " + quote(table.shortName) +
                 " cannot stand in " + described(),
             "a " + std::string(row.target->shortName));
}

std::string ModelReader::described() const {
    Frame const& frame = frames_.back();
    return quote(std::string(frame.plan->table().shortName) + "." + frame.field->row->name);
}

void ModelReader::requireSingle() {
    Frame& frame = frames_.back();
    if (frame.given && !isMany(frame.field->step))
        fail("the property " + described() + " has a second value", "one value");
    frame.given = true;
}

void ModelReader::beginElement(ReadPlan const& plan, std::string_view identityText) {
    if (!frames_.empty()) {
        ReadField const& field = *frames_.back().field;
        if (field.step < Step::Child)
            fail("an element stands in " + described() + ", which contains none",
                 field.row->refersToElements() ? "a reference by UUID" : "a value");
        requireFit(plan.table(), *field.row);
        requireSingle();
    }
    uuid const id = identity(identityText);
    if (id.is_nil()) fail("the nil UUID is no identity of an element");
    ModelElementImpl* element = plan.table().construct(&model_, id);
    Core::announce(*element);
    begins_.push_back(position());
    frames_.push_back({element, &plan, nullptr, 0, false});
    seen_.resize(seen_.size() + plan.words(), 0);
}

void ModelReader::endElement() {
    Frame const frame = frames_.back();
    frames_.pop_back();
    seen_.resize(seen_.size() - frame.plan->words());
    if (!frames_.empty()) contain(frames_.back(), *frame.element);
}

void ModelReader::contain(Frame const& owner, ModelElementImpl& child) {
    PropertyRow const& row = *owner.field->row;
    if (owner.field->step == Step::ChildMap) {
        // Only now is the key known.
        std::u16string const& key = MapMembers::key(row, child);
        if (Core::field<ReferenceMap>(*owner.element, row).entries().count(key) != 0)
            fail("UniquenessConstraint: another element of " + described() + " has the " + row.related->name +
                 " " + quote(toUtf8(key)));
    }
    Core::contain(*owner.element, row, child, Core::append);
}

// Properties.

ReadField const* ModelReader::beginProperty(std::string_view name) {
    Frame& frame = frames_.back();
    ReadField const* field = frame.plan->find(name);
    if (field == nullptr) {
        refuseProperty(frame.plan->table(), name);
        return nullptr;
    }
    std::size_t const index = field->row->index;
    std::uint64_t& word = seen_[seen_.size() - frame.plan->words() + index / 64];
    std::uint64_t const bit = std::uint64_t{1} << index % 64;
    if ((word & bit) != 0)
        fail("the property " + quote(name) + " stands twice in one element", "each property at most once");
    word |= bit;
    frame.field = field;
    frame.slots = 0;
    frame.given = false;
    return field;
}

void ModelReader::endProperty() {
    Frame const& frame = frames_.back();
    if (!frame.given && !isMany(frame.field->step))
        fail("the property " + described() + " has no value", "one, or nothing of the property at all");
}

/// Only an addition of a later version is skipped.
void ModelReader::refuseProperty(ClassTable const& table, std::string_view name) {
    for (std::size_t level = 0; level <= table.depth; ++level) {
        ClassTable const& at = *table.chain[level];
        for (std::uint16_t i = 0; i < at.rowCount; ++i) {
            PropertyRow const& row = at.rows[i];
            if (row.name != name) continue;
            if (row.kind == schema::PropertyKind::ContainerEnd)
                fail("the property " + quote(name) + " is the owner of the element, which the nesting says");
            fail("the property " + quote(name) + " is computed and stands in no text");
        }
    }
    std::string message = "NoSuchProperty: " +
                          brant0::messages::NoSuchProperty(name, std::string_view(table.shortName)).format();
    if (later_) return warn(message + " It is skipped.");
    fail(message + suggestion(name, frames_.back().plan->names()));
}

void ModelReader::reference(std::string_view text) {
    Frame& frame = frames_.back();
    Step const step = frame.field->step;
    if (step == Step::ChildMap)
        fail("a reference stands in " + described() + ", which holds only what it contains", "an element");
    requireSingle();
    OpenReference open{frame.element, frame.field, identity(text), nullptr, 0, position()};
    if (step == Step::ChildList)
        open.slot = static_cast<std::uint32_t>(Core::sequence(*frame.element, *frame.field->row).size()) +
                    frame.slots++;
    references_.push_back(open);
}

void ModelReader::proxy(ReadPlan const& plan, ProxyId id) {
    Frame& frame = frames_.back();
    if (!frame.field->row->refersToElements())
        fail("a placeholder stands in " + described() + ", which refers to no elements", "a value");
    requireFit(plan.table(), *frame.field->row);
    requireSingle();
    ModelElement const proxy = model_.This().createProxy(plan.table().metaClass(), id);
    PropertyRow const& row = *frame.field->row;
    switch (frame.field->step) {
    case Step::ReferenceList: // keeps its place among references that are resolved later
        proxies_.push_back(proxy);
        references_.push_back({frame.element, frame.field, {}, proxy.get(), 0, position()});
        break;
    case Step::ChildList:
    case Step::ChildMap:
        Core::addReference(*frame.element, row, proxy.get());
        break;
    default:
        Core::basicSetReference(*frame.element, row, proxy.get());
    }
}

void ModelReader::finish() {
    ReferenceResolver(*this).resolve();
}

} // namespace brant::zero::io
