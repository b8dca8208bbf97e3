#pragma once
// The two preference keys that name the working folder. "workFolder" is only read at start-up;
// "WorkingFolder" is what loadShow reads. A change of folder writes both. Main thread.

#include <QString>
#include <memory>

class AEShow;

// Start-up: AEIngest::workFolder from "workFolder"; an empty value becomes Documents + "/Zendrel/"
// and is written back. Returns the folder.
QString workFolder_readAtStartup();

// `to` is the chosen folder without a trailing "/". Writes both keys, loads that folder's show into
// zendrelShow and raises mustUpdate so the list refreshes and saves at its next tick.
void workFolder_changeTo(const QString& to);

// The working folder's show (loadShow) with the show's hesitation database beside it. Any thread.
std::shared_ptr<AEShow> workFolder_loadShow();
