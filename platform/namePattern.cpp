#include "platform/namePattern.h"

#include "platform/utf8.h"

namespace platform {

namespace {

void skipCharacter(std::string_view& text) noexcept {
    if (!takeCodePoint(text))
        text.remove_prefix(1);
}

} // namespace

bool matchesNamePattern(std::string_view name, std::string_view pattern) noexcept {
    if (name.starts_with('.') && !pattern.starts_with('.'))
        return false;
    // After a "*" whatever follows it is tried at each later character; only the last "*" can
    // still take more, since an earlier one could gain nothing by it.
    bool starSeen = false;
    std::string_view afterStar;
    std::string_view retryAt;
    while (!name.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            starSeen = true;
            afterStar = pattern;
            retryAt = name;
        } else if (pattern.starts_with('?')) {
            pattern.remove_prefix(1);
            skipCharacter(name);
        } else if (pattern.starts_with(name.front())) {
            pattern.remove_prefix(1);
            name.remove_prefix(1);
        } else if (starSeen) {
            skipCharacter(retryAt);
            name = retryAt;
            pattern = afterStar;
        } else {
            return false;
        }
    }
    while (pattern.starts_with('*'))
        pattern.remove_prefix(1);
    return pattern.empty();
}

} // namespace platform
