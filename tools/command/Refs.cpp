// `zelkor refs`: every element that refers to one, found by one reverse walk over the properties that do not
// own.

#include "Answers.hpp"

#include <brant/zero/Visit.hpp>

#include <set>
#include <unordered_map>

namespace zelkor::command {

namespace za = zelkor::ast;
namespace schema = brant::zero::schema;
using brant::zero::ModelElement;
using brant::zero::ModelElementImpl;

namespace {

struct Reference {
    ModelElementImpl const* from;
    schema::PropertyRow const* row;
};

using References = std::unordered_map<ModelElementImpl const*, std::vector<Reference>>;

/// Who refers to whom, in the order of the model. What a container end says, containment says already.
References allReferences(za::Ast const& ast) {
    References references;
    forEachElement(ast, [&](ModelElement const& element) {
        ModelElementImpl const* const from = element.get();
        brant::zero::visitFeatures(*from, [&](schema::PropertyRow const& row, auto const& value) {
            using T = std::remove_cvref_t<decltype(value)>;
            if (row.owning() || row.kind == schema::PropertyKind::ContainerEnd) return;
            if constexpr (std::is_same_v<T, ModelElementImpl*>) {
                if (value != nullptr) references[value].push_back({from, &row});
            } else if constexpr (std::is_same_v<T, brant::zero::ReferenceSequence>) {
                for (std::size_t i = 0; i < value.size(); ++i)
                    if (value.slot(i) != nullptr) references[value.slot(i)].push_back({from, &row});
            }
        });
    });
    return references;
}

/// A type that only wraps others, such as a pointer: who refers to it refers to what is below.
bool isLayer(ModelElement const& element) {
    auto const type = za::types::Type::cast(element);
    return type && type.getName().empty() && !za::types::AggregateType::cast(type) &&
           !za::types::EnumType::cast(type);
}

/// What an insight record is about; null for anything else.
ModelElement subjectOfRecord(ModelElement const& element) {
    namespace insight = za::codeinsight;
    if (auto const record = insight::FunctionInfo::cast(element)) return record.getFunction();
    if (auto const record = insight::VariableInfo::cast(element)) return record.getVariable();
    if (auto const record = insight::TypeInfo::cast(element)) return record.getType();
    if (auto const record = insight::MacroInfo::cast(element)) return record.getMacro();
    return {};
}

/// Whether the property is the one that tells what an insight record is about.
bool isSubject(ModelElement const& from, std::string const& property) {
    return subjectOfRecord(from) &&
           (property == "Function" || property == "Variable" || property == "Type" || property == "Macro");
}

/// The element that a person knows, from an element that refers: a record stands for its subject, a base,
/// an argument or a parameter for what has it. The properties on the way are told as "BaseClasses.Type".
ModelElement known(ModelElement element, std::string& relation) {
    for (;;) {
        if (ModelElement const subject = subjectOfRecord(element)) return subject;
        auto const variable = za::Variable::cast(element);
        bool const isParameter = variable && variable.getOwningFunPrototype();
        if ((hasName(element) && !isParameter) || za::source::SourceFile::cast(element)) return element;
        ModelElement const container = element.container();
        if (!container || za::source::CompilationUnit::cast(element)) return element;
        relation = brant::zero::toUtf8(element.containmentFeature().getName()) + '.' + relation;
        element = container;
    }
}

class Finder {
  public:
    explicit Finder(za::Ast const& ast) : references_(allReferences(ast)) {}

    [[nodiscard]] Section about(ModelElement const& target, std::string const& name) {
        Section section{target, name + " is referred to by", {}};
        section.nothing = "nothing in the model refers to " + name;
        seen_.clear();
        std::vector<ModelElement> layers{target};
        std::set<ModelElementImpl const*> wrapped{target.get()};
        for (std::size_t i = 0; i < layers.size(); ++i) {
            ModelElement const layer = layers[i];
            for (Reference const& reference : references_[layer.get()]) {
                ModelElement const from = reference.from->This();
                if (isLayer(from)) {
                    if (wrapped.insert(from.get()).second) layers.push_back(from);
                } else {
                    add(section, from, reference.row->name, i == 0 ? std::string() : title(layer));
                }
            }
        }
        sortByPlace(section.rows);
        return section;
    }

  private:
    void add(Section& section, ModelElement const& from, std::string relation, std::string const& layer) {
        if (isSubject(from, relation)) {
            auto const macro = za::codeinsight::MacroInfo::cast(from);
            if (!macro) return; // that it has a record is no use of it
            for (za::source::SourcePosition const& position : macro.getInvocationPositions())
                section.rows.push_back(rowOf(position, "InvocationPositions", {}));
            return;
        }
        ModelElement const element = known(from, relation);
        if (seen_.insert({element.get(), relation + ' ' + layer}).second)
            section.rows.push_back(rowOf(element, relation, layer));
    }

    static Row rowOf(ModelElement const& element, std::string const& relation, std::string const& layer) {
        Row row{element, {}, relation + (layer.empty() ? "" : " as " + layer)};
        row.members.text("relation", relation);
        if (!layer.empty()) row.members.text("as", layer);
        return row;
    }

    References references_;
    std::set<std::pair<ModelElementImpl const*, std::string>> seen_;
};

} // namespace

int runRefs(Arguments const& arguments) {
    arguments.requireOperands({"FILE", "NAME"});
    za::Ast const ast = readModel(arguments.operands()[0]);
    std::vector<Section> sections;
    auto const anything = [](ModelElement const&) { return true; };
    std::vector<ModelElement> const found = subjects(ast, arguments.operands()[1], anything, "references");
    if (!found.empty()) {
        Finder finder(ast);
        std::vector<std::string> const names = namesOf(found);
        for (std::size_t i = 0; i < found.size(); ++i)
            sections.push_back(finder.about(found[i], names[i]));
    }
    return printAnswer(arguments, "refs", sections);
}

} // namespace zelkor::command
