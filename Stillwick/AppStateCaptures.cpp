// The captures and groups of the working state.
#include "Stillwick/AppError.h"
#include "Stillwick/AppState.h"
#include "Stillwick/CaptureLists.h"

#include <QCoroFuture>
#include <QPointer>
#include <QtConcurrentRun>

#include <utility>

namespace stillwick {

namespace {

QImage renderedNow(const ExtractRenderer& renderer, const StillPicture& subject, FilterStyle style,
                   const EdgeParams& edge, const std::stop_token& stop) {
    if (stop.stop_requested())
        return {};
    const QImage cutOut = subject.image();
    if (cutOut.isNull() || stop.stop_requested())
        return {};
    return renderer.render(cutOut, style, edge);
}

QCoro::Task<QImage> renderedOn(std::shared_ptr<QThreadPool> pool, ExtractRenderer renderer,
                               StillPicture subject, FilterStyle style, EdgeParams edge,
                               std::stop_token stop) {
    QFuture<QImage> future =
        QtConcurrent::run(pool.get(), renderedNow, renderer, subject, style, edge, stop);
    co_return co_await future;
}

} // namespace

void AppState::observeRegenerator() {
    connect(&m_regenerator, &StillRegenerator::pictureReady, this,
            [this](const QUuid& id, const StillPicture& picture) {
                updateFrame(id, [&picture](CapturedFrame& frame) { frame.thumbnail = picture; });
            });
    connect(&m_regenerator, &StillRegenerator::finished, this,
            [this](const QUuid& id, const StillPicture& subject) {
                updateFrame(id, [&subject](CapturedFrame& frame) {
                    frame.subjectPreview = subject;
                    frame.subjectExtracted = true;
                });
            });
    connect(this, &AppState::selectionChanged, this, &AppState::preferPreview);
    connect(this, &AppState::isPlayingChanged, this, [this] {
        m_regenerator.setMostAtOnce(m_isPlaying ? StillRegenerator::mostWhilePlaying
                                                : StillRegenerator::mostAtOnce);
    });
}

void AppState::captureCurrentFrame() {
    if (!hasVideo()) {
        setErrorMessage(AppError::noVideoLoaded().description());
        return;
    }
    const CapturedFrame frame(m_player->currentTime(), {}, {});
    m_groups[activeGroupIndex()].frames.append(frame);
    emit groupsChanged();
    setSelection({frame.id()});
    regenerateFrame(frame.id(), frame.time());
}

void AppState::regenerateFrame(const QUuid& id, const CMTime& time) {
    m_regenerator.regenerate(id, time, m_extractor);
    preferPreview();
}

void AppState::preferPreview() {
    if (const auto frame = previewFrame())
        m_regenerator.prefer(frame->id());
}

void AppState::updateFrame(const QUuid& id, const std::function<void(CapturedFrame&)>& change) {
    if (stillwick::updateFrame(m_groups, id, change))
        emit frameChanged(id);
}

void AppState::setNote(const QString& text, const QUuid& id) {
    updateFrame(id, [&text](CapturedFrame& frame) { frame.notes = text; });
}

void AppState::setAnnotations(const QList<Annotation>& annotations, const QUuid& id) {
    updateFrame(id, [&annotations](CapturedFrame& frame) { frame.annotations = annotations; });
}

void AppState::deleteFrame(const QUuid& id) {
    m_regenerator.withdraw(id);
    if (takeFrame(m_groups, id))
        emit groupsChanged();
    setSelection(m_selection - QSet<QUuid>{id});
}

void AppState::moveFrames(const QUuid& groupID, const QSet<int>& from, int to) {
    CaptureGroup* const group = groupOf(m_groups, groupID);
    if (group == nullptr)
        return;
    stillwick::moveFrames(group->frames, from, to);
    emit groupsChanged();
}

void AppState::moveFrame(const QUuid& id, const QUuid& groupID) {
    if (groupOf(std::as_const(m_groups), groupID) == nullptr)
        return;
    if (const auto frame = takeFrame(m_groups, id)) {
        groupOf(m_groups, groupID)->frames.append(*frame);
        emit groupsChanged();
    }
}

void AppState::addGroup() {
    m_groups.append(CaptureGroup(QStringLiteral("Groupe %1").arg(m_groups.size() + 1)));
    emit groupsChanged();
    setActiveGroup(m_groups.back().id());
}

void AppState::setActiveGroup(const QUuid& id) {
    set(m_activeGroupID, id, &AppState::activeGroupIDChanged);
}

void AppState::deleteGroup(const QUuid& id) {
    const CaptureGroup* const group = groupOf(std::as_const(m_groups), id);
    if (m_groups.size() < 2 || group == nullptr)
        return;
    QSet<QUuid> selection = m_selection;
    for (const CapturedFrame& frame : group->frames) {
        m_regenerator.withdraw(frame.id());
        selection.remove(frame.id());
    }
    m_groups.removeIf([&id](const CaptureGroup& each) { return each.id() == id; });
    emit groupsChanged();
    setSelection(selection);
    if (m_activeGroupID == id)
        setActiveGroup(m_groups.front().id());
}

void AppState::setGroupName(const QString& name, const QUuid& id) {
    CaptureGroup* const group = groupOf(m_groups, id);
    if (group == nullptr || group->name == name)
        return;
    group->name = name;
    emit groupChanged(id);
}

void AppState::setGroupNotes(const QString& notes, const QUuid& id) {
    CaptureGroup* const group = groupOf(m_groups, id);
    if (group == nullptr || group->notes == notes)
        return;
    group->notes = notes;
    emit groupChanged(id);
}

void AppState::replaceGroups(QList<CaptureGroup> groups) {
    m_regenerator.withdrawAll();
    m_groups = std::move(groups);
    m_activeGroupID = m_groups.front().id();
    emit groupsChanged();
    emit activeGroupIDChanged();
    setSelection({});
}

void AppState::setSelection(const QSet<QUuid>& ids) {
    set(m_selection, ids, &AppState::selectionChanged);
}

void AppState::setSelectedFilter(FilterStyle style) {
    set(m_selectedFilter, style, &AppState::selectedFilterChanged);
}

void AppState::setEdgeOptions(const EdgeOptions& options) {
    set(m_edgeOptions, options, &AppState::edgeOptionsChanged);
}

qsizetype AppState::activeGroupIndex() const {
    for (qsizetype i = 0; i < m_groups.size(); ++i)
        if (m_groups[i].id() == m_activeGroupID)
            return i;
    return 0;
}

QList<CapturedFrame> AppState::allFrames() const {
    QList<CapturedFrame> frames;
    frames.reserve(frameCount());
    for (const CaptureGroup& group : m_groups)
        frames.append(group.frames);
    return frames;
}

int AppState::frameCount() const {
    return frameCountOf(m_groups);
}

std::optional<CapturedFrame> AppState::previewFrame() const {
    const CapturedFrame* frame =
        m_selection.isEmpty() ? nullptr : frameOf(m_groups, *m_selection.begin());
    if (frame == nullptr)
        frame = lastFrameOf(m_groups);
    return frame == nullptr ? std::nullopt : std::optional(*frame);
}

QCoro::Task<QImage> AppState::rendered(const CapturedFrame& frame, FilterStyle style,
                                       std::stop_token stop) const {
    return renderedOn(m_renderPool, m_renderer, frame.subjectPreview, style, m_edgeOptions.params(),
                      std::move(stop));
}

} // namespace stillwick
