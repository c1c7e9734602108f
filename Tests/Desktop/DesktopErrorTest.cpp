#include "Desktop/DesktopError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

namespace stillwick {

namespace {

TEST(DesktopErrorTest, TheWordsOfTheSystemAreKept) {
    const DesktopError error = DesktopError::fromErrno(ENOSPC);
    EXPECT_EQ(error.category(), DesktopError::Category::DiskFull);
    EXPECT_EQ(error.libraryText(), "No space left on device");
    EXPECT_THAT(error.what(), testing::StartsWith("Le disque est plein."));
}

TEST(DesktopErrorTest, AnUnforeseenErrorHasAGeneralSentence) {
    EXPECT_EQ(DesktopError::fromErrno(EDOM).description(),
              "Le fichier n'a pas pu être enregistré.");
}

TEST(DesktopErrorTest, ACloneIsTheSameError) {
    const std::unique_ptr<DesktopError> clone(DesktopError::fromErrno(EIO).clone());
    EXPECT_EQ(clone->category(), DesktopError::Category::DiskFailed);
    EXPECT_THROW(clone->raise(), DesktopError);
}

} // namespace

} // namespace stillwick
