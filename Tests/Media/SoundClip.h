// Films with sound, made by the ffmpeg program, and what that program says of them.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace stillwick::testing {

/// What a program writes; fails the test where the program fails.
[[nodiscard]] QByteArray outputOf(const QString& program, const QStringList& arguments);

/// Runs the ffmpeg program; fails the test where it fails. `arguments` are separated by blanks,
/// which none of them holds.
void ffmpeg(const QString& arguments);

/// The first sound track decoded from its first packet to its last: interleaved samples.
[[nodiscard]] std::vector<float> linearDecode(const QString& path, int sampleRate, int channels);

/// The time of the first frame of the track `selector` ("a:0", "v:0"), in seconds of the container.
[[nodiscard]] double firstFrameTime(const QString& path, const QString& selector);

} // namespace stillwick::testing
