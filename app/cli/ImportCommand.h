#pragma once
// `zendrel import --work-folder DIR FILE.zendepisode`: the episode of a bundle into a working folder's
// show, with no window. 0 once the show is saved with it; otherwise one line on stderr and the show
// file untouched.

#include <QStringList>

int runImportCommand(const QStringList& arguments);
