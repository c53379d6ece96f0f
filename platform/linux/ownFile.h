// What the files of the product's state have in common here. Private to this folder.
#pragma once

#include "platform/file.h"

#include <sys/stat.h>

namespace platform {

// Who may read and write a file of the product's state that is made at this path: its owner and
// nobody else, from the start. But where the folder lets its group write and hands that group on to
// what is made in it (the set-group-ID bit), an administrator has said whose the names are: then
// the group may read and write, and others may read when they may list the folder. What a link
// leads to stands in another folder, and is the owner's; so is one in a folder whose path has more
// than 1022 bytes.
mode_t ownPermissions(const char* path) noexcept;

// The stream of a descriptor, which it then owns, or none of -1. Null with errno set on failure;
// the descriptor is closed.
Stream streamOf(int descriptor, const char* mode) noexcept;

} // namespace platform
