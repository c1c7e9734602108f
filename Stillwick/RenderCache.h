// The styled pictures of the capture that is looked at. Main thread.
#pragma once

#include "Stillwick/FilterStyle.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QString>
#include <QUuid>

#include <stop_token>

namespace stillwick {

class AppState;

/// Renders every style once for each capture, subject and edge setting; all are replaced at once.
class RenderCache final : public QObject {
    Q_OBJECT

public:
    /// `state` outlives the cache.
    explicit RenderCache(AppState& state, QObject* parent = nullptr);
    ~RenderCache() override;

    /// The picture in that style; null while there is none.
    [[nodiscard]] QImage render(FilterStyle style) const { return m_renders.value(style); }
    /// The same, small.
    [[nodiscard]] QImage small(FilterStyle style) const { return m_small.value(style); }
    [[nodiscard]] bool isEmpty() const noexcept { return m_renders.isEmpty(); }
    /// Whether what is stored is of the key of this moment.
    [[nodiscard]] bool isUpToDate() const { return !m_isComputing && previewKey() == m_key; }
    /// What the renders are of: the capture, whether it has a subject, and the edge settings.
    [[nodiscard]] QString previewKey() const;

signals:
    void rendersChanged();

private:
    void followKey();
    void start();
    QCoro::Task<> computeRenders(QUuid id, std::stop_token stop);
    using Images = QHash<FilterStyle, QImage>;
    void store(const Images& renders, const Images& small);

    AppState& m_state;
    Images m_renders;
    Images m_small;
    QString m_key; ///< of what is stored or under way
    QUuid m_id;    ///< of the capture that it is of
    std::stop_source m_stop;
    bool m_isComputing = false;
    QElapsedTimer m_sinceStored;
    QElapsedTimer m_sinceStarted;
    qint64 m_lastTook = 0; ///< milliseconds, all styles
};

} // namespace stillwick
