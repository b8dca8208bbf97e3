#include "ui/ducking/DuckingCommands.h"

#include "timeline/model/AETimeLine.h"
#include "ui/ducking/AEAutoDuckSettingsVC.h"

#include <QAction>
#include <QWidget>

DuckingCommands::DuckingCommands(std::function<std::shared_ptr<AETimeLine>()> timeline, QWidget* window)
    : QObject(window), autoDuckSelectionAction(new QAction(tr("Auto Duck Selection"), this)),
      automaticDuckingSettingsAction(new QAction(tr("Automatic Ducking Settings…"), this)),
      timeline_(std::move(timeline)), window_(window) {
    connect(autoDuckSelectionAction, &QAction::triggered, this, &DuckingCommands::autoDuckSelection);
    connect(automaticDuckingSettingsAction, &QAction::triggered, this,
            &DuckingCommands::automaticDuckingSettings);
}

void DuckingCommands::autoDuckSelection() {
    if (const auto tl = timeline_ ? timeline_() : nullptr) {
        tl->autoDuckSelection();
        tl->draw();
    }
}

void DuckingCommands::automaticDuckingSettings() {
    AEAutoDuckSettingsVC::show(window_);
}
