#pragma once
// Turns the main event loop until a condition holds or a deadline passes, for tests of timers and
// of work posted to the main thread.

#include <functional>

namespace testenv {
// True when the condition held before `timeoutMs` ran out.
bool waitUntil(const std::function<bool()>& condition, int timeoutMs = 3000);
// Turns the loop for the whole of `ms`.
void pumpEventsFor(int ms);
} // namespace testenv
