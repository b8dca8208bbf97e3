#include "project/model/SaveArray.h"

#include "foundation/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <limits>

namespace {
QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

TEST(SaveArray, EveryElementTypeRoundTrips) {
    QTemporaryDir dir;
    const std::vector<double> doubles = {0.0, -1.5, 1e300, std::numeric_limits<double>::denorm_min()};
    const std::vector<float> floats = {0.0f, -32768.0f, 1842.68f, 3.4e38f};
    const std::vector<int64_t> ints = {0, -1, std::numeric_limits<int64_t>::max(), 1LL << 40};
    const std::vector<int16_t> shorts = {0, -32768, 32767, 12345};
    ASSERT_TRUE(SaveArray::saveDouble(doubles, dir.filePath("d")));
    ASSERT_TRUE(SaveArray::saveFloat(floats, dir.filePath("f")));
    ASSERT_TRUE(SaveArray::saveInt(ints, dir.filePath("i")));
    ASSERT_TRUE(SaveArray::saveInt16(shorts, dir.filePath("s")));
    EXPECT_EQ(SaveArray::loadDouble(dir.filePath("d")), doubles);
    EXPECT_EQ(SaveArray::loadFloat(dir.filePath("f")), floats);
    EXPECT_EQ(SaveArray::loadInt(dir.filePath("i")), ints);
    EXPECT_EQ(SaveArray::loadInt16(dir.filePath("s")), shorts);
}

TEST(SaveArray, BareLittleEndianImageWithoutHeader) {
    QTemporaryDir dir;
    ASSERT_TRUE(SaveArray::saveInt16(std::vector<int16_t>{1, -2}, dir.filePath("s.dat")));
    EXPECT_EQ(fileBytes(dir.filePath("s.dat")), QByteArray::fromHex("0100feff"));
    ASSERT_TRUE(SaveArray::saveFloat(std::vector<float>{1.0f}, dir.filePath("f.dat")));
    EXPECT_EQ(fileBytes(dir.filePath("f.dat")), QByteArray::fromHex("0000803f"));
    EXPECT_TRUE(QFileInfo(dir.filePath("f.dat")).permissions() & QFile::ReadOther);
    ASSERT_TRUE(SaveArray::saveFloat(std::vector<float>{}, dir.filePath("empty.dat")));
    EXPECT_EQ(fileBytes(dir.filePath("empty.dat")).size(), 0);
    // A shorter array replaces a longer one whole.
    ASSERT_TRUE(SaveArray::saveFloat(std::vector<float>{2.0f, 3.0f}, dir.filePath("f.dat")));
    ASSERT_TRUE(SaveArray::saveFloat(std::vector<float>{4.0f}, dir.filePath("f.dat")));
    EXPECT_EQ(SaveArray::loadFloat(dir.filePath("f.dat")), std::vector<float>{4.0f});
}

TEST(SaveArray, TrailingBytesOfNoWholeElementAreLost) {
    QTemporaryDir dir;
    QFile file(dir.filePath("odd.dat"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromHex("0000803f"
                                   "00000040"
                                   "abcd"));
    file.close();
    EXPECT_EQ(SaveArray::loadFloat(file.fileName()), (std::vector<float>{1.0f, 2.0f}));
    EXPECT_EQ(SaveArray::loadInt16(file.fileName()).size(), 5u);
    EXPECT_EQ(SaveArray::loadInt(file.fileName()).size(), 1u);
}

TEST(SaveArray, FailuresAreReportedNotFatal) {
    QTemporaryDir dir;
    std::vector<QString> lines;
    const int token = addLogSink([&lines](const QString& line) { lines.push_back(line); });
    EXPECT_FALSE(SaveArray::saveFloat(std::vector<float>{1.0f}, dir.filePath("no/such/folder/x.dat")));
    EXPECT_FALSE(SaveArray::saveInt(std::vector<int64_t>{1}, dir.path())); // a folder stands there
    removeLogSink(token);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].startsWith("error: "));
    EXPECT_TRUE(lines[1].startsWith("error: "));
    // Nothing half-written is left beside the target.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList());
    EXPECT_TRUE(SaveArray::loadDouble(dir.filePath("missing.dat")).empty());
    EXPECT_TRUE(SaveArray::loadFloat(dir.path()).empty());
}
