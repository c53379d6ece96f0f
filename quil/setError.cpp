#include "quil/setError.h"

#include "quil/errorRecord.h"

namespace nZOQUIL000 {

namespace {

void appendPlace(MemberWriter& writer, const tErrorSite& site) noexcept {
    writer.append({"file", site.file}).append({"line", site.line});
    if (site.component)
        writer.append({"component", site.component});
}

} // namespace

bool setError(tErrorStatus& status, std::int32_t code, const tErrorSite& site) noexcept {
    if (!incomingWins(status.code, code))
        return false;
    status.code = code;
    MemberWriter writer(status, replaceText(status, nullptr));
    writer.append({"error_constant", site.error_constant});
    appendPlace(writer, site);
    return true;
}

bool setSiteOnlyError(tErrorStatus& status, const tErrorSite& site) noexcept {
    if (status.failed())
        return false;
    status.code = kSiteOnlyError;
    MemberWriter writer(status, replaceText(status, nullptr));
    appendPlace(writer, site);
    return true;
}

} // namespace nZOQUIL000
