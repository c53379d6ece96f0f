// Finds out by trying which connector leads to which port: somebody plugs something in, and the bus
// shows where.
#pragma once

#include "pcibus/bus.h"
#include "tavctl/describe/draft.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace tavctl::describe {

class Watch {
public:
    using BusReader = std::function<std::shared_ptr<const pcibus::Bus>()>;

    // Asks on `questions` and reads the answers, a line each, from `answers`. `readBus` reads the
    // bus as it is now. All must outlive the object.
    Watch(std::istream& answers, std::ostream& questions, BusReader readBus)
        : answers_(answers), questions_(questions), readBus_(std::move(readBus)) {}

    // Asks for one connector after the other, and adds the ports of the draft, which has none, by
    // what happens. The answers end with an empty label or with the input. Where the labels
    // contradict each other, or the box is gone, what was found is kept and it asks on; when
    // nothing is mended, the draft is left unfinished. Answers the bus as the box was last seen on
    // it. Raises FailureException when no connector was found.
    std::shared_ptr<const pcibus::Bus> run(Draft& draft, const std::string& anchorPath);

private:
    bool ask(const std::string& question, std::string& answer);
    void say(const std::string& text);
    // The port where something changed, as a slot path; empty with the reason said.
    std::string changedPort(const pcibus::Bus& before, const pcibus::Bus& after,
                            const std::string& anchorPath);
    // The port behind a connector; empty when it is skipped.
    std::string portOf(const std::string& label);
    void addConnector(Draft& draft, const std::string& label);
    // Whether there was such a label.
    bool takeOff(Draft& draft, const std::string& label);
    // What keeps the draft from being finished; empty when nothing does.
    [[nodiscard]] std::string contradiction(Draft& draft, std::int32_t lanes) const;
    void tellFound(const Draft& draft, const std::string& trouble);

    std::istream& answers_;
    std::ostream& questions_;
    BusReader readBus_;
    std::string anchorPath_;
    std::vector<std::string> portPaths_; // of the draft's ports
    std::shared_ptr<const pcibus::Bus> before_;
    bool isGone_ = false;
};

} // namespace tavctl::describe
