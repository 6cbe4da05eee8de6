// Elements as plain dictionaries, in the form of the JSON files.

#include "Model.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "Values.hpp"

#include <brant/zero/Map.hpp>
#include <brant/zero/Text.hpp>
#include <brant/zero/Visit.hpp>

#include <cmath>

namespace zelkor::python {

namespace {

using brant::zero::AbstractPrimitiveCollection;
using brant::zero::EnumerationNumber;
using brant::zero::ReferenceCollection;
using brant::zero::ReferenceSequence;
using brant::zero::schema::PropertyKind;

/// Works off a list, so that depth is no matter.
class Writer {
  public:
    py::dict write(Body& root) {
        py::dict const result = open(root);
        while (!waiting_.empty()) {
            auto const [body, dict] = waiting_.back();
            waiting_.pop_back();
            owner_ = body;
            fields_ = dict;
            visitFeatures(*body, [this](PropertyRow const& row, auto const& value) { feature(row, value); });
        }
        return result;
    }

  private:
    py::dict open(Body& body) {
        py::dict dict;
        dict["class"] = body.classTable().shortName;
        dict["uuid"] = brant::zero::toString(body.uuid());
        waiting_.emplace_back(&body, dict);
        return dict;
    }

    static py::object encoded(std::string_view bytes) {
        py::dict dict;
        py::object const base64 =
            py::module_::import("base64").attr("b64encode")(py::bytes(bytes.data(), bytes.size()));
        dict["base64"] = base64.attr("decode")();
        return dict;
    }
    static py::object text(std::string const& value) {
        return brant::zero::isValidUtf8(value) ? owned(toPython(value)) : encoded(value);
    }
    static py::object text(std::u16string const& value) { return owned(toPython(value)); }

    template <class T>
    void feature(PropertyRow const& row, T const& value) requires std::is_arithmetic_v<T> {
        if (Core::readBits(*owner_, row) == row.defaultBits) return;
        if constexpr (std::same_as<T, double>) {
            if (!std::isfinite(value)) {
                put(row, py::str(std::isnan(value) ? "NaN" : value > 0 ? "INF" : "-INF"));
                return;
            }
        }
        put(row, py::cast(value));
    }
    void feature(PropertyRow const& row, std::string const& value) {
        if (value != (row.defaultText == nullptr ? "" : row.defaultText)) put(row, text(value));
    }
    void feature(PropertyRow const& row, std::u16string const& value) {
        std::string const initial = row.defaultText == nullptr ? "" : row.defaultText;
        if (value != brant::zero::toUtf16(initial).value()) put(row, text(value));
    }
    void feature(PropertyRow const& row, EnumerationNumber const& value) {
        if (Core::readBits(*owner_, row) != row.defaultBits) put(row, literal(row, value.value));
    }
    void feature(PropertyRow const& row, Body* const& target) {
        if (row.kind == PropertyKind::ContainerEnd || target == nullptr || !target->valid()) return;
        put(row, reference(row, *target));
    }
    void feature(PropertyRow const& row, ReferenceSequence const& members) {
        py::list list;
        for (std::size_t i = 0; i < members.size(); ++i)
            if (members.slot(i)->valid()) list.append(reference(row, *members.slot(i)));
        putList(row, list);
    }
    void feature(PropertyRow const& row, ReferenceCollection const& members) {
        py::list list;
        for (ModelElement const& member : members.getAllValuesAndProxies())
            if (member) list.append(reference(row, *member.get()));
        putList(row, list);
    }
    void feature(PropertyRow const& row, AbstractPrimitiveCollection const& members) {
        py::list list;
        for (brant::zero::Value const& member : members.getAllValues()) {
            py::object const value = owned(valueToPython(member));
            list.append(py::isinstance<py::bytes>(value) ? encoded(value.cast<std::string>()) : value);
        }
        putList(row, list);
    }

    static py::object literal(PropertyRow const& row, int number) {
        for (std::uint16_t i = 0; i < row.enumeration->literalCount; ++i)
            if (row.enumeration->literals[i].value == number)
                return py::str(row.enumeration->literals[i].name);
        return py::str("");
    }
    py::object reference(PropertyRow const& row, Body& target) {
        if (target.isProxy()) return placeholder(target);
        if (row.owning() && target.containerBody() == owner_ && target.containmentRow() == &row)
            return open(target);
        return py::str(brant::zero::toString(target.uuid()));
    }
    static py::object placeholder(Body const& target) {
        brant::zero::ProxyId const id = target.getProxyId();
        py::dict dict;
        dict["proxy"] = target.classTable().shortName;
        if (!id.model.empty()) dict["model"] = text(id.model);
        dict["element"] = text(id.element);
        if (id.external) dict["external"] = text(*id.external);
        return dict;
    }
    void put(PropertyRow const& row, py::object const& value) { fields_[row.name] = value; }
    void putList(PropertyRow const& row, py::list const& list) {
        if (!list.empty()) put(row, list);
    }

    std::vector<std::pair<Body*, py::dict>> waiting_;
    Body* owner_ = nullptr;
    py::dict fields_;
};

} // namespace

void initDictionary(py::module_& module) {
    module.def(
        "to_dict",
        [](py::handle object) {
            if (!isElement(object.ptr())) failType("to_dict", "an element", object.ptr());
            return Writer().write(bodyOf(asElement(object.ptr())));
        },
        "The element with all that it contains as a dictionary, in the form of the JSON files.");
}

} // namespace zelkor::python
