#include "Effort.h"

const int effort::kStep = 16;
const int effort::kKills = 4;
const int effort::kFiles = 60;
