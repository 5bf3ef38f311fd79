#pragma once

// Marks the module's one exported entry point; everything else stays hidden.
#if defined(_WIN32)
#if defined(TOLVANE_BUILDING_LIBRARY)
#define TOLVANE_API __declspec(dllexport)
#else
#define TOLVANE_API __declspec(dllimport)
#endif
#else
#define TOLVANE_API __attribute__((visibility("default")))
#endif
