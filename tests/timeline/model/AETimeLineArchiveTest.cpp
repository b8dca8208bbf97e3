#include "TimelineFixture.h"
#include "project/model/AEAssetDB.h"
#include "support/ArchiveEdit.h"
#include "support/ScriptedSession.h"
#include "timeline/model/AEKeyframeView.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <time.h>

using namespace tlfixture;

namespace {

const QString kItemFailed = "Decoding TimeLine Item: FAILED!";

using ObjectsEdit = std::function<void(QJsonArray& objects)>;

// Rewrites the table of archived objects of the file at `path`.
void editObjects(const QString& path, const ObjectsEdit& edit) {
    QFile in(path);
    ASSERT_TRUE(in.open(QIODevice::ReadOnly));
    QJsonObject top = QJsonDocument::fromJson(in.readAll()).object();
    in.close();
    QJsonArray objects = top["objects"].toArray();
    edit(objects);
    top["objects"] = objects;
    QFile out(path);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
    out.write(QJsonDocument(top).toJson());
}

QJsonObject keysAt(const QJsonArray& objects, int index) {
    return objects[index].toObject()["keys"].toObject();
}

void setKeysAt(QJsonArray& objects, int index, const QJsonObject& keys) {
    QJsonObject object = objects[index].toObject();
    object["keys"] = keys;
    objects[index] = object;
}

int itemIndex(const QJsonArray& objects, const QString& itemId) {
    for (int i = 0; i < objects.size(); ++i) {
        const QJsonObject object = objects[i].toObject();
        if (object["class"].toString() == "AETimeLineItem" &&
            object["keys"].toObject()["id"].toObject()["string"].toString() == itemId)
            return i;
    }
    return -1;
}

// The index of the object that `key` of the object at `index` refers to.
int referenced(const QJsonArray& objects, int index, const QString& key) {
    return keysAt(objects, index)[key].toObject()["object"].toInt(-1);
}

// Edits the keys of the item `itemId`, or of its range.
void editItem(const QString& path, const QString& itemId, const testenv::KeyEdit& edit,
              bool ofRange = false) {
    editObjects(path, [&](QJsonArray& objects) {
        int at = itemIndex(objects, itemId);
        ASSERT_GE(at, 0) << "no item " << itemId.toStdString();
        if (ofRange) at = referenced(objects, at, "range");
        ASSERT_GE(at, 0);
        QJsonObject keys = keysAt(objects, at);
        edit(keys);
        setKeysAt(objects, at, keys);
    });
}

QJsonObject archivedDouble(double value) {
    return QJsonObject{{"double", value}};
}

// CPU time of this thread: a budget in it does not depend on what else the machine is running.
qint64 threadCpuMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<qint64>(t.tv_sec) * 1000 + t.tv_nsec / 1000000;
}

} // namespace

class AETimeLineArchive : public ::testing::Test, protected ScriptedSession {
protected:
    QString path(const QString& id) const { return AETimeLine::persistPath(dir.path() + "/", id); }

    QString saved(const std::shared_ptr<AETimeLine>& tl) const {
        const QString file = path(tl->id);
        EXPECT_TRUE(tl->save(file));
        return file;
    }

    QStringList alerts() const {
        QStringList lines;
        for (const QString& line : door->transcript())
            if (line.startsWith("alert: ")) lines << line;
        return lines;
    }

    // Main lane m0 (10 s), m1 (20 s), m2 (5 s) and one attached item "a1" at 2 s.
    QString threeClips(const QString& id) {
        auto tl = timeline(id);
        const QStringList names = {"m0", "m1", "m2"};
        const std::vector<double> lengths = {10, 20, 5};
        for (size_t n = 0; n < lengths.size(); ++n) {
            auto item = tl->appendItemInMainLane(stored("arch." + id + "." + names[n], lengths[n]),
                                                 std::nullopt, false);
            item->id = names[n];
        }
        auto attached = tl->attachItem(stored("arch." + id + ".a1", 4, AEAssetType::effect), 1, 2.0,
                                       std::nullopt, false, false);
        attached->id = "a1";
        return saved(tl);
    }

    QTemporaryDir dir;
};

TEST_F(AETimeLineArchive, RoundTripKeepsTheDocument) {
    auto tl = timeline("roundTrip");
    const auto speech = stored("arch.rt.speech", 20);
    const auto talk = stored("arch.rt.talk", 30);
    const auto music = tlfixture::music("arch.rt.bgm", 100);
    AEAssetDB::saveAsset(music);
    auto first = tl->appendItemInMainLane(speech, std::nullopt, false);
    auto quiet = tl->appendItemInMainLane(silence(), AETimeRange(0, 5), false);
    auto last = tl->appendItemInMainLane(talk, std::nullopt, false);
    first->addMarker(3.0, std::nullopt, "early", AEMarkerType::normal);
    first->addMarker(15.0, std::nullopt, "late", AEMarkerType::chapter);
    tl->sliceMainLane(10.0, false);
    ASSERT_EQ(tl->mainLane.size(), 4u);
    auto second = tl->mainLane[1];
    ASSERT_EQ(second->markers.size(), 2u) << "both halves of a slice hold every marker";

    // Written out of order on purpose: the file keeps the order it was given.
    last->volumeKFs->keyframes = {std::make_shared<AEKeyframe>(8.0, -3.0),
                                  std::make_shared<AEKeyframe>(2.0, -6.0),
                                  std::make_shared<AEKeyframe>(5.0, 0.0)};
    tl->muteItem(last);
    tl->soloItem(quiet);
    auto bgm = tl->attachItem(music, -1, 5.0, std::nullopt, false, false);
    tl->adjustBGM();
    tl->attachItem(asset("arch.rt.gone", 4, AEAssetType::effect), 1, 1.0, std::nullopt, false, false);
    tl->currentPHTime = 12.5;
    tl->currentViewRange = AETimeRange(4, 44);
    ASSERT_EQ(bgm->bgmOutTime, 55.0);
    ASSERT_TRUE(bgm->fadeOutKFS && bgm->fadeOutKFS->keyframes.size() == 2);

    const QString file = saved(tl);
    last->volumeKFs->sortKFs();
    const QByteArray before = KeyedArchiver::archivedData(tl);
    const auto back = AETimeLine::load(file);
    ASSERT_TRUE(back);
    // What the file holds (ids, times, ranges, flags, envelopes, markers, the playhead and the view)
    // is checked at the end by archiving again; here, what a load must make of it in memory.
    EXPECT_EQ(back->mainLane[0]->asset, speech) << "a known asset is the store's live instance";
    EXPECT_EQ(back->mainLane[3]->asset, talk);
    EXPECT_EQ(back->mainLane[2]->asset->type, AEAssetType::silence);
    EXPECT_FALSE(back->mainLane[2]->player);

    const auto& backLast = back->mainLane[3];
    EXPECT_EQ(backLast->volumeKFs->keyframes.front()->time, 2.0) << "keyframes come back sorted";
    EXPECT_EQ(backLast->kfView->keyframes, backLast->volumeKFs) << "the editor shows the list that was read";

    const auto& a = back->mainLane[0];
    const auto& b = back->mainLane[1];
    ASSERT_EQ(a->markers.size(), 2u);
    ASSERT_EQ(b->markers.size(), 2u);
    EXPECT_EQ(a->markers[0], b->markers[0]) << "a marker shared by two items stays one object";
    EXPECT_EQ(a->markers[1], b->markers[1]);
    EXPECT_NE(a->markers[0], a->markers[1]);

    const auto backBgm = back->getBGMs();
    ASSERT_EQ(backBgm.size(), 1u);
    ASSERT_TRUE(backBgm[0]->fadeOutKFS);
    EXPECT_EQ(backBgm[0]->globalKFS, backBgm[0]->fadeOutKFS)
        << "with no envelope of its own the fade is applied";

    EXPECT_EQ(back->attachedItems[1]->asset->id, "arch.rt.gone") << "the placeholder keeps the reference";
    EXPECT_EQ(alerts(), QStringList({"alert: Warning | Asset arch.rt.gone unavailable"}))
        << "silence is never looked up, known assets are found";
    EXPECT_FALSE(back->mustDraw);
    EXPECT_EQ(back->getCollectedItems().size(), 6u);
    expectInvariants(*back);

    // Nothing was lost or invented on the way: the loaded document archives as the original did.
    EXPECT_EQ(KeyedArchiver::archivedData(back), before);
}

TEST_F(AETimeLineArchive, EveryRangeIsItsOwnObjectInTheFile) {
    // Ranges are values: two items sharing a range object in the file would come back with one range.
    const QString file = threeClips("ownRanges");
    editObjects(file, [](QJsonArray& objects) {
        QList<int> ranges;
        for (const char* id : {"m0", "m1", "m2", "a1"})
            ranges << referenced(objects, itemIndex(objects, id), "range");
        ranges << referenced(objects, 0, "currentViewRange");
        for (int n = 0; n < ranges.size(); ++n) {
            EXPECT_GE(ranges[n], 0);
            EXPECT_EQ(ranges.count(ranges[n]), 1) << "range object " << ranges[n] << " is shared";
        }
    });
    const auto back = AETimeLine::load(file);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->mainLane.size(), 3u);
    EXPECT_EQ(back->mainLane[0]->range.duration(), 10.0);
    EXPECT_EQ(back->mainLane[1]->range.duration(), 20.0);
    EXPECT_EQ(back->mainLane[2]->range.duration(), 5.0);
}

TEST_F(AETimeLineArchive, AMissingViewRangeAndAPlayheadThatCannotBeATimeTakeTheirDefaults) {
    EXPECT_TRUE(AETimeLine::make("fresh")->currentViewRange.isEqual(AETimeRange(0, 30.0)));
    const std::vector<std::pair<const char*, QJsonValue>> playheads = {
        {"absent", QJsonValue::Undefined},
        {"negative", archivedDouble(-3.0)},
        {"huge", archivedDouble(1e300)},
        {"infinite", QJsonObject{{"double", "inf"}}},
        {"of another kind", QJsonObject{{"string", "12"}}},
    };
    for (const auto& [what, value] : playheads) {
        SCOPED_TRACE(what);
        const QString file = threeClips("badPlayhead");
        ASSERT_TRUE(testenv::editArchiveFile(file, "AETimeLine", [&](QJsonObject& k) {
            k.remove("currentViewRange");
            k.remove("currentPHTime");
            if (!value.isUndefined()) k["currentPHTime"] = value;
        }));
        const auto back = AETimeLine::load(file);
        ASSERT_TRUE(back);
        EXPECT_TRUE(back->currentViewRange.isEqual(AETimeRange(0, 10.0)));
        EXPECT_EQ(back->currentPHTime, 0.0);
        EXPECT_EQ(back->mainLane.size(), 3u);
    }
}

TEST_F(AETimeLineArchive, MissingOrMistypedFlagsTakeTheirDefaultsAndTheAppliedEnvelopeIsDerived) {
    auto tl = timeline("flags");
    auto muted = tl->appendItemInMainLane(stored("arch.flags.muted", 10), std::nullopt, false);
    auto solo = tl->appendItemInMainLane(stored("arch.flags.solo", 10), std::nullopt, false);
    tl->muteItem(muted);
    tl->soloItem(solo);
    muted->volumeKFs->setKeyframe(2.0, -6.0);
    const QString file = saved(tl);
    editItem(file, muted->id, [](QJsonObject& k) {
        k.remove("active");
        k.remove("solo");
    });
    editItem(file, solo->id, [](QJsonObject& k) {
        k["active"] = QJsonObject{{"int", 0}};
        k["solo"] = QJsonObject{{"string", "yes"}};
    });
    // The applied envelope in the file points at a foreign list; the loader must derive its own.
    editObjects(file, [&](QJsonArray& objects) {
        const int from = itemIndex(objects, muted->id);
        const int other = itemIndex(objects, solo->id);
        QJsonObject keys = keysAt(objects, from);
        keys["globalKFS"] = keysAt(objects, other)["volumeKFs"];
        setKeysAt(objects, from, keys);
    });

    const auto back = AETimeLine::load(file);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->mainLane.size(), 2u);
    for (const auto& item : back->mainLane) {
        EXPECT_EQ(item->active, true) << item->id.toStdString();
        EXPECT_EQ(item->solo, false) << item->id.toStdString();
    }
    const auto& first = back->mainLane[0];
    EXPECT_EQ(first->globalKFS, first->volumeKFs);
    ASSERT_EQ(first->globalKFS->keyframes.size(), 1u);
    EXPECT_EQ(first->globalKFS->keyframes[0]->value, -6.0);
    EXPECT_TRUE(back->soloItems.empty()) << "the solo list is not persisted";
}

TEST_F(AETimeLineArchive, ADamagedOrEmptyItemIsDroppedAndTheRestLoadsWithoutACrash) {
    struct Damage {
        const char* what;
        const char* item;
        bool ofRange; // the edit is made on the item's range rather than on the item
        testenv::KeyEdit edit;
        bool refused = true; // by the item's decoder, with a log line; otherwise repaired away later
    };
    const auto put = [](const char* key, const QJsonValue& value) -> testenv::KeyEdit {
        return [=](QJsonObject& k) { k[key] = value; };
    };
    const auto without = [](const char* key) -> testenv::KeyEdit {
        return [=](QJsonObject& k) { k.remove(key); };
    };
    const auto span = [](double i, double o) -> testenv::KeyEdit {
        return [=](QJsonObject& k) {
            k["i"] = archivedDouble(i);
            k["o"] = archivedDouble(o);
        };
    };
    const std::vector<Damage> damages = {
        {"assetId an int", "m1", false, put("assetId", QJsonObject{{"int", 7}})},
        {"assetId a string of a number", "m1", false, put("assetId", QJsonObject{{"string", 7}})},
        {"assetId a bare string", "m1", false, put("assetId", QJsonValue("m1"))},
        {"no range", "m1", false, without("range")},
        {"no id", "m1", false, without("id")},
        {"no markers", "m1", false, without("markers")},
        {"attached item without markers", "a1", false, without("markers")},
        {"range of another class", "m1", false, [](QJsonObject& k) { k["range"] = k["volumeKFs"]; }},
        {"negative inTime", "m1", false, put("inTime", archivedDouble(-1.0))},
        {"huge inTime", "m1", false, put("inTime", archivedDouble(1e300))},
        {"infinite inTime", "m1", false, put("inTime", QJsonObject{{"double", "inf"}})},
        {"negative bgmOutTime", "m1", false, put("bgmOutTime", archivedDouble(-5.0))},
        {"huge bgmOutTime", "m1", false, put("bgmOutTime", archivedDouble(1e300))},
        {"NaN bgmOutTime", "m1", false, put("bgmOutTime", QJsonObject{{"double", "nan"}})},
        {"negative range in", "m1", true, put("i", archivedDouble(-2.0))},
        {"negative range out", "m1", true, put("o", archivedDouble(-2.0))},
        {"huge range in", "m1", true, put("i", archivedDouble(1e300))},
        {"huge range out", "m1", true, put("o", archivedDouble(1e300))},
        {"huge negative range out", "m1", true, put("o", archivedDouble(-1e300))},
        {"NaN range out", "m1", true, put("o", QJsonObject{{"double", "nan"}})},
        {"zero-length main-lane clip", "m1", true, span(3.0, 3.0), false},
        {"zero-length attached item", "a1", true, span(1.0, 1.0), false},
        {"range shorter than the grid", "m1", true, span(3.0, 3.005), false},
        {"inverted main-lane range", "m1", true, span(8.0, 3.0), false},
    };
    for (const auto& d : damages) {
        SCOPED_TRACE(d.what);
        const QString file = threeClips("damagedItem");
        editItem(file, d.item, d.edit, d.ofRange);
        const int failuresBefore = loggedCount(kItemFailed);
        const auto back = AETimeLine::load(file);
        ASSERT_TRUE(back);
        EXPECT_EQ(loggedCount(kItemFailed), failuresBefore + (d.refused ? 1 : 0));
        QStringList expected = {"m0", "m1", "m2", "a1"};
        expected.removeOne(d.item);
        EXPECT_EQ(idsOf(back->mainLane) + idsOf(back->attachedItems), expected);
        EXPECT_EQ(back->getMainLaneOutTime(), d.item == QString("m1") ? 15.0 : 35.0)
            << "the main lane closes up";
        expectInvariants(*back);
    }
    EXPECT_TRUE(alerts().isEmpty());
}

TEST_F(AETimeLineArchive, AnItemWithoutAssetIdKeepsItsPlaceWithAPlaceholder) {
    const QString file = threeClips("noAssetId");
    editItem(file, "m1", [](QJsonObject& k) { k.remove("assetId"); });
    const auto back = AETimeLine::load(file);
    ASSERT_TRUE(back);
    EXPECT_EQ(loggedCount(kItemFailed), 0);
    ASSERT_EQ(idsOf(back->mainLane), QStringList({"m0", "m1", "m2"}));
    const auto& placeholder = back->mainLane[1]->asset;
    EXPECT_TRUE(placeholder->id.isEmpty());
    EXPECT_TRUE(placeholder->name.isEmpty());
    EXPECT_EQ(placeholder->type, AEAssetType::speech);
    EXPECT_EQ(back->mainLane[1]->range.duration(), 20.0)
        << "the played stretch comes from the file, not the asset";
    EXPECT_EQ(back->mainLane[2]->inTime, 30.0);
    EXPECT_EQ(alerts(), QStringList({"alert: Warning | Asset m1 unavailable"}));
    expectInvariants(*back);
}

TEST_F(AETimeLineArchive, EnormousButRealTimesLoad) {
    // A hundred thousand hours: absurd for an episode, but a time all the same.
    const double hours = 100000.0 * 3600.0;
    const QString file = threeClips("enormous");
    editItem(
        file, "m1", [&](QJsonObject& k) { k["o"] = archivedDouble(hours); }, true);
    editItem(file, "a1", [&](QJsonObject& k) { k["inTime"] = archivedDouble(hours / 2); });
    const auto back = AETimeLine::load(file);
    ASSERT_TRUE(back);
    EXPECT_EQ(loggedCount(kItemFailed), 0);
    ASSERT_EQ(idsOf(back->mainLane), QStringList({"m0", "m1", "m2"}));
    EXPECT_EQ(back->mainLane[2]->inTime, 10.0 + hours);
    EXPECT_EQ(back->getMainLaneOutTime(), 15.0 + hours);
    ASSERT_EQ(back->attachedItems.size(), 1u);
    EXPECT_EQ(back->attachedItems[0]->inTime, hours / 2);
    expectInvariants(*back);
}

TEST_F(AETimeLineArchive, AFileThatIsNoUsableTimelineArchiveGivesNothing) {
    const std::vector<std::pair<const char*, testenv::KeyEdit>> damages = {
        {"no id", [](QJsonObject& k) { k.remove("id"); }},
        {"numeric id",
         [](QJsonObject& k) {
             k["id"] = QJsonObject{{"int", 4}};
         }},
        {"id of a foreign kind",
         [](QJsonObject& k) {
             k["id"] = QJsonObject{{"double", 1.5}};
         }},
        {"no main lane", [](QJsonObject& k) { k.remove("mainLane"); }},
        {"attached items not an array",
         [](QJsonObject& k) {
             k["attachedItems"] = QJsonObject{{"int", 1}};
         }},
    };
    for (const auto& [what, damage] : damages) {
        SCOPED_TRACE(what);
        const QString file = threeClips("noId");
        ASSERT_TRUE(testenv::editArchiveFile(file, "AETimeLine", damage));
        EXPECT_FALSE(AETimeLine::load(file));
    }

    // Unreadable archives are the archive's own tests; here, a missing file and a root of another class.
    EXPECT_FALSE(AETimeLine::load(path("absent")));
    const QString marker = path("marker");
    ASSERT_TRUE(KeyedArchiver::archiveRootObject(std::make_shared<AEMarker>(1.0), marker));
    EXPECT_FALSE(AETimeLine::load(marker));
}

TEST_F(AETimeLineArchive, ALaneNumberNoLayoutCouldReachRejectsTheItem) {
    // Every lane up to the highest number is built: a wild number must not hang the load.
    for (const qint64 lane : {30000, -30000}) {
        SCOPED_TRACE(lane);
        const QString file = threeClips("wildLane");
        editItem(file, "a1", [&](QJsonObject& k) { k["lane"] = QJsonObject{{"int", lane}}; });
        const int failuresBefore = loggedCount(kItemFailed);
        const qint64 start = threadCpuMs();
        const auto back = AETimeLine::load(file);
        EXPECT_LT(threadCpuMs() - start, 1000);
        ASSERT_TRUE(back);
        EXPECT_EQ(loggedCount(kItemFailed), failuresBefore + 1);
        EXPECT_TRUE(back->attachedItems.empty());
        EXPECT_EQ(back->mainLane.size(), 3u);
    }
    // An ordinary lane above the others is kept.
    const QString file = threeClips("highLane");
    editItem(file, "a1", [&](QJsonObject& k) { k["lane"] = QJsonObject{{"int", -7}}; });
    const auto back = AETimeLine::load(file);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->attachedItems.size(), 1u);
    EXPECT_LT(back->attachedItems[0]->lane, 0);
}

namespace {

// The index of the root's object array `key` in the file, as references.
QJsonArray rootList(const QJsonArray& objects, const QString& key) {
    return keysAt(objects, 0)[key].toObject()["array"].toArray();
}

void setRootList(QJsonArray& objects, const QString& key, const QJsonArray& refs) {
    QJsonObject keys = keysAt(objects, 0);
    keys[key] = QJsonObject{{"array", refs}};
    setKeysAt(objects, 0, keys);
}

QJsonObject refTo(const QJsonArray& objects, const QString& itemId) {
    return QJsonObject{{"object", itemIndex(objects, itemId)}};
}

} // namespace

// Damaged files load whole and valid, and what they load survives the next save and load unchanged.
class AETimeLineArchiveRepair : public AETimeLineArchive {
protected:
    // Loads, checks, saves, loads again and checks the same; returns the second load.
    std::shared_ptr<AETimeLine> loadTwice(const QString& file,
                                          const std::function<void(AETimeLine&)>& expectations) {
        auto first = AETimeLine::load(file);
        EXPECT_TRUE(first);
        if (!first) return nullptr;
        expectInvariants(*first);
        expectations(*first);
        EXPECT_TRUE(first->save(file));
        auto second = AETimeLine::load(file);
        EXPECT_TRUE(second);
        if (!second) return nullptr;
        expectInvariants(*second);
        expectations(*second);
        EXPECT_EQ(documentForm(*second), documentForm(*first));
        return second;
    }
};

TEST_F(AETimeLineArchiveRepair, AnItemListedTwiceGetsACopyForItsSecondPlace) {
    const QString file = threeClips("twice");
    editObjects(file, [](QJsonArray& objects) {
        setRootList(objects, "mainLane",
                    {refTo(objects, "m0"), refTo(objects, "m1"), refTo(objects, "m1"), refTo(objects, "m2")});
        QJsonArray attached = rootList(objects, "attachedItems");
        attached.append(refTo(objects, "m0"));
        setRootList(objects, "attachedItems", attached);
    });
    auto back = loadTwice(file, [](AETimeLine& tl) {
        ASSERT_EQ(tl.mainLane.size(), 4u);
        EXPECT_EQ(tl.mainLane[1]->id, "m1");
        EXPECT_NE(tl.mainLane[2]->id, "m1") << "the copy has an id of its own";
        EXPECT_EQ(tl.mainLane[3]->inTime, 50.0) << "the main lane plays m1 twice, as the file says";
        ASSERT_EQ(tl.attachedItems.size(), 2u);
        EXPECT_GT(tl.attachedItems[1]->lane, 0);
    });
    ASSERT_TRUE(back);
    // An edit of the main lane leaves every item where it belongs.
    back->removeItemInMainLane(0, false);
    expectInvariants(*back);
}

TEST_F(AETimeLineArchiveRepair, AnItemWithoutALaneOrOnTheWrongOneIsPlacedByTheLaneRules) {
    const QString file = threeClips("noLane");
    const auto music = tlfixture::music("arch.noLane.bgm", 60);
    AEAssetDB::saveAsset(music);
    {
        auto tl = AETimeLine::load(file);
        ASSERT_TRUE(tl);
        tl->attachItem(music, -1, 1.0, std::nullopt, false, false)->id = "bed";
        ASSERT_TRUE(tl->save(file));
    }
    editItem(file, "a1", [](QJsonObject& k) { k.remove("lane"); });
    editItem(file, "bed", [](QJsonObject& k) { k["lane"] = QJsonObject{{"int", 0}}; });
    editItem(file, "m1", [](QJsonObject& k) {
        k["lane"] = QJsonObject{{"int", 2}};
    }); // put back by the invariants
    loadTwice(file, [](AETimeLine& tl) {
        ASSERT_EQ(idsOf(tl.attachedItems), QStringList({"a1", "bed"}));
        EXPECT_EQ(tl.attachedItems[0]->lane, 1) << "effects above the main lane";
        EXPECT_EQ(tl.attachedItems[1]->lane, -1) << "music below it";
    });
}

TEST_F(AETimeLineArchiveRepair, MusicLeftBeyondTheMainLaneIsDroppedWithALogLine) {
    const QString file = threeClips("bgmBeyond");
    {
        auto tl = AETimeLine::load(file);
        ASSERT_TRUE(tl);
        const auto music = tlfixture::music("arch.bgmBeyond.bed", 60);
        AEAssetDB::saveAsset(music);
        tl->attachItem(music, -1, 30.0, std::nullopt, false, false)->id = "bed";
        ASSERT_TRUE(tl->save(file));
    }
    // m1 and m2 cannot be read: the main lane ends at 10 s, before the music starts.
    for (const char* id : {"m1", "m2"})
        editItem(file, id, [](QJsonObject& k) { k.remove("range"); });
    loadTwice(file, [](AETimeLine& tl) {
        EXPECT_EQ(idsOf(tl.mainLane), QStringList({"m0"}));
        EXPECT_EQ(idsOf(tl.attachedItems), QStringList({"a1"}));
    });
    EXPECT_EQ(loggedCount("AETimeLine.decode: music bed ends before it starts; left out"), 1);
}

TEST_F(AETimeLineArchiveRepair, AFileThatStillBreaksTheRulesIsRefusedWithAMessage) {
    const QString file = threeClips("overlapSameId");
    // Two objects with one id on one lane: the lane rules cannot tell them apart, so cannot part them.
    editObjects(file, [](QJsonArray& objects) {
        QJsonObject twin = objects[itemIndex(objects, "a1")].toObject();
        objects.append(twin);
        QJsonArray attached = rootList(objects, "attachedItems");
        attached.append(QJsonObject{{"object", static_cast<int>(objects.size()) - 1}});
        setRootList(objects, "attachedItems", attached);
    });
    EXPECT_FALSE(AETimeLine::load(file));
    ASSERT_EQ(alerts().size(), 1);
    EXPECT_TRUE(alerts()[0].contains("is damaged (items overlap on lane 1) and was not opened"))
        << alerts()[0].toStdString();
}
