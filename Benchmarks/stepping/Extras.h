// What else is measured of a player: memory, scrolling, dragging, playing, and where time goes.
// Free functions, main thread.
#pragma once

#include <QString>

#include <vector>

namespace stillwick::benchmarks {

class OurSession;
class Report;

/// What the frame cache holds, and the whole process.
void addHeldMemory(Report& report, const QString& film, OurSession& session);
/// Holding the arrow key: thirty steps back a second from the film's end to its start, and how many
/// of them came later than one frame's time.
void addScroll(Report& report, const QString& film, OurSession& session, double rate,
               double seconds);
/// A slider drawn over the whole film in three seconds: pictures a second, and how long the exact
/// one takes after the release.
void addDrag(Report& report, const QString& film, OurSession& session, double seconds);
/// Ten seconds of playing: the share of pictures left out.
void addPlaying(Report& report, const QString& film, OurSession& session, double rate);
/// What an exact seek is made of: decoding from the key picture, converting.
void addBreakdown(Report& report, const QString& film, const QString& path, double seconds,
                  int count);
/// What no exact seek can beat: libavcodec alone from the key picture to the picture, at the same
/// places as the exact seeks whose median is `ours`.
void addSeekFloor(Report& report, const QString& film, const QString& path, double rate,
                  double seconds, int count, double ours);
/// Each sample is FFMS2's frame n - 1 after its frame n, converted to RGBA, in milliseconds.
[[nodiscard]] std::vector<double> stepBackWithFfms2(const QString& path, double rate,
                                                    double seconds, int count);

} // namespace stillwick::benchmarks
