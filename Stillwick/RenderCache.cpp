#include "Stillwick/RenderCache.h"

#include "Stillwick/AppState.h"

#include <QCoroFuture>
#include <QPointer>
#include <QtConcurrentRun>

#include <algorithm>
#include <vector>

namespace stillwick {

namespace {

/// While a setting changes without a pause, renders of an older one are finished so often, so that
/// something is seen to change.
constexpr qint64 mostBeforeFinishing = 150; // milliseconds
constexpr qint64 mostWithoutNews = 450;     // with what the finishing takes

} // namespace

RenderCache::RenderCache(AppState& state, QObject* parent) : QObject(parent), m_state(state) {
    connect(&state, &AppState::selectionChanged, this, &RenderCache::followKey);
    connect(&state, &AppState::groupsChanged, this, &RenderCache::followKey);
    connect(&state, &AppState::edgeOptionsChanged, this, &RenderCache::followKey);
    connect(&state, &AppState::frameChanged, this, &RenderCache::followKey);
    m_sinceStored.start();
    followKey();
}

RenderCache::~RenderCache() {
    m_stop.request_stop();
}

QString RenderCache::previewKey() const {
    const auto frame = m_state.previewFrame();
    if (!frame)
        return QStringLiteral("none");
    return frame->id().toString(QUuid::WithoutBraces).toUpper() + u'-' +
           (frame->subjectPreview.isNull() ? QStringLiteral("false") : QStringLiteral("true")) +
           u'-' + m_state.edgeOptions().signature();
}

void RenderCache::followKey() {
    if (previewKey() == m_key)
        return;
    const auto frame = m_state.previewFrame();
    const bool isSameCapture = frame && frame->id() == m_id;
    const qint64 patience =
        std::clamp(mostWithoutNews - m_lastTook, qint64(0), mostBeforeFinishing);
    if (m_isComputing && isSameCapture && m_sinceStored.elapsed() >= patience)
        return; // the end of this run begins the next
    start();
}

void RenderCache::start() {
    m_stop.request_stop();
    m_stop = {};
    m_key = previewKey();
    const auto frame = m_state.previewFrame();
    m_id = frame ? frame->id() : QUuid();
    if (!frame || frame->subjectPreview.isNull()) {
        m_isComputing = false;
        store({}, {});
        return;
    }
    m_isComputing = true;
    m_sinceStarted.start();
    computeRenders(m_id, m_stop.get_token());
}

QCoro::Task<> RenderCache::computeRenders(QUuid id, std::stop_token stop) {
    const QPointer<RenderCache> self(this);
    const auto frame = m_state.previewFrame();
    if (!frame || frame->id() != id)
        co_return;
    // All are begun at once; as many are worked on as the state has threads for it.
    std::vector<QCoro::Task<QImage>> underWay;
    for (const FilterStyle style : allFilterStyles)
        underWay.push_back(m_state.rendered(*frame, style, stop));
    Images renders;
    Images small;
    for (std::size_t i = 0; i < underWay.size(); ++i) {
        const QImage image = co_await underWay[i];
        if (!self || stop.stop_requested())
            co_return;
        if (image.isNull())
            continue;
        const FilterStyle style = allFilterStyles.at(i);
        renders.insert(style, image);
        const QFuture<QImage> scaling = QtConcurrent::run(&StillPicture::smallOf, image);
        small.insert(style, co_await scaling);
        if (!self || stop.stop_requested())
            co_return;
    }
    m_isComputing = false;
    m_lastTook = m_sinceStarted.elapsed();
    store(renders, small);
    followKey();
}

void RenderCache::store(const Images& renders, const Images& small) {
    m_sinceStored.restart();
    if (renders.isEmpty() && m_renders.isEmpty())
        return;
    m_renders = renders;
    m_small = small;
    emit rendersChanged();
}

} // namespace stillwick
