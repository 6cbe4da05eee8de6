#include "OursSearch.hpp"

#include "Search.hpp"

#include <zelkor/ast.hpp>

namespace zelkor::bench {

namespace {

std::vector<za::Symbol> search(za::Project const& project, brant::zero::meta::Class const& wanted,
                               std::string const& name, za::FinderOptions const& options) {
    std::vector<za::Symbol> all;
    for (za::source::CompilationUnit const unit : project.getCompilations())
        for (za::Symbol& symbol : unit.findSymbolByMetaClassAndName(wanted, name, options))
            all.push_back(std::move(symbol));
    return all;
}

za::FinderOptions everywhere() {
    return za::FinderOptions().setIncludeStdNs(true).setIncludeSystemHeaders(true);
}

} // namespace

void find(Stage& stage, za::Project const& project) {
    measureSearch(stage, [&](std::string const& name) {
        return search(project, za::Function::metaClass(), name, everywhere()).size();
    });
}

void findByDefault(Stage& stage, za::Project const& project) {
    auto const questions = SearchQuestions::of(stage.plan);
    std::size_t found = 0;
    stage.countUnits(std::uint64_t{stage.plan.elements()} * questions.size());
    stage.measure([&] {
        for (SearchQuestion const& question : questions)
            found += search(project, za::Function::metaClass(), question.name, {}).size();
    });
    std::size_t defined = 0;
    for (SearchQuestion const& question : questions)
        for (za::Symbol const& symbol :
             search(project, za::Function::metaClass(), question.name, everywhere())) {
            auto const position = symbol.getDefPos();
            defined += position && position.getFile() ? 1 : 0;
        }
    stage.expect(found == defined,
                 "found " + std::to_string(found) + " functions, not " + std::to_string(defined));
}

void findBySignature(Stage& stage, za::Project const& project) {
    auto const questions = SearchQuestions::of(stage.plan);
    std::vector<za::Symbol> wanted;
    std::vector<std::string> signatures;
    for (SearchQuestion const& question : questions) {
        wanted.push_back(search(project, za::Function::metaClass(), question.name, everywhere()).front());
        signatures.push_back(wanted.back().generateSignature());
    }
    auto const options = everywhere().setNameResolutionStrategy(za::NameFinderKind::Signature);
    std::vector<std::vector<za::Symbol>> found;
    stage.countUnits(std::uint64_t{stage.plan.elements()} * questions.size());
    stage.measure([&] {
        for (std::string const& signature : signatures)
            found.push_back(search(project, za::Function::metaClass(), signature, options));
    });
    for (std::size_t i = 0; i < wanted.size(); ++i)
        stage.expect(std::find(found[i].begin(), found[i].end(), wanted[i]) != found[i].end(),
                     signatures[i] + " was not found");
}

void findNothing(Stage& stage, za::Project const& project) {
    auto const questions = SearchQuestions::of(stage.plan);
    std::size_t found = 0;
    stage.countUnits(std::uint64_t{stage.plan.elements()} * questions.size());
    stage.measure([&] {
        for (SearchQuestion const& question : questions)
            found += search(project, za::Template::metaClass(), question.name, everywhere()).size();
    });
    stage.expect(found == 0, "found templates, of which there are none");
}

} // namespace zelkor::bench
