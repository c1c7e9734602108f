// The background work on captures: their pictures, and the subjects in these. Main thread; the work
// itself is done on the services' own threads.
#pragma once

#include "Media/CMTime.h"
#include "Stillwick/StillPicture.h"
#include "Stillwick/VideoFrameExtractorService.h"

#include <QCoroTask>
#include <QObject>
#include <QUuid>

#include <cstdint>
#include <map>
#include <memory>
#include <stop_token>

namespace stillwick {

class PictureStore;
class SubjectExtractionService;

/// Grabs the pictures of captures from their film and lifts the subjects out of them, a few at a
/// time: the capture that is looked at first, then the newest. While the former is grabbed no
/// other is.
class StillRegenerator final : public QObject {
    Q_OBJECT

public:
    /// How many captures are worked on at a time: while nothing else needs the machine, and while a
    /// film is playing.
    static constexpr int mostAtOnce = 2;
    static constexpr int mostWhilePlaying = 1;

    StillRegenerator(std::shared_ptr<SubjectExtractionService> subjectExtractor,
                     std::shared_ptr<PictureStore> store, QObject* parent = nullptr);
    /// Withdraws what is under way.
    ~StillRegenerator() override;

    /// Begins, or puts in line, the work on a capture of the film that is in `extractor` now.
    void regenerate(const QUuid& id, CMTime time, VideoFrameExtractorService extractor);
    /// Puts the capture at the head of the line, also in place of others under way.
    void prefer(const QUuid& id);
    /// Withdraws the work on a capture: it ends soon, and is not told.
    void withdraw(const QUuid& id);
    void withdrawAll();
    void setMostAtOnce(int count);

    /// Captures in line and under way.
    [[nodiscard]] int remaining() const noexcept {
        return int(m_waiting.size() + m_underWay.size());
    }

signals:
    /// A picture has been grabbed.
    void pictureReady(const QUuid& id, const StillPicture& picture);
    /// The work on a capture has ended; `subject` is none where there is none, or no picture.
    void finished(const QUuid& id, const StillPicture& subject);

private:
    struct Request {
        QUuid id;
        CMTime time;
        VideoFrameExtractorService extractor;
    };
    struct Work {
        Request request;
        std::stop_source stop;
        bool hasPicture = false;
    };
    /// By order of request.
    using Order = std::uint64_t;

    void startWhatFits();
    /// Withdraws the work, which waits in its turn again. The work behind it.
    std::map<Order, Work>::iterator putBack(std::map<Order, Work>::iterator work);
    [[nodiscard]] bool isGrabbingPreferred() const;
    [[nodiscard]] std::map<Order, Request>::iterator next();
    QCoro::Task<> work(Order order, Request request, std::stop_token stop);

    std::shared_ptr<SubjectExtractionService> m_subjectExtractor;
    std::shared_ptr<PictureStore> m_store;
    std::map<Order, Request> m_waiting;
    std::map<Order, Work> m_underWay;
    QUuid m_preferred;
    Order m_lastOrder = 0;
    int m_mostAtOnce = mostAtOnce;
};

} // namespace stillwick
