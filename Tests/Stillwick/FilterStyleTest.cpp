#include "Stillwick/FilterStyle.h"

#include <gtest/gtest.h>

namespace stillwick {

namespace {

TEST(FilterStyleTest, AllStylesComeInTheOrderInWhichTheyAreOffered) {
    EXPECT_EQ(allFilterStyles, (std::array{FilterStyle::none, FilterStyle::sketch,
                                           FilterStyle::comic, FilterStyle::poster}));
}

TEST(FilterStyleTest, EachStyleHasItsRawValueAndName) {
    EXPECT_EQ(rawValue(FilterStyle::none), "none");
    EXPECT_EQ(rawValue(FilterStyle::sketch), "sketch");
    EXPECT_EQ(rawValue(FilterStyle::comic), "comic");
    EXPECT_EQ(rawValue(FilterStyle::poster), "poster");
    EXPECT_EQ(displayName(FilterStyle::none), "Aucun");
    EXPECT_EQ(displayName(FilterStyle::sketch), "Croquis");
    EXPECT_EQ(displayName(FilterStyle::comic), "BD");
    EXPECT_EQ(displayName(FilterStyle::poster), "Postérisation");
}

TEST(FilterStyleTest, AStyleIsFoundByItsRawValue) {
    EXPECT_EQ(filterStyleFromRawValue(u"none"), FilterStyle::none);
    EXPECT_EQ(filterStyleFromRawValue(u"sketch"), FilterStyle::sketch);
    EXPECT_EQ(filterStyleFromRawValue(u"comic"), FilterStyle::comic);
    EXPECT_EQ(filterStyleFromRawValue(u"poster"), FilterStyle::poster);
}

TEST(FilterStyleTest, AnyOtherTextYieldsNoStyle) {
    for (const QStringView text : {u"Comic", u"", u" comic", u"comics", u"BD", u"NONE"})
        EXPECT_EQ(filterStyleFromRawValue(text), std::nullopt) << text.toUtf8().constData();
}

} // namespace

} // namespace stillwick
