// What the metrics tell of one look at the devices.
#pragma once

#include "tavctl/bus/wholeBus.h"
#include "tavctl/list/listing.h"
#include "tavctl/metrics/metricText.h"

namespace tavctl {

// The devices with their ports and links, the names that are absent, and which functions are behind
// which connector. Without a bus (null) nothing is known of the functions.
void addDeviceMetrics(MetricText& text, const Listing& listing, const WholeBus* bus);

// How and when a look at them was taken.
struct LookTaken {
    bool success = false;
    double at = 0;   // seconds since 1970
    double took = 0; // seconds
};
void addLookMetrics(MetricText& text, const LookTaken& look);

} // namespace tavctl
