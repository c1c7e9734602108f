// Saving and opening the working state.
#include "Stillwick/AppState.h"
#include "Stillwick/ErrorDescription.h"
#include "Stillwick/ProjectContent.h"
#include "Stillwick/ProjectStore.h"

#include <optional>

namespace stillwick {

namespace {

std::optional<QByteArray> bookmarkOf(const QUrl& url) {
    return url.isEmpty() ? std::nullopt : ProjectStore::makeBookmark(url);
}

std::optional<QUrl> resolved(const std::optional<QByteArray>& bookmark) {
    return bookmark ? ProjectStore::resolveBookmark(*bookmark) : std::nullopt;
}

} // namespace

void AppState::saveProject(const QUrl& url) {
    try {
        ProjectStore::save(makeProjectFile(), url);
    } catch (const std::exception& error) {
        setErrorMessage(savingFailed(error));
        return;
    }
    set(m_projectURL, url, &AppState::projectURLChanged);
}

void AppState::openProject(const QUrl& url) {
    ProjectFile file;
    try {
        file = ProjectStore::load(url);
    } catch (const std::exception& error) {
        setErrorMessage(openingFailed(error));
        return;
    }
    apply(file);
    set(m_projectURL, url, &AppState::projectURLChanged);
}

ProjectFile AppState::makeProjectFile() const {
    ProjectFile file;
    file.videoBookmark = bookmarkOf(m_videoURL);
    file.videoName = videoName();
    file.outputFolderBookmark = bookmarkOf(m_outputFolder);
    file.cropToSubject = m_cropToSubject;
    file.filter = rawValue(m_selectedFilter);
    file.edge = edgeDTO(m_edgeOptions);
    file.activeGroupIndex = activeGroupIndex();
    file.groups = groupDTOs(m_groups);
    return file;
}

void AppState::apply(const ProjectFile& file) {
    setCropToSubject(file.cropToSubject);
    setSelectedFilter(filterOf(file));
    setEdgeOptions(edgeOptionsOf(file.edge));
    replaceGroups(captureGroupsOf(file.groups));
    setActiveGroup(m_groups[activeGroupIndexOf(file, m_groups.size())].id());
    m_failures.clear();
    emit failuresChanged();
    if (const auto folder = resolved(file.outputFolderBookmark))
        setOutputFolder(*folder);
    const auto video = resolved(file.videoBookmark);
    if (!video) {
        setErrorMessage(videoMissingMessage);
        return;
    }
    prepareVideo(*video);
    for (const CaptureGroup& group : std::as_const(m_groups))
        for (const CapturedFrame& frame : group.frames)
            m_regenerator.regenerate(frame.id(), frame.time(), m_extractor);
    preferPreview();
}

} // namespace stillwick
