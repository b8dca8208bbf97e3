#include "foundation/KeyedArchive.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <cmath>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

// A small record with one of every kind and a reference to another record.
class Note : public KeyedObject {
public:
    QString archiveClassName() const override { return "TestNote"; }
    void encode(KeyedArchiver& c) const override {
        c.encodeString("text", text);
        c.encodeInt("count", count);
        c.encodeDouble("time", time);
        c.encodeFloat("gain", gain);
        c.encodeBool("on", on);
        c.encodeDate("when", when);
        c.encodeStringArray("tags", tags);
        c.encodeObject("left", left);
        c.encodeObject("right", right);
    }
    static std::shared_ptr<KeyedObject> decode(KeyedUnarchiver& c) {
        auto n = std::make_shared<Note>();
        const auto text = c.decodeString("text");
        if (!text) return nullptr;
        n->text = *text;
        n->count = c.decodeInt("count").value_or(-1);
        n->time = c.decodeDouble("time").value_or(-1);
        n->gain = c.decodeFloat("gain").value_or(-1);
        n->on = c.decodeBool("on").value_or(false);
        n->when = c.decodeDate("when").value_or(QDateTime::fromMSecsSinceEpoch(0));
        n->tags = c.decodeStringArray("tags").value_or(QStringList{"absent"});
        n->left = c.decodeObject<Note>("left");
        n->right = c.decodeObject<Note>("right");
        return n;
    }
    QString text;
    int64_t count = 0;
    double time = 0;
    float gain = 0;
    bool on = false;
    QDateTime when;
    QStringList tags;
    std::shared_ptr<Note> left, right;
};

const bool registered = registerArchiveClass("TestNote", Note::decode);

std::shared_ptr<Note> decodeNote(const QByteArray& data) {
    return std::dynamic_pointer_cast<Note>(KeyedUnarchiver::unarchiveObject(data, "test"));
}

} // namespace

TEST(KeyedArchive, EveryKindRoundTripsExactly) {
    ASSERT_TRUE(registered);
    auto n = std::make_shared<Note>();
    n->text = "Intervista ò \"quoted\"";
    n->count = (int64_t(1) << 53) + 1;
    n->time = 0.1 + 0.2;
    n->gain = 1.0f / 3.0f;
    n->on = true;
    n->when = QDateTime::fromMSecsSinceEpoch(1700000000123);
    n->tags = {"a", "", "c"};
    n->right = std::make_shared<Note>();
    n->right->time = std::nan("");
    n->right->gain = -INFINITY;
    const auto back = decodeNote(KeyedArchiver::archivedData(n));
    ASSERT_TRUE(back && back->right);
    EXPECT_EQ(back->text, n->text);
    EXPECT_EQ(back->count, n->count);
    EXPECT_EQ(back->time, n->time);
    EXPECT_EQ(back->gain, n->gain);
    EXPECT_TRUE(back->on);
    EXPECT_EQ(back->when, n->when);
    EXPECT_EQ(back->tags, n->tags);
    EXPECT_FALSE(back->left);
    EXPECT_TRUE(std::isnan(back->right->time));
    EXPECT_EQ(back->right->gain, -INFINITY);
}

TEST(KeyedArchive, SharedObjectIsWrittenOnceAndDecodedAsOneInstance) {
    auto shared = std::make_shared<Note>();
    shared->text = "marker";
    auto root = std::make_shared<Note>();
    root->text = "root";
    root->left = shared;
    root->right = shared;
    const QByteArray data = KeyedArchiver::archivedData(root);
    EXPECT_EQ(QJsonDocument::fromJson(data).object().value("objects").toArray().size(), 2);
    const auto back = decodeNote(data);
    ASSERT_TRUE(back && back->left);
    EXPECT_EQ(back->left, back->right);
    EXPECT_EQ(back->left->text, "marker");
}

namespace {
// Writes each child through a fresh copy, as records do for their value fields.
class CopyingNote : public Note {
public:
    QString archiveClassName() const override { return "TestNote"; }
    void encode(KeyedArchiver& c) const override {
        c.encodeString("text", text);
        c.encodeObject("left", std::make_shared<Note>(*left));
        c.encodeObject("right", std::make_shared<Note>(*right));
    }
};
} // namespace

TEST(KeyedArchive, TemporariesWrittenForDifferentKeysStayDifferentObjects) {
    auto root = std::make_shared<CopyingNote>();
    root->text = "root";
    root->left = std::make_shared<Note>();
    root->left->text = "first";
    root->right = std::make_shared<Note>();
    root->right->text = "second";
    const auto back = decodeNote(KeyedArchiver::archivedData(root));
    ASSERT_TRUE(back && back->left && back->right);
    EXPECT_EQ(back->left->text, "first");
    EXPECT_EQ(back->right->text, "second");
}

TEST(KeyedArchive, KindsAreStrictKeyByKey) {
    // "count" holds a string, "time" an integer and "when" no date: each read falls back, the others still
    // work. A reference back to the object being decoded is a cycle, not an endless descent.
    const QByteArray data = R"({"format":"zendrel-keyed-archive","version":1,"root":0,"objects":[
        {"class":"TestNote","keys":{"text":{"string":"t"},"count":{"int":"7"},"time":{"int":3},
         "on":{"bool":true},"tags":{"array":[{"string":"x"},{"int":1}]},"left":{"object":0},
         "when":{"date":"yesterday"}}}]})";
    const auto back = decodeNote(data);
    ASSERT_TRUE(back);
    EXPECT_FALSE(back->left);
    EXPECT_EQ(back->count, -1);
    EXPECT_EQ(back->time, -1);
    EXPECT_TRUE(back->on);
    EXPECT_EQ(back->tags, QStringList{"absent"});
    EXPECT_EQ(back->when, QDateTime::fromMSecsSinceEpoch(0)) << "a date that cannot be read is no date";
}

TEST(KeyedArchive, DamagedOrForeignDataDecodesToNothing) {
    auto n = std::make_shared<Note>();
    n->text = "x";
    const QByteArray good = KeyedArchiver::archivedData(n);
    EXPECT_FALSE(decodeNote(""));
    EXPECT_FALSE(decodeNote(good.left(good.size() / 2)));
    EXPECT_FALSE(decodeNote("not json at all"));
    EXPECT_FALSE(
        decodeNote(R"({"format":"zendrel-keyed-archive","root":0,"objects":[{"class":"Nope","keys":{}}]})"));
    EXPECT_FALSE(decodeNote(R"({"format":"zendrel-keyed-archive","root":5,"objects":[]})"));
    EXPECT_FALSE(decodeNote(R"([1,2,3])"));
    // The root of another class is not a Note.
    EXPECT_FALSE(decodeNote(
        R"({"format":"zendrel-keyed-archive","root":0,"objects":[{"class":"TestNote","keys":{}}]})"));
}

TEST(KeyedArchive, WriteThatFailsMidwayLeavesThePreviousFileReadable) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/note.archive";
    auto n = std::make_shared<Note>();
    n->text = "first";
    ASSERT_TRUE(KeyedArchiver::archiveRootObject(n, path));

    // A file-size limit makes the next write fail part way, as a full disk would; works as root too.
    n->text = QString(100000, 'x');
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, SIG_IGN);
    rlimit tight = old;
    tight.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &tight);
    const bool written = KeyedArchiver::archiveRootObject(n, path);
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, SIG_DFL);

    EXPECT_FALSE(written);
    const auto back = KeyedUnarchiver::unarchive<Note>(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->text, "first");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"note.archive"});
}
