#pragma once
// Export of the open timeline through EpisodeExport: the save dialog with the expected size of each
// format and the loudness settings, the export in the background behind a loading window (phase,
// progress, time left), and the closing alert with the export's report. One export at a time; the window
// stays usable meanwhile. Main thread.

#include "render/Loudness.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AEEpisode;
class AETimeLine;
class QMessageBox;
class QWidget;

// What the save dialog asked for.
struct ExportChoice {
    LoudnessSettings loudness;
    bool sideFiles = false; // the JSON report and, for an MP3, the chapter files beside it
};

class TimelineExport {
public:
    // Expected bytes of the "mp3" and the "wav" file for the timeline.
    static std::vector<int64_t> expectedSizes(double duration, int nChannels);
    static bool running();

    // Pauses, asks where, then exports. Refused with a message while another export runs.
    static void export_pressed(const std::shared_ptr<AETimeLine>& timeline,
                               const std::shared_ptr<AEEpisode>& episode, QWidget* parent);
    // Renders the timeline (a snapshot of it as it is now) to `path` with the stored loudness settings of
    // its format unless `choice` says otherwise; `finished` gets whether a file came out, after the
    // closing alert has been put up.
    static void exportTo(const QString& path, const std::shared_ptr<AETimeLine>& timeline,
                         const std::shared_ptr<AEEpisode>& episode, QWidget* parent,
                         std::function<void(bool)> finished = {},
                         const std::optional<ExportChoice>& choice = std::nullopt);

    // The "Done" alert of the last export while it is open (tests press its buttons).
    static QMessageBox* doneAlert();
};
