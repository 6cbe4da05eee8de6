// Builds the plan's model in the library, as a producer does: by builders, each symbol with all that it
// contains at once, in one transaction around everything.
#pragma once

#include "Plan.hpp"

#include <zelkor/ast.hpp>

#include <memory>
#include <string>
#include <vector>

namespace zelkor::bench {

namespace za = zelkor::ast;

class OursBuilder {
  public:
    explicit OursBuilder(brant::zero::Model const& model_) : model(model_) {}

    void project(ProjectRecord const& record) {
        za::Project::Builder builder(model);
        builder.setLongNumBits(record.longNumBits)
            .setLongDoubleNumBits(record.longDoubleNumBits)
            .setPointerNumBits(record.pointerNumBits);
        root = builder.create();
    }
    void file(FileRecord const& record) {
        za::source::SourceFile::Builder builder(model);
        builder.setPath(wide(record.path)).setWrittenName(wide(record.writtenName));
        if (record.isInclude) builder.setIsInclude(true);
        if (record.isTopLevelFile) builder.setIsTopLevelFile(true);
        for (FileIndex const index : record.includedFiles)
            builder.addIncludedFiles(files[index.at]);
        files.push_back(root.createIntoFiles(builder));
    }
    void openScope(UnitRecord const& record) {
        za::source::CompilationUnit::Builder builder(model);
        builder.setLanguage(static_cast<za::source::LanguageKind>(record.language));
        for (FileIndex const index : record.files)
            builder.addFiles(files[index.at]);
        scopes.push_back(root.createIntoCompilations(builder));
    }
    void openScope(NamespaceRecord const& record) {
        za::Namespace::Builder builder(model);
        builder.setName(std::string(record.name));
        if (record.isInline) builder.setIsInline(true);
        scopes.push_back(scopes.back().createIntoNamespaces(builder));
    }
    void closeScope() { scopes.pop_back(); }

    void symbol(FunctionRecord const& record) {
        za::Function::Builder builder(model);
        fill(builder, record);
        add(builder);
    }
    void symbol(VariableRecord const& record) {
        za::Variable::Builder builder(model);
        fill(builder, record);
        add(builder);
    }
    void symbol(IntegerRecord const& record) {
        za::types::IntegerType::Builder builder(model);
        locate(builder, record);
        builder.setNumBits(record.numBits)
            .setIsSigned(record.isSigned)
            .setKind(static_cast<za::types::IntegerKind>(record.integerKind));
        addType(builder);
    }
    void symbol(PointerRecord const& record) {
        za::types::PointerType::Builder builder(model);
        builder.setType(types[record.type.at]);
        addType(builder);
    }
    void symbol(QualifiedRecord const& record) {
        za::types::QualifiedType::Builder builder(model);
        builder.setType(types[record.type.at]);
        if (record.isConst) builder.setIsConst(true);
        if (record.isVolatile) builder.setIsVolatile(true);
        addType(builder);
    }
    void symbol(TypedefRecord const& record) {
        za::types::TypedefType::Builder builder(model);
        locate(builder, record);
        builder.setType(types[record.type.at]);
        if (record.isAlias) builder.setIsAlias(true);
        addType(builder);
    }
    void symbol(StructRecord const& record) {
        za::types::StructType::Builder builder(model);
        locate(builder, record);
        for (MemberRecord const& member : record.members) {
            auto made = std::make_unique<za::types::Member::Builder>();
            fill(*made, member);
            if (member.access != Access::None)
                made->setAccess(static_cast<za::types::AccessSpecifierKind>(member.access));
            if (member.isMutable) made->setIsMutable(true);
            builder.addMembers(std::move(made));
        }
        for (MethodRecord const& method : record.methods) {
            auto made = std::make_unique<za::types::Method::Builder>();
            fill(*made, method);
            if (method.access != Access::Public)
                made->setAccess(static_cast<za::types::AccessSpecifierKind>(method.access));
            if (method.isVirtual) made->setIsVirtual(true);
            if (method.isThisConst) made->setIsThisConst(true);
            builder.addMethods(std::move(made));
        }
        if (record.isAbstract) builder.setIsAbstract(true);
        addType(builder);
    }

  private:
    /// The plan's texts are ASCII.
    static std::u16string wide(std::string_view text) { return {text.begin(), text.end()}; }

    template <class Builder>
    void add(Builder& builder) {
        scopes.back().createIntoSymbols(builder);
    }
    template <class Builder>
    void addType(Builder& builder) {
        types.push_back(za::types::Type::cast(scopes.back().createIntoSymbols(builder)));
    }

    std::unique_ptr<za::source::SourcePosition::Builder> position(PositionRecord const& record) const {
        auto made = std::make_unique<za::source::SourcePosition::Builder>();
        made->setLine(record.line).setCol(record.col).setFile(files[record.file.at]);
        return made;
    }
    template <class Builder>
    void locate(Builder& builder, SymbolRecord const& record) const {
        if (record.defPos) builder.setDefPos(position(*record.defPos));
        for (PositionRecord const& declared : record.declPos)
            builder.addDeclPos(position(declared));
        builder.setName(std::string(record.name));
    }
    template <class Builder, class Record>
    void declare(Builder& builder, Record const& record) const {
        locate(builder, record);
        builder.setType(types[record.type.at]);
        if (record.storageClass != StorageClass::None)
            builder.setStorageClass(static_cast<za::StorageClassKind>(record.storageClass));
        if (record.linkage != Linkage::None) builder.setLinkage(static_cast<za::LinkageKind>(record.linkage));
    }
    template <class Builder>
    void fill(Builder& builder, VariableRecord const& record) const {
        declare(builder, record);
        if (!record.initVal) return;
        auto made = std::make_unique<za::constants::IntegerConstant::Builder>();
        made->setType(types[record.initVal->type.at]).setValue(std::string(record.initVal->value));
        builder.setInitVal(std::move(made));
    }
    template <class Builder>
    void fill(Builder& builder, FunctionRecord const& record) const {
        declare(builder, record);
        if (record.scope) {
            auto body = std::make_unique<za::Scope::Builder>();
            for (VariableRecord const& local : record.scope->symbols)
                body->addSymbols(variable(local));
            builder.setScope(std::move(body));
        }
        for (VariableRecord const& param : record.params)
            builder.addParams(variable(param));
        for (TemplateArgRecord const& argument : record.templateArgs) {
            auto made = std::make_unique<za::TemplateArg::Builder>();
            made->setKind(static_cast<za::TemplateArgKind>(argument.argKind))
                .setType(types[argument.type.at]);
            builder.addTemplateArgs(std::move(made));
        }
        if (record.numOptionalParams) builder.setNumOptionalParams(record.numOptionalParams);
        if (record.isInline) builder.setIsInline(true);
        if (record.isVariadic) builder.setIsVariadic(true);
    }
    std::unique_ptr<za::Variable::Builder> variable(VariableRecord const& record) const {
        auto made = std::make_unique<za::Variable::Builder>();
        fill(*made, record);
        return made;
    }

    brant::zero::Model model;
    za::Project root;
    std::vector<za::Scope> scopes;
    std::vector<za::types::Type> types;
    std::vector<za::source::SourceFile> files;
};

} // namespace zelkor::bench
