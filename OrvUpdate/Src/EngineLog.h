// The engine's way of logging: the caller's unit, operation and line.
#pragma once

#include <source_location>

#include "Public/Base/Printer.h"

// The fuzzers' compiler is older than the library's header.
#ifdef __cpp_lib_source_location
#define ORV_LOG_OPERATION std::source_location::current().function_name()
#else
#define ORV_LOG_OPERATION &__func__[0]
#endif

/// @param level 2 error, 4 progress, 6 detail   @param unit folder of the caller below OrvUpdate/Src, a literal
/// Then the format, a literal, and the values that fill it.
#define ORV_LOG(level, unit, format, ...)                                                                        \
    Public::Base::printer(static_cast<Public::Base::LOG_Level>(level), "OrvUpdate/Src/" unit, ORV_LOG_OPERATION, \
                          __LINE__, format, std::vector<Public::Base::Value>{__VA_ARGS__})
