// Pictures at rest: out of memory, and back to the bit.
#include "Stillwick/PictureStore.h"

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QTemporaryDir>

#include <atomic>
#include <thread>
#include <vector>

namespace stillwick::testing {

namespace {

constexpr QSize size(320, 180);
constexpr qint64 bytes = qint64(320) * 180 * 4;
// 192 by 108, which every picture here has beside it.
constexpr qint64 smallBytes = qint64(192) * 108 * 4;

/// A picture unlike that of any other number, hard to pack.
QImage picture(int number, QImage::Format format = QImage::Format_RGBA8888) {
    QImage image(size, format);
    std::uint32_t state = std::uint32_t(number) * 2654435761U + 1;
    for (int y = 0; y < image.height(); ++y)
        for (int i = 0; i < image.bytesPerLine(); ++i) {
            state = state * 1664525U + 1013904223U;
            image.scanLine(y)[i] = uchar(state >> 24);
        }
    image.setColorSpace(QColorSpace(QColorSpace::SRgb));
    return image;
}

bool isSame(const QImage& a, const QImage& b) {
    return a.format() == b.format() && a.size() == b.size() && a.colorSpace() == b.colorSpace() &&
           std::equal(a.constBits(), a.constBits() + a.sizeInBytes(), b.constBits());
}

class PictureStoreTest : public ::testing::Test {
protected:
    [[nodiscard]] PictureStore storeOf(qint64 memory, qint64 disk = qint64(1) << 30) const {
        return {{memory, disk}, {folder.path()}};
    }

    QTemporaryDir folder;
};

TEST_F(PictureStoreTest, APictureComesBackFromTheDiskToTheBit) {
    PictureStore store(PictureStore::Bounds{3 * bytes, 1 << 30}, {folder.path()});
    std::vector<StillPicture> kept;
    for (int i = 0; i < 20; ++i)
        kept.push_back(store.keep(picture(i)));
    store.settle();
    EXPECT_LE(store.usage().memory, 3 * bytes);
    EXPECT_GT(store.usage().disk, 10 * bytes);
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(isSame(kept[std::size_t(i)].image(), picture(i))) << i;
    store.settle();
    EXPECT_LE(store.usage().memory, 3 * bytes);
}

TEST_F(PictureStoreTest, EveryFormatOfFourBytesComesBackAsItWas) {
    auto store = storeOf(0);
    for (const auto format : {QImage::Format_RGBA8888_Premultiplied, QImage::Format_RGBA8888,
                              QImage::Format_RGB32, QImage::Format_ARGB32_Premultiplied}) {
        const StillPicture first = store.keep(picture(1, format));
        const StillPicture second = store.keep(picture(2, format));
        store.settle();
        EXPECT_TRUE(isSame(first.image(), picture(1, format)));
    }
}

TEST_F(PictureStoreTest, TheFileHasNoName) {
    auto store = storeOf(0);
    const StillPicture kept = store.keep(picture(1));
    store.settle();
    EXPECT_GT(store.usage().disk, 0);
    EXPECT_TRUE(
        QDir(folder.path())
            .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
}

TEST_F(PictureStoreTest, TheSmallPictureComesBackToo) {
    auto store = storeOf(0);
    const StillPicture kept = store.keep(picture(1));
    const StillPicture other = store.keep(picture(2));
    store.settle();
    EXPECT_EQ(kept.small(), StillPicture::smallOf(picture(1)));
}

TEST_F(PictureStoreTest, WhatIsUsedStaysInMemory) {
    auto store = storeOf(4 * (bytes + smallBytes));
    const StillPicture used = store.keep(picture(0));
    std::vector<StillPicture> others;
    for (int i = 1; i < 30; ++i) {
        others.push_back(store.keep(picture(i)));
        const QImage held = used.image();
        EXPECT_EQ(held.constBits(), used.image().constBits()) << "one bitmap, not read again";
    }
    store.settle();
    EXPECT_TRUE(isSame(used.image(), picture(0)));
}

TEST_F(PictureStoreTest, PicturesThatAreGoneTakeNothing) {
    auto store = storeOf(0);
    {
        std::vector<StillPicture> kept;
        for (int i = 0; i < 10; ++i)
            kept.push_back(store.keep(picture(i)));
        store.settle();
        EXPECT_GT(store.usage().disk, 8 * bytes);
    }
    store.settle();
    EXPECT_EQ(store.usage().memory, 0);
    EXPECT_EQ(store.usage().disk, 0);
}

TEST_F(PictureStoreTest, WhereTheDiskHasNoRoomPicturesAreMadeAgain) {
    auto store = storeOf(bytes, 2 * bytes);
    std::vector<StillPicture> kept;
    std::atomic<int> made = 0;
    for (int i = 0; i < 10; ++i)
        kept.push_back(store.keep(picture(i), [i, &made] {
            ++made;
            return picture(i);
        }));
    store.settle();
    EXPECT_LE(store.usage().disk, 2 * bytes);
    EXPECT_LE(store.usage().memory, 10 * smallBytes + 2 * bytes);
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(isSame(kept[std::size_t(i)].image(), picture(i))) << i;
    EXPECT_GE(made, 7);
}

TEST_F(PictureStoreTest, WhereNothingElseIsPossiblePicturesStayInMemory) {
    for (const QStringList& folders :
         {QStringList(), QStringList{folder.filePath(QStringLiteral("missing"))}}) {
        PictureStore store({0, 1 << 30}, folders);
        std::vector<StillPicture> kept;
        for (int i = 0; i < 5; ++i)
            kept.push_back(store.keep(picture(i)));
        store.settle();
        EXPECT_EQ(store.usage().disk, 0);
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(isSame(kept[std::size_t(i)].image(), picture(i)));
    }
}

TEST_F(PictureStoreTest, PicturesOutliveTheStore) {
    StillPicture kept;
    {
        auto store = storeOf(0);
        kept = store.keep(picture(7));
        const StillPicture other = store.keep(picture(8));
        store.settle();
    }
    EXPECT_TRUE(isSame(kept.image(), picture(7)));
}

TEST_F(PictureStoreTest, AllWindowsShareOneStore) {
    const auto first = PictureStore::shared();
    EXPECT_EQ(first, PictureStore::shared());
}

TEST_F(PictureStoreTest, ManyThreadsReadAndLetGoAtOnce) {
    auto store = storeOf(4 * bytes);
    std::vector<StillPicture> kept;
    for (int i = 0; i < 12; ++i)
        kept.push_back(store.keep(picture(i)));
    std::vector<std::jthread> threads;
    std::atomic<int> wrong = 0;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t, mine = kept]() mutable {
            for (int i = 0; i < 60; ++i) {
                const int number = (i * 7 + t * 3) % 12;
                if (!isSame(mine[std::size_t(number)].image(), picture(number)))
                    ++wrong;
                if (const StillPicture passing = store.keep(picture(100 + i)); passing.isNull())
                    ++wrong;
            }
        });
    threads.clear();
    EXPECT_EQ(wrong, 0);
    store.settle();
    EXPECT_LE(store.usage().memory, 4 * bytes);
}

} // namespace

} // namespace stillwick::testing
