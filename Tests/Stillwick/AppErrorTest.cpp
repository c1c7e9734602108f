#include "Stillwick/AppError.h"

#include <gtest/gtest.h>

#include <QtConcurrentRun>

#include <memory>

namespace stillwick {

namespace {

TEST(AppErrorTest, EachCaseHasItsDescription) {
    EXPECT_EQ(AppError::frameExtractionFailed(QStringLiteral("détail")).description(),
              "Échec de l'extraction de l'image : détail");
    EXPECT_EQ(AppError::exportFailed(QStringLiteral("Le disque est plein.")).description(),
              "Échec de l'export : Le disque est plein.");
    EXPECT_EQ(AppError::noVideoLoaded().description(), "Aucune vidéo chargée.");
    EXPECT_EQ(AppError::noOutputFolder().description(), "Aucun dossier de sortie sélectionné.");
    EXPECT_EQ(AppError::subjectLiftingUnavailable().description(),
              "Le détourage du sujet n'est pas disponible sur cette version de macOS (requiert "
              "macOS 14 ou plus récent).");
    EXPECT_EQ(AppError::noSubjectFound().description(), "Aucun sujet détecté dans cette image.");
}

TEST(AppErrorTest, TheDetailIsKeptAsGiven) {
    const AppError error = AppError::exportFailed(QStringLiteral("100 % plein"));
    EXPECT_EQ(error.kind(), AppError::Case::exportFailed);
    EXPECT_EQ(error.detail(), "100 % plein");
    EXPECT_TRUE(AppError::noVideoLoaded().detail().isEmpty());
}

TEST(AppErrorTest, ErrorsAreComparedByCaseAndDetail) {
    EXPECT_EQ(AppError::noVideoLoaded(), AppError::noVideoLoaded());
    EXPECT_NE(AppError::noVideoLoaded(), AppError::noOutputFolder());
    EXPECT_NE(AppError::exportFailed(QStringLiteral("a")),
              AppError::exportFailed(QStringLiteral("b")));
    EXPECT_NE(AppError::exportFailed(QStringLiteral("a")),
              AppError::frameExtractionFailed(QStringLiteral("a")));
}

TEST(AppErrorTest, WhatIsTheDescriptionInUtf8) {
    EXPECT_STREQ(AppError::noVideoLoaded().what(), "Aucune vid\xC3\xA9o charg\xC3\xA9"
                                                   "e.");
}

TEST(AppErrorTest, AnErrorComesThroughAFutureWithTypeAndDetail) {
    const QFuture<void> future =
        QtConcurrent::run([] { throw AppError::frameExtractionFailed(QStringLiteral("image 7")); });
    try {
        QFuture<void>(future).waitForFinished();
        FAIL() << "nothing was thrown";
    } catch (const AppError& error) {
        EXPECT_EQ(error, AppError::frameExtractionFailed(QStringLiteral("image 7")));
    }
}

TEST(AppErrorTest, ACloneIsTheSameError) {
    const std::unique_ptr<AppError> clone(AppError::noSubjectFound().clone());
    EXPECT_EQ(*clone, AppError::noSubjectFound());
    EXPECT_THROW(clone->raise(), AppError);
}

} // namespace

} // namespace stillwick
