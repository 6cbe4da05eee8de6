/// \file
/// What the tests of the generated model share: the classes as the run-time description lists them, values
/// that fit a property, and a text of a whole model in which two states of it can be compared.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/Value.hpp"

#include <concepts>
#include <cstddef>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace testmodel {

using namespace brant::zero;
using schema::ClassTable;
using schema::PropertyKind;
using schema::PropertyRow;

Model newModel();

/// The classes of the model, in creation order.
std::vector<ClassTable const*> const& classes();
/// \returns the class itself, or its first subclass that has elements.
ClassTable const& concrete(ClassTable const& table);
/// All properties that elements of the class have, computed ones included, root class first.
std::vector<PropertyRow const*> propertiesOf(ClassTable const& table);
/// \returns the property of that name, own or inherited.
PropertyRow const& rowNamed(ClassTable const& table, std::string_view name);
std::string nameOf(PropertyRow const& row);

/// \returns a value for one attribute that differs from the default; values of different `variant` below 2
/// differ.
Value sampleValue(PropertyRow const& row, unsigned variant = 0);
/// The elements that a change of the property needs: targets, members or the owner.
std::vector<ModelElement> prepareChange(Model const& model, PropertyRow const& row, unsigned variant = 0);
/// Changes the property through reflection or its collection.
void applyChange(ModelElement const& element, PropertyRow const& row, std::vector<ModelElement> const& others,
                 unsigned variant = 0);

/// \returns every stored fact of the model: top-level order, and by identity each element with its container
/// and its properties. A placeholder shows as what it stands for, since reading may resolve it at any time.
std::string dump(Model const& model);
/// \returns the first line in which two such texts differ.
std::string firstDifference(std::string const& a, std::string const& b);
/// \returns "" for a sound model, else the violation in words.
std::string violationOf(Model const& model);

/// \returns the key of the message of an exception, or its text where it has none.
std::string describe(std::exception_ptr const& failure);
/// \returns what a call threw, as `describe` says it; "" when it threw nothing.
template <std::invocable Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (...) {
        return describe(std::current_exception());
    }
    return {};
}

/// A model with an element that nothing refers to, of any class.
ModelElement make(Model const& model, ClassTable const& table);
/// A placeholder for the element of that identity, which need not be there.
ModelElement placeholderFor(Model const& model, meta::Class const& cls, boost::uuids::uuid const& target,
                            bool external);
template <class X>
X placeholderFor(Model const& model, boost::uuids::uuid const& target, bool external = false) {
    return X::cast(placeholderFor(model, X::metaClass(), target, external));
}
/// \returns what the commits of a call reported about an element: old values by name of property. That of a
/// collection lives as long as the call.
std::map<std::string, Value> reported(ModelElement const& element, std::function<void()> const& call);
std::size_t sizeOf(AbstractOwnedCollection const& collection);

} // namespace testmodel
