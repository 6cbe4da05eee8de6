#include "Python.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/Text.hpp>
#include <quorl/Errors.hpp>

#include <new>
#include <stdexcept>

namespace zelkor::python {

namespace {

py::object argumentObject(tamber::core::except::MessageArgument const& argument) {
    if (auto const* number = std::get_if<long>(&argument)) return py::int_(*number);
    auto const* narrow = std::get_if<std::string>(&argument);
    auto const& wide = narrow == nullptr ? std::get<std::u16string>(argument) : std::u16string();
    return py::str(narrow == nullptr ? brant::zero::toUtf8(wide) : *narrow);
}

void raise(std::string const& catalogue, std::string const& id, std::string const& text,
           py::tuple const& arguments) {
    py::object const error =
        py::module_::import("zelkor.errors").attr("make")(catalogue, id, text, arguments);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
}

void raiseReport(tamber::core::except::IUserException const& error) {
    quorl::ErrorReport const report = quorl::describe(error);
    py::list arguments;
    for (auto const& argument : report.arguments)
        arguments.append(argumentObject(argument));
    raise(report.catalog, report.id, report.text, py::tuple(arguments));
}

/// A fault of a text or a file carries its parts as attributes.
void raiseParseError(brant::zero::io::ParseError const& error) {
    raiseReport(error);
    py::error_already_set raised;
    py::object const value = raised.value();
    value.attr("file") = error.getFile();
    value.attr("line") = error.getLine();
    value.attr("column") = error.getColumn();
    value.attr("message") = error.getMessage();
    value.attr("expected") = error.getExpected();
    raised.restore();
}

void raiseFileError(brant::zero::io::FileError const& error) {
    raiseReport(error);
    py::error_already_set raised;
    py::object const value = raised.value();
    value.attr("filename") = error.getPath();
    value.attr("strerror") = error.getReason();
    raised.restore();
}

void raisePlain(char const* id, char const* text) {
    raise("zelkor:python", id, text, py::tuple());
}

void translate() {
    try {
        throw;
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (py::builtin_exception const& error) {
        error.set_error();
    } catch (brant::zero::io::ParseError const& error) {
        raiseParseError(error);
    } catch (brant::zero::io::FileError const& error) {
        raiseFileError(error);
    } catch (tamber::core::except::IUserException const& error) {
        raiseReport(error);
    } catch (std::bad_alloc const&) {
        PyErr_NoMemory();
    } catch (std::invalid_argument const& error) {
        raisePlain("InvalidArgument", error.what());
    } catch (std::out_of_range const& error) {
        raisePlain("OutOfRange", error.what());
    } catch (std::logic_error const& error) {
        raisePlain("NotAllowed", error.what());
    } catch (std::exception const& error) {
        raisePlain("Failure", error.what());
    } catch (...) {
        raisePlain("Failure", "a failure of an unknown kind");
    }
}

} // namespace

void raiseCurrent() noexcept {
    try {
        translate();
    } catch (py::error_already_set& error) {
        error.restore(); // the report itself could not be made
    } catch (...) {
        PyErr_NoMemory();
    }
}

void fail(char const* id, std::string const& text) {
    raise("zelkor:python", id, text, py::tuple());
    throw py::error_already_set();
}

void failType(std::string const& where, std::string const& needed, PyObject* given) {
    quorl::raise<quorl::messages::WrongType>(where, needed, std::string(Py_TYPE(given)->tp_name));
}

} // namespace zelkor::python
