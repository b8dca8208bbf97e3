#include "foundation/Prefs.h"

#include "support/TestEnvironment.h"

#include <QFile>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

TEST(Prefs, LivesUnderTheIsolatedHome) {
    EXPECT_TRUE(prefs_filePath().startsWith(testenv::home())) << prefs_filePath().toStdString();
}

TEST(Prefs, EachKindReadsBackAndSurvivesAReload) {
    const QDateTime when = QDateTime::fromMSecsSinceEpoch(1700000000123);
    prefs_setValueString("p.string", "1,5 ò");
    prefs_setValueInt("p.int", 9007199254740993LL);
    prefs_setValueDouble("p.double", 0.1);
    prefs_setValueBool("p.bool", true);
    prefs_setValueDate("p.date", when);
    prefs_setValueAny("p.list", QStringList{"a", "b"});
    prefs_reload();
    EXPECT_EQ(prefs_getValueString("p.string", ""), "1,5 ò");
    EXPECT_EQ(prefs_getValueInt("p.int", 0), 9007199254740993LL);
    EXPECT_EQ(prefs_getValueDouble("p.double", 0), 0.1);
    EXPECT_TRUE(prefs_getValueBool("p.bool", false));
    EXPECT_EQ(prefs_getValueInt("p.bool", 7), 1);
    EXPECT_EQ(prefs_getValueDate("p.date", QDateTime()), when);
    EXPECT_EQ(prefs_getValueAny("p.list", {}).toStringList(), (QStringList{"a", "b"}));
    EXPECT_EQ(prefs_getValueAny("p.int", {}).toLongLong(), 9007199254740993LL);
}

TEST(Prefs, AbsentOrOtherKindGivesTheDefault) {
    prefs_setValueString("p.kind", "12");
    EXPECT_EQ(prefs_getValueInt("p.kind", 5), 5);
    EXPECT_EQ(prefs_getValueDouble("p.kind", 2.5), 2.5);
    EXPECT_TRUE(prefs_getValueBool("p.kind", true));
    prefs_setValueInt("p.kind", 3);
    EXPECT_EQ(prefs_getValueString("p.kind", "d"), "d");
    EXPECT_EQ(prefs_getValueDouble("p.kind", 2.5), 2.5);
    prefs_removeKey("p.kind");
    EXPECT_EQ(prefs_getValueInt("p.kind", 5), 5);
    EXPECT_EQ(prefs_getValueAny("p.missing", "dflt").toString(), "dflt");
}

TEST(Prefs, ADamagedFileStartsEmptyAndIsRepairedByTheNextWrite) {
    prefs_setValueInt("p.before", 1);
    QFile file(prefs_filePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("{ not json");
    file.close();
    prefs_reload();
    EXPECT_EQ(prefs_getValueInt("p.before", 0), 0);
    prefs_setValueInt("p.after", 2);
    prefs_reload();
    EXPECT_EQ(prefs_getValueInt("p.after", 0), 2);
}

TEST(Prefs, ConcurrentWritersLoseNothing) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 25; ++i)
                prefs_setValueInt(QString("p.thread%1.%2").arg(t).arg(i), i);
        });
    for (auto& th : threads)
        th.join();
    prefs_reload();
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 25; ++i)
            ASSERT_EQ(prefs_getValueInt(QString("p.thread%1.%2").arg(t).arg(i), -1), i);
}
