// The proof that random access gives what a linear decode gives.
#pragma once

#include <QString>
#include <QStringList>

namespace stillwick::testing {

struct Proof {
    int frames = 0;     ///< in the film
    int grabs = 0;      ///< made
    int steps = 0;      ///< from one frame to the next, made
    QStringList faults; ///< one sentence each; empty where all is proved
    QString skipped;    ///< why nothing could be compared
    bool isDamaged = false;
};

/// Grabs up to `maximumFrames` frames of a film in random order, each at its first tick, in its
/// middle and at its last tick, and walks on from frame to frame in three places; compares each bit
/// for bit with the film's linear decode; then the film's limits. In damaged films only the times
/// are compared.
[[nodiscard]] Proof proveFilm(const QString& path, int maximumFrames, unsigned seed);

} // namespace stillwick::testing
