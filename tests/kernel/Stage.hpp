/// \file
/// A model with elements to play with, which are changed by statements in words.
#pragma once

#include "model/ModelSupport.hpp"

#include "brant/zero/Primitive.hpp"
#include "zelkor/ast.hpp"

#include <map>
#include <sstream>
#include <string>

namespace testmodel {

namespace za = zelkor::ast;

struct Stage {
    Model model = newModel();
    za::Macro macro = za::Macro::create(model);
    za::Function function = za::Function::create(model);
    za::Function other = za::Function::create(model);
    za::Scope scope = za::Scope::create(model);
    za::Scope second = za::Scope::create(model);
    za::Variable one = za::Variable::create(model);
    za::Variable two = za::Variable::create(model);
    za::Variable three = za::Variable::create(model);
    za::Template assoc = za::Template::create(model);
    za::Template lost = placeholderFor<za::Template>(model, ElementImpl::generateNewUuid());
    za::types::StructType type = za::types::StructType::create(model);
    za::types::Method method = za::types::Method::create(model);
    za::types::ClassType cls = za::types::ClassType::create(model);
    za::source::SourcePosition position = za::source::SourcePosition::create(model);
    za::Project project = za::Project::create(model);
    za::source::SourceFile file = za::source::SourceFile::create(model);

    [[nodiscard]] ModelElement named(std::string const& name) const {
        std::map<std::string, ModelElement> const all = {
            {"macro", macro},   {"function", function}, {"other", other}, {"scope", scope},
            {"second", second}, {"one", one},           {"two", two},     {"three", three},
            {"assoc", assoc},   {"lost", lost},         {"type", type},   {"method", method},
            {"null", {}},       {"position", position}};
        return all.at(name);
    }

    /// Does "element.Property = value; ...": sets one, adds to many; "-=" removes from many.
    void does(std::string const& statements) const {
        std::istringstream words(statements);
        for (std::string place, sign; words >> place >> sign;) {
            std::string value;
            std::getline(words >> std::ws, value, ';');
            if (value == "''") value.clear();
            std::size_t const dot = place.find('.');
            ModelElement const element = named(place.substr(0, dot));
            change(element, rowNamed(element.get()->classTable(), place.substr(dot + 1)), value,
                   sign == "-=");
        }
    }

  private:
    void change(ModelElement const& element, PropertyRow const& row, std::string const& value,
                bool removes) const {
        meta::Property const property = Core::propertyOf(&row);
        std::u16string const text(value.begin(), value.end());
        if (row.many() && row.refersToElements()) {
            ReferenceCollection& members = *Core::collection(*element.get(), row).asReferences();
            removes ? members.genericRemove(named(value)) : members.genericAdd(named(value));
        } else if (row.many()) {
            auto& texts =
                static_cast<PrimitiveSequence<std::u16string>&>(Core::collection(*element.get(), row));
            removes ? texts.remove(text) : texts.push_back(text);
        } else if (row.refersToElements()) {
            element.setPropertyValue(property, Value::createElementValue(property, named(value)));
        } else if (row.valueKind == schema::ValueKind::Boolean) {
            element.setPropertyValue(property, Value::createPrimitiveValue(property, value == "true"));
        } else {
            element.setPropertyValue(property, Value::createPrimitiveValue(property, text));
        }
    }
};

} // namespace testmodel
