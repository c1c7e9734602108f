#include "Stillwick/ProjectContent.h"

#include "Stillwick/AppState.h"

#include <algorithm>

namespace stillwick {

namespace {

FrameDTO frameDTO(const CapturedFrame& frame) {
    return {frame.time().value, frame.time().timescale, frame.notes, frame.annotations};
}

CapturedFrame frameOf(const FrameDTO& frame) {
    return {CMTime::make(frame.timeValue, frame.timeScale), {}, {}, false, frame.notes,
            frame.annotations.value_or(QList<Annotation>())};
}

} // namespace

EdgeDTO edgeDTO(const EdgeOptions& options) {
    const ColorComponents color = EdgeOptions::components(options.outlineColor);
    return {options.shrink, options.feather, options.outline, options.outlineWidth,
            color.r,        color.g,         color.b,         color.a};
}

EdgeOptions edgeOptionsOf(const EdgeDTO& edge) {
    return {edge.shrink, edge.feather, edge.outline, edge.outlineWidth,
            ColorComponents{edge.r, edge.g, edge.b, edge.a}.color()};
}

QList<GroupDTO> groupDTOs(const QList<CaptureGroup>& groups) {
    QList<GroupDTO> result;
    for (const CaptureGroup& group : groups) {
        GroupDTO dto{group.name, group.notes, {}};
        dto.frames.reserve(group.frames.size());
        for (const CapturedFrame& frame : group.frames)
            dto.frames.append(frameDTO(frame));
        result.append(dto);
    }
    return result;
}

QList<CaptureGroup> captureGroupsOf(const QList<GroupDTO>& groups) {
    QList<CaptureGroup> result;
    for (const GroupDTO& dto : groups) {
        QList<CapturedFrame> frames;
        frames.reserve(dto.frames.size());
        for (const FrameDTO& frame : dto.frames)
            frames.append(frameOf(frame));
        result.append(CaptureGroup(dto.name, dto.notes, frames));
    }
    if (result.isEmpty())
        result.append(CaptureGroup(AppState::defaultGroupName));
    return result;
}

FilterStyle filterOf(const ProjectFile& file) {
    return filterStyleFromRawValue(file.filter).value_or(FilterStyle::none);
}

qsizetype activeGroupIndexOf(const ProjectFile& file, qsizetype groupCount) {
    return qsizetype(std::clamp(file.activeGroupIndex, qint64(0), qint64(groupCount) - 1));
}

} // namespace stillwick
