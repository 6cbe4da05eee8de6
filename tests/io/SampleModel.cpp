#include "io/SampleModel.hpp"

#include "model/ModelSupport.hpp"

namespace zelkor::test {

zelkor::ast::Ast makeSampleModel() {
    using namespace testmodel;
    zelkor::ast::Ast ast;
    Model const model = ast.getModel();
    Transaction transaction = model.beginTransaction();
    for (ClassTable const* table : classes()) {
        if (table->isAbstract) continue;
        make(model, *table); // one as it is made
        ModelElement const element = make(model, *table);
        for (std::size_t i = 1; i < table->count; ++i) {
            PropertyRow const& row = *table->stored[i];
            if (row.kind != PropertyKind::ContainerEnd) applyChange(element, row, prepareChange(model, row));
        }
    }
    transaction.commit();
    return ast;
}

std::string difference(zelkor::ast::Ast a, zelkor::ast::Ast b) {
    using zelkor::ast::io::IoFormat;
    std::string const first = zelkor::ast::io::serializeToUTF8String(a, IoFormat::json);
    std::string const second = zelkor::ast::io::serializeToUTF8String(b, IoFormat::json);
    if (first == second) return {};
    std::size_t at = 0;
    while (at < first.size() && at < second.size() && first[at] == second[at])
        ++at;
    std::size_t const from = at < 80 ? 0 : at - 80;
    return "the texts differ at " + std::to_string(at) + ":\n" + first.substr(from, 160) + "\n--\n" +
           second.substr(from, 160);
}

} // namespace zelkor::test
