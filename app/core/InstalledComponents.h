#pragma once
// On Linux the distribution's packages stand in for downloaded helpers: an id of the components store is
// made to resolve to the installed tool through a symbolic link, so "<folder>/sxh" runs SoX. Nothing that
// is already in place is touched, so a downloaded component always wins.

#include <QString>

// Puts the component `id` into `folder` when an installed package provides it; true when it resolves
// afterwards. Ids without a package stand-in are left alone.
bool provisionInstalledComponent(const QString& folder, const QString& id);
