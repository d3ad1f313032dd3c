// What some modules of a tree do besides.
#pragma once

typedef void Tell(const char* name);

/* Tells the name of the file with "no " in front when it does not lie beside the module. */
void readBeside(Tell* tell, const char* name);
/* Loads a library and visits it by its function. @return how many modules were reached */
int visitLater(Tell* tell, const char* name, const char* function);
