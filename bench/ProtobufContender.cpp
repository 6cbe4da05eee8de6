#include "Contenders.hpp"
#include "ProtobufBuilder.hpp"
#include "Search.hpp"

#include <memory>

namespace zelkor::bench {

namespace {

void build(Stage const& stage, proto::Project& project) {
    ProtobufBuilder builder(project, stage.plan.seed());
    stage.plan.replay(builder);
}

/// Visits by the generated getters.
struct Visitor {
    WalkSums sums;

    void visit(proto::Position const& position) {
        ++sums.elements;
        sums.places += position.line() + position.col();
        sums.references += position.has_file_low();
    }
    template <class Message>
    void visitNamed(Message const& message) {
        ++sums.elements;
        sums.textBytes += message.name().size();
        if (message.has_def_pos()) visit(message.def_pos());
        sums.references += message.has_type_low();
    }
    void visit(proto::Variable const& variable) {
        visitNamed(variable);
        for (auto const& position : variable.decl_pos())
            visit(position);
        if (!variable.has_init_val()) return;
        ++sums.elements;
        sums.textBytes += variable.init_val().value().size();
        sums.references += variable.init_val().has_type_low();
    }
    void visit(proto::Function const& function) {
        visitNamed(function);
        for (auto const& position : function.decl_pos())
            visit(position);
        if (function.has_scope()) visit(function.scope());
        for (auto const& param : function.params())
            visit(param);
        for (auto const& argument : function.template_args()) {
            ++sums.elements;
            sums.references += argument.has_type_low();
        }
    }
    void visit(proto::Type const& type) {
        visitNamed(type);
        for (auto const& member : type.members())
            visit(member);
        for (auto const& method : type.methods())
            visit(method);
    }
    void visit(proto::Scope const& scope) {
        ++sums.elements;
        sums.textBytes += scope.name().size();
        sums.references += static_cast<unsigned>(scope.file_words_size()) / 2;
        for (auto const& space : scope.namespaces())
            visit(space);
        for (auto const& function : scope.functions())
            visit(function);
        for (auto const& variable : scope.variables())
            visit(variable);
        for (auto const& type : scope.types())
            visit(type);
    }
    void visit(proto::Project const& project) {
        ++sums.elements;
        for (auto const& file : project.files()) {
            ++sums.elements;
            sums.textBytes += file.path().size() + file.written_name().size();
            sums.references += static_cast<unsigned>(file.included_words_size()) / 2;
        }
        for (auto const& unit : project.compilations())
            visit(unit);
    }
};

/// Visits by reflection alone: the set fields, since the unset ones hold nothing.
struct ReflectiveVisitor {
    using Message = google::protobuf::Message;
    using Field = google::protobuf::FieldDescriptor;
    std::uint64_t messages = 0;
    std::uint64_t textBytes = 0;
    std::uint64_t words = 0;
    std::string scratch;

    void visit(Message const& message) {
        ++messages;
        google::protobuf::Reflection const& reflection = *message.GetReflection();
        std::vector<Field const*> fields;
        reflection.ListFields(message, &fields);
        for (Field const* const field : fields) {
            if (field->is_repeated())
                visitMany(message, reflection, field);
            else
                visitOne(message, reflection, field);
        }
    }
    void visitOne(Message const& message, google::protobuf::Reflection const& reflection,
                  Field const* field) {
        switch (field->cpp_type()) {
        case Field::CPPTYPE_MESSAGE:
            return visit(reflection.GetMessage(message, field));
        case Field::CPPTYPE_STRING:
            textBytes += reflection.GetStringReference(message, field, &scratch).size();
            break;
        case Field::CPPTYPE_UINT32:
            words += reflection.GetUInt32(message, field);
            break;
        case Field::CPPTYPE_UINT64:
            words += reflection.GetUInt64(message, field);
            break;
        case Field::CPPTYPE_BOOL:
            words += reflection.GetBool(message, field);
            break;
        default:
            throw std::runtime_error("a field of unknown type");
        }
    }
    void visitMany(Message const& message, google::protobuf::Reflection const& reflection,
                   Field const* field) {
        int const size = reflection.FieldSize(message, field);
        for (int at = 0; at < size; ++at) {
            if (field->cpp_type() == Field::CPPTYPE_MESSAGE)
                visit(reflection.GetRepeatedMessage(message, field, at));
            else
                words += reflection.GetRepeatedUInt64(message, field, at);
        }
    }
};

void create(Stage& stage) {
    proto::Project project;
    stage.measure([&] { build(stage, project); });
    Visitor visitor;
    visitor.visit(project);
    stage.expectSums(visitor.sums);
}

void walk(Stage& stage) {
    proto::Project project;
    build(stage, project);
    Visitor visitor;
    stage.measure([&] { visitor.visit(project); });
    stage.expectSums(visitor.sums);
}

void walkReflective(Stage& stage) {
    proto::Project project;
    build(stage, project);
    ReflectiveVisitor visitor;
    stage.measure([&] { visitor.visit(project); });
    stage.expect(visitor.textBytes == stage.settings.sums.textBytes &&
                     visitor.messages == stage.plan.elements(),
                 "the reflective walk missed something");
}

void destroy(Stage& stage) {
    auto project = std::make_unique<proto::Project>();
    build(stage, *project);
    stage.measure([&] { project.reset(); });
}

void memory(Stage& stage) {
    proto::Project project;
    stage.measureMemory([&] { build(stage, project); });
}

/// Counts functions of a name below a scope, whose own name with `::` is `outer`.
std::size_t countNamed(proto::Scope const& scope, std::string const& outer, std::string const& wanted) {
    std::size_t found = 0;
    for (auto const& function : scope.functions())
        found += outer + function.name() == wanted && function.template_args().empty();
    for (auto const& space : scope.namespaces())
        found += countNamed(space, outer + space.name() + "::", wanted);
    return found;
}

void find(Stage& stage) {
    proto::Project project;
    build(stage, project);
    measureSearch(stage, [&](std::string const& name) {
        std::size_t found = 0;
        for (auto const& unit : project.compilations())
            found += countNamed(unit, {}, name);
        return found;
    });
}

} // namespace

Contender protobufContender() {
    return {"protobuf",
            {{"create", create},
             {"walk", walk},
             {"walk.reflective", walkReflective},
             {"find", find},
             {"destroy", destroy},
             {"memory", memory}}};
}

} // namespace zelkor::bench
