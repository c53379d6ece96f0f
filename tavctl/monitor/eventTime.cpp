#include "tavctl/monitor/eventTime.h"

#include <fmt/core.h>

namespace tavctl::monitor {

std::string timeText(Event::Time time, TimeParts parts) {
    namespace chrono = std::chrono;
    const auto day = chrono::floor<chrono::days>(time);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(chrono::floor<chrono::milliseconds>(time - day));
    std::string text =
        fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", static_cast<int>(date.year()),
                    static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                    clock.hours().count(), clock.minutes().count(), clock.seconds().count());
    if (parts == TimeParts::milliseconds)
        text += fmt::format(".{:03}", clock.subseconds().count());
    return text + "Z";
}

} // namespace tavctl::monitor
