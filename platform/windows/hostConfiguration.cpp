// The host's own configuration is a temporary file, named to this process alone.
#include "platform/hostConfiguration.h"

#include "platform/configurationText.h"
#include "platform/text.h"
#include "platform/windows/environmentVariable.h"
#include "platform/windows/hostVariable.h"
#include "platform/windows/uniqueHandle.h"

namespace platform {

struct HostConfiguration::State {
    ~State() {
        clearHostVariable(kHostConfigurationFile);
        if (!file.empty())
            DeleteFileW(file.c_str());
    }

    SystemCode start(const std::string& text) {
        std::wstring folder(MAX_PATH + 1, L'\0');
        const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
        if (length == 0 || length >= folder.size())
            return lastFailureCode();
        std::wstring name(MAX_PATH + 1, L'\0');
        if (GetTempFileNameW(folder.c_str(), L"tav", 0, name.data()) == 0)
            return lastFailureCode();
        name.resize(name.find(L'\0'));
        file = name;

        const FileHandle written(CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                             FILE_ATTRIBUTE_TEMPORARY, nullptr));
        DWORD done = 0;
        if (!written ||
            !WriteFile(written.get(), text.data(), static_cast<DWORD>(text.size()), &done, nullptr))
            return lastFailureCode();
        if (done != text.size())
            return ERROR_DISK_FULL;
        std::string utf8Name;
        if (toUtf8(file, utf8Name) != Conversion::done)
            return ERROR_NO_UNICODE_TRANSLATION;
        return setHostVariable(kHostConfigurationFile, utf8Name);
    }

    std::wstring file;
};

HostConfiguration::HostConfiguration(const char* key, const Values& values) {
    std::string text;
    if (!writeConfigurationText(key, values, text)) {
        code_ = ERROR_INVALID_PARAMETER;
        return;
    }
    state_ = std::make_unique<State>();
    code_ = state_->start(text);
    if (code_ != kNoSystemError)
        state_.reset();
}

HostConfiguration::~HostConfiguration() = default;

// The bridge library is told by a variable that every process may be given; the list of devices,
// which is the system's own otherwise, only by the process itself.
SystemCode useRecordedBus(const std::string& path) {
    if (path.empty())
        return ERROR_FILE_NOT_FOUND;
    const SystemCode code = setEnvironmentVariable(kRecordedBusVariable, path);
    return code != kNoSystemError ? code : setHostVariable(kHostPciFunctions, path);
}

} // namespace platform
