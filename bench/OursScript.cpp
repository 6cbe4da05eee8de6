#include "OursScript.hpp"

#include "OursBuilder.hpp"

#include <brant/zero/Core.hpp>
#include <brant/zero/mi/ElementMarshaler.hpp>
#include <brant/zero/mi/WrapperInfo.hpp>
#include <quorl/quorl.hpp>
#include <zelkor/ast/binding.hpp>

namespace zelkor::bench {

namespace {

constexpr std::size_t mostFunctions = 100000;

/// A built model, functions of it, and a script's hold on each.
struct Scripted {
    za::Ast ast;
    std::vector<za::Function> functions;
    std::vector<quorl::ArrayPtr> objects;

    explicit Scripted(Stage const& stage) {
        zelkor_ast_initialize();
        auto transaction = ast.getModel().beginTransaction();
        OursBuilder builder(ast.getModel());
        stage.plan.replay(builder);
        transaction.commit();
        ast.getModel().forEachElement([this](brant::zero::ModelElementImpl const& element) {
            za::Function const function = za::Function::cast(element.This());
            if (function && function.getType() && functions.size() < mostFunctions)
                functions.push_back(function);
        });
        for (za::Function const& function : functions) {
            objects.push_back(omCreateQuorlScalar(brant::zero::mi::announceElement(function)));
            brant::zero::mi::announceElement(function.getType()); // what is measured is not the first sight
        }
    }
};

/// Measures `access(function, object)` on each pair and checks that it came to something each time.
template <auto access>
void each(Stage& stage) {
    Scripted const model(stage);
    stage.countUnits(model.functions.size());
    bool all = true;
    stage.measure([&] {
        for (std::size_t i = 0; i < model.functions.size(); ++i)
            all = access(model.functions[i], *model.objects[i]) && all;
    });
    stage.expect(all && !model.functions.empty(), "an access came to nothing");
}

bool scriptRead(za::Function const&, krelArray const& object) {
    return !omGetChars(*quorl::getProperty(object, "Name")).empty();
}
bool nativeRead(za::Function const& function, krelArray const&) {
    return !function.getName().empty();
}
/// As a module does that keeps the property and reads without an array.
bool scriptRow(za::Function const&, krelArray const& object) {
    static auto const& property = dynamic_cast<brant::zero::mi::ElementProperty const&>(
        *omGetArrayElement(object, 0)->getQuorlClass().findProperty("Name"));
    auto const& element = *static_cast<brant::zero::ModelElement const*>(
        quorl::factory::impl::validateSelfPointer(*omGetArrayElement(object, 0)));
    return !brant::zero::Core::field<std::string>(*element.get(), property.getRow()).empty();
}
bool scriptRefer(za::Function const&, krelArray const& object) {
    return omGetNumberOfElements(*quorl::getProperty(object, "Type")) == 1;
}
bool nativeRefer(za::Function const& function, krelArray const&) {
    return static_cast<bool>(function.getType());
}
bool scriptCall(za::Function const&, krelArray const& object) {
    krelArray const* const inputs[] = {&object};
    return !omGetChars(*quorl::callMethod("getFullyQualifiedName", inputs)[0]).empty();
}
bool nativeCall(za::Function const& function, krelArray const&) {
    return !function.getFullyQualifiedName().empty();
}
bool scriptWrite(za::Function const&, krelArray const& object) {
    quorl::setProperty(object, "Name", *omCreateCharArray("renamed"));
    return true;
}
bool nativeWrite(za::Function const& function, krelArray const&) {
    function.setName("renamed");
    return true;
}

} // namespace

std::vector<Workload> scriptWorkloads() {
    return {{"script.read", each<scriptRead>},   {"native.read", each<nativeRead>},
            {"script.row", each<scriptRow>},     {"script.refer", each<scriptRefer>},
            {"native.refer", each<nativeRefer>}, {"script.call", each<scriptCall>},
            {"native.call", each<nativeCall>},   {"script.write", each<scriptWrite>},
            {"native.write", each<nativeWrite>}};
}

} // namespace zelkor::bench
