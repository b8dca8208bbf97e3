#pragma once
// Points HOME and the XDG folders at a private temporary folder before Qt reads them, so no test
// touches the real user's files.

#include <QString>

namespace testenv {
// Call first thing in main(), before the application object exists.
void isolateUserFolders();
// The private home of this test process.
QString home();
} // namespace testenv
