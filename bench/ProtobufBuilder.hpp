// Builds the plan's model as protobuf messages.
#pragma once

#include "Identity.hpp"
#include "Model.pb.h"
#include "Plan.hpp"

namespace zelkor::bench {

/// Fills messages on the heap, with the generated setters.
class ProtobufBuilder {
  public:
    ProtobufBuilder(proto::Project& root_, std::uint64_t seed) : root(root_), identities(seed) {}

    void project(ProjectRecord const& record) {
        identify(root);
        root.set_long_num_bits(record.longNumBits);
        root.set_long_double_num_bits(record.longDoubleNumBits);
        root.set_pointer_num_bits(record.pointerNumBits);
    }
    void file(FileRecord const& record) {
        proto::File& file = *root.add_files();
        files.push_back(identify(file));
        set(*file.mutable_path(), record.path);
        set(*file.mutable_written_name(), record.writtenName);
        if (record.isInclude) file.set_is_include(true);
        if (record.isTopLevelFile) file.set_is_top_level_file(true);
        for (FileIndex const index : record.includedFiles)
            addWords(*file.mutable_included_words(), files[index.at]);
    }
    void openScope(UnitRecord const& record) {
        proto::Scope& scope = *root.add_compilations();
        identify(scope);
        scope.set_language(static_cast<unsigned>(record.language));
        for (FileIndex const index : record.files)
            addWords(*scope.mutable_file_words(), files[index.at]);
        scopes.push_back(&scope);
    }
    void openScope(NamespaceRecord const& record) {
        proto::Scope& scope = *scopes.back()->add_namespaces();
        identify(scope);
        set(*scope.mutable_name(), record.name);
        if (record.isInline) scope.set_is_inline(true);
        scopes.push_back(&scope);
    }
    void closeScope() { scopes.pop_back(); }

    void symbol(FunctionRecord const& record) { fill(*scopes.back()->add_functions(), record); }
    void symbol(VariableRecord const& record) { fill(*scopes.back()->add_variables(), record); }
    void symbol(PointerRecord const& record) { refer(type(record), record.type); }
    void symbol(QualifiedRecord const& record) {
        proto::Type& made = type(record);
        refer(made, record.type);
        if (record.isConst) made.set_is_const(true);
        if (record.isVolatile) made.set_is_volatile(true);
    }
    void symbol(TypedefRecord const& record) {
        proto::Type& made = type(record);
        refer(made, record.type);
        if (record.isAlias) made.set_is_alias(true);
    }
    void symbol(IntegerRecord const& record) {
        proto::Type& made = type(record);
        made.set_num_bits(record.numBits);
        if (!record.isSigned) made.set_is_signed(false);
        if (record.integerKind != IntegerKind::SignedInt)
            made.set_integer_kind(static_cast<unsigned>(record.integerKind));
    }
    void symbol(StructRecord const& record) {
        proto::Type& made = type(record);
        made.mutable_members()->Reserve(static_cast<int>(record.members.size()));
        for (MemberRecord const& member : record.members) {
            proto::Variable& variable = *made.add_members();
            fill(variable, member);
            if (member.access != Access::None) variable.set_access(static_cast<unsigned>(member.access));
            if (member.isMutable) variable.set_is_mutable(true);
        }
        made.mutable_methods()->Reserve(static_cast<int>(record.methods.size()));
        for (MethodRecord const& method : record.methods) {
            proto::Function& function = *made.add_methods();
            fill(function, method);
            if (method.access != Access::Public) function.set_access(static_cast<unsigned>(method.access));
            if (method.isVirtual) function.set_is_virtual(true);
            if (method.isThisConst) function.set_is_this_const(true);
        }
        if (record.isAbstract) made.set_is_abstract(true);
    }

  private:
    template <class Message>
    Identity identify(Message& message) {
        Identity const drawn = identities.next();
        message.set_high(drawn.high);
        message.set_low(drawn.low);
        return drawn;
    }
    static void set(std::string& to, std::string_view text) { to.assign(text); }
    template <class Words>
    static void addWords(Words& words, Identity const& identity) {
        words.Add(identity.high);
        words.Add(identity.low);
    }
    template <class Message>
    void refer(Message& message, TypeIndex index) const {
        message.set_type_high(types[index.at].high);
        message.set_type_low(types[index.at].low);
    }

    void fill(proto::Position& position, PositionRecord const& record) {
        identify(position);
        position.set_line(record.line);
        position.set_col(record.col);
        position.set_file_high(files[record.file.at].high);
        position.set_file_low(files[record.file.at].low);
    }
    template <class Message>
    void locate(Message& message, SymbolRecord const& record) {
        if (record.defPos) fill(*message.mutable_def_pos(), *record.defPos);
        if (!record.name.empty()) set(*message.mutable_name(), record.name);
    }
    template <class Message, class Record>
    void declare(Message& message, Record const& record) {
        locate(message, record);
        for (PositionRecord const& position : record.declPos)
            fill(*message.add_decl_pos(), position);
        refer(message, record.type);
        if (record.storageClass != StorageClass::None)
            message.set_storage_class(static_cast<unsigned>(record.storageClass));
        if (record.linkage != Linkage::None) message.set_linkage(static_cast<unsigned>(record.linkage));
    }
    void fill(proto::Variable& variable, VariableRecord const& record) {
        identify(variable);
        declare(variable, record);
        if (!record.initVal) return;
        proto::Constant& constant = *variable.mutable_init_val();
        identify(constant);
        refer(constant, record.initVal->type);
        set(*constant.mutable_value(), record.initVal->value);
    }
    void fill(proto::Function& function, FunctionRecord const& record) {
        identify(function);
        declare(function, record);
        if (record.scope) {
            proto::Scope& scope = *function.mutable_scope();
            identify(scope);
            scope.mutable_variables()->Reserve(static_cast<int>(record.scope->symbols.size()));
            for (VariableRecord const& local : record.scope->symbols)
                fill(*scope.add_variables(), local);
        }
        function.mutable_params()->Reserve(static_cast<int>(record.params.size()));
        for (VariableRecord const& param : record.params)
            fill(*function.add_params(), param);
        for (TemplateArgRecord const& record_ : record.templateArgs) {
            proto::TemplateArg& argument = *function.add_template_args();
            identify(argument);
            argument.set_kind(static_cast<unsigned>(record_.argKind));
            refer(argument, record_.type);
        }
        if (record.numOptionalParams) function.set_num_optional_params(record.numOptionalParams);
        if (record.isInline) function.set_is_inline(true);
        if (record.isVariadic) function.set_is_variadic(true);
    }
    template <class Record>
    proto::Type& type(Record const& record) {
        proto::Type& made = *scopes.back()->add_types();
        types.push_back(identify(made));
        made.set_kind(static_cast<unsigned>(Record::kind));
        locate(made, record);
        return made;
    }

    proto::Project& root;
    IdentitySource identities;
    std::vector<proto::Scope*> scopes;
    std::vector<Identity> types;
    std::vector<Identity> files;
};

} // namespace zelkor::bench
