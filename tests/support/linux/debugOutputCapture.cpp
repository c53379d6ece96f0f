#include "tests/support/debugOutputCapture.h"

#include <gtest/gtest.h>

namespace testsupport {

DebugOutputCapture::DebugOutputCapture() {
    testing::internal::CaptureStderr();
}

DebugOutputCapture::~DebugOutputCapture() {
    if (!ended_)
        text();
}

std::string DebugOutputCapture::text() {
    ended_ = true;
    return testing::internal::GetCapturedStderr();
}

} // namespace testsupport
