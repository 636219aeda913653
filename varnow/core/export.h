// The mark of everything that the shared library exports.
#pragma once

// On Windows the library exports every symbol (the linker is told so), which spares the template
// instances their annotations; elsewhere symbols are hidden unless marked.
#if defined(_WIN32)
#define VARNOW_API
#else
#define VARNOW_API __attribute__((visibility("default")))
#endif
