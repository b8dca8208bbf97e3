#pragma once
// Ending the process on purpose: no network while components are missing, or the person asked for the
// components to be removed. Tests replace the hook to watch the exit happen without dying.

#include <functional>

using ProcessExitHook = std::function<void(int status)>;

// Returns the hook it replaces; an empty hook brings back the default.
ProcessExitHook setProcessExitHook(ProcessExitHook hook);

// Default: leaves the running event loop with the status, or ends the process at once when no loop runs.
void processExit(int status);
