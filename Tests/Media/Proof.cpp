#include "Proof.h"

#include "Reference.h"

#include "Media/FrameSource.h"
#include "Media/MediaError.h"

#include <algorithm>
#include <numeric>
#include <random>

namespace stillwick::testing {

namespace {

constexpr int maximumFaults = 5;

class Prover {
public:
    Prover(const QString& path, const ReferenceFilm& film, Proof& proof)
        : m_film(film), m_proof(proof), m_source(path, {}) {}

    void grab(std::size_t index, std::int64_t tick) {
        ++m_proof.grabs;
        const CMTime time =
            CMTime::make(tick * m_film.timeBaseNumerator, m_film.timeBaseDenominator);
        try {
            const SharedFrame frame = m_source.frameAt(time, {}, {});
            const CMTime expected = CMTime::make(
                m_film.frames[index].time * m_film.timeBaseNumerator, m_film.timeBaseDenominator);
            if (!(m_source.filmTime(*frame) == expected))
                fault(QStringLiteral("frame %1 (time %2) asked at %3: got time %4")
                          .arg(index)
                          .arg(expected.value)
                          .arg(tick)
                          .arg(m_source.filmTime(*frame).value));
            else if (!m_film.isDamaged &&
                     hashOfPlanes(&frame->avFrame()) != m_film.frames[index].hash)
                fault(QStringLiteral("frame %1 (time %2) asked at %3: other pixels")
                          .arg(index)
                          .arg(expected.value)
                          .arg(tick));
        } catch (const MediaError& error) {
            fault(QStringLiteral("frame %1 asked at %2: %3")
                      .arg(index)
                      .arg(tick)
                      .arg(QString::fromUtf8(error.what())));
        }
    }

    /// From one picture on to the next ones: none left out, none twice, an end after the last.
    void walk(const std::vector<std::size_t>& shown, std::size_t from, std::size_t count) {
        m_source.setPairHandler(
            [this](const SharedFrame& frame, const SharedFrame& next) { pair(*frame, *next); }, 12);
        const std::int64_t start = std::max<std::int64_t>(0, m_film.frames[shown[from]].time);
        try {
            (void)m_source.frameAt(timeOf(start), {}, {});
            for (std::size_t i = from + 1; i <= shown.size() && i <= from + count; ++i) {
                const SharedFrame frame = m_source.frameAfter(FrameSource::Damage::Retry, {});
                ++m_proof.steps;
                if (!frame) {
                    if (i < shown.size() && !m_film.isDamaged)
                        fault(QStringLiteral("the walk ends before frame %1").arg(shown[i]));
                    break;
                }
                if (i == shown.size())
                    fault(QStringLiteral("the walk goes on after the last frame"));
                else if (!m_film.isDamaged)
                    compare(*frame, shown[i], QStringLiteral("the walk from %1").arg(shown[from]));
            }
        } catch (const MediaError& error) {
            fault(QStringLiteral("walk: ") + QString::fromUtf8(error.what()));
        }
        m_source.setPairHandler({}, 0);
    }

    /// The end belongs to the last picture, and nothing comes after it.
    void end(std::size_t last) {
        const CMTime end = m_source.endTime({});
        const SharedFrame frame = m_source.frameAt(end, {}, {});
        if (!(m_source.filmTime(*frame) == timeOf(m_film.frames[last].time)) && !m_film.isDamaged)
            fault(QStringLiteral("the end %1/%2 does not belong to the last frame")
                      .arg(end.value)
                      .arg(end.timescale));
        refuses(end + CMTime::make(1, m_film.timeBaseDenominator));
    }

    void refuses(const CMTime& time) {
        try {
            const SharedFrame frame = m_source.frameAt(time, {}, {});
            fault(QStringLiteral("time %1/%2 is outside but gave a picture (time %3)")
                      .arg(time.value)
                      .arg(time.timescale)
                      .arg(m_source.filmTime(*frame).value));
        } catch (const MediaError& error) {
            if (error.category() != MediaError::Category::TimeOutOfRange)
                fault(QString::fromUtf8(error.what()));
        }
    }

private:
    [[nodiscard]] CMTime timeOf(std::int64_t tick) const {
        return CMTime::make(tick * m_film.timeBaseNumerator, m_film.timeBaseDenominator);
    }

    void compare(const VideoFrame& frame, std::size_t index, const QString& where) {
        if (!(m_source.filmTime(frame) == timeOf(m_film.frames[index].time)))
            fault(QStringLiteral("%1: frame %2 expected at %3, got %4")
                      .arg(where)
                      .arg(index)
                      .arg(m_film.frames[index].time)
                      .arg(m_source.filmTime(frame).value));
        else if (hashOfPlanes(&frame.avFrame()) != m_film.frames[index].hash)
            fault(QStringLiteral("%1: frame %2 has other pixels").arg(where).arg(index));
    }

    /// Two pictures handed out as neighbours have none between them.
    void pair(const VideoFrame& frame, const VideoFrame& next) {
        if (m_film.isDamaged)
            return;
        const CMTime from = m_source.filmTime(frame);
        const CMTime to = m_source.filmTime(next);
        for (const ReferenceFrame& other : m_film.frames) {
            const CMTime time = timeOf(other.time);
            if (time > from && time < to)
                fault(QStringLiteral("frame at %1 lies between two neighbours").arg(other.time));
        }
    }

    void fault(const QString& text) {
        if (m_proof.faults.size() < maximumFaults)
            m_proof.faults.append(text);
        else if (m_proof.faults.size() == maximumFaults)
            m_proof.faults.append(QStringLiteral("…"));
    }

    const ReferenceFilm& m_film;
    Proof& m_proof;
    FrameSource m_source;
};

std::vector<std::size_t> shuffled(std::size_t count, unsigned seed) {
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    return order;
}

} // namespace

Proof proveFilm(const QString& path, int maximumFrames, unsigned seed) {
    Proof proof;
    const ReferenceFilm film = referenceFor(path);
    proof.frames = int(film.frames.size());
    proof.isDamaged = film.isDamaged;
    proof.skipped = film.problem;
    if (film.frames.empty())
        return proof;
    try {
        Prover prover(path, film, proof);
        std::mt19937 random(seed);
        auto order = shuffled(film.frames.size(), seed);
        order.resize(std::min(order.size(), std::size_t(maximumFrames)));
        order.push_back(film.frames.size() - 1); // the ends, whatever chance says
        order.push_back(0);
        for (const std::size_t i : order) {
            const std::int64_t start = film.frames[i].time;
            const bool isLast = i + 1 == film.frames.size();
            const std::int64_t length = isLast ? std::max<std::int64_t>(film.lastDuration, 1)
                                               : film.frames[i + 1].time - start;
            if (length <= 0 || start + length <= 0)
                continue; // hidden behind a frame of the same time, or before the film's zero
            if (start >= 0)
                prover.grab(i, start);
            prover.grab(i, std::max<std::int64_t>(0, start + length / 2));
            if (random() % 4 == 0)
                prover.grab(i, std::max<std::int64_t>(0, start + length - 1));
            if (isLast)
                prover.grab(i, start + film.lastDuration);
        }
        std::vector<std::size_t> shown;
        for (std::size_t i = 0; i < film.frames.size(); ++i) {
            const bool isLast = i + 1 == film.frames.size();
            const std::int64_t next = isLast ? film.frames[i].time + 1 : film.frames[i + 1].time;
            if (next > film.frames[i].time && (next > 0 || isLast))
                shown.push_back(i);
        }
        const std::size_t stretch = std::min(shown.size(), std::size_t(maximumFrames));
        prover.walk(shown, 0, stretch);
        prover.walk(shown, shown.size() - stretch, stretch);
        prover.walk(shown, random() % shown.size(), stretch);
        prover.end(shown.back());
        const std::int64_t second = film.timeBaseDenominator / film.timeBaseNumerator + 1;
        const std::int64_t end = film.frames.back().time + film.lastDuration;
        prover.refuses(
            CMTime::make((end + 20 * second) * film.timeBaseNumerator, film.timeBaseDenominator));
        prover.refuses(CMTime::make(-1, 1000));
        prover.refuses(CMTime::indefinite());
        prover.grab(film.frames.size() - 1, film.frames.back().time);
    } catch (const MediaError& error) {
        proof.faults.append(QString::fromUtf8(error.what()));
    }
    return proof;
}

} // namespace stillwick::testing
