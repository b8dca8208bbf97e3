#include "app/core/AS.h"
#include "support/TestEnvironment.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testenv::isolateUserFolders();
    QCoreApplication app(argc, argv);
    testenv::useStoreWorkFolder();
    AS::installToolLocator();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
