// What the Python module is measured against: a plain class of pybind11, and the library's own calls from C++.

#include <pybind11/pybind11.h>

#include <zelkor/ast.hpp>
#include <zelkor/ast/query.hpp>

#include <string>

namespace py = pybind11;
namespace za = zelkor::ast;

namespace {

struct Plain {
    std::string name;
    [[nodiscard]] std::string const& getName() const { return name; }
};

py::list plainObjects(std::size_t count) {
    py::list objects;
    for (std::size_t i = 0; i < count; ++i)
        objects.append(py::cast(Plain{"function_" + std::to_string(i)}));
    return objects;
}

/// The one unit of the model.
za::source::CompilationUnit unitOf(brant::zero::Model const& model) {
    return za::query<za::source::CompilationUnit>(model).first();
}

std::size_t countInline(brant::zero::Model const& model) {
    return za::query<za::Function>(model).where(za::Function::isInline() == true).count();
}

std::size_t countNamed(brant::zero::Model const& model, std::string const& end) {
    return za::query<za::Function>(model)
        .where(za::Function::name().endsWith(end) && za::Function::params().count() == 0u)
        .count();
}

std::size_t search(brant::zero::Model const& model, std::string const& name) {
    za::FinderOptions const options = za::FinderOptions().setIncludeSystemHeaders(true);
    return unitOf(model).findSymbolByMetaClassAndName(za::Function::metaClass(), name, options).size();
}

std::size_t walk(brant::zero::Model const& model) {
    std::size_t characters = 0;
    for (za::Function const& function : za::query<za::Function>(model))
        characters += function.getName().size();
    return characters;
}

} // namespace

PYBIND11_MODULE(zelkor_bench_floor, module) {
    py::class_<Plain>(module, "Plain").def_property_readonly("name", &Plain::getName);
    module.def("plain_objects", plainObjects);
    module.def("count_inline", countInline);
    module.def("count_named", countNamed);
    module.def("search", search);
    module.def("walk", walk);
}
