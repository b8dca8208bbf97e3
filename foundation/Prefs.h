#pragma once
// Typed per-user preferences: one JSON file under the user's config folder, read once and cached,
// rewritten atomically on each change, safe from any thread. Each value keeps its kind; a read of a
// key that is absent or holds another kind gives the caller's default. Booleans are stored as the
// integers 0 and 1 and read through the integer kind.

#include <QDateTime>
#include <QString>
#include <QVariant>
#include <cstdint>

QVariant prefs_getValueAny(const QString& key, const QVariant& defaultValue);
QString prefs_getValueString(const QString& key, const QString& defaultValue);
QDateTime prefs_getValueDate(const QString& key, const QDateTime& defaultValue);
int64_t prefs_getValueInt(const QString& key, int64_t defaultValue);
double prefs_getValueDouble(const QString& key, double defaultValue);
bool prefs_getValueBool(const QString& key, bool defaultValue);

// Any: a QString, integer, double, bool (stored as 0/1), QDateTime or QStringList.
void prefs_setValueAny(const QString& key, const QVariant& value);
void prefs_setValueString(const QString& key, const QString& value);
void prefs_setValueDate(const QString& key, const QDateTime& value);
void prefs_setValueInt(const QString& key, int64_t value);
void prefs_setValueBool(const QString& key, bool value);
void prefs_setValueDouble(const QString& key, double value);
void prefs_removeKey(const QString& key);

// Where the store lives: <config>/zendrel/preferences.json.
QString prefs_filePath();
// Forgets the cache so the next access reads the file anew (tests that move HOME).
void prefs_reload();
