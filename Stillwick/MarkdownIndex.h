// The index of a group's pictures. Pure functions, any thread.
#pragma once

#include "Media/CMTime.h"

#include <QString>
#include <QStringList>

namespace stillwick::MarkdownIndex {

/// The index's entry for one picture: a link to the file of that name, the time, and the note on
/// one quoted line of its own unless it is blank.
[[nodiscard]] QString imageLine(const QString& name, const CMTime& time, const QString& note);

/// The whole index of a group: its name, its notes as they were typed, and its pictures.
[[nodiscard]] QString markdown(const QString& name, const QString& notes,
                               const QStringList& imageLines);

} // namespace stillwick::MarkdownIndex
