#pragma once
// Start-up steps of the application shell that touch the external components.

class Boot {
public:
    // Deletes the components folder with everything in it; links into installed packages are removed,
    // never followed. The next start puts everything back.
    static void removeZendrelUtils();
};
