// The one way out for what commands say: results on standard output, everything else on standard
// error. Nothing that is said holds a command for the terminal (see printable.h), whatever it was
// made of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavctl {

enum class Dress { plain, coloured };

// A result, in lines. Raises FailureException when standard output did not take all of it.
void print(const std::string& text, Dress dress = Dress::plain);

// A sentence beside the result, which stays readable to a program: "tavctl: SENTENCE". Standard
// error that does not take it has nobody to be told.
void complain(std::string_view sentence);

// The same for lines that are made already.
void complainInLines(std::string_view lines);

// While it exists nothing is complained, but kept: for work that is done again and again and would
// say the same each time. One at a time.
class HeldComplaints {
public:
    HeldComplaints();
    ~HeldComplaints();
    HeldComplaints(const HeldComplaints&) = delete;
    HeldComplaints& operator=(const HeldComplaints&) = delete;

    // What complainInLines() was given so far, piece by piece.
    [[nodiscard]] const std::vector<std::string>& pieces() const { return pieces_; }

private:
    friend void complainInLines(std::string_view lines);
    std::vector<std::string> pieces_;
};

} // namespace tavctl
