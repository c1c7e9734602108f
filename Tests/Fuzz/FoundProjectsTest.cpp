// Projects that once broke something, or came near to it, given to the fuzz target again.
#include "FoundInputs.h"

namespace stillwick::testing {

namespace {

TEST(FoundProjectsTest, AreReadAsAnotherReaderDoesAndWrittenToTheSame) {
    EXPECT_GT(giveAll(Found::Projects), 0);
}

} // namespace

} // namespace stillwick::testing
