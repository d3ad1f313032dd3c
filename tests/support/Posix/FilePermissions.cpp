#include "FilePermissions.h"

const unsigned support::kUnusualPermissions = 0750;
