// Expects that a host has nothing more than before after so many cycles.
#pragma once

#include <string>

namespace testwindows {

// `mode` says what a cycle is, in the words of loadingHost.cpp. Prints the figures.
void expectNothingLeft(const std::string& mode, int count);

} // namespace testwindows
