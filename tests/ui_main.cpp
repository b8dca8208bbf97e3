#include "app/core/AS.h"
#include "foundation/QuickExit.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testenv::isolateUserFolders();
    // Widget tests never need a display, and test discovery runs before any ctest environment applies.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const int status = [&] {
        QApplication app(argc, argv);
        testenv::useStoreWorkFolder();
        AS::installToolLocator();
        ::testing::InitGoogleTest(&argc, argv);
        return RUN_ALL_TESTS();
    }();
    exitWithoutLibraryTeardown(status);
}
