#include "Stillwick/ExportGroup.h"

#include <utility>

namespace stillwick {

ExportGroup::ExportGroup(QString name, QString notes, QList<CapturedFrame> frames,
                         Placement placement)
    : m_name(std::move(name)), m_notes(std::move(notes)), m_frames(std::move(frames)),
      m_placement(placement) {}

QList<ExportGroup> exportGroupsOf(const QList<CaptureGroup>& groups) {
    const auto placement = groups.size() > 1 ? ExportGroup::Placement::subfolder
                                             : ExportGroup::Placement::outputFolder;
    QList<ExportGroup> snapshot;
    for (const CaptureGroup& group : groups)
        snapshot.append(ExportGroup(group.name, group.notes, group.frames, placement));
    return snapshot;
}

} // namespace stillwick
