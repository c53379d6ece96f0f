// The one way out for what commands say: results on standard output, everything else on standard
// error. Nothing that is said holds a command for the terminal (see printable.h), whatever it was
// made of.
#pragma once

#include <string>
#include <string_view>

namespace tavctl {

enum class Dress { plain, coloured };

// A result, in lines. Raises FailureException when standard output did not take all of it.
void print(const std::string& text, Dress dress = Dress::plain);

// A sentence beside the result, which stays readable to a program: "tavctl: SENTENCE". Standard
// error that does not take it has nobody to be told.
void complain(std::string_view sentence);

// The same for lines that are made already.
void complainInLines(std::string_view lines);

} // namespace tavctl
