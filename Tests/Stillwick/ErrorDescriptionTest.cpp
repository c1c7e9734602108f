#include "Stillwick/ErrorDescription.h"

#include "Desktop/DesktopError.h"
#include "Imaging/ImagingError.h"
#include "Media/MediaError.h"
#include "Stillwick/AppError.h"
#include "Vision/VisionError.h"

#include <gtest/gtest.h>

#include <QUnhandledException>

#include <new>
#include <stdexcept>

namespace stillwick {
namespace {

TEST(ErrorDescriptionTest, OurOwnErrorsSpeakForThemselves) {
    const AppError app = AppError::noSubjectFound();
    EXPECT_EQ(localizedDescription(app), app.description());
    const VisionError vision(VisionError::Category::OutOfMemory);
    EXPECT_EQ(localizedDescription(vision), vision.description());
    const ImagingError imaging(ImagingError::Category::EncodingFailed);
    EXPECT_EQ(localizedDescription(imaging), imaging.description());
    const DesktopError desktop(DesktopError::Category::DiskFull);
    EXPECT_EQ(localizedDescription(desktop), desktop.description());
    const MediaError media(MediaError::Category::NoVideo, QStringLiteral("Rien à voir."));
    EXPECT_EQ(localizedDescription(media), "Rien à voir.");
}

TEST(ErrorDescriptionTest, AnErrorThatCameThroughAFutureKeepsItsWords) {
    const QUnhandledException memory(std::make_exception_ptr(std::bad_alloc()));
    EXPECT_EQ(localizedDescription(memory), "La mémoire ne suffit pas.");
    const QUnhandledException number(std::make_exception_ptr(7));
    EXPECT_EQ(localizedDescription(number), "Une erreur imprévue est survenue.");
}

TEST(ErrorDescriptionTest, WhatNobodyForesawIsSaidInFrench) {
    EXPECT_EQ(localizedDescription(std::runtime_error("boom")),
              "Une erreur imprévue est survenue.");
    EXPECT_EQ(localizedDescription(std::bad_alloc()), "La mémoire ne suffit pas.");
}

} // namespace
} // namespace stillwick
