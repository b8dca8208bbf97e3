#include "project/panels/EpisodeListModel.h"

#include "project/model/AEEpisode.h"
#include "project/model/AEShow.h"

void EpisodeListModel::reload(const std::shared_ptr<AEShow>& show, const QDateTime& now) {
    beginResetModel();
    rows_.clear();
    showImage_ = show ? show->image : QImage();
    if (show) {
        rows_.reserve(show->episodes.size());
        for (const auto& episode : show->episodes)
            if (episode) rows_.push_back({episode, episodeCell_text(*episode, now)});
    }
    endResetModel();
}

std::shared_ptr<AEEpisode> EpisodeListModel::episodeAt(int row) const {
    if (row < 0 || row >= static_cast<int>(rows_.size())) return nullptr;
    return rows_[static_cast<size_t>(row)].episode;
}

int EpisodeListModel::rowOf(const QString& episodeUniqueId) const {
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].episode->id == episodeUniqueId) return static_cast<int>(i);
    return -1;
}

int EpisodeListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant EpisodeListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(rows_.size())) return {};
    const Row& row = rows_[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
    case TitleRole:
        return row.text.title;
    case Qt::ToolTipRole:
        return row.text.episodeId + " — " + row.text.title;
    case EpisodeIdRole:
        return row.text.episodeId;
    case DurationRole:
        return row.text.duration;
    case CreatedRole:
        return row.text.created;
    case ModifiedRole:
        return row.text.modified;
    case PublishedRole:
        return row.text.published;
    case StatusIconRole:
        return row.text.statusIcon;
    case ImageRole:
        return row.episode->image.isNull() ? showImage_ : row.episode->image;
    default:
        return {};
    }
}
