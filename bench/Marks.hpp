// Which contender's workload is set against which, and the ratio that a first version owes.
#pragma once

#include "Stage.hpp"

#include <array>
#include <optional>
#include <string_view>

namespace zelkor::bench {

/// One line of the table: the subject's workload against a peer's. An empty peer is the subject itself.
struct Mark {
    std::string_view workload;
    std::string_view peer;
    std::string_view peerWorkload;
    Heap heap;
    std::optional<double> atMost; // nothing: shown for comparison only
    std::string_view note;
};

inline constexpr std::array marks{
    Mark{"create", "pugixml", "create", Heap::Warm, 1.0, ""},
    Mark{"create", "protobuf", "create", Heap::Warm, {}, ""},
    Mark{"create", "rapidjson", "create", Heap::Warm, {}, ""},
    Mark{"create", "tracked", "create", Heap::Warm, {}, ""},
    Mark{"create", "rapidjson", "create", Heap::Cold, 1.0, ""},
    Mark{"create", "protobuf", "create", Heap::Cold, {}, ""},
    Mark{"create", "tracked", "create", Heap::Cold, {}, ""},
    Mark{"walk", "protobuf", "walk", Heap::Warm, 3.0, ""},
    Mark{"walk", "tracked", "walk", Heap::Warm, {}, ""},
    Mark{"walk.reflective", "protobuf", "walk.reflective", Heap::Warm, 0.6,
         "every feature; protobuf the set ones"},
    Mark{"walk.reflective", "tracked", "walk.reflective", Heap::Warm, {}, ""},
    Mark{"query", "", "query.handles", Heap::Warm, 1.5, "the loop over handles"},
    Mark{"query", "", "query.bodies", Heap::Warm, 1.5, "the loop over bodies"},
    Mark{"types.print", "", "types.walk", Heap::Warm, {}, "a type of at most 100,000; the walk without text"},
    Mark{"names.print", "", "names.walk", Heap::Warm, {}, "a symbol; the walk to the root without text"},
    Mark{"signatures.print", "", "types.print", Heap::Warm, {}, "a function; a type"},
    Mark{"find", "pugixml", "find", Heap::Warm, 1.0, "name built for each function"},
    Mark{"find", "protobuf", "find", Heap::Warm, {}, "name built for each function"},
    Mark{"find", "tracked", "find", Heap::Warm, {}, "names compared, not built"},
    Mark{"find", "", "find.nothing", Heap::Warm, {}, "the walk without names"},
    Mark{"find.default", "", "find.nothing", Heap::Warm, {}, "files looked at"},
    Mark{"find.signature", "", "find.nothing", Heap::Warm, {}, ""},
    Mark{"script.read", "", "native.read", Heap::Warm, {}, "a name as an array; the accessor"},
    Mark{"script.row", "", "native.read", Heap::Warm, {}, "a name by its row; the accessor"},
    Mark{"script.refer", "", "native.refer", Heap::Warm, {}, "a reference to an element that scripts know"},
    Mark{"script.call", "", "native.call", Heap::Warm, {}, "a qualified name"},
    Mark{"script.write", "", "native.write", Heap::Warm, {}, "a name, each in its own transaction"},
    Mark{"json.save", "nlohmann", "json.save", Heap::Warm, 1.0, ""},
    Mark{"json.save", "tracked", "json.save", Heap::Warm, {}, ""},
    Mark{"json.load", "nlohmann", "json.parse", Heap::Warm, 0.5, "parse alone"},
    Mark{"json.load", "counted", "json.load", Heap::Warm, {}, "RapidJSON's events to counted"},
    Mark{"xml.save", "libxml2", "xml.save", Heap::Warm, 1.0, ""},
    Mark{"xml.save", "tracked", "xml.save", Heap::Warm, {}, ""},
    Mark{"xml.load", "counted", "xml.load", Heap::Warm, 1.0, "Expat to counted"},
    Mark{"xml.load", "counted", "xml.load", Heap::Warm, 1.3, "where the reader is Expat"},
    Mark{"change", "sqlite", "change", Heap::Warm, 0.3, "a change"},
    Mark{"change", "tracked", "change", Heap::Warm, {}, "a change"},
    Mark{"rollback", "sqlite", "rollback", Heap::Warm, 1.0, "a change"},
    Mark{"rollback", "tracked", "rollback", Heap::Warm, {}, "a change"},
    Mark{"destroy", "libxml2", "destroy", Heap::Warm, 1.0, ""},
    Mark{"destroy", "tracked", "destroy", Heap::Warm, {}, ""},
    Mark{"memory", "pugixml", "memory", Heap::Cold, 0.75, "bytes"},
    Mark{"memory", "protobuf", "memory", Heap::Cold, {}, "bytes"},
    Mark{"memory", "tracked", "memory", Heap::Cold, {}, "bytes"},
    Mark{"json.peak", "", "json.memory", Heap::Cold, 2.0, "bytes; the loaded tree"},
    Mark{"xml.peak", "", "xml.memory", Heap::Cold, 2.0, "bytes; the loaded tree"},
};

} // namespace zelkor::bench
