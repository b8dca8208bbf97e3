#pragma once
// The rows of the episode list: a snapshot of the show's episodes taken at each reload, with the
// texts of each row worked out once then. Rows hold their episodes, so a row stays valid (if stale)
// when the show's array changes before the next reload. Main thread.

#include "project/model/EpisodeCellText.h"

#include <QAbstractListModel>
#include <QImage>
#include <memory>
#include <vector>

class AEEpisode;
class AEShow;

class EpisodeListModel : public QAbstractListModel {
public:
    enum Role {
        EpisodeIdRole = Qt::UserRole + 1,
        TitleRole,
        DurationRole,
        CreatedRole,
        ModifiedRole,
        PublishedRole,
        StatusIconRole,
        // QImage: the episode's, else the show's, else a null image.
        ImageRole,
    };

    using QAbstractListModel::QAbstractListModel;

    // The show's episodes in their current order; "Planned" or "Published" as seen at `now`.
    void reload(const std::shared_ptr<AEShow>& show, const QDateTime& now);
    std::shared_ptr<AEEpisode> episodeAt(int row) const;
    int rowOf(const QString& episodeUniqueId) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Row {
        std::shared_ptr<AEEpisode> episode;
        AEEpisodeCellText text;
    };
    std::vector<Row> rows_;
    QImage showImage_;
};
