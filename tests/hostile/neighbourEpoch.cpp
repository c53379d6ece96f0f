#include "tests/hostile/neighbour.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace testhostile {

Epoch& mapEpoch(const std::filesystem::path& file) {
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0 || ftruncate(descriptor, sizeof(Epoch)) != 0)
        throw std::runtime_error("cannot open " + file.string());
    void* const memory =
        mmap(nullptr, sizeof(Epoch), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    close(descriptor);
    if (memory == MAP_FAILED)
        throw std::runtime_error("cannot map " + file.string());
    return *static_cast<Epoch*>(memory);
}

} // namespace testhostile
