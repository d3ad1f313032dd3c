// Marks what the platform library gives to its users, and how any library of this system does so.
#pragma once

#if defined(ORV_STATIC)
#define ORV_EXPORT
#define ORV_IMPORT
#elif defined(_WIN32)
#define ORV_EXPORT __declspec(dllexport)
#define ORV_IMPORT __declspec(dllimport)
#else
#define ORV_EXPORT __attribute__((visibility("default")))
#define ORV_IMPORT __attribute__((visibility("default")))
#endif

#if defined(ORV_PLATFORM_BUILD)
#define ORV_PLATFORM_API ORV_EXPORT
#else
#define ORV_PLATFORM_API ORV_IMPORT
#endif
