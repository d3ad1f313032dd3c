// Marks what the engine gives to its hosts.
#pragma once

#if defined(ORV_STATIC)
#define ORV_UPDATE_API
#elif defined(_WIN32)
#if defined(ORV_UPDATE_BUILD)
#define ORV_UPDATE_API __declspec(dllexport)
#else
#define ORV_UPDATE_API __declspec(dllimport)
#endif
#else
#define ORV_UPDATE_API __attribute__((visibility("default")))
#endif
