#include "Contest.h"

#include "../Report.h"
#include "../Timings.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace stillwick::benchmarks {

namespace {

enum Place : std::size_t {
    OursOpened,
    OursKept,
    Ffms2Opened,
    Ffms2Kept,
    Ffms2First,
    Ffmpeg,
    Floor
};

} // namespace

struct Contest::Entrant {
    QString name;
    std::unique_ptr<GrabMethod> method;
    int grabs = 0; ///< how many are timed
    std::vector<double> times{};
    int checked = 0;
    int wrong = 0;
};

Contest::Contest(const QString& path, QString name, const Size& size)
    : m_name(std::move(name)), m_size(size), m_clip(path) {
    for (int i = 0; i < size.firstPictures; ++i) {
        QElapsedTimer timer;
        timer.start();
        m_index = makeFfms2Index(path);
        m_indexing.push_back(milliseconds(timer));
    }
    addEntrants(path);
}

Contest::~Contest() = default;

void Contest::addEntrants(const QString& path) {
    const auto add = [this](const char* name, std::unique_ptr<GrabMethod> method, int grabs) {
        m_entrants.push_back({QString::fromUtf8(name), std::move(method), grabs});
    };
    // In the order of Place.
    add("ours, opened each time", makeOurGrabs(path, Opening::EveryTime), m_size.grabs);
    add("ours, kept open", makeOurGrabs(path, Opening::Once), m_size.grabs);
    add("FFMS2 without its index, opened each time",
        makeFfms2Grabs(path, m_clip, *m_index, Opening::EveryTime), m_size.grabs);
    add("FFMS2 without its index, kept open", makeFfms2Grabs(path, m_clip, *m_index, Opening::Once),
        m_size.grabs);
    add("FFMS2 with its index, first picture", makeFfms2FirstGrabs(path, m_clip),
        m_size.firstPictures);
    add("ffmpeg -ss", makeFfmpegProcess(path, m_clip), m_size.grabs);
    add("floor (libavcodec alone)", makeDecodeFloor(m_clip), m_size.grabs);
}

Moment Contest::randomMoment() {
    std::uniform_int_distribution<std::size_t> frames(0, m_clip.pictures().size() - 1);
    std::uniform_real_distribution<double> fractions(0, 1);
    const std::size_t frame = frames(m_random);
    return m_clip.momentIn(frame, fractions(m_random));
}

void Contest::time(Entrant& entrant, const Moment& moment) {
    QElapsedTimer timer;
    timer.start();
    entrant.method->grab(moment);
    entrant.times.push_back(milliseconds(timer));
}

void Contest::check(Entrant& entrant, const Moment& moment) {
    const auto hash = entrant.method->lastPicture();
    if (!hash)
        return;
    ++entrant.checked;
    entrant.wrong += *hash == m_clip.pictures()[moment.frame].hash ? 0 : 1;
}

void Contest::run() {
    for (int i = 0; i < m_size.grabs; ++i) {
        const Moment moment = randomMoment();
        // Whoever comes first finds the file's part unread: all take turns at it.
        for (std::size_t turn = 0; turn < m_entrants.size(); ++turn) {
            Entrant& entrant = m_entrants[(turn + std::size_t(i)) % m_entrants.size()];
            if (i >= entrant.grabs)
                continue;
            time(entrant, moment);
            check(entrant, moment);
        }
    }
    Entrant& ours = m_entrants[OursKept];
    for (int i = 0; i < m_size.checks; ++i) {
        const Moment moment = randomMoment();
        ours.method->grab(moment);
        check(ours, moment);
    }
}

void Contest::reportTo(Report& report) const {
    constexpr double high = 0.95;
    const QString milliseconds = QStringLiteral("ms");
    for (const Entrant& entrant : m_entrants) {
        report.add(m_name, entrant.name + QStringLiteral(": median"), median(entrant.times),
                   milliseconds);
        report.add(m_name, entrant.name + QStringLiteral(": 95th percentile"),
                   quantile(entrant.times, high), milliseconds);
    }
    report.add(m_name, QStringLiteral("FFMS2's index alone: median"), median(m_indexing),
               milliseconds);
    const Entrant& opened = m_entrants[OursOpened];
    const Entrant& kept = m_entrants[OursKept];
    reportRatio(report, opened, m_entrants[Ffms2Opened]);
    reportRatio(report, kept, m_entrants[Ffms2Kept]);
    reportRatio(report, opened, m_entrants[Ffms2First]);
    reportRatio(report, opened, m_entrants[Ffmpeg]);
    reportRatio(report, opened, m_entrants[Floor]);
    reportRatio(report, kept, m_entrants[Floor]);
    const QString pictures = QStringLiteral("pictures");
    report.add(m_name, QStringLiteral("grabs timed by each method"), m_size.grabs, pictures);
    for (const Place place : {OursOpened, OursKept, Ffms2Opened, Ffms2Kept, Floor}) {
        const Entrant& entrant = m_entrants[place];
        report.add(m_name, entrant.name + QStringLiteral(": pictures compared"), entrant.checked,
                   pictures);
        report.add(m_name, entrant.name + QStringLiteral(": wrong pictures"), entrant.wrong,
                   pictures);
    }
}

void Contest::reportRatio(Report& report, const Entrant& ours, const Entrant& other) const {
    const QString name = ours.name + QStringLiteral(" / ") + other.name;
    const QString unit = QStringLiteral("x");
    // Those of the fewer grabs are the first of the other's.
    std::vector<double> same = ours.times;
    same.resize(std::min(same.size(), other.times.size()));
    report.add(m_name, name + QStringLiteral(": of medians"), median(same) / median(other.times),
               unit);
    report.add(m_name, name + QStringLiteral(": median of pairs"),
               median(pairwiseRatios(same, other.times)), unit);
}

} // namespace stillwick::benchmarks
