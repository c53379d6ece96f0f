// Things that stand where a file should: the kinds, and how to put one in a file's place.
#pragma once

#include <filesystem>
#include <string>

namespace testhostile {

enum class Kind {
    pipe,
    socket,
    folder,
    linkToItself,
    linkToNull,    // to /dev/null
    linkToZero,    // to /dev/zero, which has no end
    linkToFull,    // to /dev/full, which takes nothing and has no end either
    linkToNowhere, // into a folder that is not there
};

inline constexpr Kind kKinds[] = {Kind::pipe,         Kind::socket,       Kind::folder,
                                  Kind::linkToItself, Kind::linkToNull,   Kind::linkToZero,
                                  Kind::linkToFull,   Kind::linkToNowhere};

// Puts one at the path, in place of what is there.
void put(Kind kind, const std::filesystem::path& path);

// Whether it is still there as it was put.
bool isStill(Kind kind, const std::filesystem::path& path);

std::string nameOf(Kind kind);

// What the system says of opening one as a file, and of opening it to read from it whatever it is.
std::string whyNoFile(Kind kind);

} // namespace testhostile
