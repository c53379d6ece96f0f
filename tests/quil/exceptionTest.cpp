// Raising, catching and what becomes of the record on the way.
#include "quil/memberWriter.h"
#include "quil/setError.h"
#include "quil/zoerr.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace {

using namespace nZOQUIL000;

constexpr tErrorSite kSomeSite{"source\\x", 1, "zotavpci", "kSome"};
constexpr const char* kRecord =
    R"({"error_constant":"kSome","file":"source\\x","line":1,"component":"zotavpci"})";

bool foreignReallocate(tErrorStatus& status, std::uint32_t requested) {
    return reallocateDefault(status, requested);
}

TEST(Exception, DefaultHasNoCodeAndNoText) {
    const zoerr::Exception exception;
    EXPECT_EQ(exception.status().code, 0);
    EXPECT_EQ(exception.status().text, nullptr);
    EXPECT_STREQ(exception.text(), "");
    EXPECT_STREQ(exception.what(), "");
}

TEST(Exception, TakesTheTextOfTheStatusItIsMadeFrom) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -5, kSomeSite));
    const zoerr::Exception exception(status);
    EXPECT_EQ(exception.status().code, -5);
    EXPECT_STREQ(exception.what(), kRecord);
    EXPECT_EQ(status.text, nullptr);
    EXPECT_EQ(status.capacity, 0U);
}

TEST(Exception, CopiesTheTextOfAStatusWithAnotherReallocator) {
    tErrorStatus status;
    status.reallocate = &foreignReallocate;
    ASSERT_TRUE(setError(status, -5, kSomeSite));
    const zoerr::Exception exception(status);
    EXPECT_STREQ(exception.what(), kRecord);
    EXPECT_STREQ(status.textOrEmpty(), kRecord);
    EXPECT_EQ(exception.status().reallocate, &reallocateDefault);
}

TEST(Exception, CopyingMovesTheText) {
    tErrorStatus status;
    ASSERT_TRUE(setError(status, -5, kSomeSite));
    const zoerr::Exception first(status);
    const zoerr::Exception second(first); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_STREQ(second.what(), kRecord);
    EXPECT_STREQ(first.what(), "");
    EXPECT_EQ(first.status().capacity, 0U);
    EXPECT_EQ(first.status().code, -5);
}

TEST(Exception, IsCaughtAsEachOfItsTypes) {
    EXPECT_THROW(zoerr::raise(-5, kSomeSite), zoerr::Exception);
    EXPECT_THROW(zoerr::raise(-5, kSomeSite), zoerr::ExceptionBase);
    EXPECT_THROW(zoerr::raise(-5, kSomeSite), std::exception);
}

TEST(Raise, CarriesCodeRecordAndMessage) {
    try {
        zoerr::raise(-388801, kSomeSite, "Iterator advanced to End.");
        FAIL();
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(),
                     R"({"error_constant":"kSome","file":"source\\x","line":1,)"
                     R"("component":"zotavpci","Message":"Iterator advanced to End."})");
    }
}

TEST(RaiseIfFailed, RaisesOnlyForErrors) {
    tErrorStatus status;
    EXPECT_NO_THROW(zoerr::raiseIfFailed(status));
    status.code = 3;
    EXPECT_NO_THROW(zoerr::raiseIfFailed(status));
    ASSERT_TRUE(setError(status, -5, kSomeSite));
    EXPECT_THROW(zoerr::raiseIfFailed(status), zoerr::Exception);
}

TEST(RaiseIfFailed, KeepsQuietWhileAnExceptionIsInFlight) {
    struct Checker {
        ~Checker() {
            tErrorStatus status;
            setError(status, -6, kSomeSite);
            zoerr::raiseIfFailed(status); // would end the process
        }
    };
    try {
        const Checker checker;
        zoerr::raise(-5, kSomeSite);
    } catch (const zoerr::Exception& exception) {
        EXPECT_EQ(exception.status().code, -5);
    }
}

TEST(RaiseIfFailed, ExceptionsFromBeforeTheHostsCallDoNotCount) {
    struct Caller {
        ~Caller() {
            const zoerr::HostCall call;
            tErrorStatus status;
            setError(status, -6, kSomeSite);
            EXPECT_THROW(zoerr::raiseIfFailed(status), zoerr::Exception);
        }
    };
    try {
        const Caller caller;
        zoerr::raise(-5, kSomeSite);
    } catch (const zoerr::Exception& exception) {
        EXPECT_EQ(exception.status().code, -5);
    }
}

TEST(RaiseIfFailed, FixedStatusBecomesARecord) {
    tFixedStatus status;
    ASSERT_TRUE(setFixedStatus(status, -313322, "zotavpci", "pxidrivertools\\cIniFile", 12));
    try {
        zoerr::raiseIfFailed(status);
        FAIL();
    } catch (const zoerr::Exception& exception) {
        EXPECT_EQ(exception.status().code, -313322);
        EXPECT_STREQ(exception.what(), R"({"file":"pxidrivertools\\cIniFile","line":12,)"
                                       R"("component":"zotavpci"})");
    }
}

} // namespace
