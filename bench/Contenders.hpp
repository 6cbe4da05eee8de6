// All contenders. Workload names are the same for all: create, walk, walk.reflective, query, find, json.save,
// json.load, json.parse (no typed tree), xml.save, xml.load, change, rollback, destroy, memory, json.memory,
// json.peak, xml.memory, xml.peak, and those of OursNames.hpp; each contender offers those that it can do.
#pragma once

#include "Stage.hpp"

namespace zelkor::bench {

Contender countedContender();
Contender trackedContender();
Contender pugixmlContender();
Contender rapidJsonContender();
Contender nlohmannContender();
Contender protobufContender();
Contender libxml2Contender();
Contender sqliteContender();
#ifdef ZELKOR_BENCH_OURS
Contender oursContender();
#endif

/// JSON by RapidJSON's event reader into the `counted` floor; XML by Expat into it.
void loadJsonToCounted(Stage& stage);
void loadXmlToCounted(Stage& stage);

} // namespace zelkor::bench
