#pragma once
// Points HOME and the XDG folders at a private temporary folder before Qt reads them, so no test
// touches the real user's files.

#include <QString>

namespace testenv {
// Call first thing in main(), before the application object exists.
void isolateUserFolders();
// The private home of this test process.
QString home();
// The working folder the asset store was fixed to when the process started (the store keeps its
// first folder for the life of the process). Ends with "/".
QString storeWorkFolder();
// Points the ingest globals back at storeWorkFolder().
void useStoreWorkFolder();
} // namespace testenv
