#pragma once
// Export of the open timeline: the save dialog with the expected size of each format, the render in
// the background behind a loading window (phase, progress, time left), the MP3's tags, picture and
// chapters from the episode, and the closing alert. One export at a time; the window stays usable
// meanwhile. Main thread.

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class AEEpisode;
class AETimeLine;
class QMessageBox;
class QWidget;

class TimelineExport {
public:
    // Expected bytes of the "mp3" and the "wav" file for the timeline.
    static std::vector<int64_t> expectedSizes(double duration, int nChannels);
    static bool running();

    // Pauses, asks where, then exports. Refused with a message while another export runs.
    static void export_pressed(const std::shared_ptr<AETimeLine>& timeline,
                               const std::shared_ptr<AEEpisode>& episode, QWidget* parent);
    // Renders the timeline (a snapshot of it as it is now) to `path`; `finished` gets whether a file
    // came out, after the closing alert has been put up.
    static void exportTo(const QString& path, const std::shared_ptr<AETimeLine>& timeline,
                         const std::shared_ptr<AEEpisode>& episode, QWidget* parent,
                         std::function<void(bool)> finished = {});

    // The "Done" alert of the last export while it is open (tests press its buttons).
    static QMessageBox* doneAlert();
};
