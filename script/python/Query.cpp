#include "Query.hpp"

#include "Lists.hpp"
#include "Property.hpp"
#include "Texts.hpp"
#include "Types.hpp"

#include <brant/zero/query/Walk.hpp>

#include <algorithm>
#include <optional>
#include <variant>

namespace zelkor::python {

using brant::zero::schema::PropertyKind;

namespace {

std::string shortName(ElementClass const& entry) {
    std::string_view const name = entry.type->tp_name;
    return std::string(name.substr(name.rfind('.') + 1));
}

ElementClass const& classOf(py::handle type, std::string const& where) {
    ElementClass const* const entry =
        PyType_Check(type.ptr()) ? Types::get().find(reinterpret_cast<PyTypeObject*>(type.ptr())) : nullptr;
    if (entry == nullptr) failType(where, "a class of elements", type.ptr());
    return *entry;
}

struct AttributeTerm {
    Place place;
};
struct RelationTerm {
    Place place;
};
/// How many elements a reference has that meet a condition; compared with a number it is a condition.
struct CountTerm {
    Place place;
    std::optional<Condition> condition;
};

bool hasTerm(PropertyRow const& row) {
    return row.stored() && row.kind != PropertyKind::ManyAttribute;
}

py::object termOf(Place place) {
    if (place.isRelation()) return py::cast(RelationTerm{std::move(place)});
    return py::cast(AttributeTerm{std::move(place)});
}

/// \returns the term of a property of what the relation leads to.
py::object follow(Place const& from, PropertyRow const& row, std::string const& name) {
    if (!hasTerm(row))
        fail("InvalidArgument",
             from.text + "." + name + " is computed or a list of values: no query can ask it");
    query::requireSingle(from.last);
    query::requireSubject(from.target(), *row.owner);
    Place longer{from.path, {&row, &from.target(), nullptr}, from.text + '.' + name};
    longer.path.push_back(from.last);
    return termOf(std::move(longer));
}

py::object followName(RelationTerm const& self, std::string const& name) {
    ElementClass const* const entry = Types::get().find(self.place.target());
    if (name.starts_with("__") || entry == nullptr) throw py::attribute_error(name);
    if (!entry->properties.contains(name.c_str()))
        fail("NoSuchAttribute", self.place.text + ": " + entry->type->tp_name + " has no property '" + name +
                                    "'" + suggestion(name, entry->names));
    py::object const descriptor = entry->properties[name.c_str()];
    return follow(self.place, *rowOf(descriptor.ptr()), name);
}

py::object then(RelationTerm const& self, py::object const& term) {
    bool const relation = py::isinstance<RelationTerm>(term);
    if (!relation && !py::isinstance<AttributeTerm>(term))
        failType(self.place.text + ".then", "a term", term.ptr());
    Place const& rest =
        relation ? term.cast<RelationTerm const&>().place : term.cast<AttributeTerm const&>().place;
    query::requireSingle(self.place.last);
    query::Step const& first = rest.path.empty() ? rest.last : rest.path.front();
    query::requireSubject(self.place.target(), *first.row->owner);
    Place longer{self.place.path, rest.last, self.place.text + ".then(" + rest.text + ")"};
    longer.path.push_back(self.place.last);
    longer.path.insert(longer.path.end(), rest.path.begin(), rest.path.end());
    return termOf(std::move(longer));
}

RelationTerm narrowed(RelationTerm const& self, py::handle type) {
    Place place = self.place;
    ElementClass const& wanted = classOf(type, place.text + ".as_");
    place.last.narrowed = wanted.table;
    place.text += ".as_(" + shortName(wanted) + ")";
    return {std::move(place)};
}

/// \returns the condition that an argument gives: one already, or what a function makes of the class's terms.
Condition conditionOf(py::handle object, py::handle type, std::string const& where) {
    py::object const given = py::reinterpret_borrow<py::object>(object);
    if (py::isinstance<Condition>(given)) return given.cast<Condition>();
    if (py::isinstance<py::function>(given)) return conditionOf(given(type), type, where);
    failType(where, "a condition, such as Function.name == 'f'", object.ptr());
}

Condition const* optionalCondition(RelationTerm const& self, py::handle object,
                                   std::optional<Condition>& held) {
    if (object.is_none()) return nullptr;
    py::handle const type = reinterpret_cast<PyObject*>(Types::get().typeOf(self.place.target()));
    held = conditionOf(object, type, self.place.text);
    return &*held;
}

auto quantified(query::Quantifier kind, char const* name) {
    return [kind, name](RelationTerm const& self, py::handle object) {
        std::optional<Condition> held;
        return quantify(self.place, kind, name, optionalCondition(self, object, held));
    };
}

CountTerm counted(RelationTerm const& self, py::handle object) {
    std::optional<Condition> held;
    (void)optionalCondition(self, object, held);
    return {self.place, std::move(held)};
}

template <class T, class Compare>
void defineComparisons(py::class_<T>& type, Compare const& compare) {
    static constexpr std::pair<char const*, Comparison> operations[] = {
        {"__eq__", Comparison::Equal},   {"__ne__", Comparison::NotEqual},
        {"__lt__", Comparison::Less},    {"__le__", Comparison::LessEqual},
        {"__gt__", Comparison::Greater}, {"__ge__", Comparison::GreaterEqual}};
    for (auto const& [name, operation] : operations)
        type.def(name, [compare, operation = operation](T const& self, py::handle value) {
            return compare(self, operation, value.ptr());
        });
    type.attr("__hash__") = py::none();
}

Condition compareCount(CountTerm const& self, Comparison operation, PyObject* value) {
    if (!PyLong_Check(value)) failType(self.place.text + ".count()", "int", value);
    long const number = py::handle(value).cast<long>();
    return countElements(self.place, self.condition ? &*self.condition : nullptr, operation, number);
}

Condition compareRelation(RelationTerm const& self, Comparison operation, PyObject* value) {
    if (operation != Comparison::Equal && operation != Comparison::NotEqual)
        fail("InvalidArgument", self.place.text + ": only == and != can be asked of it");
    query::requireSingle(self.place.last);
    return compareReference(self.place, operation == Comparison::Equal, value);
}

/// A condition is no truth value: `and`, `or` and `not` would drop a part of it without a word.
bool refuseTruth(Condition const& condition) {
    fail("InvalidArgument",
         condition.text() + " is a condition; put conditions together with &, | and ~, each in brackets");
}

/// The elements of a class below an element or in a model that meet the conditions.
class Query {
  public:
    using Root = std::variant<ModelElement, Model>;

    Query(Root root, Model model, ElementClass const& wanted)
        : root_(std::move(root)), model_(std::move(model)), wanted_(&wanted) {}

    [[nodiscard]] Query where(py::args const& conditions) const {
        Query narrower = *this;
        py::handle const type = reinterpret_cast<PyObject*>(wanted_->type);
        for (py::handle const one : conditions) {
            Condition const condition = conditionOf(one, type, "where");
            query::requireSubject(*wanted_->table, condition.subject());
            narrower.conditions_.push_back(condition);
        }
        return narrower;
    }
    [[nodiscard]] Query exactly() const {
        Query narrower = *this;
        narrower.exactly_ = true;
        return narrower;
    }
    [[nodiscard]] std::size_t count() const {
        std::size_t number = 0;
        run([&](Body&) {
            ++number;
            return true;
        });
        return number;
    }
    [[nodiscard]] py::object first() const {
        ModelElement found;
        run([&](Body& body) {
            found = ModelElement(&body);
            return false;
        });
        return owned(wrap(found.get(), model_));
    }
    [[nodiscard]] bool exists() const {
        bool found = false;
        run([&](Body&) {
            found = true;
            return false;
        });
        return found;
    }
    [[nodiscard]] std::vector<ModelElement> all() const {
        std::vector<ModelElement> found;
        run([&](Body& body) {
            found.emplace_back(&body);
            return true;
        });
        return found;
    }
    [[nodiscard]] py::object results() const { return owned(makeResults(all(), model_)); }
    [[nodiscard]] std::string text() const {
        std::string text = "query(" + shortName(*wanted_) + ")" + (exactly_ ? ".exactly()" : "");
        for (Condition const& condition : conditions_)
            text += (&condition == conditions_.data() ? ".where(" : ", ") + condition.text();
        return text + (conditions_.empty() ? "" : ")");
    }

  private:
    /// Hands the hits to `take`, until it returns false, without the interpreter's lock.
    template <class Take>
    void run(Take const& take) const {
        if (auto const* const element = std::get_if<ModelElement>(&root_))
            (void)element->uuid(); // throws when dead
        query::WalkPlan const& plan = query::WalkPlan::of(*wanted_->table);
        Unlocked const unlocked(model_);
        query::Walk walk = start(plan);
        Node const& first = conditions_.empty() ? *everything() : *conditions_.front().node();
        ClassTable const* const exactly = exactly_ ? wanted_->table : nullptr;
        while (Body* const body = first.next(walk, exactly)) {
            auto const passes = [&](Condition const& condition) { return condition.test(*body); };
            bool const fits =
                conditions_.empty() || std::all_of(conditions_.begin() + 1, conditions_.end(), passes);
            if (fits && !take(*body)) return;
        }
    }
    [[nodiscard]] query::Walk start(query::WalkPlan const& plan) const {
        if (auto const* const model = std::get_if<Model>(&root_)) return {plan, *model};
        return {plan, *std::get<ModelElement>(root_).get()};
    }

    Root root_;
    Model model_;
    ElementClass const* wanted_;
    bool exactly_ = false;
    std::vector<Condition> conditions_; ///< all of them must hold
};

Query makeQuery(py::handle root, py::handle type) {
    ElementClass const& wanted = classOf(type, "query");
    if (isElement(root.ptr()))
        return {ModelElement(&bodyOf(asElement(root.ptr()))), asElement(root.ptr()).model, wanted};
    Model const model = modelOf(root.ptr(), "query");
    return {model, model, wanted};
}

void defineTerms(py::module_& module) {
    py::class_<AttributeTerm> attribute(module, "AttributeTerm",
                                        "A property of elements that a query compares.");
    defineComparisons(attribute, [](AttributeTerm const& self, Comparison operation, PyObject* value) {
        return compareAttribute(self.place, operation, value);
    });
    auto const text = [&](char const* name, query::TextTest kind) {
        attribute.def(name, [kind, name](AttributeTerm const& self, py::handle value) {
            return testText(self.place, kind, name, value.ptr());
        });
    };
    text("startswith", query::TextTest::StartsWith);
    text("endswith", query::TextTest::EndsWith);
    text("contains", query::TextTest::Contains);
    attribute.def("matches", [](AttributeTerm const& self, std::string const& pattern) {
        return matchText(self.place, pattern);
    });
    attribute.def("__repr__", [](AttributeTerm const& self) { return self.place.text; });

    py::class_<RelationTerm> relation(module, "RelationTerm",
                                      "A reference of elements that a query follows.");
    defineComparisons(relation, compareRelation);
    py::arg_v const optional = py::arg("condition") = py::none();
    relation.def("any", quantified(query::Quantifier::Any, "any"), optional);
    relation.def("none", quantified(query::Quantifier::None, "none"), optional);
    relation.def("all", quantified(query::Quantifier::All, "all"));
    relation.def("count", counted, optional);
    relation.def("size", [](RelationTerm const& self) { return CountTerm{self.place, std::nullopt}; });
    relation.def("is_", [](RelationTerm const& self, py::handle type) {
        ElementClass const& wanted = classOf(type, self.place.text);
        return testClass(self.place, *wanted.table, false, shortName(wanted));
    });
    relation.def("is_exactly", [](RelationTerm const& self, py::handle type) {
        ElementClass const& wanted = classOf(type, self.place.text);
        return testClass(self.place, *wanted.table, true, shortName(wanted));
    });
    relation.def("is_null",
                 [](RelationTerm const& self) { return compareRelation(self, Comparison::Equal, Py_None); });
    relation.def("as_", narrowed);
    relation.def("then", then);
    relation.def("__getattr__", followName);
    relation.def("__repr__", [](RelationTerm const& self) { return self.place.text; });

    py::class_<CountTerm> count(module, "CountTerm",
                                "How many elements a reference has; compare it with a number.");
    defineComparisons(count, compareCount);
    count.def("__repr__", [](CountTerm const& self) { return self.place.text + ".count()"; });
}

} // namespace

PyObject* makeTerm(PropertyRow const& row, PyObject* owner, PyObject* descriptor) {
    if (!hasTerm(row)) return py::reinterpret_borrow<py::object>(descriptor).release().ptr();
    ElementClass const& written = classOf(owner, row.name);
    return termOf({{}, {&row, written.table, nullptr}, shortName(written) + '.' + snakeCase(row.name)})
        .release()
        .ptr();
}

void initQuery(py::module_& module) {
    py::class_<Condition> condition(module, "Condition",
                                    "What a query asks of elements. Put together with & | ~.");
    condition.def("__and__", &Condition::both)
        .def("__or__", &Condition::either)
        .def("__invert__", &Condition::negated)
        .def("__bool__", refuseTruth)
        .def("__repr__", [](Condition const& self) { return self.text(); })
        .def(
            "test",
            [](Condition const& self, py::handle object) {
                if (!isElement(object.ptr())) failType("test", "an element", object.ptr());
                Body const& body = bodyOf(asElement(object.ptr()));
                query::requireSubject(body.classTable(), self.subject());
                return self.test(body);
            },
            "Whether an element meets the condition.");
    defineTerms(module);
    module.def(
        "is_a",
        [](py::handle type) {
            ElementClass const& wanted = classOf(type, "is_a");
            return isOfClass(*wanted.table, shortName(wanted));
        },
        "The condition that an element is of a class.");
    py::class_<Query> queries(module, "Query",
                              "The elements of a class that meet conditions, in the order of containment.");
    queries.def(py::init(&makeQuery), py::arg("root"), py::arg("type"))
        .def("where", &Query::where, "The same query with further conditions; all of them must hold.")
        .def("exactly", &Query::exactly, "The same query without elements of subclasses.")
        .def("count", &Query::count, "How many there are.")
        .def("first", &Query::first, "The first one, or None.")
        .def("exists", &Query::exists, "Whether there is one.")
        .def("__bool__", &Query::exists)
        .def("__iter__", &Query::results)
        .def("__repr__", &Query::text);
}

} // namespace zelkor::python
