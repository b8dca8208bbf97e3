#pragma once
// Process arguments, as the running QCoreApplication received them.

#include <QString>
#include <QStringList>

QStringList getArgs();
// The i-th argument, or "" beyond the end.
QString getArgument(int i);
// The argument after the first one equal to label, else def.
QString getArgumentValue(const QString& label, const QString& def);
QString getArgumentValueOffset(const QString& label, const QString& def, int offset);
double getArgumentDouble(const QString& label, double def);
int getArgumentInt(const QString& label, int def);
bool isArgumentPresent(const QString& label);

// Tests replace the argument list; an empty list means "the application's own".
void setArgsForTesting(const QStringList& args);
