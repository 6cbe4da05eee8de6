#pragma once

#include "quorl/Factory.hpp"
#include "quorl/QuorlPackage.hpp"

namespace quorl {

// How a script uses classes and objects. Inputs are brought to the types of the signature first; among
// several forms of a method the first that takes the inputs as they are runs, else the first that takes them
// converted. Failures of the called code pass through.

/// Makes an object of the class by its constructor. Throws CannotInstantiate for an abstract class and
/// for one without a constructor.
ZELKOR_API ArrayPtr construct(QuorlClass& quorlClass, Inputs inputs);

/// Calls a method of the class of the first input, which is the object.
ZELKOR_API Outputs callMethod(std::string_view name, Inputs inputs);

/// Calls a static method.
ZELKOR_API Outputs callStatic(QuorlClass const& quorlClass, std::string_view name, Inputs inputs);

/// Throws InvalidHandle when `self` is no single living object, NoSuchMember when its class has no such
/// property.
ZELKOR_API ArrayPtr getProperty(krelArray const& self, std::string_view name);
ZELKOR_API void setProperty(krelArray const& self, std::string_view name, krelArray const& value);

} // namespace quorl
