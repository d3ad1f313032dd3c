// Marks what the platform library gives to its users.
#pragma once

#if defined(ORV_STATIC)
#define ORV_PLATFORM_API
#elif defined(_WIN32)
#if defined(ORV_PLATFORM_BUILD)
#define ORV_PLATFORM_API __declspec(dllexport)
#else
#define ORV_PLATFORM_API __declspec(dllimport)
#endif
#else
#define ORV_PLATFORM_API __attribute__((visibility("default")))
#endif
