// Opening, saving and closing the terminal names, with the lock that goes with it.
#include "include/tavPlugin.h"
#include "platform/systemCode.h"
#include "tests/source/support/nameDatabase.h"
#include "tests/source/support/raised.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/interprocess/exceptions.hpp>
#include <filesystem>
#include <stdexcept>

namespace {

using namespace nZoTavManagerPciPlugin_15_0;
using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::NameDatabase;
using testsupport::raisedBy;

class TerminalNameFiles : public testing::Test {
protected:
    void expectSoftwareFault(const testsupport::Raised& raised) {
        EXPECT_EQ(raised.code, kTavManErrSoftwareFault);
        EXPECT_TRUE(raised.hasSite("source\\cTerminalNameDb", "kTavManErrSoftwareFault"))
            << raised.record.dump();
    }

    NameDatabase db;
};

TEST_F(TerminalNameFiles, LoadMakesAndLocksTheLockFileBeforeTheNameFile) {
    EXPECT_FALSE(db.names.IsLoaded());
    db.names.Load();
    EXPECT_TRUE(db.names.IsLoaded());
    EXPECT_TRUE(db.filesystem.IsLocked());
    EXPECT_THAT(db.filesystem.calls(),
                ElementsAre("GetConfigPath", "EnsureFileExists zotavpci.loc",
                            "LockFile zotavpci.loc", "EnsureFileExists zotavpci.ini"));
    EXPECT_TRUE(std::filesystem::exists(db.filesystem.lockFile()));
    EXPECT_TRUE(std::filesystem::exists(db.filesystem.nameFile()));
}

TEST_F(TerminalNameFiles, NamesAreReadOnlyWhenTheLockIsHeld) {
    db.filesystem.setNames("");
    db.filesystem.onCall = [&](const std::string& call) {
        // What another process wrote before it let go of the lock.
        if (call == "LockFile zotavpci.loc")
            db.filesystem.setNames("[MR00:08]\nModel = Box\nTerminalName = TAV1\n");
    };
    db.names.Load();
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
}

TEST_F(TerminalNameFiles, LoadingTwiceIsASoftwareFault) {
    db.names.Load();
    expectSoftwareFault(raisedBy([&] { db.names.Load(); }));
    // The first load is as it was.
    EXPECT_TRUE(db.names.IsLoaded());
    EXPECT_TRUE(db.filesystem.IsLocked());
    EXPECT_EQ(db.filesystem.calls().size(), 4U);
}

TEST_F(TerminalNameFiles, LoadingTwiceIsRefusedAlsoWithoutTheLock) {
    db.names.Load();
    db.filesystem.UnlockFile();
    expectSoftwareFault(raisedBy([&] { db.names.Load(); }));
}

TEST_F(TerminalNameFiles, LoadingWithTheLockHeldIsASoftwareFault) {
    db.filesystem.EnsureFileExists(db.filesystem.lockFile().generic_string());
    db.filesystem.LockFile(db.filesystem.lockFile().generic_string());
    const std::size_t before = db.filesystem.calls().size();
    expectSoftwareFault(raisedBy([&] { db.names.Load(); }));
    EXPECT_EQ(db.filesystem.calls().size(), before);
    EXPECT_FALSE(db.names.IsLoaded());
    EXPECT_FALSE(std::filesystem::exists(db.filesystem.nameFile()));
}

TEST_F(TerminalNameFiles, UnknownFolderRaisesItsStatusWithoutALock) {
    db.filesystem.onCall = [](const std::string& call) {
        if (call == "GetConfigPath")
            zoerr::raise(-52003, nZOQUIL000::siteHere("test", "folder"));
    };
    EXPECT_EQ(raisedBy([&] { db.names.Load(); }).code, -52003);
    EXPECT_FALSE(db.names.IsLoaded());
    EXPECT_FALSE(db.filesystem.IsLocked());
}

TEST_F(TerminalNameFiles, LockFailureIsPassedOn) {
    db.filesystem.onCall = [](const std::string& call) {
        if (call.starts_with("LockFile"))
            throw boost::interprocess::interprocess_exception("no lock");
    };
    EXPECT_THROW(db.names.Load(), boost::interprocess::interprocess_exception);
    EXPECT_FALSE(db.names.IsLoaded());
    EXPECT_FALSE(std::filesystem::exists(db.filesystem.nameFile()));
}

TEST_F(TerminalNameFiles, NameFileThatCannotBeOpenedRaisesItsStatus) {
    std::filesystem::create_directory(db.filesystem.nameFile());
    const auto raised = raisedBy([&] { db.names.Load(); });
    EXPECT_EQ(raised.code, nZoPxiDriverTools_1_0::kIniFileErrCannotOpen);
    EXPECT_EQ(raised.member("component"), "zotavpci");
    EXPECT_FALSE(db.names.IsLoaded());
    // The lock is given back by closing, also when nothing was loaded.
    EXPECT_TRUE(db.filesystem.IsLocked());
    db.names.Close();
    EXPECT_FALSE(db.filesystem.IsLocked());
}

TEST_F(TerminalNameFiles, NamesAreOpenedForWriting) {
    db.names.Load();
    EXPECT_NO_THROW(db.store("MR00:08", "Box", "TAV1"));
}

TEST_F(TerminalNameFiles, SaveWritesTheNames) {
    db.names.Load();
    db.store("MR00:08", "Box", "TAV1");
    EXPECT_THAT(db.filesystem.names(), IsEmpty());
    db.names.Save();
    EXPECT_THAT(db.filesystem.names(),
                ElementsAre("[MR00:08]", "Model = Box", "TerminalName = TAV1"));
    EXPECT_TRUE(db.filesystem.IsLocked());
    EXPECT_TRUE(db.names.IsLoaded());
}

TEST_F(TerminalNameFiles, SavingWhatIsNotLoadedIsASoftwareFault) {
    expectSoftwareFault(raisedBy([&] { db.names.Save(); }));
}

TEST_F(TerminalNameFiles, SavingUnloadedNamesIsASoftwareFaultAlsoWithTheLock) {
    db.filesystem.EnsureFileExists(db.filesystem.lockFile().generic_string());
    db.filesystem.LockFile(db.filesystem.lockFile().generic_string());
    expectSoftwareFault(raisedBy([&] { db.names.Save(); }));
}

TEST_F(TerminalNameFiles, SavingWithoutTheLockIsASoftwareFault) {
    db.names.Load();
    db.store("MR00:08", "Box", "TAV1");
    db.filesystem.UnlockFile();
    expectSoftwareFault(raisedBy([&] { db.names.Save(); }));
    EXPECT_THAT(db.filesystem.names(), IsEmpty());
}

// Both of loading and of saving, beside file, line and component.
TEST_F(TerminalNameFiles, WhatFailsInTheSystemIsInTheRecord) {
    const auto expectFolderInItsPlace = [&](const testsupport::Raised& raised) {
        EXPECT_EQ(std::filesystem::path(raised.member("path")), db.filesystem.nameFile());
        const auto& reason = raised.record["internal_error"];
        EXPECT_EQ(reason["api"], platform::systemCodeOrigin());
        EXPECT_GT(reason["code"], 0);
        EXPECT_EQ(reason["string"], platform::systemMessage(reason["code"]));
        EXPECT_EQ(raised.record.size(), 5U);
    };
    db.names.Load();
    db.store("MR00:08", "Box", "TAV1");
    std::filesystem::remove(db.filesystem.nameFile());
    std::filesystem::create_directory(db.filesystem.nameFile());
    expectFolderInItsPlace(raisedBy([&] { db.names.Save(); }));
    db.names.Close();
    expectFolderInItsPlace(raisedBy([&] { db.names.Load(); }));
}

TEST_F(TerminalNameFiles, FailedSaveRaisesItsOwnStatus) {
    db.names.Load();
    db.store("MR00:08", "Box", "TAV1");
    std::filesystem::remove(db.filesystem.nameFile());
    std::filesystem::create_directory(db.filesystem.nameFile());
    const auto raised = raisedBy([&] { db.names.Save(); });
    EXPECT_EQ(raised.code, nZoPxiDriverTools_1_0::kIniFileErrNotStored);
    EXPECT_EQ(raised.member("component"), "zotavpci");
}

TEST_F(TerminalNameFiles, CloseSavesNothingAndGivesTheLockBack) {
    db.names.Load();
    db.store("MR00:08", "Box", "TAV1");
    db.names.Close();
    EXPECT_FALSE(db.names.IsLoaded());
    EXPECT_FALSE(db.filesystem.IsLocked());
    EXPECT_THAT(db.filesystem.names(), IsEmpty());
    // The INI file is closed, too.
    nZOQUIL000::tFixedStatus status;
    EXPECT_FALSE(db.iniFile.hasSection("MR00:08", status));
    EXPECT_EQ(status.code, nZoPxiDriverTools_1_0::kIniFileErrNotOpen);
}

TEST_F(TerminalNameFiles, ClosingTwiceOrUnopenedDoesNothing) {
    db.names.Close();
    EXPECT_TRUE(db.filesystem.calls().empty());
    db.names.Load();
    db.names.Close();
    db.names.Close();
    EXPECT_EQ(db.filesystem.calls().size(), 5U);
    EXPECT_EQ(db.filesystem.calls().back(), "UnlockFile");
}

TEST_F(TerminalNameFiles, CloseReleasesTheLockAlsoAfterAFailedSave) {
    db.names.Load();
    std::filesystem::remove(db.filesystem.nameFile());
    std::filesystem::create_directory(db.filesystem.nameFile());
    EXPECT_NE(raisedBy([&] { db.names.Save(); }).code, 0);
    EXPECT_TRUE(db.filesystem.IsLocked());
    db.names.Close();
    EXPECT_FALSE(db.filesystem.IsLocked());
}

TEST_F(TerminalNameFiles, DestructionCloses) {
    {
        cTerminalNameDb names(db.filesystem, db.iniFile);
        names.Load();
        EXPECT_TRUE(db.filesystem.IsLocked());
    }
    EXPECT_FALSE(db.filesystem.IsLocked());
    nZOQUIL000::tFixedStatus status;
    db.iniFile.hasSection("any", status);
    EXPECT_EQ(status.code, nZoPxiDriverTools_1_0::kIniFileErrNotOpen);
}

TEST_F(TerminalNameFiles, NamesCanBeLoadedAgainAndAreReadAfresh) {
    db.load("[MR00:08]\nModel = Box\nTerminalName = TAV1\n");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV2");
    db.names.Close();
    db.load("");
    EXPECT_EQ(db.nextFreeName("TAV"), "TAV1");
}

} // namespace
