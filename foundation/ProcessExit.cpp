#include "foundation/ProcessExit.h"

#include <cstdio>
#include <cstdlib>

void exitWithoutLibraryTeardown(int status) {
    std::fflush(nullptr);
    std::_Exit(status);
}
