// Initialisers as constants, as far as the front end can tell their values.
#pragma once

#include "Clang.hpp"
#include "Facts.hpp"

#include <optional>

namespace zelkor::producer {

class DeclarationReader;
class TypeReader;

class ConstantReader {
  public:
    ConstantReader(DeclarationReader& declarations, TypeReader& types);

    // Value of an expression; `context` is the declaration that it initialises. What is not known before run
    // time is a constant too, of kind DynamicInit.
    ConstantFact read(CXCursor expression, CXCursor context);

  private:
    ConstantFact readNested(CXCursor expression, CXCursor context, unsigned depth);
    ConstantFact readList(CXCursor list, CXCursor context, unsigned depth);
    void readListItem(CXCursor item, CXCursor context, unsigned depth, ConstantFact& list);
    bool readEvaluated(CXCursor expression, ConstantFact& constant);
    bool readAddress(CXCursor expression, bool bindsReference, ConstantFact& constant);

    DeclarationReader& declarations_;
    TypeReader& types_;
};

// The bytes that a string literal of the front end stands for, in UTF-8: `L"a\n"` gives two characters.
std::string decodeLiteral(std::string const& literal);

} // namespace zelkor::producer
