// Opening a file as a film: what is refused and why. Free functions, any thread.
#pragma once

#include "Media/Libav.h"

#include <stop_token>

class QString;

namespace stillwick {

/// The largest picture that is read: 16384 × 8192 is 512 MiB as RGBA.
inline constexpr std::int64_t maximumPixels = std::int64_t(16384) * 8192;

/// The open container, its streams known. Only local files are read, and only by demuxers of films:
/// a play list cannot name other files. *Errors*: MediaError. *Lifetime*: `stop` outlives the
/// result.
[[nodiscard]] libav::FormatContext openContainer(const QString& path, const std::stop_token& stop);

/// The first video track that is neither a cover picture nor empty.
/// *Errors*: MediaError NoVideo, Unsupported, Protected, TooLarge.
[[nodiscard]] AVStream& chooseVideoTrack(AVFormatContext& format);

/// The decoder for a track: the one that keeps transparency where the track has any; null if none.
[[nodiscard]] const AVCodec* decoderFor(const AVStream& stream);

} // namespace stillwick
