#pragma once

// The kernel and the model live in one shared library, so one macro marks what it exports.
// Define ZELKOR_AST_STATIC when building or using the library as a static archive.
#ifdef ZELKOR_AST_STATIC
#define ZELKOR_API
#else
#define ZELKOR_API __attribute__((visibility("default")))
#endif
