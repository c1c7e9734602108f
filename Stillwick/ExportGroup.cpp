#include "Stillwick/ExportGroup.h"

#include <utility>

namespace stillwick {

ExportGroup::ExportGroup(QString name, QString notes, QList<CapturedFrame> frames,
                         Placement placement)
    : m_name(std::move(name)), m_notes(std::move(notes)), m_frames(std::move(frames)),
      m_placement(placement) {}

} // namespace stillwick
