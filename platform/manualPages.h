// How people read on after a program's own help.
#pragma once

namespace platform {

// Whether this system has the command "man" and programs come with pages for it.
bool hasManualPages() noexcept;

} // namespace platform
