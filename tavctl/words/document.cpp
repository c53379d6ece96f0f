#include "tavctl/words/document.h"

namespace tavctl {

Json newDocument() {
    return Json{{"version", kDocumentVersion}};
}

Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

} // namespace tavctl
