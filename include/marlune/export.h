#pragma once

// Marks what a host may use. All other symbols of the library have hidden visibility.
#if defined(_WIN32)
    #if defined(MARLUNE_BUILDING_LIBRARY)
        #define MARLUNE_EXPORT __declspec(dllexport)
    #else
        #define MARLUNE_EXPORT __declspec(dllimport)
    #endif
#else
    #define MARLUNE_EXPORT __attribute__((visibility("default")))
#endif
