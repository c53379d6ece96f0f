#include "tavctl/recordings/machineDocument.h"

#include "tavctl/words/document.h"
#include "tavctl/words/print.h"

#include <fmt/core.h>

#include <utility>

namespace tavctl {

MachineDocument::MachineDocument() : begin_(newDocument().text()) {
    begin_.replace(begin_.size() - 1, 1, R"(,"machines":[)");
}

void MachineDocument::add(const Recording& recording, const std::optional<Failure>& failure,
                          const std::string& members) {
    print(fmt::format(R"({}{{"machine":{},"recording":{},"failure":{},{}}})",
                      std::exchange(begin_, ","), Json(recording.machine).text(),
                      Json(recording.name).text(),
                      (failure ? failureJson(*failure) : Json(nullptr)).text(), members));
}

void MachineDocument::end() const {
    print("]}\n");
}

} // namespace tavctl
