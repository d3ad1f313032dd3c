// Marks what the engine gives to its hosts.
#pragma once

#include "Public/Base/PlatformExport.h"

#if defined(ORV_UPDATE_BUILD)
#define ORV_UPDATE_API ORV_EXPORT
#else
#define ORV_UPDATE_API ORV_IMPORT
#endif
