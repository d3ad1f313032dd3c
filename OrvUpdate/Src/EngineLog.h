// The engine's way of logging: the caller's unit, operation and line.
#pragma once

#include <source_location>

#include "Public/Base/Printer.h"

/// @param level 2 error, 4 progress, 6 detail   @param unit folder of the caller below OrvUpdate/Src, a literal
/// Then the format, a literal, and the values that fill it.
#define ORV_LOG(level, unit, format, ...)                                                        \
    Public::Base::printer(static_cast<Public::Base::LOG_Level>(level), "OrvUpdate/Src/" unit,    \
                          std::source_location::current().function_name(), __LINE__, format,     \
                          std::vector<Public::Base::Value>{__VA_ARGS__})
