#include "app/windows/MarkerInspectorVC.h"

#include "foundation/Timecode.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

MarkerInspectorVC::MarkerInspectorVC(const std::shared_ptr<AEMarker>& marker,
                                     const std::shared_ptr<AETimeLine>& delegate, QWidget* parent)
    : QDialog(parent), marker(marker), aMarker(marker->duplicate()), popType(new QComboBox(this)),
      notesField(new QLineEdit(marker->notes, this)), lblInOutTC(new QLabel(this)),
      btnRemoveSelection(new QPushButton(tr("Remove Selection"), this)),
      btnDelete(new QPushButton(tr("Delete"), this)), delegate_(delegate) {
    setObjectName("MarkerInspectorVC");
    setWindowTitle(tr("Marker"));
    setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& [label, type] :
         {std::pair{tr("Marker"), AEMarkerType::normal}, std::pair{tr("Chapter"), AEMarkerType::chapter},
          std::pair{tr("Hesitation"), AEMarkerType::uhm},
          std::pair{tr("Music start"), AEMarkerType::bgmStart}})
        popType->addItem(label, static_cast<int>(type));
    popType->setCurrentIndex(popType->findData(static_cast<int>(marker->type)));
    lblInOutTC->setText(tc_getFloatTimecode(marker->inTime) + "  –  " + tc_getFloatTimecode(marker->outTime));
    btnRemoveSelection->setEnabled(marker->outTime > marker->inTime);

    auto* form = new QFormLayout;
    form->addRow(tr("Type:"), popType);
    form->addRow(tr("Notes:"), notesField);
    form->addRow(tr("In / out:"), lblInOutTC);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->addButton(btnDelete, QDialogButtonBox::DestructiveRole);
    buttons->addButton(btnRemoveSelection, QDialogButtonBox::ActionRole);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        aMarker->notes = notesField->text();
        aMarker->type = static_cast<AEMarkerType>(popType->currentData().toInt());
        finish(AEMarkerVCDoneAction::ok);
    });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { finish(AEMarkerVCDoneAction::cancel); });
    connect(btnDelete, &QPushButton::clicked, this, [this] { finish(AEMarkerVCDoneAction::remove); });
    connect(btnRemoveSelection, &QPushButton::clicked, this,
            [this] { finish(AEMarkerVCDoneAction::deleteSelection); });
}

void MarkerInspectorVC::finish(AEMarkerVCDoneAction action) {
    if (const auto timeline = delegate_.lock()) timeline->markerVCDone(aMarker, action);
    // Closing with the window's own button counts as cancel, once.
    delegate_.reset();
    close();
}
