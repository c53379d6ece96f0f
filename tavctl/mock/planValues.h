// The values of a plan. Each operation raises FailureException for one that is none.
#pragma once

#include "tavctl/mock/plan.h"

#include <cstdint>

namespace tavctl::mock {

// As list -v tells links: "x4", "x1 of x4", "8 GT/s", "x4 2.5 of 8 GT/s".
LinkWish readLink(const Said& said);

// "41", hexadecimal as buses are always written: 1 to FF.
std::uint8_t readBus(const Said& said);

// The same for a root bus, which may be 0.
std::uint8_t readRootBus(const Said& said);

// A decimal number up to 254.
unsigned readCount(const Said& said);

// 0 or 1.
bool readFlag(const Said& said);

// "8086" with up to four hexadecimal digits, as descriptions have them.
std::uint16_t readIdentifier(const Said& said);

// The words of a list with commas, without blanks around them, each with the place of the list.
std::vector<Said> readList(const Said& said);

} // namespace tavctl::mock
