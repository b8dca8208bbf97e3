#include "app/cli/CommandLine.h"
#include "app/core/AS.h"
#include "app/core/SingleInstance.h"
#include "app/windows/AppDelegate.h"
#include "app/windows/AppWindow.h"
#include "app/windows/TimelineViewController.h"
#include "foundation/Interaction.h"
#include "foundation/Prefs.h"
#include "foundation/QuickExit.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "ui/AppStyle.h"
#include "ui/IHImages.h"
#include "ui/WidgetInteraction.h"

#include <QApplication>
#include <QFileInfo>
#include <cstdio>
#include <memory>

namespace {
// "zendrel FILE.zendepisode", as the desktop opens a bundle.
QStringList bundleArguments() {
    QStringList bundles;
    for (const QString& argument : QApplication::arguments().mid(1))
        if (argument.endsWith(".zendepisode", Qt::CaseInsensitive))
            bundles << QFileInfo(argument).absoluteFilePath();
    return bundles;
}

int runWindowed(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Zendrel");
    QApplication::setApplicationVersion(ZENDREL_VERSION);
    SingleInstance instance;
    if (!instance.becomePrimary()) {
        if (instance.handOff(bundleArguments())) return 0;
        std::fprintf(stderr, "zendrel: Zendrel is running but did not take the request\n");
        return 1;
    }
    QApplication::setWindowIcon(ih_icon("ZendrelAppIcon"));
    applyAppStyle(app);

    // Automated runs answer dialogs from a script (OK, "") and log them instead of waiting for a person.
    if (qEnvironmentVariable("ZENDREL_HEADLESS_DIALOGS") == "1")
        setUserInteraction(std::make_shared<ScriptedInteraction>());
    else
        setUserInteraction(std::make_shared<WidgetInteraction>());

    AS::installToolLocator();
    // The default sound device, or the null output when there is none.
    sharedAudioEngine().startDeviceOutput(prefs_getValueString("AEPreferences.outputDevice", "").toUtf8());

    const int status = [&app, &instance] {
        auto delegate = std::make_shared<AppDelegate>();
        delegate->applicationDidFinishLaunching();
        for (const QString& bundle : bundleArguments())
            delegate->openBundleWhenReady(bundle);
        // A later launch hands its bundles here and brings the window forward.
        instance.received = [weak = std::weak_ptr<AppDelegate>(delegate)](const QStringList& bundles) {
            const auto self = weak.lock();
            if (!self) return;
            for (const QString& bundle : bundles)
                self->openBundleWhenReady(bundle);
            if (AppWindow* window = self->window()) {
                window->raise();
                window->activateWindow();
            }
        };
        return app.exec();
    }();
    setUserInteraction(nullptr);
    return status;
}
} // namespace

int main(int argc, char** argv) {
    // A command runs without a window or a display.
    if (cli_isCommandLine(argc, argv)) return cli_run(argc, argv);
    exitWithoutLibraryTeardown(runWindowed(argc, argv));
}
