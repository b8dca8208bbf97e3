#include "app/cli/CleanCommand.h"
#include "app/core/AS.h"
#include "app/windows/AppDelegate.h"
#include "foundation/Interaction.h"
#include "playback/engine/AudioEngine.h"
#include "playback/engine/SharedAudioEngine.h"
#include "ui/AppStyle.h"
#include "ui/IHImages.h"
#include "ui/WidgetInteraction.h"

#include <QApplication>
#include <memory>

int main(int argc, char** argv) {
    // Headless commands run before any window machinery exists.
    if (argc > 1 && QString::fromLocal8Bit(argv[1]) == "clean") {
        QStringList arguments;
        for (int i = 0; i < argc; ++i)
            arguments << QString::fromLocal8Bit(argv[i]);
        return runCleanCommand(arguments);
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName("Zendrel");
    QApplication::setApplicationVersion(ZENDREL_VERSION);
    QApplication::setWindowIcon(ih_icon("ZendrelAppIcon"));
    applyAppStyle(app);

    // Automated runs answer dialogs from a script (OK, "") and log them instead of waiting for a person.
    if (qEnvironmentVariable("ZENDREL_HEADLESS_DIALOGS") == "1")
        setUserInteraction(std::make_shared<ScriptedInteraction>());
    else
        setUserInteraction(std::make_shared<WidgetInteraction>());

    AS::installToolLocator();
    // The default sound device, or the null output when there is none.
    sharedAudioEngine().startDeviceOutput();

    const int status = [&app] {
        auto delegate = std::make_shared<AppDelegate>();
        delegate->applicationDidFinishLaunching();
        return app.exec();
    }();
    setUserInteraction(nullptr);
    return status;
}
