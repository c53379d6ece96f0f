// The colours and fonts that the boxes of a drawing have in common, as attributes of DOT files.
#pragma once

#include <cstdint>

namespace tavctl {

// Of frames, and of what joins the boxes.
inline constexpr const char* kLineColour = "#94a3b8";
// Above a row of a table.
inline constexpr const char* kRowLine = " BORDER=\"1\" SIDES=\"T\" COLOR=\"#e2e8f0\"";
inline constexpr const char* kLabelBackground = "#f1f5f9";
inline constexpr const char* kFaintFont = "COLOR=\"#6b7280\" POINT-SIZE=\"9\"";
inline constexpr const char* kEmptyFont = "COLOR=\"#9ca3af\"";
inline constexpr const char* kDeviceFont = "COLOR=\"#1d4ed8\"";

// Of the head of a device's box, by its category.
const char* headColour(std::int32_t category);

} // namespace tavctl
