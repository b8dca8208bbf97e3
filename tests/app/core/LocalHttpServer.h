#pragma once
// A throw-away HTTP server on 127.0.0.1 serving a folder, for tests of code that fetches with curl.
// It picks its own free port and sends files in 4 KB pieces 50 ms apart, so a large file takes long
// enough to watch it grow. The process is killed when the object goes.

#include <QProcess>
#include <QRegularExpression>
#include <QString>

class LocalHttpServer {
public:
    explicit LocalHttpServer(const QString& root) {
        process_.setProcessChannelMode(QProcess::MergedChannels);
        process_.start("/usr/bin/python3", {"-u", "-c", script, root});
        QString output;
        const QRegularExpression portLine("port (\\d+)");
        while (port_ == 0 && process_.waitForReadyRead(10000)) {
            output += QString::fromUtf8(process_.readAll());
            const auto match = portLine.match(output);
            if (match.hasMatch()) port_ = match.captured(1).toInt();
        }
    }
    ~LocalHttpServer() { stop(); }
    LocalHttpServer(const LocalHttpServer&) = delete;
    LocalHttpServer& operator=(const LocalHttpServer&) = delete;

    // 0 when the server did not come up.
    int port() const { return port_; }
    QString url() const { return "http://127.0.0.1:" + QString::number(port_); }

    void stop() {
        if (process_.state() == QProcess::NotRunning) return;
        process_.kill();
        process_.waitForFinished(5000);
    }

private:
    static inline const QString script = R"(
import functools, http.server, sys, time
class Handler(http.server.SimpleHTTPRequestHandler):
    def copyfile(self, source, target):
        while chunk := source.read(4096):
            target.write(chunk)
            target.flush()
            time.sleep(0.05)
    def log_message(self, *args):
        pass
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, directory=sys.argv[1]))
print("port", server.server_address[1])
server.serve_forever()
)";

    QProcess process_;
    int port_ = 0;
};
