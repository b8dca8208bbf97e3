#include "app/core/AS.h"
#include "foundation/QuickExit.h"
#include "support/PulseNullSink.h"
#include "support/TestEnvironment.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace {
int runTests(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    testenv::useStoreWorkFolder();
    AS::installToolLocator();
    ::testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    testenv::sharedPulseNullSink().reset();
    return status;
}
} // namespace

int main(int argc, char** argv) {
    testenv::isolateUserFolders();
    exitWithoutLibraryTeardown(runTests(argc, argv));
}
