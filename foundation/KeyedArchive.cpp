#include "foundation/KeyedArchive.h"

#include "foundation/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <cmath>
#include <unistd.h>

namespace {

const char* const kFormat = "zendrel-keyed-archive";
constexpr int kVersion = 1;

std::map<QString, KeyedDecoder>& registry() {
    static std::map<QString, KeyedDecoder> classes;
    return classes;
}

// JSON has no NaN or infinity: those travel as text.
QJsonValue numberValue(double value) {
    if (std::isnan(value)) return QStringLiteral("nan");
    if (std::isinf(value)) return value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
    return value;
}

std::optional<double> numberFrom(const QJsonValue& value) {
    if (value.isDouble()) return value.toDouble();
    const QString text = value.toString();
    if (text == "nan") return std::nan("");
    if (text == "inf") return INFINITY;
    if (text == "-inf") return -INFINITY;
    return std::nullopt;
}

QJsonArray numberArray(const auto& values) {
    QJsonArray out;
    for (double v : values)
        out.append(numberValue(v));
    return out;
}

} // namespace

bool registerArchiveClass(const QString& className, KeyedDecoder decoder) {
    registry()[className] = std::move(decoder);
    return true;
}

// ---- encoding

void KeyedArchiver::setValue(const QString& key, const QJsonValue& value) {
    objects_[static_cast<size_t>(current_)].keys.insert(key, value);
}

void KeyedArchiver::encodeString(const QString& key, const QString& value) {
    setValue(key, QJsonObject{{"string", value}});
}

void KeyedArchiver::encodeInt(const QString& key, int64_t value) {
    setValue(key, QJsonObject{{"int", static_cast<qint64>(value)}});
}

void KeyedArchiver::encodeDouble(const QString& key, double value) {
    setValue(key, QJsonObject{{"double", numberValue(value)}});
}

void KeyedArchiver::encodeFloat(const QString& key, float value) {
    setValue(key, QJsonObject{{"float", numberValue(value)}});
}

void KeyedArchiver::encodeBool(const QString& key, bool value) {
    setValue(key, QJsonObject{{"bool", value}});
}

void KeyedArchiver::encodeDate(const QString& key, const QDateTime& value) {
    setValue(key, QJsonObject{{"date", value.toUTC().toString(Qt::ISODateWithMs)}});
}

void KeyedArchiver::encodeStringArray(const QString& key, const QStringList& values) {
    QJsonArray out;
    for (const auto& v : values)
        out.append(QJsonObject{{"string", v}});
    setValue(key, QJsonObject{{"array", out}});
}

void KeyedArchiver::encodeDoubleArray(const QString& key, const std::vector<double>& values) {
    setValue(key, QJsonObject{{"doubles", numberArray(values)}});
}

void KeyedArchiver::encodeFloatArray(const QString& key, const std::vector<float>& values) {
    setValue(key, QJsonObject{{"floats", numberArray(values)}});
}

void KeyedArchiver::encodeObject(const QString& key, const std::shared_ptr<const KeyedObject>& object) {
    if (object) setValue(key, referenceTo(object));
}

QJsonObject KeyedArchiver::referenceTo(const std::shared_ptr<const KeyedObject>& object) {
    if (!object) return QJsonObject{{"null", true}};
    if (auto found = indexOf_.find(object.get()); found != indexOf_.end())
        return QJsonObject{{"object", found->second}};
    const int index = static_cast<int>(objects_.size());
    indexOf_[object.get()] = index;
    retained_.push_back(object);
    objects_.push_back({object->archiveClassName(), {}});
    const int outer = current_;
    current_ = index;
    object->encode(*this);
    current_ = outer;
    return QJsonObject{{"object", index}};
}

QByteArray KeyedArchiver::archivedData(const std::shared_ptr<const KeyedObject>& root) {
    KeyedArchiver coder;
    coder.referenceTo(root);
    QJsonArray table;
    for (auto& o : coder.objects_)
        table.append(QJsonObject{{"class", o.className}, {"keys", o.keys}});
    const QJsonObject document{{"format", kFormat}, {"version", kVersion}, {"root", 0}, {"objects", table}};
    return QJsonDocument(document).toJson(QJsonDocument::Indented);
}

bool KeyedArchiver::archiveRootObject(const std::shared_ptr<const KeyedObject>& root, const QString& path) {
    return root && writeAtomically(archivedData(root), path);
}

bool KeyedArchiver::writeAtomically(const QByteArray& data, const QString& path) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        qxLog("KeyedArchiver: cannot write " + path + ": " + file.errorString());
        return false;
    }
    if (file.write(data) != data.size() || !file.flush() || ::fsync(file.handle()) != 0) {
        qxLog("KeyedArchiver: write failed for " + path + ": " + file.errorString());
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        qxLog("KeyedArchiver: cannot replace " + path + ": " + file.errorString());
        return false;
    }
    return true;
}

// ---- decoding

std::optional<QJsonValue> KeyedUnarchiver::tagged(const QString& key, const char* kind) const {
    const QJsonValue entry = keys_.value(key);
    if (!entry.isObject()) return std::nullopt;
    const QJsonObject object = entry.toObject();
    if (!object.contains(kind)) return std::nullopt;
    return object.value(kind);
}

bool KeyedUnarchiver::containsKey(const QString& key) const {
    return keys_.contains(key);
}

std::optional<QString> KeyedUnarchiver::decodeString(const QString& key) const {
    const auto v = tagged(key, "string");
    if (!v || !v->isString()) return std::nullopt;
    return v->toString();
}

std::optional<int64_t> KeyedUnarchiver::decodeInt(const QString& key) const {
    const auto v = tagged(key, "int");
    if (!v || !v->isDouble()) return std::nullopt;
    return v->toInteger();
}

std::optional<double> KeyedUnarchiver::decodeDouble(const QString& key) const {
    const auto v = tagged(key, "double");
    return v ? numberFrom(*v) : std::nullopt;
}

std::optional<float> KeyedUnarchiver::decodeFloat(const QString& key) const {
    const auto v = tagged(key, "float");
    const auto number = v ? numberFrom(*v) : std::nullopt;
    return number ? std::optional<float>(static_cast<float>(*number)) : std::nullopt;
}

std::optional<bool> KeyedUnarchiver::decodeBool(const QString& key) const {
    const auto v = tagged(key, "bool");
    if (!v || !v->isBool()) return std::nullopt;
    return v->toBool();
}

std::optional<QDateTime> KeyedUnarchiver::decodeDate(const QString& key) const {
    const auto v = tagged(key, "date");
    if (!v || !v->isString()) return std::nullopt;
    QDateTime date = QDateTime::fromString(v->toString(), Qt::ISODateWithMs);
    if (!date.isValid()) return std::nullopt;
    return date.toLocalTime();
}

std::optional<QJsonArray> KeyedUnarchiver::arrayAt(const QString& key) const {
    const auto v = tagged(key, "array");
    if (!v || !v->isArray()) return std::nullopt;
    return v->toArray();
}

std::optional<QStringList> KeyedUnarchiver::decodeStringArray(const QString& key) const {
    const auto items = arrayAt(key);
    if (!items) return std::nullopt;
    QStringList out;
    out.reserve(items->size());
    for (const auto& item : *items) {
        const QJsonValue text = item.toObject().value("string");
        if (!text.isString()) return std::nullopt;
        out.append(text.toString());
    }
    return out;
}

namespace {
template <class T> std::optional<std::vector<T>> numbersFrom(const std::optional<QJsonValue>& v) {
    if (!v || !v->isArray()) return std::nullopt;
    std::vector<T> out;
    for (const auto& item : v->toArray()) {
        const auto number = numberFrom(item);
        if (!number) return std::nullopt;
        out.push_back(static_cast<T>(*number));
    }
    return out;
}
} // namespace

std::optional<std::vector<double>> KeyedUnarchiver::decodeDoubleArray(const QString& key) const {
    return numbersFrom<double>(tagged(key, "doubles"));
}

std::optional<std::vector<float>> KeyedUnarchiver::decodeFloatArray(const QString& key) const {
    return numbersFrom<float>(tagged(key, "floats"));
}

std::shared_ptr<KeyedObject> KeyedUnarchiver::decodeAnyObject(const QString& key) {
    const QJsonValue entry = keys_.value(key);
    return entry.isObject() ? objectFromReference(entry) : nullptr;
}

std::shared_ptr<KeyedObject> KeyedUnarchiver::objectFromReference(const QJsonValue& ref) {
    const QJsonValue index = ref.toObject().value("object");
    if (!index.isDouble()) return nullptr;
    return objectAt(index.toInt(-1));
}

std::shared_ptr<KeyedObject> KeyedUnarchiver::objectAt(int index) {
    if (index < 0 || index >= table_.size()) return nullptr;
    if (auto found = decoded_.find(index); found != decoded_.end()) return found->second;
    if (inProgress_.count(index)) return nullptr; // a cycle: the outer decode owns this object
    const QJsonObject entry = table_.at(index).toObject();
    const auto decoder = registry().find(entry.value("class").toString());
    if (decoder == registry().end()) return nullptr;
    inProgress_.insert(index);
    const QJsonObject outer = keys_;
    keys_ = entry.value("keys").toObject();
    auto object = decoder->second(*this);
    keys_ = outer;
    inProgress_.erase(index);
    if (object) decoded_[index] = object;
    return object;
}

std::shared_ptr<KeyedObject> KeyedUnarchiver::unarchiveObject(const QByteArray& data, const QString& origin) {
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    const QJsonObject top = document.object();
    if (error.error != QJsonParseError::NoError || top.value("format").toString() != kFormat ||
        !top.value("objects").isArray()) {
        qxLog("KeyedUnarchiver: not an archive: " + origin);
        return nullptr;
    }
    KeyedUnarchiver coder;
    coder.table_ = top.value("objects").toArray();
    auto root = coder.objectAt(top.value("root").toInt(-1));
    if (!root) qxLog("KeyedUnarchiver: no root object in " + origin);
    return root;
}

std::shared_ptr<KeyedObject> KeyedUnarchiver::unarchiveObject(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qxLog("KeyedUnarchiver: cannot read " + path);
        return nullptr;
    }
    return unarchiveObject(file.readAll(), path);
}
