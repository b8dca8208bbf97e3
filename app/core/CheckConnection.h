#pragma once
// Whether the server that holds the external components answers. Without a configured server there is
// nothing to connect to, so that counts as not connected.

class CheckConnection {
public:
    // Blocks for at most about ten seconds; call it off the main thread where possible.
    static bool isConnected();
};
