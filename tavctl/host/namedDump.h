// A recorded bus as an option names it: by its path, or "-" for what is on standard input.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tavctl {

// What messages and drawings call the bus of "-".
inline constexpr std::string_view kStandardInput = "standard input";

// Must live as long as the bus is read: it is read more than once, and by the plug-in too, so "-"
// is kept in a file until then; messages have kStandardInput for its path. Whoever names "-"
// meanwhile gets the same bus.
class NamedDump {
public:
    // Reads standard input to its end where `name` is "-"; empty for none. Raises FailureException.
    explicit NamedDump(const std::string& name);

    // Where the bus is to be read. Empty for none.
    [[nodiscard]] const std::string& path() const { return path_; }

    // What to call it: the last part of its path, or kStandardInput.
    [[nodiscard]] static std::string titleOf(const std::string& name);

private:
    class Kept;
    std::shared_ptr<const Kept> kept_;
    std::string path_;
};

} // namespace tavctl
