#include "foundation/Prefs.h"

#include "foundation/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>
#include <mutex>
#include <optional>

namespace {

// Values are stored as {"<kind>": value}, the same tagging the keyed archive uses.
struct Store {
    std::mutex mutex;
    std::optional<QJsonObject> values;
    QString path;
};

Store& store() {
    static Store s;
    return s;
}

QString locatePrefs() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           "/zendrel/preferences.json";
}

QJsonObject& loaded(Store& s) {
    if (!s.values) {
        s.path = locatePrefs();
        QFile file(s.path);
        QJsonObject values;
        if (file.open(QIODevice::ReadOnly)) {
            QJsonParseError error{};
            const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
            if (error.error == QJsonParseError::NoError && doc.isObject())
                values = doc.object();
            else
                qxLog("prefs: unreadable preferences, starting empty: " + s.path);
        }
        s.values = values;
    }
    return *s.values;
}

void persist(Store& s) {
    QDir().mkpath(QFileInfo(s.path).absolutePath());
    QSaveFile file(s.path);
    if (!file.open(QIODevice::WriteOnly)) {
        qxLog("prefs: cannot write " + s.path);
        return;
    }
    file.write(QJsonDocument(*s.values).toJson(QJsonDocument::Indented));
    if (!file.commit()) qxLog("prefs: cannot save " + s.path);
}

std::optional<QJsonValue> read(const QString& key, const char* kind) {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    const QJsonObject entry = loaded(s).value(key).toObject();
    if (!entry.contains(kind)) return std::nullopt;
    return entry.value(kind);
}

void write(const QString& key, const char* kind, const QJsonValue& value) {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    loaded(s).insert(key, QJsonObject{{kind, value}});
    persist(s);
}

} // namespace

QString prefs_getValueString(const QString& key, const QString& defaultValue) {
    const auto v = read(key, "string");
    return v && v->isString() ? v->toString() : defaultValue;
}

QDateTime prefs_getValueDate(const QString& key, const QDateTime& defaultValue) {
    const auto v = read(key, "date");
    if (!v || !v->isString()) return defaultValue;
    const QDateTime date = QDateTime::fromString(v->toString(), Qt::ISODateWithMs);
    return date.isValid() ? date.toLocalTime() : defaultValue;
}

int64_t prefs_getValueInt(const QString& key, int64_t defaultValue) {
    const auto v = read(key, "int");
    return v && v->isDouble() ? v->toInteger(defaultValue) : defaultValue;
}

double prefs_getValueDouble(const QString& key, double defaultValue) {
    const auto v = read(key, "double");
    return v && v->isDouble() ? v->toDouble() : defaultValue;
}

bool prefs_getValueBool(const QString& key, bool defaultValue) {
    return prefs_getValueInt(key, defaultValue ? 1 : 0) != 0;
}

QVariant prefs_getValueAny(const QString& key, const QVariant& defaultValue) {
    Store& s = store();
    QJsonObject entry;
    {
        std::lock_guard lock(s.mutex);
        entry = loaded(s).value(key).toObject();
    }
    if (entry.contains("string")) return entry.value("string").toString();
    if (entry.contains("int")) return QVariant::fromValue<qint64>(entry.value("int").toInteger());
    if (entry.contains("double")) return entry.value("double").toDouble();
    if (entry.contains("date"))
        return QDateTime::fromString(entry.value("date").toString(), Qt::ISODateWithMs).toLocalTime();
    if (entry.contains("strings")) return entry.value("strings").toVariant().toStringList();
    return defaultValue;
}

void prefs_setValueString(const QString& key, const QString& value) {
    write(key, "string", value);
}

void prefs_setValueDate(const QString& key, const QDateTime& value) {
    write(key, "date", value.toUTC().toString(Qt::ISODateWithMs));
}

void prefs_setValueInt(const QString& key, int64_t value) {
    write(key, "int", static_cast<qint64>(value));
}

void prefs_setValueBool(const QString& key, bool value) {
    prefs_setValueInt(key, value ? 1 : 0);
}

void prefs_setValueDouble(const QString& key, double value) {
    write(key, "double", value);
}

void prefs_setValueAny(const QString& key, const QVariant& value) {
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        prefs_setValueBool(key, value.toBool());
        break;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::Long:
        prefs_setValueInt(key, value.toLongLong());
        break;
    case QMetaType::Double:
    case QMetaType::Float:
        prefs_setValueDouble(key, value.toDouble());
        break;
    case QMetaType::QDateTime:
        prefs_setValueDate(key, value.toDateTime());
        break;
    case QMetaType::QStringList:
        write(key, "strings", QJsonValue::fromVariant(value));
        break;
    default:
        prefs_setValueString(key, value.toString());
    }
}

void prefs_removeKey(const QString& key) {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    loaded(s).remove(key);
    persist(s);
}

QString prefs_filePath() {
    return locatePrefs();
}

void prefs_reload() {
    Store& s = store();
    std::lock_guard lock(s.mutex);
    s.values.reset();
}
