#include "foundation/Arguments.h"

#include <QCoreApplication>

namespace {
QStringList& override() {
    static QStringList args;
    return args;
}
} // namespace

void setArgsForTesting(const QStringList& args) {
    override() = args;
}

QStringList getArgs() {
    if (!override().isEmpty()) return override();
    return QCoreApplication::instance() ? QCoreApplication::arguments() : QStringList{};
}

QString getArgument(int i) {
    const QStringList args = getArgs();
    return i >= 0 && i < args.size() ? args.at(i) : QString();
}

QString getArgumentValueOffset(const QString& label, const QString& def, int offset) {
    const QStringList args = getArgs();
    const auto at = args.indexOf(label);
    if (at < 0) return def;
    const auto wanted = at + offset;
    return wanted >= 0 && wanted < args.size() ? args.at(wanted) : def;
}

QString getArgumentValue(const QString& label, const QString& def) {
    return getArgumentValueOffset(label, def, 1);
}

double getArgumentDouble(const QString& label, double def) {
    bool ok = false;
    const double value = getArgumentValue(label, QString()).toDouble(&ok);
    return ok ? value : def;
}

int getArgumentInt(const QString& label, int def) {
    bool ok = false;
    const int value = getArgumentValue(label, QString()).toInt(&ok);
    return ok ? value : def;
}

bool isArgumentPresent(const QString& label) {
    return getArgs().contains(label);
}
