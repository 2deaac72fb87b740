// Binary values of an event as readable text: times, boot records, boot sectors, drive layouts.
//
// In goes what is to be made of the value (command_translate.h) and its bytes, of which nothing is
// believed; out comes one line of text. A value that is not what it was said to be gives no text,
// or one that says so, see translate_value. Nothing is kept of the bytes.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "commands/command_translate.h"

namespace zanvik {

// Sets `text` to what takes the place of the value, or clears it when the value is to stay as it
// is. Returns whether the value was made into text. A drive layout without partitions is
// "part_tbl {unk}" although false is returned; that is meant.
bool translate_value(const translate_spec& spec, std::span<const std::byte> value,
                     std::string& text);

// Appends the entries of the drive layout at `block`, at most 4 of them; where the block ends,
// they end. Layout: a count at 4, the disk's signature or GUID at 8, entries of 144 bytes from 48
// on. Returns false, with `out` unchanged, when there is no entry with a length.
bool format_disk_layout(std::string& out, std::span<const std::byte> block, bool decimal);

}  // namespace zanvik
