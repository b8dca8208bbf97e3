#pragma once
// Our keyed object archive: one root object per file, human-readable JSON. Every object carries its
// class name and its keys; every value keeps its kind (string, integer, double, 32-bit float, boolean,
// date, array, object), so a reader can tell "absent" from "of another kind" key by key. An object
// referenced twice is written once and decodes as one shared instance. Files are written atomically;
// a damaged or foreign file decodes to nothing, with a log line.
//
// Archivers are single-use objects owned by one thread; the class registry is filled during static
// initialisation and only read afterwards.

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

class KeyedArchiver;
class KeyedUnarchiver;

class KeyedObject {
public:
    virtual ~KeyedObject() = default;
    virtual QString archiveClassName() const = 0;
    virtual void encode(KeyedArchiver& coder) const = 0;
};

// A decoder returns nullptr when required keys are missing or of another kind.
using KeyedDecoder = std::function<std::shared_ptr<KeyedObject>(KeyedUnarchiver&)>;
bool registerArchiveClass(const QString& className, KeyedDecoder decoder);
// For a record with a kClassName and a static decode(KeyedUnarchiver&).
template <class T> bool registerArchiveClass() {
    return registerArchiveClass(T::kClassName, [](KeyedUnarchiver& coder) {
        return std::static_pointer_cast<KeyedObject>(T::decode(coder));
    });
}

class KeyedArchiver {
public:
    void encodeString(const QString& key, const QString& value);
    void encodeInt(const QString& key, int64_t value);
    void encodeDouble(const QString& key, double value);
    void encodeFloat(const QString& key, float value);
    void encodeBool(const QString& key, bool value);
    void encodeDate(const QString& key, const QDateTime& value);
    void encodeStringArray(const QString& key, const QStringList& values);
    void encodeDoubleArray(const QString& key, const std::vector<double>& values);
    void encodeFloatArray(const QString& key, const std::vector<float>& values);
    // A null object leaves the key absent.
    void encodeObject(const QString& key, const std::shared_ptr<const KeyedObject>& object);
    template <class T>
    void encodeObjectArray(const QString& key, const std::vector<std::shared_ptr<T>>& objects) {
        QJsonArray refs;
        for (const auto& o : objects)
            refs.append(referenceTo(o));
        setValue(key, QJsonObject{{"array", refs}});
    }

    static QByteArray archivedData(const std::shared_ptr<const KeyedObject>& root);
    // Temporary file in the same folder, flushed to disk, renamed over the old one.
    static bool archiveRootObject(const std::shared_ptr<const KeyedObject>& root, const QString& path);
    static bool writeAtomically(const QByteArray& data, const QString& path);

private:
    QJsonObject referenceTo(const std::shared_ptr<const KeyedObject>& object);
    void setValue(const QString& key, const QJsonValue& value);

    struct Entry {
        QString className;
        QJsonObject keys;
    };
    std::vector<Entry> objects_;
    std::map<const KeyedObject*, int> indexOf_;
    // Objects are told apart by address: each written one is kept alive so that a temporary made for
    // one key cannot lend its address to another object later in the same archive.
    std::vector<std::shared_ptr<const KeyedObject>> retained_;
    int current_ = -1;
};

class KeyedUnarchiver {
public:
    bool containsKey(const QString& key) const;
    std::optional<QString> decodeString(const QString& key) const;
    std::optional<int64_t> decodeInt(const QString& key) const;
    std::optional<double> decodeDouble(const QString& key) const;
    std::optional<float> decodeFloat(const QString& key) const;
    std::optional<bool> decodeBool(const QString& key) const;
    std::optional<QDateTime> decodeDate(const QString& key) const;
    std::optional<QStringList> decodeStringArray(const QString& key) const;
    std::optional<std::vector<double>> decodeDoubleArray(const QString& key) const;
    std::optional<std::vector<float>> decodeFloatArray(const QString& key) const;
    std::shared_ptr<KeyedObject> decodeAnyObject(const QString& key);
    template <class T> std::shared_ptr<T> decodeObject(const QString& key) {
        return std::dynamic_pointer_cast<T>(decodeAnyObject(key));
    }
    // Nothing when the key is absent, not an array, or any element fails to decode as a T.
    template <class T> std::optional<std::vector<std::shared_ptr<T>>> decodeObjectArray(const QString& key) {
        const auto refs = arrayAt(key);
        if (!refs) return std::nullopt;
        std::vector<std::shared_ptr<T>> out;
        out.reserve(static_cast<size_t>(refs->size()));
        for (const auto& ref : *refs) {
            auto object = std::dynamic_pointer_cast<T>(objectFromReference(ref));
            if (!object) return std::nullopt;
            out.push_back(std::move(object));
        }
        return out;
    }

    // Nothing when the key is absent or not an array; elements that fail to decode are left out.
    template <class T>
    std::optional<std::vector<std::shared_ptr<T>>> decodeObjectArraySkippingFailures(const QString& key) {
        const auto refs = arrayAt(key);
        if (!refs) return std::nullopt;
        std::vector<std::shared_ptr<T>> out;
        out.reserve(static_cast<size_t>(refs->size()));
        for (const auto& ref : *refs)
            if (auto object = std::dynamic_pointer_cast<T>(objectFromReference(ref)))
                out.push_back(std::move(object));
        return out;
    }

    static std::shared_ptr<KeyedObject> unarchiveObject(const QByteArray& data, const QString& origin);
    static std::shared_ptr<KeyedObject> unarchiveObject(const QString& path);
    template <class T> static std::shared_ptr<T> unarchive(const QString& path) {
        return std::dynamic_pointer_cast<T>(unarchiveObject(path));
    }

private:
    std::optional<QJsonValue> tagged(const QString& key, const char* kind) const;
    std::optional<QJsonArray> arrayAt(const QString& key) const;
    std::shared_ptr<KeyedObject> objectFromReference(const QJsonValue& ref);
    std::shared_ptr<KeyedObject> objectAt(int index);

    QJsonArray table_;
    std::map<int, std::shared_ptr<KeyedObject>> decoded_;
    std::set<int> inProgress_;
    QJsonObject keys_;
};
