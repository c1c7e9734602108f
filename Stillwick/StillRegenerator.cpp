#include "Stillwick/StillRegenerator.h"

#include "Stillwick/PictureStore.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QCoroFuture>
#include <QException>
#include <QPointer>
#include <QtConcurrentRun>

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

namespace stillwick {

namespace {

using Segmenter = std::shared_ptr<const ForegroundSegmenter>;

QCoro::Task<QImage> pictureOf(VideoFrameExtractorService extractor, CMTime time,
                              std::stop_token stop) {
    QImage picture;
    try {
        picture = co_await extractor.image(time, std::move(stop));
    } catch (const std::exception&) {
        // The capture stays without a picture.
    }
    co_return picture;
}

QCoro::Task<QImage> subjectOf(std::shared_ptr<SubjectExtractionService> service, QImage picture,
                              std::stop_token stop) {
    QImage subject;
    try {
        const std::vector<QImage> cutOuts = co_await service->extract(
            std::move(picture), ExportMode::merged, false, std::move(stop));
        if (!cutOuts.empty())
            subject = cutOuts.front();
    } catch (const std::exception&) {
        // The capture stays without a subject.
    }
    co_return subject;
}

/// The picture that was grabbed at `time`, once more. Null where the film is gone meanwhile.
PictureStore::Remake grabbedAgain(const VideoFrameExtractorService& extractor, CMTime time) {
    return [extractor, time] {
        return extractor.imageNow(time);
    };
}

/// The subject that was lifted out of `picture`, once more.
PictureStore::Remake liftedAgain(const Segmenter& segmenter, const StillPicture& picture) {
    return [segmenter, picture] {
        try {
            const SubjectExtractionService service(segmenter);
            return service.extractNow(picture.image(), ExportMode::merged, false).front();
        } catch (const std::exception&) {
            return QImage();
        }
    };
}

StillPicture keptIn(const std::shared_ptr<PictureStore>& store, const QImage& image,
                    PictureStore::Remake remake) {
    return store->keep(image, std::move(remake));
}

QCoro::Task<StillPicture> kept(std::shared_ptr<PictureStore> store, QImage image,
                               PictureStore::Remake remake) {
    if (image.isNull())
        co_return StillPicture();
    QFuture<StillPicture> future = QtConcurrent::run(keptIn, store, image, std::move(remake));
    co_return co_await future;
}

} // namespace

StillRegenerator::StillRegenerator(std::shared_ptr<SubjectExtractionService> subjectExtractor,
                                   std::shared_ptr<PictureStore> store, QObject* parent)
    : QObject(parent), m_subjectExtractor(std::move(subjectExtractor)), m_store(std::move(store)) {}

StillRegenerator::~StillRegenerator() {
    withdrawAll();
}

void StillRegenerator::regenerate(const QUuid& id, CMTime time,
                                  VideoFrameExtractorService extractor) {
    m_waiting.emplace(++m_lastOrder, Request{id, time, std::move(extractor)});
    startWhatFits();
}

void StillRegenerator::prefer(const QUuid& id) {
    m_preferred = id;
    const auto waiting = next();
    if (waiting == m_waiting.end() || waiting->second.id != id)
        return;
    // What reads the film too makes place; so does the oldest, where that is not enough.
    for (auto work = m_underWay.begin(); work != m_underWay.end();)
        work = work->second.hasPicture ? std::next(work) : putBack(work);
    if (int(m_underWay.size()) >= m_mostAtOnce)
        putBack(m_underWay.begin());
    startWhatFits();
}

std::map<StillRegenerator::Order, StillRegenerator::Work>::iterator
StillRegenerator::putBack(std::map<Order, Work>::iterator work) {
    work->second.stop.request_stop();
    m_waiting.insert({work->first, work->second.request});
    return m_underWay.erase(work);
}

bool StillRegenerator::isGrabbingPreferred() const {
    return std::any_of(m_underWay.begin(), m_underWay.end(), [this](const auto& entry) {
        return entry.second.request.id == m_preferred && !entry.second.hasPicture;
    });
}

void StillRegenerator::withdraw(const QUuid& id) {
    std::erase_if(m_waiting, [&id](const auto& entry) { return entry.second.id == id; });
    std::erase_if(m_underWay, [&id](const auto& entry) {
        const bool isMeant = entry.second.request.id == id;
        if (isMeant)
            std::stop_source(entry.second.stop).request_stop();
        return isMeant;
    });
    startWhatFits();
}

void StillRegenerator::withdrawAll() {
    m_waiting.clear();
    for (auto& [order, work] : m_underWay)
        work.stop.request_stop();
    m_underWay.clear();
}

void StillRegenerator::setMostAtOnce(int count) {
    m_mostAtOnce = count;
    startWhatFits();
}

std::map<StillRegenerator::Order, StillRegenerator::Request>::iterator StillRegenerator::next() {
    const auto preferred =
        std::find_if(m_waiting.begin(), m_waiting.end(),
                     [this](const auto& entry) { return entry.second.id == m_preferred; });
    if (preferred != m_waiting.end() || m_waiting.empty())
        return preferred;
    return std::prev(m_waiting.end());
}

void StillRegenerator::startWhatFits() {
    while (!m_waiting.empty() && int(m_underWay.size()) < m_mostAtOnce && !isGrabbingPreferred()) {
        const auto chosen = next();
        const Order order = chosen->first;
        Request request = std::move(chosen->second);
        m_waiting.erase(chosen);
        const auto& started = m_underWay.emplace(order, Work{request, {}}).first->second;
        work(order, std::move(request), started.stop.get_token());
    }
}

// After each wait the regenerator may be gone, or the request withdrawn.
QCoro::Task<> StillRegenerator::work(Order order, Request request, std::stop_token stop) {
    const QPointer<StillRegenerator> self(this);
    const auto subjectExtractor = m_subjectExtractor;
    const auto store = m_store;
    const QImage image = co_await pictureOf(request.extractor, request.time, stop);
    PictureStore::Remake grabAgain = grabbedAgain(request.extractor, request.time);
    const StillPicture picture = co_await kept(store, image, std::move(grabAgain));
    if (!self || stop.stop_requested())
        co_return;
    StillPicture subject;
    if (!picture.isNull()) {
        m_underWay.at(order).hasPicture = true;
        emit pictureReady(request.id, picture);
        if (!self || stop.stop_requested())
            co_return;
        startWhatFits();
        const QImage cutOut = co_await subjectOf(subjectExtractor, image, stop);
        PictureStore::Remake liftAgain = liftedAgain(subjectExtractor->segmenter(), picture);
        subject = co_await kept(store, cutOut, std::move(liftAgain));
        if (!self || stop.stop_requested())
            co_return;
    }
    m_underWay.erase(order);
    emit finished(request.id, subject);
    if (self)
        startWhatFits();
}

} // namespace stillwick
