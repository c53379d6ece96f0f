// A test that loads one description file and compares the model or what is raised.
#pragma once

#include "pxidrivertools/cIniFile.h"
#include "source/descriptionLoader.h"
#include "tests/source/support/descriptionText.h"
#include "tests/source/support/raised.h"
#include "tests/source/support/recordingIniFile.h"
#include "tests/support/temporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace nZoTavManagerPciPlugin_15_0 {

inline bool operator==(const tBridgeDescription& a, const tBridgeDescription& b) {
    return std::tie(a.traversalMap, a.ids, a.reportAddressFromThisBridge, a.isOptional) ==
           std::tie(b.traversalMap, b.ids, b.reportAddressFromThisBridge, b.isOptional);
}
inline bool operator==(const tAnchorIdentity& a, const tAnchorIdentity& b) {
    return a.headerType == b.headerType && a.ids == b.ids;
}

} // namespace nZoTavManagerPciPlugin_15_0

namespace testsupport {

class DescriptionFixture : public testing::Test {
protected:
    static constexpr const char* kIniSource = "pxidrivertools\\cIniFile";
    static constexpr const char* kLoaderSource = "source\\cPciModelInfoDb";

    std::string write(const std::string& text) const {
        return folder_.file("description.ini", text).string();
    }
    // The model; what is raised fails the test.
    nZoTavManagerPciPlugin_15_0::tModelDescription load(const std::string& text) const {
        nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0::cIniFile file;
        return nZoTavManagerPciPlugin_15_0::DescriptionLoader(file).load(write(text));
    }
    nZoTavManagerPciPlugin_15_0::tModelDescription load(const DescriptionText& text) const {
        return load(text.text());
    }

    // What loading raises, and the last operation that came before it.
    struct Failure {
        Raised raised;
        std::string lastOperation;

        // The code, when the record is that of the INI file class: its place, and no name of a
        // code. Otherwise 1.
        [[nodiscard]] std::int32_t iniCode() const {
            const bool isRecord =
                raised.record.size() == 3 && raised.member("file") == kIniSource &&
                raised.member("component") == "zotavpci" && raised.record.value("line", 0) > 0;
            return isRecord ? raised.code : 1;
        }
        // The code, when the record is that of the loader. Otherwise 1.
        [[nodiscard]] std::int32_t loaderCode() const {
            const bool isRecord = raised.record.size() == 4 &&
                                  raised.hasSite(kLoaderSource, "kTavManErrSoftwareFault");
            return isRecord ? raised.code : 1;
        }
    };
    Failure failureOf(const std::string& text) const { return failureOfFile(write(text)); }
    Failure failureOf(const DescriptionText& text) const { return failureOf(text.text()); }
    static Failure failureOfFile(const std::string& path) {
        RecordingIniFile file;
        Failure failure;
        failure.raised = raisedBy(
            [&] { (void)nZoTavManagerPciPlugin_15_0::DescriptionLoader(file).load(path); });
        failure.lastOperation = file.operations().back();
        return failure;
    }

    TemporaryFolder folder_;
};

} // namespace testsupport
