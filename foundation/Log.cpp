#include "foundation/Log.h"

#include "foundation/LogOutput.h"

#include <cstdio>
#include <map>
#include <mutex>

namespace {
std::mutex& sinkMutex() {
    static std::mutex m;
    return m;
}
std::map<int, LogSink>& sinks() {
    static std::map<int, LogSink> s;
    return s;
}
int nextToken = 1;
bool toStandardOutput = true;
} // namespace

void qxLog(const QString& line) {
    const QByteArray bytes = line.toUtf8();
    std::lock_guard lock(sinkMutex());
    if (toStandardOutput) {
        std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }
    for (auto& [token, sink] : sinks())
        sink(line);
}

int addLogSink(LogSink sink) {
    std::lock_guard lock(sinkMutex());
    const int token = nextToken++;
    sinks().emplace(token, std::move(sink));
    return token;
}

void removeLogSink(int token) {
    std::lock_guard lock(sinkMutex());
    sinks().erase(token);
}

void setLogToStandardOutput(bool on) {
    std::lock_guard lock(sinkMutex());
    toStandardOutput = on;
}
