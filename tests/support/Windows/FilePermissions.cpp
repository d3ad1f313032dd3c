#include "FilePermissions.h"

#include <windows.h>

const unsigned support::kUnusualPermissions = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE;
