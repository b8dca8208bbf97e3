#pragma once
// The menu command that removes the external components and quits, so the next start fetches them anew.

// Asks first; on OK removes the components folder and ends the process with status 0.
void mnuRemoveExternalcomponents();
