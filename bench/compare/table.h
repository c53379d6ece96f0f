// The table that a comparison prints: one row a question.
#pragma once

#include <string>
#include <vector>

namespace bench {

struct Row {
    std::string what;
    std::string ours;
    std::string peer; // the best one's name and figure
    double ratio = 0; // of ours to the peer's, so that more is better
    double target = 0;
    std::string limit; // what the hardware or the system would allow
};

void printTable(const std::vector<Row>& rows);

// "12.3 ms" and the like.
std::string timeText(double seconds);
std::string memoryText(double bytes);

} // namespace bench
