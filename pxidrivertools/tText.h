// A text that is handed around without being copied: whoever holds one keeps it alive. Its content
// never changes; copies may be used by different threads.
#pragma once

#include <boost/checked_delete.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

class tText {
public:
    // Empty.
    tText() = default;

    // A copy; raises std::bad_alloc.
    explicit tText(std::string_view text)
        : buffer_(new char[text.size() + 1], boost::checked_array_deleter<char>()),
          size_(text.size()) {
        if (!text.empty())
            std::memcpy(buffer_.get(), text.data(), text.size());
        buffer_.get()[size_] = '\0';
    }

    // Ends with a NUL byte.
    const char* text() const noexcept { return buffer_ ? buffer_.get() : ""; }
    // In bytes.
    std::size_t size() const noexcept { return size_; }
    std::string_view view() const noexcept { return {text(), size_}; }

private:
    boost::shared_ptr<char> buffer_;
    std::size_t size_ = 0;
};

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
