// The ways of grabbing, timed in turn on one clip. One thread at a time.
#pragma once

#include "Ffms2Grabs.h"

#include <QString>

#include <random>
#include <vector>

namespace stillwick::benchmarks {

class Report;

/// Grabs the same random times by every method, one grab after the other, so that whatever else the
/// machine does hits all of them alike; then compares what came out with the linear decode.
class Contest final {
public:
    struct Size {
        int grabs = 0;         ///< timed, by each method
        int checks = 0;        ///< of our pictures, with a file kept open, over and above these
        int firstPictures = 0; ///< with an index made for each
    };

    /// *Errors*: std::exception.
    Contest(const QString& path, QString name, const Size& size);
    ~Contest();
    Contest(const Contest&) = delete;
    Contest& operator=(const Contest&) = delete;

    /// *Errors*: std::exception.
    void run();
    void reportTo(Report& report) const;

private:
    struct Entrant;

    void addEntrants(const QString& path);
    [[nodiscard]] Moment randomMoment();
    void time(Entrant& entrant, const Moment& moment);
    void check(Entrant& entrant, const Moment& moment);
    void reportRatio(Report& report, const Entrant& ours, const Entrant& other) const;

    QString m_name;
    Size m_size;
    Clip m_clip;
    std::vector<double> m_indexing; ///< in milliseconds
    Ffms2Index m_index;             // outlives the entrants
    std::vector<Entrant> m_entrants;
    std::mt19937 m_random{1};
};

} // namespace stillwick::benchmarks
