#pragma once

// What a script could write, as short as in a script. Everything here goes through the class system alone.

#include "quorl/quorl.hpp"

#include <functional>
#include <initializer_list>
#include <string>

namespace host {

using quorl::ArrayPtr;
using quorl::QuorlClass;

/// The class by its name below `internal.zelkor.ast`, or by its whole name if that has "brant" in front. The
/// library is loaded by the first call.
QuorlClass& classOf(std::string const& name);

ArrayPtr text(std::string const& utf8);
ArrayPtr string(std::u16string const& utf16);
template <class T>
ArrayPtr number(T value) {
    return omCreateNumericScalar<T>(value);
}
struct Field {
    Field(char const* fieldName, ArrayPtr const& fieldValue) : name(fieldName), value(fieldValue.get()) {}
    char const* name;
    krelArray const* value;
};
/// A struct of one element, with copies of the values.
ArrayPtr init(std::initializer_list<Field> fields);
template <class... Arrays>
std::vector<krelArray const*> inputs(Arrays const&... arrays) {
    return {arrays.get()...};
}

template <class... Arrays>
ArrayPtr make(std::string const& className, Arrays const&... arrays) {
    return quorl::construct(classOf(className), inputs(arrays...));
}
/// \returns the first output, or null when there is none.
template <class... Arrays>
ArrayPtr call(char const* method, Arrays const&... arrays) {
    quorl::Outputs outputs = quorl::callMethod(method, inputs(arrays...));
    return outputs.empty() ? nullptr : std::move(outputs[0]);
}
template <class... Arrays>
ArrayPtr callStatic(std::string const& className, char const* method, Arrays const&... arrays) {
    quorl::Outputs outputs = quorl::callStatic(classOf(className), method, inputs(arrays...));
    return outputs.empty() ? nullptr : std::move(outputs[0]);
}
inline ArrayPtr get(ArrayPtr const& object, char const* property) {
    return quorl::getProperty(*object, property);
}
inline void set(ArrayPtr const& object, char const* property, ArrayPtr const& value) {
    quorl::setProperty(*object, property, *value);
}

/// \returns any value in one line: numbers, texts in quotes, literals by name, elements by class and
/// identity.
std::string show(krelArray const& array);
inline std::string show(ArrayPtr const& array) {
    return show(*array);
}
/// \returns the failure of the call as "id" or "id(arguments)", "" when it succeeds. The catalogue is
/// checked: ids of `Orvane:class` have "host " in front, all else must be of `brant0:messages`.
std::string failureOf(std::function<void()> const& call);

} // namespace host
