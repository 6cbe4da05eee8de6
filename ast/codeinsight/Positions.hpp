/// \file
/// What the computed properties of the code-insight records share: questions about positions.
#pragma once

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/source/LocatedObject.hpp"
#include "zelkor/ast/source/SourceFile.hpp"
#include "zelkor/ast/source/SourcePosition.hpp"

namespace zelkor::ast::codeinsight {

using Located = source::LocatedObject::Impl;
using Position = source::SourcePosition::Impl;
using File = source::SourceFile::Impl;

/// \returns where the object is defined, or null.
inline Position const* definitionOf(Located const& object) {
    return brant::zero::aliveAs<source::SourcePosition>(object.getDefPosBody());
}

/// \returns the file of a position, or null.
inline File const* fileOf(Position const& position) {
    return brant::zero::aliveAs<source::SourceFile>(position.getFileBody());
}

/// A header is a file that came in by an include; its name plays no part.
inline bool liesInHeader(Position const& position) {
    File const* const file = fileOf(position);
    return file != nullptr && file->getIsInclude();
}

inline bool definedInHeader(Located const& object) {
    Position const* const definition = definitionOf(object);
    return definition != nullptr && liesInHeader(*definition);
}

} // namespace zelkor::ast::codeinsight
