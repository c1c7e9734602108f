#include "Vision/VisionError.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <memory>

namespace stillwick {
namespace {

TEST(VisionErrorTest, EachCategoryHasAFrenchSentenceOfItsOwn) {
    using Category = VisionError::Category;
    QStringList sentences;
    for (const Category category :
         {Category::EmptyPicture, Category::UnknownInstance, Category::OtherPicture,
          Category::SegmentationFailed, Category::OutOfMemory, Category::Cancelled})
        sentences.append(VisionError(category).description());
    EXPECT_EQ(sentences.removeDuplicates(), 0);
    for (const QString& sentence : sentences)
        EXPECT_TRUE(sentence.endsWith(u'.')) << sentence.toStdString();
}

TEST(VisionErrorTest, TheLibrarysTextIsKeptButNotShown) {
    const VisionError error(VisionError::Category::SegmentationFailed, QStringLiteral("(-215)"));
    EXPECT_EQ(error.libraryText(), QStringLiteral("(-215)"));
    EXPECT_FALSE(error.description().contains(QStringLiteral("215")));
    EXPECT_TRUE(QString::fromUtf8(error.what()).contains(QStringLiteral("215")));
}

TEST(VisionErrorTest, ACloneRaisesTheSameError) {
    const VisionError error(VisionError::Category::Cancelled, QStringLiteral("text"));
    const std::unique_ptr<VisionError> copy(error.clone());
    try {
        copy->raise();
        FAIL() << "nothing was thrown";
    } catch (const VisionError& raised) {
        EXPECT_EQ(raised.category(), VisionError::Category::Cancelled);
        EXPECT_EQ(raised.libraryText(), QStringLiteral("text"));
    }
}

} // namespace
} // namespace stillwick
