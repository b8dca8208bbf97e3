#pragma once
// The display switches read at start-up. Main thread.

class AEPreferences {
public:
    static bool timelineAutoScroll;
    static bool waveFormTypeSingle;
    static bool displayVolumeKFs;
    static bool recButtonInEpisodeAssetsArea;

    static void load();
    // Writes the three booleans back; the waveform type is only read.
    static void save();
};
