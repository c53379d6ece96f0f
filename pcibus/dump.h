// Reads a recorded bus: the text that lspci -x, -xxx or -xxxx prints, with or without domains in
// the addresses and the text of -v between.
//
// A function begins with a line "[DDDD:]BB:DD.F ..." and has rows "OO: hh hh ..." of bytes from
// offset 0 on, without gaps, at least 64 bytes. Blank and indented lines, and any other line that
// is neither, mean nothing. Lines end with LF or CR LF. A UTF-8 byte-order mark at the start is
// skipped.
//
// A text that is damaged is refused; a function that is, is not: one whose vendor identifier reads
// FFFF is passed over. A text of nothing but white space is an empty bus; any other text without a
// function is refused, and where its beginning shows what it is (UTF-16, a compressed file, a
// program), the message says so.
#pragma once

#include "pcibus/bus.h"
#include "pcibus/functionSink.h"
#include "pcibus/leftOut.h"

#include <string>
#include <string_view>

namespace pcibus {

// A dump as a text, which whoever makes dumps has (the product reads files). The functions of
// domain 0; those of other domains are checked and given to the sink alone, which gets all in the
// order of the dump. `name` stands for the dump in messages. `leftOut`, where somebody asks, is
// told what is passed over. Raises BusError
// ("name:line: reason") for a text that is malformed, and std::bad_alloc.
Bus parseDump(std::string_view text, const std::string& name, const FunctionSink& sink = {},
              LeftOut* leftOut = nullptr);

// The same for a file, or for a pipe that somebody writes to. One that cannot be read, or has a
// line of more than a megabyte, raises BusError ("file: reason").
Bus readDump(const std::string& file, LeftOut* leftOut = nullptr, const FunctionSink& sink = {});

} // namespace pcibus
