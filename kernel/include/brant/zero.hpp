/// \file
/// The kernel: models, elements, transactions, collections, values and the metamodel.
#pragma once

#include "brant/zero/Element.hpp"
#include "brant/zero/Reflection.hpp"
#include "brant/zero/Storage.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/Visit.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
