// A person at the player, by chance.
#pragma once

#include <QString>
#include <QStringList>

namespace stillwick::testing {

struct PlayerWalk {
    int operations = 0;
    int comparisons = 0; ///< of the picture shown with the picture grabbed at the current time
    QStringList faults;  ///< one sentence each
};

/// Seeks, steps, plays for a while and pauses, `operations` times in an order that `seed` decides.
/// Whenever the player has come to rest, its picture must be, bit for bit, the one that a generator
/// gives for its current time: one on a film opened for it alone or, where the film is damaged, one
/// on the film that is played.
[[nodiscard]] PlayerWalk walkThrough(const QString& path, int operations, unsigned seed,
                                     bool isDamaged);

} // namespace stillwick::testing
