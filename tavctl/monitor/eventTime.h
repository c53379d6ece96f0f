// When an event was: the moment as text.
#pragma once

#include "tavctl/monitor/event.h"

#include <string>

namespace tavctl::monitor {

enum class TimeParts { seconds, milliseconds };

// In UTC: "2026-11-22T10:00:00Z", "2026-11-22T10:00:00.123Z".
std::string timeText(Event::Time time, TimeParts parts);

} // namespace tavctl::monitor
