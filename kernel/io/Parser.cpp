#include "brant/zero/io/Parser.hpp"

#include "FilePath.hpp"
#include "ModelReader.hpp"
#include "TextSource.hpp"

namespace brant::zero::io {

Parser::~Parser() = default;

void Parser::parseFile(std::u16string const& path, UpdateModelURI update) {
    std::string const name = toFilePath(path);
    std::unique_ptr<TextSource> const source = openTextSource(name);
    parse(name, *source);
    if (update != UpdateModelURI::No) modelUri_ = path;
}

void Parser::parseString(std::string const& text) {
    parse({}, *makeTextSource(text));
}
void Parser::parseString(std::u16string const& text) {
    parse({}, *makeTextSource(text));
}

void Parser::parse(std::string const& name, TextSource& source) {
    warnings_.clear();
    if (!model_) model_ = Model::create({}, ModelConstellation(), DefaultWorkQueueFactory());
    std::unique_ptr<TextSource> const text = decode(source);
    Core::Level level(*model_.get());
    ModelReader reader(*this, *model_.get(), name);
    try {
        read(reader, *text);
        reader.finish();
    } catch (tamber::core::except::IMsgIDException const& refusal) {
        // The write path refuses what no rule of the text does.
        reader.fail(refusal.what());
    }
    level.commit();
}

} // namespace brant::zero::io
