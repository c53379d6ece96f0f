// Finds out by trying which connector leads to which port: somebody plugs something in, and the bus
// shows where.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/describe/draft.h"

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

namespace tavctl::describe {

class Watch {
public:
    using BusReader = std::function<std::shared_ptr<const pcibus::Bus>()>;

    // Asks on `questions` and reads the answers, a line each, from `answers`. `readBus` reads the
    // bus as it is now. All must outlive the object.
    Watch(std::istream& answers, std::ostream& questions, BusReader readBus)
        : answers_(answers), questions_(questions), readBus_(std::move(readBus)) {}

    // Asks for one connector after the other, and takes the ports of the draft from what happens.
    // The answers end with an empty label or with the input. Answers the bus as it was last seen.
    // Raises FailureException when the box is gone, or when its labels cannot be described.
    std::shared_ptr<const pcibus::Bus> run(Draft& draft, const std::string& anchorPath);

private:
    bool ask(const std::string& question, std::string& answer);
    void say(const std::string& text);
    // The port where something changed, as a slot path; empty with the reason said.
    std::string changedPort(const pcibus::Bus& before, const pcibus::Bus& after,
                            const std::string& anchorPath);

    std::istream& answers_;
    std::ostream& questions_;
    BusReader readBus_;
};

} // namespace tavctl::describe
