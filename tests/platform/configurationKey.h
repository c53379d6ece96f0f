// The configuration's key of a product that there is not.
#pragma once

inline constexpr const char* kKey = "SOFTWARE\\Maker\\Product";
