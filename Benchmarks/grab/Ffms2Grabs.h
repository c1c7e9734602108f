// Grabbing through FFMS2, which needs an index of the whole file first. One thread at a time.
#pragma once

#include "GrabMethod.h"

#include <ffms.h>

class QString;

namespace stillwick::benchmarks {

struct Ffms2Deleter {
    void operator()(FFMS_Index* index) const noexcept { FFMS_DestroyIndex(index); }
    void operator()(FFMS_VideoSource* source) const noexcept { FFMS_DestroyVideoSource(source); }
};
using Ffms2Index = std::unique_ptr<FFMS_Index, Ffms2Deleter>;

/// Reads the whole file. *Errors*: std::runtime_error.
[[nodiscard]] Ffms2Index makeFfms2Index(const QString& path);

/// To RGBA by FFMS2 itself. *Lifetime*: `clip` and `index` outlive the method.
[[nodiscard]] std::unique_ptr<GrabMethod> makeFfms2Grabs(const QString& path, const Clip& clip,
                                                         FFMS_Index& index, Opening opening);
/// The same, an index being made anew for each picture.
[[nodiscard]] std::unique_ptr<GrabMethod> makeFfms2FirstGrabs(const QString& path,
                                                              const Clip& clip);

} // namespace stillwick::benchmarks
