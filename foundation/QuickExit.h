#pragma once
// Ends the process once its own objects are gone, without running the libraries' exit handlers:
// Qt Multimedia's PulseAudio engine stops its mainloop from an exit handler while that loop's
// thread may still be dispatching a reply, and the process then crashes after its work is done.

[[noreturn]] void exitWithoutLibraryTeardown(int status);
