#include "Contenders.hpp"
#include "FloorLoad.hpp"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

namespace zelkor::bench {

namespace {

using namespace floor;
using CountedLoader = Loader<false>;

/// Turns reader events into elements. A frame is an object (an element, or the document's frame) with the
/// feature whose value comes next.
class Handler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Handler> {
  public:
    explicit Handler(CountedLoader& loader_) : loader(loader_) {}

    bool StartObject() {
        frames.push_back({});
        return true;
    }

    bool EndObject(rapidjson::SizeType) {
        frames.pop_back();
        return true;
    }

    bool Key(char const* text, rapidjson::SizeType size, bool) {
        Frame& frame = frames.back();
        std::string_view const key(text, size);
        frame.row = frame.element.node && key != "uuid" ? &frame.element.row(key) : nullptr;
        return true;
    }

    bool String(char const* text, rapidjson::SizeType size, bool) {
        Frame& frame = frames.back();
        if (frames.size() == 1) return true; // format name and version
        if (!frame.element.node)
            begin(frame, {text, size});
        else if (!frame.row)
            loader.identify(*frame.element.node, {text, size});
        else
            loader.text(frame.element, *frame.row, {text, size});
        return true;
    }

    bool Uint(unsigned value) {
        frames.back().row->assignNumber(*frames.back().element.node, value);
        return true;
    }
    bool Bool(bool value) { return Uint(value); }
    bool StartArray() { return true; }
    bool EndArray(rapidjson::SizeType) { return true; }
    bool Default() { return false; }

  private:
    struct Frame {
        CountedLoader::Element element;
        CountedLoader::Rows const* row = nullptr;
    };

    void begin(Frame& frame, std::string_view name) {
        frame.element = loader.create(name);
        Frame const& owner = frames[frames.size() - 2];
        if (owner.element.node)
            loader.contain(owner.element, *owner.row, *frame.element.node);
        else
            loader.root(*frame.element.node);
    }

    CountedLoader& loader;
    std::vector<Frame> frames;
};

} // namespace

void loadJsonToCounted(Stage& stage) {
    std::string const text = stage.readDocument(stage.jsonPath());
    Model<false> model;
    stage.measure([&] {
        CountedLoader loader(model);
        Handler handler(loader);
        rapidjson::Reader reader;
        rapidjson::MemoryStream stream(text.data(), text.size());
        auto const parsed = reader.Parse<rapidjson::kParseIterativeFlag>(stream, handler);
        stage.expect(!parsed.IsError(), rapidjson::GetParseError_En(parsed.Code()));
        loader.resolve();
    });
    expectSaves(stage, model);
}

} // namespace zelkor::bench
