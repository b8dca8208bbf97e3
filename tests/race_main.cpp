// The ThreadSanitizer run's main: core_main without the shell's tool locator, which lives in a layer
// this run does not build; the tools come from the PATH.
#include "foundation/QuickExit.h"
#include "support/PulseNullSink.h"
#include "support/TestEnvironment.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testenv::isolateUserFolders();
    const int status = [&] {
        QCoreApplication app(argc, argv);
        testenv::useStoreWorkFolder();
        ::testing::InitGoogleTest(&argc, argv);
        const int result = RUN_ALL_TESTS();
        testenv::sharedPulseNullSink().reset();
        return result;
    }();
    exitWithoutLibraryTeardown(status);
}
