// One module of a tree: it tells that it was reached, and reaches what it imports. The compiler is told MODULE, the
// module's place; VISIT, the name of its function; IMPORTS(X) and TOUCHED(X), which apply X to each function that is
// imported to be called and to be merely there; PREPARE(tell), what it does first.
#include "Extras.h"

#define DECLARE(function) __declspec(dllimport) int function(Tell* tell);
#define DECLARE_TOUCHED(function) __declspec(dllimport) void function(void);
#define REACH(function) reached += function(tell);
#define TOUCH(function) touched = (void*)function;

IMPORTS(DECLARE)
TOUCHED(DECLARE_TOUCHED)

static void* volatile touched;

/* How many modules were reached through this one that had not been before. */
__declspec(dllexport) int VISIT(Tell* tell) {
    static int done;
    int reached = 1;
    if (done) return 0;
    done = 1;
    tell(MODULE);
    TOUCHED(TOUCH)
    PREPARE(tell)
    IMPORTS(REACH)
    return touched == (void*)&done ? 0 : reached;  // the address of a function is never that
}
