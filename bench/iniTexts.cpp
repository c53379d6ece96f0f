#include "bench/iniTexts.h"

#include <cstdio>

namespace bench {

namespace {

std::string numbered(const char* format, std::size_t number) {
    char text[32];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

} // namespace

std::string sectionName(std::size_t section) {
    return numbered("Section %06zu", section);
}

std::string keyName(std::size_t key) {
    return numbered("Key%06zu", key);
}

std::string iniText(const IniShape& shape) {
    const std::string value(shape.value, 'x');
    std::string text;
    for (std::size_t section = 0; section < shape.sections; ++section) {
        text += '[' + sectionName(section) + "]\n";
        for (std::size_t key = 0; key < shape.keys; ++key)
            text += keyName(key) + " = " + value + '\n';
    }
    return text;
}

} // namespace bench
