// OpenCV's tables of colours, made before a test looks for leaks.
#pragma once

#include "Stillwick/AppError.h"
#include "Stillwick/SubjectExtractionService.h"

#include <QImage>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace stillwick::testing {

/// OpenCV makes its tables of colours once, and leaves them where the leak checker does not find
/// them: they are made here, unseen.
inline void makeColourTables() {
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler unseen;
    QImage picture(320, 180, QImage::Format_RGBA8888);
    picture.fill(Qt::gray);
    try {
        (void)SubjectExtractionService().extractNow(picture, ExportMode::merged, false);
    } catch (const AppError&) {
        // There is no subject in it.
    }
#endif
}

} // namespace stillwick::testing
