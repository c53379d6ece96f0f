// What monitor tells: an event is a line of text, or a JSON object in one line.
#pragma once

#include "tavctl/bus/linkState.h"
#include "tavctl/view/machineState.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tavctl::monitor {

enum class EventKind {
    present,      // a device, when the watch begins
    absent,       // a stored name of which no device is there, likewise
    watching,     // the state is told; from here on it is what changes
    arrived,      // a device
    vanished,     // a device
    moved,        // a device has another address, or stands in another slot
    renamed,      // a device has another terminal name
    plugged,      // a function behind a connector
    pulled,       // a function behind a connector
    linkDegraded, // a link runs below what both ends can
    linkRestored, // and does not any more
    lookFailed,   // what is there cannot be told; what was seen last stands
    lookWorks,    // it can again
    ended         // the watch
};

// How programs are told of it: by its name here.
const char* eventName(EventKind kind);

struct Event {
    using Time = std::chrono::system_clock::time_point;

    EventKind kind = EventKind::ended;
    std::optional<SeenDevice> device = {};
    std::optional<ConnectorName> connector = {}; // in which it was, or whose link it is
    std::optional<SeenFunction> function = {};
    std::optional<LinkState> link = {};
    // Of moved and renamed: what the device was. Of absent: all that is known of it.
    std::optional<SeenDevice> before = {};
    std::string reason = {};                        // of lookFailed
    bool isWoken = false;                           // of watching: the system tells of changes
    std::optional<std::chrono::seconds> every = {}; // of watching: how often it looks
    std::size_t looks = 0;                          // of ended: how many there were
};

// "2026-11-22T10:00:00Z  TAV1 has moved from 01:00.0 to 02:00.0", with its line feed.
std::string eventAsText(const Event& event, Event::Time time);

// With its line feed.
std::string eventAsJson(const Event& event, Event::Time time);

} // namespace tavctl::monitor
