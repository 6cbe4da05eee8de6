// Facts of a project as elements of a model.
#pragma once

#include "Merge.hpp"
#include "Producer.hpp"
#include "UseIndex.hpp"

#include <zelkor/ast.hpp>

#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelkor::producer {

// Text of the sources in UTF-16. A byte that is no UTF-8 becomes U+DC00 plus the byte, so that nothing is
// lost.
std::u16string toModelText(std::string_view bytes);

class Emitter {
  public:
    Emitter(zelkor::ast::Ast& ast, ProjectFacts& facts);

    // Files that are new, with their comments, before all else is known of them. All calls are to be within
    // one transaction.
    void emitComments(std::span<FileFact const> files);
    // Creates all other elements, then links them; call once.
    void emit(Insight insight);
    // Elements by class, in short form: "Function", "types.PointerType".
    std::map<std::string, std::size_t> created() const;

  private:
    template <class Element>
    Element create(Id const& id) {
        ++created_[&Element::metaClass()];
        return Element::create(model_, id);
    }

    // EmitFiles.cpp
    void describeProject();
    void describeFile(FileFact const& fact);
    void emitComment(zelkor::ast::source::SourceFile const& file, CommentFact const& fact, Id const& id);
    void emitUnit(MergedUnit const& unit, std::size_t number);
    void emitMacro(zelkor::ast::source::CompilationUnit const& unit, MacroFact const& fact);
    zelkor::ast::source::SourcePosition position(Position const& position, Id const& id);
    zelkor::ast::source::SourceRange range(Range const& range, Id const& id);

    // EmitTypes.cpp
    zelkor::ast::types::Type createType(TypeFact const& fact);
    void linkType(TypeFact const& fact, std::size_t unit);
    zelkor::ast::types::Type type(Id const& id) const;

    // EmitEntities.cpp
    brant::zero::ModelElement createEntity(Entity const& entity);
    void linkEntity(MergedEntity const& merged);
    void linkNamespace(Entity const& entity, zelkor::ast::Scope const& owner);
    void linkSymbol(Entity const& entity, zelkor::ast::Symbol const& symbol, zelkor::ast::Scope const& unit);
    void putIntoOwner(Entity const& entity, zelkor::ast::Symbol const& symbol,
                      zelkor::ast::Scope const& unit);
    void linkDeclaration(Entity const& entity, zelkor::ast::Declaration const& declaration);
    void linkEnum(Entity const& entity, zelkor::ast::types::EnumType const& type);
    void linkTypedef(Entity const& entity, zelkor::ast::types::TypedefType const& type,
                     zelkor::ast::Scope const& home);
    zelkor::ast::Scope scopeOf(Id const& owner, zelkor::ast::Scope const& unit);
    // The scope of a function, aggregate or template, made when there is none; null for anything else.
    zelkor::ast::Scope innerScope(Id const& id);

    // EmitDetails.cpp; `home` is the scope around the entity, which takes the constants that no variable owns
    void linkFunction(Entity const& entity, zelkor::ast::Function const& function,
                      zelkor::ast::Scope const& home);
    void linkVariable(Entity const& entity, zelkor::ast::Variable const& variable,
                      zelkor::ast::Scope const& home);
    void linkAggregate(Entity const& entity, zelkor::ast::types::AggregateType const& aggregate,
                       zelkor::ast::Scope const& home);
    void linkStruct(Entity const& entity, zelkor::ast::types::StructType const& type);
    void linkTemplate(Entity const& entity, zelkor::ast::Template const& symbol);
    void createParameters(TemplateFacts const& facts);
    void linkArguments(Entity const& entity, brant::zero::ElementSequence<zelkor::ast::TemplateArg>& list,
                       zelkor::ast::Scope const& home);
    zelkor::ast::constants::Constant constant(ConstantFact const& fact, Id const& id,
                                              zelkor::ast::Scope const& home);
    zelkor::ast::constants::Constant createConstant(ConstantFact const& fact, Id const& id);

    // EmitInsight.cpp
    void emitInsight(std::vector<MergedEntity*> const& entities, bool isTransitive);
    void emitRecord(zelkor::ast::codeinsight::CodeInsight const& insight, Entity const& entity,
                    UseIndex const& index);
    void emitFunctionInfo(zelkor::ast::codeinsight::CodeInsight const& insight, Entity const& entity,
                          UseIndex const& index);
    zelkor::ast::codeinsight::VariableInfo
    emitVariableInfo(zelkor::ast::codeinsight::CodeInsight const& insight, Id const& id,
                     UseIndex const& index);
    void emitMacroInfo(zelkor::ast::codeinsight::CodeInsight const& insight, MacroFact const& fact);
    void emitReach(std::vector<MergedEntity*> const& entities, UseIndex const& index);
    template <class Record>
    void setRanges(Record const& record, Entity const& entity);
    template <class Record>
    void addPointers(Record const& record, std::vector<Id> const& targets);
    template <class Element, class List>
    void addAll(List& list, std::vector<Id> const& ids);

    template <class Element>
    Element find(Id const& id) const {
        auto const found = elements_.find(id);
        return found == elements_.end() ? Element() : Element::cast(found->second);
    }

    brant::zero::Model model_;
    ProjectFacts& facts_;
    std::vector<zelkor::ast::source::CompilationUnit> units_;
    IdMap<brant::zero::ModelElement> elements_;
    std::unordered_map<brant::zero::meta::Class const*, std::size_t> created_;
    zelkor::ast::Project project_; // the first that is created
};

} // namespace zelkor::producer
