// Bodies and initialisers in one visit: locals, what the text refers to, and what is done to it.
#pragma once

#include "EffectRules.hpp"
#include "Facts.hpp"
#include "UseRecorder.hpp"

#include <vector>

namespace zelkor::producer {

class DeclarationReader;

class BodyReader {
  public:
    BodyReader(DeclarationReader& declarations, UseRecorder& uses);

    // Reads what a function with its body, or a variable with its initialiser, holds and uses.
    void read(CXCursor declaration, Id const& owner);
    // Reads the bodies of the instantiations that were used, which may use more; call once, after all else.
    void readInstances();

  private:
    struct Walk {
        std::vector<Frame> frames; // from the declaration down to the present cursor's parent
        bool isInstance = false;   // its locals are those of the pattern, and have no elements
        Effect result = effect::read;
    };

    void walk(CXCursor declaration, Id const& owner, bool isInstance);
    CXChildVisitResult visit(Walk& walk, CXCursor cursor, CXCursor parent);
    bool enter(Walk& walk, Frame& frame, Frame& parent);
    bool enterDeclaration(Walk& walk, Frame& frame, Frame& parent);
    void enterVariable(Walk& walk, Frame& frame, Frame& parent);
    void enterCall(Frame& frame);
    void enterName(Walk& walk, Frame& frame);
    void enterMemberName(Frame& frame, Frame& parent);
    void enterLambda(Walk const& walk, Frame const& frame);

    void useFunction(Frame const& frame, CXCursor function);
    void useVariable(Walk& walk, Frame const& frame, Id const& variable);
    void useType(Id const& owner, CXCursor declaration);
    void useSpecialisation(Id const& owner, CXType type);
    void useDestructor(Id const& owner, CXType type);
    void call(Id const& owner, CXCursor function);
    void readLater(Id const& id, CXCursor function);
    void readNamed(CXCursor declaration);
    // The element's identity; nil for what has none.
    Id refer(CXCursor declaration);
    Id variableOf(CXCursor referenced);
    bool isPlainCast(CXCursor function);
    CXCursor destructorOf(CXCursor record);

    DeclarationReader& declarations_;
    UseRecorder& uses_;
    IdSet read_; // functions whose bodies were met
    std::vector<std::pair<Id, CXCursor>> used_;
    IdSet usedIds_;
    CursorMap<CXCursor> destructors_;
    CursorMap<bool> plainCasts_;
    CursorMap<Id> parameters_;
};

} // namespace zelkor::producer
