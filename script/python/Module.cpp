// The extension `zelkor._core`; the package beside it is what people import.

#include "Classes.hpp"
#include "Lists.hpp"
#include "Methods.hpp"
#include "Model.hpp"
#include "Property.hpp"
#include "Query.hpp"

#include <brant/zero/Messages.hpp>
#include <quorl/Errors.hpp>

namespace zelkor::python {

namespace {

/// All messages that the library has, as pairs of catalogue and id.
py::list messages() {
    py::list all;
    std::pair<char const*, char const*> const known[] = {
#define ZELKOR_MESSAGE(Key, Text) {brant0::messages::Key::catalog, #Key},
        BRANT0_FOR_EACH_MESSAGE(ZELKOR_MESSAGE)
#undef ZELKOR_MESSAGE
#define ZELKOR_MESSAGE(Key, Text) {orvane::messages::Key::catalog, #Key},
            ORVANE_FOR_EACH_CLASS_MESSAGE(ZELKOR_MESSAGE) QUORL_FOR_EACH_MESSAGE(ZELKOR_MESSAGE)
#undef ZELKOR_MESSAGE
    };
    for (auto const& [catalogue, id] : known)
        all.append(py::make_tuple(catalogue, id));
    return all;
}

} // namespace

PYBIND11_MODULE(_core, module) {
    module.doc() = "The native half of the package zelkor.";
    py::register_exception_translator([](std::exception_ptr error) {
        try {
            std::rethrow_exception(error);
        } catch (...) {
            raiseCurrent();
        }
    });
    module.def("messages", messages);
    initProperty(module);
    initLists(module);
    initMethods();
    initModel(module);
    initQuery(module);
    initIo(module);
    initFind(module);
    initDictionary(module);
    module.def("make_classes", makeClasses);
}

} // namespace zelkor::python
