/// \file
/// The library's entries for a script host.
#pragma once

#include "brant/zero/Export.hpp"

extern "C" {

/// Registers the packages of scripts: `brant.zero`, `brant.zero.meta`, `internal.zelkor.ast` with
/// `codeinsight`, `constants`, `source`, `types` and `io`, and the marshalers of enumerations and value
/// types. Classes are made when they are first asked for. Once per process; a host that runs in the other
/// mode (`omGetQuorlUsingUSM`) may call it again, and later registrations then take the place of earlier
/// ones. Passes on what the registration throws.
ZELKOR_API void zelkor_ast_initialize();

/// Does nothing: what is registered stays as long as the process.
ZELKOR_API void zelkor_ast_terminate();
}
