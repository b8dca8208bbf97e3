#include "app/core/CheckConnection.h"

#include "app/core/AS.h"
#include "app/core/ASCommands.h"
#include "foundation/Log.h"

bool CheckConnection::isConnected() {
    const QString base = AS::repositoryBase();
    const bool connected = !base.isEmpty() && asCmd_run(asCmd_curlPath, asCmd_curlProbe(base + "/")) == 0;
    qxLog(QString("CheckConnection: ") + (connected ? "connected" : "not connected"));
    return connected;
}
