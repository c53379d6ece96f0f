// Scripts by which shells complete tavctl's command line, made from the command line itself, so
// that they know every command and option there is.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tavctl {

std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);
std::string fishCompletion(const CLI::App& app);

} // namespace tavctl
