#include "ReplacedImport.h"

namespace {

/// Before any test runs.
const bool sReplaced = [] {
    faults::replaceFileCalls();
    faults::replaceDirectoryCalls();
    faults::replaceSocketCalls();
    return true;
}();

}  // namespace
