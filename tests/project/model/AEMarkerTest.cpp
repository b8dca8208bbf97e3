#include "project/model/AEMarker.h"

#include "support/ArchiveEdit.h"

#include <QJsonObject>
#include <gtest/gtest.h>

namespace {
// Archive a marker, let the caller damage its keys, decode it back.
std::shared_ptr<AEMarker> roundTrip(const std::shared_ptr<AEMarker>& marker,
                                    const std::function<void(QJsonObject&)>& damage = {}) {
    const QByteArray data =
        testenv::editArchivedData(KeyedArchiver::archivedData(marker), "AEMarker", [&](QJsonObject& keys) {
            if (damage) damage(keys);
        });
    return std::dynamic_pointer_cast<AEMarker>(KeyedUnarchiver::unarchiveObject(data, "test"));
}
} // namespace

TEST(AEMarker, PointByDefaultAndFullRoundTrip) {
    const AEMarker point(12.5);
    EXPECT_EQ(point.outTime, 12.5);
    EXPECT_EQ(point.id.size(), 32);
    auto chapter = std::make_shared<AEMarker>(1.0, 3.5, AEMarkerType::chapter, "Intro", QString("fixed"));
    const auto back = roundTrip(chapter);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->id, "fixed");
    EXPECT_EQ(back->inTime, 1.0);
    EXPECT_EQ(back->outTime, 3.5);
    EXPECT_EQ(back->type, AEMarkerType::chapter);
    EXPECT_EQ(back->notes, "Intro");
    const auto twin = chapter->duplicate();
    EXPECT_NE(twin, chapter);
    EXPECT_EQ(twin->id, chapter->id);
}

TEST(AEMarker, MissingNotesOrIdOrForeignTypeDecodeToNothing) {
    const auto marker = std::make_shared<AEMarker>(1.0);
    EXPECT_FALSE(roundTrip(marker, [](QJsonObject& k) { k.remove("notes"); }));
    EXPECT_FALSE(roundTrip(marker, [](QJsonObject& k) { k["id"] = QJsonObject{{"int", 3}}; }));
    EXPECT_FALSE(roundTrip(marker, [](QJsonObject& k) { k["type"] = QJsonObject{{"int", 4}}; }));
    EXPECT_FALSE(roundTrip(marker, [](QJsonObject& k) { k["type"] = QJsonObject{{"int", -1}}; }));
    EXPECT_TRUE(roundTrip(marker, [](QJsonObject& k) { k["type"] = QJsonObject{{"int", 2}}; }));
}

TEST(AEMarker, ClickRangeIsInclusive) {
    const AEMarker m(5.0, 9.0);
    EXPECT_TRUE(m.clicOnIt(5.0, 5.0));
    EXPECT_TRUE(m.clicOnIt(4.0, 5.0));
    EXPECT_FALSE(m.clicOnIt(5.01, 9.0));
}
