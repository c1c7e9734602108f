// Films that once broke something, or came near to it, given to the fuzz target again.
#include "FoundInputs.h"

namespace stillwick::testing {

namespace {

TEST(FoundFilmsTest, GiveTheirPicturesOrDocumentedErrors) {
    EXPECT_GT(giveAll(Found::Films), 0);
}

} // namespace

} // namespace stillwick::testing
