#include "Effort.h"

const int effort::kStep = 1;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const int effort::kKills = 8;  // what a sanitizer finds it finds in the first ones, and it makes them slow
#else
const int effort::kKills = 50;
#endif
const int effort::kFiles = 160;
