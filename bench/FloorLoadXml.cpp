#include "Contenders.hpp"
#include "FloorLoad.hpp"

#include <expat.h>
#include <memory>

namespace zelkor::bench {

namespace {

using namespace floor;
using CountedLoader = Loader<false>;

/// Turns parser events into elements. Exceptions must not cross the parser, which is written in C: they wait
/// here.
class Handler {
  public:
    Handler(CountedLoader& loader_, XML_Parser parser_) : loader(loader_), parser(parser_) {}

    static void start(void* self, char const* name, char const** attributes) {
        static_cast<Handler*>(self)->guarded([=](Handler& handler) { handler.begin(name, attributes); });
    }
    static void end(void* self, char const*) {
        static_cast<Handler*>(self)->guarded([](Handler& handler) { handler.end(); });
    }

    void rethrow() const {
        if (failure) std::rethrow_exception(failure);
    }

  private:
    template <class Work>
    void guarded(Work const& work) {
        if (failure) return;
        try {
            work(*this);
        } catch (...) {
            failure = std::current_exception();
            XML_StopParser(parser, XML_FALSE);
        }
    }

    /// An element in the model with the feature whose element is open in it.
    struct Frame {
        CountedLoader::Element element;
        CountedLoader::Rows const* feature = nullptr;
    };

    void begin(std::string_view name, char const** attributes) {
        if (!std::exchange(insideRoot, true)) return;
        if (!open.empty() && !open.back().feature) {
            open.back().feature = &open.back().element.row(name);
        } else if (name == "ref") {
            loader.text(open.back().element, *open.back().feature, attributes[1]);
            insideReference = true;
        } else {
            beginElement(name, attributes);
        }
    }

    void end() {
        if (std::exchange(insideReference, false) || open.empty()) return;
        if (!std::exchange(open.back().feature, nullptr)) open.pop_back();
    }

    void beginElement(std::string_view name, char const** attributes) {
        CountedLoader::Element element = loader.create(name);
        loader.identify(*element.node, attributes[1]); // the identity stands first
        for (char const** at = attributes + 2; *at; at += 2)
            attribute(element, at[0], at[1]);
        if (open.empty())
            loader.root(*element.node);
        else
            loader.contain(open.back().element, *open.back().feature, *element.node);
        open.push_back({element, nullptr});
    }

    void attribute(CountedLoader::Element& element, char const* name, std::string_view value) {
        CountedLoader::Rows const& row = element.row(name);
        if (row.form == Form::Number) {
            unsigned number = 0;
            std::from_chars(value.data(), value.data() + value.size(), number);
            row.assignNumber(*element.node, number);
        } else if (row.form == Form::Flag) {
            row.assignNumber(*element.node, value == "true");
        } else {
            loader.text(element, row, value);
        }
    }

    CountedLoader& loader;
    XML_Parser parser;
    std::vector<Frame> open;
    bool insideRoot = false;
    bool insideReference = false;
    std::exception_ptr failure;
};

} // namespace

void loadXmlToCounted(Stage& stage) {
    std::string const text = stage.readDocument(stage.xmlPath());
    Model<false> model;
    stage.measure([&] {
        CountedLoader loader(model);
        std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> const parser(XML_ParserCreate(nullptr),
                                                                                  &XML_ParserFree);
        Handler handler(loader, parser.get());
        XML_SetUserData(parser.get(), &handler);
        XML_SetElementHandler(parser.get(), &Handler::start, &Handler::end);
        auto const parsed = XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1);
        handler.rethrow();
        if (parsed != XML_STATUS_OK)
            throw std::runtime_error(XML_ErrorString(XML_GetErrorCode(parser.get())));
        loader.resolve();
    });
    expectSaves(stage, model);
}

} // namespace zelkor::bench
