// What a film holds, told by programs and code other than the ones under test.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

namespace stillwick::testing {

/// One picture of a film in presentation order.
struct ReferenceFrame {
    std::int64_t time = 0; ///< in the track's time base, from the film's zero
    QByteArray hash;       ///< MD5 of the decoded planes
};

struct ReferenceFilm {
    std::vector<ReferenceFrame> frames;
    int timeBaseNumerator = 1;
    int timeBaseDenominator = 1;
    std::int64_t lastDuration = 0; ///< of the last frame; 0 where ffprobe says nothing
    bool isDamaged = false;        ///< the linear decode met errors, or left samples undefined
    QString problem;               ///< why there is no reference, empty where there is one
};

/// The film decoded from its first packet to its last on one thread; times by ffprobe.
/// Where ffprobe gives no time to any picture, or only to some in AVI, the pictures lie on an even
/// grid; pictures before the first that has a time are left out, later ones
/// follow the frame before at the last distance; where times jump back by more than
/// a second, what follows is joined to what came before; where they step back by less, what comes
/// later hides what it overlaps.
[[nodiscard]] ReferenceFilm referenceFor(const QString& path);

/// MD5 of a frame's visible planes, without padding. `frame` is an AVFrame.
[[nodiscard]] QByteArray hashOfPlanes(const void* frame);

/// The films of a folder in order of name; empty where there is no such folder.
[[nodiscard]] std::vector<QString> filmsIn(const QString& folder);

} // namespace stillwick::testing
