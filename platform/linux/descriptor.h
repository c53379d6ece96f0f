// Owns a file descriptor. Private to this folder.
#pragma once

#include <unistd.h>

namespace platform {

class Descriptor {
public:
    // Of open(2) and its like; a negative one is none.
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int number() const noexcept { return number_; }

private:
    int number_;
};

} // namespace platform
