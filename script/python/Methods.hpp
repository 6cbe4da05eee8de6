/// \file
/// The host's methods as Python callables.
#pragma once

#include "Python.hpp"

#include <brant/zero/Schema.hpp>
#include <quorl/QuorlClass.hpp>

#include <vector>

namespace zelkor::python {

/// Makes the type of the methods; called once.
void initMethods();

/// \returns a method by its forms in the host, which share a name. One that is an operation of elements is
/// called by reflection, without arrays, and gives way to other threads when it searches. The name must live
/// on. A new reference.
PyObject* makeMethod(std::vector<quorl::QuorlMethodInfo*> forms, quorl::QuorlClass& owner,
                     brant::zero::schema::OperationRow const* operation, char const* name);

/// \returns the host's class of a type that stands for one; null for any other.
quorl::QuorlClass* quorlClassOf(PyTypeObject const* type);

/// The arrays of a tuple of arguments, for as long as a call takes.
class Arrays {
  public:
    explicit Arrays(PyObject* arguments, std::vector<quorl::QuorlMethodInfo*> const& forms = {});
    [[nodiscard]] quorl::Inputs span() const noexcept { return inputs_; }

  private:
    std::vector<quorl::ArrayPtr> arrays_;
    std::vector<krelArray const*> inputs_;
};

} // namespace zelkor::python
