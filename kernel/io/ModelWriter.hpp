// The walk over a model that both forms share: which elements and values are written, in which order.
#pragma once

#include "ModelImpl.hpp"
#include "Sink.hpp"
#include "WritePlan.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/io/Serializer.hpp"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace brant::zero::io {

using Body = ModelElementImpl;

/// One place of an owning collection, where some places are references.
struct ContentEntry {
    Body const* element;
    bool nested;
};
using ContentEntries = std::vector<ContentEntry>;

/// \returns the places of an owning sequence: the first one of each element that is contained there is
/// nested.
ContentEntries entriesOf(Body const& owner, schema::PropertyRow const& row, ReferenceSequence const& members);
/// \returns the members of a map in the order of their keys, then its placeholders in the order of their ids.
ContentEntries entriesOf(ReferenceMap const& members);

inline bool isWritten(Body const* element) noexcept {
    return element != nullptr && element->valid();
}
inline bool isNested(Body const& owner, schema::PropertyRow const& row, Body const& element) noexcept {
    return element.containerBody() == &owner && element.containmentRow() == &row && !element.isProxy();
}

/// `Form` spells what the walk finds; its operations are those called here.
template <class Form>
class ModelWriter {
  public:
    ModelWriter(Form& form, bool skipDefaults) : form_(form), plans_(form), skipDefaults_(skipDefaults) {}

    void write(ModelImpl const& model) {
        form_.beginDocument();
        bool first = true;
        for (Body const* element : model.topLevelSlots())
            if (isWritten(element)) {
                form_.listItem(std::exchange(first, false));
                open(*element);
                walk();
            }
        form_.endDocument();
    }

  private:
    /// An element whose opening is written.
    struct Frame {
        Body const* element;
        WritePlan const* plan;
        std::uint32_t field = 0;
        bool inList = false; ///< the present field is a list that is being written
        bool first = true;   ///< nothing of that list is written yet
        bool hidden = false; ///< an inline value is still to be written as content
        bool inside = false; ///< the present field is a single child that has been written
        std::size_t item = 0;
        std::size_t count = 0;
        Body const* const* slots = nullptr;        ///< of a list whose places are all nested
        std::unique_ptr<ContentEntries> entries{}; ///< of any other
    };

    void open(Body const& element) {
        WritePlan const& plan = plans_.of(element.classTable());
        form_.beginElement(plan, element.uuid());
        stack_.push_back(Frame{&element, &plan});
    }

    void walk() {
        while (!stack_.empty()) {
            Frame& frame = stack_.back();
            if (advance(frame)) continue; // a child was opened; the frame may have moved
            form_.endElement(*frame.plan);
            stack_.pop_back();
        }
    }

    /// Writes on until a child is opened. \returns false when the element is done.
    bool advance(Frame& frame) {
        std::vector<WriteField> const& fields = frame.plan->fields;
        for (; frame.field < fields.size(); ++frame.field) {
            if (frame.field == frame.plan->inlineFields && frame.hidden) writeHidden(frame);
            WriteField const& field = fields[frame.field];
            if (field.step >= Step::Child) {
                if (advanceContent(frame, field)) return true;
            } else if (!writeValue(*frame.element, field)) {
                frame.hidden = true;
            }
        }
        if (frame.hidden && frame.plan->inlineFields == fields.size()) writeHidden(frame);
        return false;
    }

    void writeHidden(Frame& frame) {
        frame.hidden = false;
        for (std::size_t i = 0; i < frame.plan->inlineFields; ++i)
            writeContentValue(*frame.element, frame.plan->fields[i]);
    }

    void writeContentValue(Body const& element, WriteField const& field) {
        switch (field.step) {
        case Step::String:
            form_.contentText(field, at<std::u16string>(element, field));
            break;
        case Step::StdString:
            form_.contentText(field, at<std::string>(element, field));
            break;
        case Step::Reference:
            if (Body const* target = at<Body*>(element, field); isWritten(target) && target->isProxy())
                form_.contentProxy(field, *target);
            break;
        default:
            break;
        }
    }

    /// Writes the present field's children up to the next nested one. \returns true when that one was opened.
    bool advanceContent(Frame& frame, WriteField const& field) {
        if (field.step == Step::Child) return advanceChild(frame, field);
        if (!frame.inList && !beginList(frame, field)) return false;
        while (frame.item < frame.count) {
            std::size_t const i = frame.item++;
            ContentEntry const entry =
                frame.slots != nullptr ? ContentEntry{frame.slots[i], true} : (*frame.entries)[i];
            form_.listItem(std::exchange(frame.first, false), entry.nested);
            if (entry.nested) {
                open(*entry.element);
                return true;
            }
            writeReferenceItem(*entry.element);
        }
        form_.endList(field);
        frame.inList = false;
        frame.entries.reset();
        return false;
    }

    bool advanceChild(Frame& frame, WriteField const& field) {
        if (frame.inside) {
            form_.endChild(field);
            frame.inside = false;
            return false;
        }
        Body const* child = at<Body*>(*frame.element, field);
        if (!isWritten(child)) return false;
        form_.beginChild(field);
        if (isNested(*frame.element, *field.row, *child)) {
            frame.inside = true;
            open(*child);
            return true;
        }
        writeReferenceItem(*child);
        form_.endChild(field);
        return false;
    }

    void writeReferenceItem(Body const& target) {
        if (target.isProxy())
            form_.proxy(target);
        else
            form_.reference(target.uuid());
    }

    /// \returns false when there is nothing to write.
    bool beginList(Frame& frame, WriteField const& field) {
        frame.item = 0;
        frame.slots = nullptr;
        if (field.step == Step::ChildMap) {
            frame.entries =
                std::make_unique<ContentEntries>(entriesOf(at<ReferenceMap>(*frame.element, field)));
            frame.count = frame.entries->size();
        } else {
            auto const& members = at<ReferenceSequence>(*frame.element, field);
            frame.count = members.size();
            if (frame.count == 0) return false;
            if (members.orderedByKey()) {
                frame.slots = members.slots();
            } else {
                frame.entries =
                    std::make_unique<ContentEntries>(entriesOf(*frame.element, *field.row, members));
                frame.count = frame.entries->size();
            }
        }
        if (frame.count == 0) return false;
        frame.inList = true;
        frame.first = true;
        form_.beginList(field);
        return true;
    }

    template <class T>
    static T const& at(Body const& element, WriteField const& field) noexcept {
        return *reinterpret_cast<T const*>(reinterpret_cast<char const*>(&element) + field.offset);
    }

    bool isDefault(std::uint64_t bits, WriteField const& field) const noexcept {
        return skipDefaults_ && bits == field.defaultBits;
    }

    /// Writes a value or a list without children. \returns false when it has to wait for the element's
    /// content.
    bool writeValue(Body const& element, WriteField const& field) {
        switch (field.step) {
        case Step::Boolean:
            if (bool const value = at<bool>(element, field); !isDefault(value ? 1 : 0, field))
                form_.boolean(field, value);
            return true;
        case Step::Integer:
            if (auto const value = at<std::int32_t>(element, field); !isDefault(word(value), field))
                form_.number(field, std::int64_t{value});
            return true;
        case Step::Natural:
            if (auto const value = at<std::uint32_t>(element, field); !isDefault(value, field))
                form_.number(field, std::uint64_t{value});
            return true;
        case Step::Integer64:
            if (auto const value = at<std::int64_t>(element, field);
                !isDefault(static_cast<std::uint64_t>(value), field))
                form_.number(field, value);
            return true;
        case Step::Natural64:
            if (auto const value = at<std::uint64_t>(element, field); !isDefault(value, field))
                form_.number(field, value);
            return true;
        case Step::Real:
            if (!isDefault(at<std::uint64_t>(element, field), field))
                form_.number(field, at<double>(element, field));
            return true;
        case Step::Enumeration:
            if (auto const value = at<std::int32_t>(element, field); !isDefault(word(value), field))
                form_.literal(field, nameOf(*field.row->enumeration, value));
            return true;
        case Step::String:
            if (auto const& text = at<std::u16string>(element, field);
                !skipDefaults_ || text != field.defaultText)
                return form_.text(field, text);
            return true;
        case Step::StdString:
            if (auto const& text = at<std::string>(element, field);
                !skipDefaults_ || text != field.defaultBytes)
                return form_.text(field, text);
            return true;
        case Step::Reference:
            return writeReference(field, at<Body*>(element, field));
        default:
            writeList(element, field);
            return true;
        }
    }

    static std::uint64_t word(std::int32_t value) noexcept { return static_cast<std::uint32_t>(value); }

    bool writeReference(WriteField const& field, Body const* target) {
        if (!isWritten(target)) return true;
        if (target->isProxy()) return form_.proxy(field, *target);
        form_.reference(field, target->uuid());
        return true;
    }

    void writeList(Body const& element, WriteField const& field) {
        switch (field.step) {
        case Step::StringList:
            return writeValues<std::u16string>(element, field);
        case Step::StdStringList:
            return writeValues<std::string>(element, field);
        case Step::IntegerList:
            return writeValues<int>(element, field);
        default:
            return writeReferences(at<ReferenceSequence>(element, field), field);
        }
    }

    template <class T>
    void writeValues(Body const& element, WriteField const& field) {
        auto const& values = at<PrimitiveSequence<T>>(element, field);
        if (values.size() == 0) return;
        form_.beginList(field);
        bool first = true;
        for (T const& value : values)
            form_.item(value, std::exchange(first, false));
        form_.endList(field);
    }

    void writeReferences(ReferenceSequence const& targets, WriteField const& field) {
        bool first = true;
        for (std::size_t i = 0; i < targets.size(); ++i) {
            Body const* target = targets.slot(i);
            if (!isWritten(target)) continue;
            if (first) form_.beginList(field);
            form_.listItem(std::exchange(first, false), false);
            writeReferenceItem(*target);
        }
        if (!first) form_.endList(field);
    }

    static std::string_view nameOf(schema::EnumTable const& type, std::int64_t value) noexcept {
        // In name order, as literals are walked everywhere: of two names for a number the first in that order
        // counts.
        schema::LiteralRow const* found = nullptr;
        for (std::uint16_t i = 0; i < type.literalCount; ++i)
            if (schema::LiteralRow const& literal = type.literals[i];
                literal.value == value && (found == nullptr || std::string_view(literal.name) < found->name))
                found = &literal;
        return found == nullptr ? std::string_view() : std::string_view(found->name);
    }

    Form& form_;
    WritePlans plans_;
    bool skipDefaults_;
    std::vector<Frame> stack_;
};

/// Writes a whole model in one form.
template <class Form>
void writeText(Model const& model, SerializationOutput const& output, SerializeCustomizer const& customizer) {
    if (!model) reportException(brant0::messages::CannotCreateWithoutModel());
    Sink& sink = output.sink();
    sink.begin();
    TextBuffer buffer(sink);
    Form form(buffer, sink.encoding());
    ModelWriter<Form>(form, customizer.shouldSkipDefaultValues()).write(*model.get());
    buffer.flush();
    sink.finish();
}

} // namespace brant::zero::io
