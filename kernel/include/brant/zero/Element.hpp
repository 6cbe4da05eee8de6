/// \file
/// All that the generated classes are made of.
#pragma once

#include "brant/zero/Builder.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/ElementSequence.hpp"
#include "brant/zero/Enumeration.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Model.hpp"
#include "brant/zero/ModelElement.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Query.hpp"
#include "brant/zero/Set.hpp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/View.hpp"

namespace brant::zero {

/// The collection factory of the class `T`: ordered or not, as the row says.
template <class T>
std::unique_ptr<AbstractOwnedCollection> makeElementCollection(ModelElementImpl* owner,
                                                               schema::PropertyRow const& row) {
    if (row.ordered()) return std::make_unique<Standalone<ElementSequence<T>>>(owner, row);
    return std::make_unique<Standalone<UnorderedElementSet<T>>>(owner, row);
}

/// An object that stands for a class and holds nothing.
struct EmptyTag {};

} // namespace brant::zero
