// Declarations of one unit as entities: all of project files, and of other files those that something refers
// to.
#pragma once

#include "BodyReader.hpp"
#include "ConstantReader.hpp"
#include "SourceIndex.hpp"
#include "TypeReader.hpp"

#include <string>
#include <unordered_map>
#include <vector>

namespace zelkor::producer {

class DeclarationReader {
  public:
    // Uses are recorded only when wanted; what is used has an entity in any case.
    DeclarationReader(SourceIndex& sources, UnitFacts& facts, bool wantsUses);

    // Reads a declaration of a project file with all that it contains.
    void declare(CXCursor cursor);
    // Identity of a declaration; makes an entity of it that stays a stub unless `declare` meets it.
    // Nil for what has no class in the model.
    Id refer(CXCursor cursor);
    // Identity of the pattern that stands beside a template.
    Id referPrototype(CXCursor templateCursor);
    // What a type makes of an alias template, or of a class template by arguments that depend on parameters
    // around `context`.
    Id referSpecialisation(CXCursor templateCursor, CXType type, CXCursor context);
    // Identity of a template's own parameter; nil when the front end does not show it.
    Id referParameter(CXCursor templateCursor, unsigned index);
    // For the readers of bodies: a local variable or a closure where it stands; a parameter of a function;
    // what is there already. Nil for what has no element.
    Id declareLocal(CXCursor cursor);
    void declareLambda(CXCursor cursor);
    Id functionParameter(CXCursor cursor);
    Id known(CXCursor cursor);
    // Fields of implicit instantiations, and the final order; call once.
    void finish();

    // The class or enumeration of that qualified name, which is no template's, if something referred to it.
    Id typeNamed(std::string_view qualifiedName) const;

    SourceIndex& sources() { return sources_; }
    bool isCxx() const { return isCxx_; }

  private:
    Entity& entity(Id const& id) { return *table_.at(id); }
    Id identityOf(CXCursor cursor);
    std::string keyOf(CXCursor cursor);
    bool isAmbiguous(CXCursor scope);
    std::string localArgumentsOf(CXCursor cursor);
    std::string constraintsOf(CXCursor cursor);
    Id ownerKeyOf(CXCursor scope);
    Id ownerOf(CXCursor cursor);
    Id ensure(Id const& id, EntityKind kind, CXCursor cursor, bool asPrototype);
    Entity& meet(CXCursor cursor);
    Entity& meet(Id const& id);
    void fold(Id const& id, Entity&& seen);

    // What one cursor tells about an entity, without what the entity contains.
    Entity describe(CXCursor cursor, EntityKind kind, bool asPrototype);
    void describeCommon(Entity& entity, CXCursor cursor);
    void describePlace(Entity& entity, CXCursor cursor);
    void describeNamespace(Entity& entity, CXCursor cursor);
    void describeFunction(Entity& entity, CXCursor cursor);
    void describeVariable(Entity& entity, CXCursor cursor);
    void describeRecord(Entity& entity, CXCursor cursor);
    void describeEnum(Entity& entity, CXCursor cursor);
    void describeTypedef(Entity& entity, CXCursor cursor);
    void describeTemplate(Entity& entity, CXCursor cursor);
    void describeSpecialisation(Entity& entity, CXCursor cursor);
    void describePrototype(Entity& entity, CXCursor cursor);
    void describeStorage(Entity& entity, CXCursor cursor);
    std::vector<CXCursor> parameterCursors(CXCursor cursor);
    ParameterFact describeParameter(CXCursor cursor, CXCursor function, bool& isOptional);
    std::optional<ConstantFact> fieldInitialiser(CXCursor cursor);
    Linkage linkageOf(CXCursor cursor);
    std::vector<TemplateArgumentFact> argumentsOf(CXCursor cursor);
    std::vector<TemplateArgumentFact> argumentsOfType(CXType type, CXCursor cursor, CXCursor context);
    std::vector<TemplateArgumentFact> argumentsOfFunction(CXCursor cursor);
    std::vector<TemplateArgumentFact> argumentsOfMember(CXCursor cursor);
    void completeArguments(CXCursor cursor, std::vector<CXCursor> const& parameters,
                           std::vector<TemplateArgumentFact>& arguments);
    TemplateArgumentFact mangledArgument(std::string const& text, CXCursor parameter, CXCursor context);
    TemplateArgumentFact valueArgument(CXCursor cursor, unsigned index);
    TemplateArgumentFact writtenArgument(std::string const& text, CXCursor context);
    TemplateParameterFact const* parameterNamed(std::string_view name, CXCursor context);
    bool mentionsParameter(std::string_view text, CXCursor context);
    std::vector<TemplateParameterFact> const& knownParameters(CXCursor templateCursor);
    std::vector<TemplateParameterFact> parametersOf(CXCursor templateCursor, Id const& templateId);

    void declareChildren(CXCursor cursor);
    void declareRecord(CXCursor cursor, Id const& id);
    void declareFriend(CXCursor cursor, Id const& record);
    void declareTemplate(CXCursor cursor);
    void declareUnexposed(CXCursor cursor);
    void readOverrides(CXCursor cursor, Id const& id);
    void readInstantiation(CXCursor cursor);
    void listInOwner(Entity const& part);

    SourceIndex& sources_;
    UnitFacts& facts_;
    bool isCxx_;
    TypeReader types_;
    ConstantReader constants_;
    UseRecorder uses_;
    BodyReader bodies_;
    std::deque<Entity> entities_;
    IdMap<Entity*> table_;
    CursorMap<Id> identities_;
    CursorMap<bool> ambiguous_;
    CursorSet described_;
    CursorSet describedPrototypes_;
    IdSet met_;
    std::vector<Entity*> order_;
    std::vector<CXCursor> records_;
    IdSet written_; // aggregates whose contents stand in the source
    std::unordered_map<Id, std::vector<TemplateParameterFact>, IdHash> parameters_; // whose places last
};

// What a cursor is called in the model: nothing for lambdas and unnamed aggregates.
std::string nameOf(CXCursor cursor);

bool isLambda(CXCursor cursor);
// Whether it is an aggregate, enumeration or field that has no name of its own.
bool isNameless(CXCursor cursor);
bool isTemplateCursor(CXCursorKind kind);
bool isRecordCursor(CXCursorKind kind);
bool isFunctionCursor(CXCursorKind kind);

// The kind of cursor that a template's pattern would have.
CXCursorKind patternKind(CXCursor templateCursor);

// Whether it tells how arguments of a class template are deduced, which the front end shows as a function.
bool isDeductionGuide(CXCursor cursor);

// The parameters of a template, without those of templates around it that its declaration repeats.
std::vector<CXCursor> ownParameterCursors(CXCursor templateCursor);

// The declaration around a declaration; blocks of linkage do not count.
CXCursor scopeOf(CXCursor cursor);

// Whether it is a member of a class that the front end made.
bool isImplicitMember(CXCursor function);

// Whether a declaration stands in an aggregate or in a template of one.
bool isInRecord(CXCursor cursor);

// Whether text of a parameter or field has an initialiser: an `=` outside all brackets and no part of an
// operator.
bool hasTopLevelAssignment(std::string_view text);

// Whether a byte may be part of a name.
bool isWordByte(char c);

// Whether text of a template parameter declares a pack.
bool declaresPack(std::string_view text);

} // namespace zelkor::producer
