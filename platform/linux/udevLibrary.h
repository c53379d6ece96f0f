// The few functions of libudev by which a program is told of devices. The library is loaded when it
// is asked for: systems without it run the program all the same. Private to this folder.
#pragma once

#include "platform/dynamicLibrary.h"

namespace platform {

struct UdevContext;
struct UdevMonitor;
struct UdevDevice;

class UdevLibrary {
public:
    // Whether the library is there, with all of these functions.
    bool load() {
        return library_.load("libudev.so.1") && bind(makeContext, "udev_new") &&
               bind(dropContext, "udev_unref") &&
               bind(makeMonitor, "udev_monitor_new_from_netlink") &&
               bind(dropMonitor, "udev_monitor_unref") &&
               bind(addFilter, "udev_monitor_filter_add_match_subsystem_devtype") &&
               bind(listen, "udev_monitor_enable_receiving") &&
               bind(descriptorOf, "udev_monitor_get_fd") &&
               bind(receive, "udev_monitor_receive_device") &&
               bind(dropDevice, "udev_device_unref");
    }

    UdevContext* (*makeContext)() = nullptr;
    UdevContext* (*dropContext)(UdevContext*) = nullptr;
    UdevMonitor* (*makeMonitor)(UdevContext*, const char* group) = nullptr;
    UdevMonitor* (*dropMonitor)(UdevMonitor*) = nullptr;
    int (*addFilter)(UdevMonitor*, const char* subsystem, const char* deviceType) = nullptr;
    int (*listen)(UdevMonitor*) = nullptr;
    int (*descriptorOf)(UdevMonitor*) = nullptr;
    UdevDevice* (*receive)(UdevMonitor*) = nullptr; // null when nothing is waiting
    UdevDevice* (*dropDevice)(UdevDevice*) = nullptr;

private:
    template <typename Function>
    bool bind(Function*& function, const char* name) {
        function = reinterpret_cast<Function*>(library_.symbol(name));
        return function != nullptr;
    }

    DynamicLibrary library_;
};

} // namespace platform
