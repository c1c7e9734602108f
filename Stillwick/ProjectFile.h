// A working state as a project file keeps it. Plain values, any thread.
#pragma once

#include "Stillwick/Annotation.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace stillwick {

/// Edge settings in plain numbers. *Units*: as EdgeOptions; colour components from 0 to 1.
struct EdgeDTO {
    double shrink = 0;
    double feather = 0;
    bool outline = false;
    double outlineWidth = 0;
    double r = 0;
    double g = 0;
    double b = 0;
    double a = 0;

    friend bool operator==(const EdgeDTO&, const EdgeDTO&) noexcept = default;
};

/// A capture: its exact time as a fraction of a second, what was noted and what was drawn on it.
struct FrameDTO {
    qint64 timeValue = 0;
    qint32 timeScale = 0;
    QString notes;
    std::optional<QList<Annotation>> annotations = {}; ///< in drawing order

    friend bool operator==(const FrameDTO&, const FrameDTO&) noexcept = default;
};

struct GroupDTO {
    QString name;
    QString notes;
    QList<FrameDTO> frames;

    friend bool operator==(const GroupDTO&, const GroupDTO&) noexcept = default;
};

/// The whole document. No picture is kept: the film is at hand when it is opened again, or is not.
struct ProjectFile {
    qint64 version = 1;
    std::optional<QByteArray> videoBookmark = {};
    QString videoName;
    std::optional<QByteArray> outputFolderBookmark = {};
    bool cropToSubject = false;
    QString filter; ///< a style's raw value; others are kept as they are
    EdgeDTO edge;
    qint64 activeGroupIndex = 0;
    QList<GroupDTO> groups;

    friend bool operator==(const ProjectFile&, const ProjectFile&) noexcept = default;
};

} // namespace stillwick
