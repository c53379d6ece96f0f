// What each exception comes to at the border of the library.
#include "source/exceptionStatus.h"

#include "include/tavPlugin.h"
#include "quil/zoerr.h"

#include <gtest/gtest.h>

#include <boost/interprocess/exceptions.hpp>
#include <new>
#include <stdexcept>
#include <vector>

namespace {

using nZoTavManagerPciPlugin_15_0::statusOfCurrentException;

template <class Call>
std::int32_t statusOf(Call call) {
    try {
        call();
    } catch (...) {
        return statusOfCurrentException();
    }
    ADD_FAILURE() << "nothing was raised";
    return 0;
}

TEST(ExceptionStatus, OwnExceptionGivesItsStatus) {
    for (const std::int32_t code : {-388801, -388802, -388804, -313008, -52000, -1}) {
        EXPECT_EQ(statusOf([&] { zoerr::raise(code, nZOQUIL000::siteHere("test", "code")); }),
                  code);
    }
}

TEST(ExceptionStatus, OutOfRangeIsAnInvalidParameter) {
    EXPECT_EQ(statusOf([] { throw std::out_of_range("index"); }), kTavManErrInvalidParam);
    EXPECT_EQ(statusOf([] { static_cast<void>(std::vector<int>().at(0)); }), -388802);
}

TEST(ExceptionStatus, OtherStandardExceptionsAreSoftwareFaults) {
    EXPECT_EQ(statusOf([] { throw std::bad_alloc(); }), kTavManErrSoftwareFault);
    EXPECT_EQ(statusOf([] { throw std::length_error("list too long"); }), -388801);
    EXPECT_EQ(statusOf([] { throw std::logic_error("logic"); }), -388801); // base of out_of_range
    EXPECT_EQ(statusOf([] { throw boost::interprocess::interprocess_exception("lock"); }), -388801);
}

TEST(ExceptionStatus, AnythingElseIsASoftwareFault) {
    EXPECT_EQ(statusOf([] { throw 5; }), -388801);
    EXPECT_EQ(statusOf([] { throw "text"; }), -388801);
}

} // namespace
