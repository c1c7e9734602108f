// Between the working state's records and those of project files. Free functions on values, any
// thread.
#pragma once

#include "Stillwick/CaptureGroup.h"
#include "Stillwick/EdgeOptions.h"
#include "Stillwick/FilterStyle.h"
#include "Stillwick/ProjectFile.h"

#include <QList>

namespace stillwick {

[[nodiscard]] EdgeDTO edgeDTO(const EdgeOptions& options);
/// Components outside 0 to 1 are brought inside.
[[nodiscard]] EdgeOptions edgeOptionsOf(const EdgeDTO& edge);

[[nodiscard]] QList<GroupDTO> groupDTOs(const QList<CaptureGroup>& groups);
/// Groups and captures with new identities and no pictures; one empty group of the default name
/// where there is none.
[[nodiscard]] QList<CaptureGroup> captureGroupsOf(const QList<GroupDTO>& groups);

/// The style that the project names; none for a name that is no style's.
[[nodiscard]] FilterStyle filterOf(const ProjectFile& file);
/// The position of the active group among the groups, whatever the file says.
[[nodiscard]] qsizetype activeGroupIndexOf(const ProjectFile& file, qsizetype groupCount);

} // namespace stillwick
