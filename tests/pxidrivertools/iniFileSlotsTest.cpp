// The order of the interface's operations. Where a pointer to a virtual function holds the offset
// of its slot (the Itanium C++ ABI, which GCC and Clang follow on both systems), it is read off.
#include "pxidrivertools/iIniFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <vector>

namespace {

using namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0;

template <class Function>
std::size_t slotOf(Function function) {
    std::uintptr_t words[2];
    static_assert(sizeof function == sizeof words);
    std::memcpy(words, &function, sizeof words);
    EXPECT_EQ(words[0] % 2, 1U) << "not virtual";
    EXPECT_EQ(words[1], 0U);
    // The destructor is one operation and takes two slots.
    return (words[0] - 1) / sizeof(void*) - 1;
}

template <class Value>
using Get = void (iIniFile::*)(const std::string&, const std::string&, Value&, tFixedStatus&);
using OpenNarrow = void (iIniFile::*)(const char*, std::uint32_t, tFixedStatus&);
using OpenWide = void (iIniFile::*)(const wchar_t*, std::uint32_t, tFixedStatus&);

TEST(IniFileInterface, OperationsStandInTheirSlots) {
    const std::vector<std::size_t> slots = {
        slotOf(static_cast<OpenNarrow>(&iIniFile::open)),
        slotOf(static_cast<OpenWide>(&iIniFile::open)),
        slotOf(static_cast<void (iIniFile::*)(std::string&, tFixedStatus&)>(&iIniFile::getPath)),
        slotOf(static_cast<void (iIniFile::*)(std::wstring&, tFixedStatus&)>(&iIniFile::getPath)),
        slotOf(&iIniFile::close),
        slotOf(&iIniFile::save),
        slotOf(&iIniFile::clear),
        slotOf(&iIniFile::getSectionNames),
        slotOf(&iIniFile::hasSection),
        slotOf(&iIniFile::hasKey),
        slotOf(&iIniFile::removeKey),
        slotOf(&iIniFile::removeSection),
        slotOf(&iIniFile::renameSection),
        slotOf(static_cast<Get<std::string>>(&iIniFile::getString)),
        slotOf(&iIniFile::getText),
        slotOf(static_cast<Get<std::wstring>>(&iIniFile::getString)),
        slotOf(&iIniFile::setString),
        slotOf(&iIniFile::getHexadecimal),
        slotOf(&iIniFile::setHexadecimal),
        slotOf(&iIniFile::getSigned32),
        slotOf(&iIniFile::setSigned32),
        slotOf(&iIniFile::getUnsigned32),
        slotOf(&iIniFile::setUnsigned32),
        slotOf(&iIniFile::getIntegerList),
        slotOf(&iIniFile::setIntegerList),
        slotOf(&iIniFile::getWideStringList),
        slotOf(&iIniFile::getStringList),
        slotOf(&iIniFile::setWideStringList),
        slotOf(&iIniFile::setStringList),
        slotOf(&iIniFile::fileChanged),
        slotOf(&iIniFile::getConfirmSave),
        slotOf(&iIniFile::setConfirmSave),
    };
    EXPECT_EQ(slots.size(), 32U);
    for (std::size_t n = 0; n < slots.size(); ++n)
        EXPECT_EQ(slots[n], n + 1);
}

TEST(IniFileInterface, CanBeDestroyedThroughItself) {
    EXPECT_TRUE(std::has_virtual_destructor_v<iIniFile>);
    EXPECT_TRUE(std::is_abstract_v<iIniFile>);
}

} // namespace
