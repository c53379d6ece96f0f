// An INI file in memory: its sections and keys, and how it is read and written. One file object
// belongs to one thread at a time; different ones share nothing.
//
// The files of the engine, from loading to saving:
//   iniFileObject    this: what a file object holds, and how it and its parts are made and dropped
//   iniOptions       how it reads and writes
//   iniRecords       sections, keys and their texts       iniList      lists of them
//   iniMemory        where memory is taken from, and how records live in it
//   iniLoad          reads a file: what each line does to the file object
//     iniBlock       ... the whole input in one piece     iniLines     its lines, and what they are
//     iniSearch      ... whether a name is new            iniContinuation  long values in pieces
//   iniLookup        finds sections and keys by name
//     iniNames       ... when two names are the same      iniIndex     a hash index over a list
//   iniUpdate        sets, renames and removes
//   iniSafeWrite     saves through a temporary file, or in place
//     iniWrite       ... the text that goes into it       iniSinks     where it goes
//     iniFileOperations  ... what the disk does
//   iniStatus        the results of all of it
#pragma once

#include "platform/file.h"
#include "pxidrivertools/ini/iniList.h"
#include "pxidrivertools/ini/iniMemory.h"
#include "pxidrivertools/ini/iniOptions.h"
#include "pxidrivertools/ini/iniRecords.h"

#include <cstdint>
#include <memory>

namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0 {

// What a caller may change directly is what stands before `memory`; the rest changes through the
// functions of iniLoad.h, iniUpdate.h and iniSafeWrite.h.
struct IniFileObject {
    IniParseOptions parse;
    IniWriteOptions write;
    // Of section names, and of the key names in sections made from now on.
    bool caseSensitive = false;
    // A section or key that occurs again continues or replaces the first one.
    bool mergeDuplicates = true;

    IniMemory memory = systemIniMemory();
    // In file order; null while there is none.
    IniList* sections = nullptr;
    IniIndex* sectionIndex = nullptr;
    // The section that findSection() found last.
    IniSection* current = nullptr;
    // Of the first line that is no header, key line or comment; a blank line is one. Or
    // kNotFromFile.
    std::int32_t firstOddLine = kNotFromFile;

    // The file last loaded or written as rememberFile() was told, with its last-write time. Empty
    // when there is none.
    IniText path;
    platform::FileTime lastWriteTime = 0;
    // Why the last write failed; platform::kNoSystemError when it did not, or not for the system.
    platform::SystemCode failure = platform::kNoSystemError;

    // The loaded text, which names and values look into.
    char* block = nullptr;
    IniArena arena;
    IniPool<IniSection> sectionPool;
    IniPool<IniKey> keyPool;
};

// Null when there is no memory.
IniFileObject* createIniFile(const IniMemory& memory = systemIniMemory()) noexcept;

// With everything in it; null is ignored.
void destroyIniFile(IniFileObject* file) noexcept;

struct IniFileDestroyer {
    void operator()(IniFileObject* file) const noexcept { destroyIniFile(file); }
};
using IniFileOwner = std::unique_ptr<IniFileObject, IniFileDestroyer>;

// Drops every section; options, path and time stay.
void discardSections(IniFileObject& file) noexcept;

// Drops what a section holds, and the section; it is no longer in the list.
void discardSection(IniFileObject& file, IniSection* section) noexcept;

// The same for a key.
void discardKey(IniFileObject& file, IniKey* key) noexcept;

// The list of a section's keys lives in the file object's arena after a load and in a block of its
// own once it has grown.

// Makes sure that one more key fits. False when there is no memory; the list is then as it was.
bool reserveKey(IniFileObject& file, IniSection& section, IniGrowth growth) noexcept;

// Gives back the room for keys that are not there.
void trimKeys(IniFileObject& file, IniSection& section) noexcept;

// Puts a copy of the list into the arena as the section's, which must have none. False when there
// is no memory.
bool placeKeys(IniFileObject& file, IniSection& section, const IniList& list) noexcept;

// Drops the list, not the keys in it.
void releaseKeys(const IniMemory& memory, IniSection& section) noexcept;

} // namespace nZoTavManagerPciPlugin_15_0::nZoPxiDriverTools_1_0
