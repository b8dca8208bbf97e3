#pragma once
// The two menu commands of ducking, as actions the timeline window puts in its menus: "Auto Duck
// Selection" dips the selected range of the item under it, "Automatic Ducking Settings…" opens the
// one settings window. The window tells which timeline is in use through `timeline`.

#include <QObject>
#include <functional>
#include <memory>

class AETimeLine;
class QAction;

class DuckingCommands : public QObject {
    Q_OBJECT
public:
    DuckingCommands(std::function<std::shared_ptr<AETimeLine>()> timeline, QWidget* window);

    QAction* autoDuckSelectionAction;
    QAction* automaticDuckingSettingsAction;

    // The commands themselves, for callers without a menu.
    void autoDuckSelection();
    void automaticDuckingSettings();

private:
    std::function<std::shared_ptr<AETimeLine>()> timeline_;
    QWidget* window_;
};
