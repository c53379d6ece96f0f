// A folder where the list of names should be: here a system lets it be opened, and fails to read
// it.
#include "tavctl/bus/pciNames.h"
#include "tavctl/words/failure.h"
#include "tests/support/fileFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(PciNames, FolderInPlaceOfTheFileIsAFailure) {
    const testsupport::FileFolder folder;
    EXPECT_THROW(tavctl::PciNames::load(folder.file("")), tavctl::FailureException);
}

} // namespace
