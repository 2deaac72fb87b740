// Binary values of an event as readable text: times, boot records, boot sectors, drive layouts.
//
// In: the requested form (command_translate.h) and the bytes of the value, which are not trusted.
// Out: one line of text. A value of another kind gives no text, or one that says so; see
// translate_value. Nothing is kept of the bytes.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "commands/command_translate.h"

namespace zanvik {

// Sets `text` to the replacement of the value, or clears it if the value is to be left unchanged.
// Returns whether the value was made into text. A drive layout without partitions gives "part_tbl
// {unk}" although false is returned; that is meant.
bool translate_value(const translate_spec& spec, std::span<const std::byte> value,
                     std::string& text);

// Appends the entries of the drive layout at `block`, at most 4, up to the end of the block.
// Layout: a count at 4, the disk's signature or GUID at 8, entries of 144 bytes from 48. Returns
// false, with `out` unchanged, if there is no entry with a length.
bool format_disk_layout(std::string& out, std::span<const std::byte> block, bool decimal);

}  // namespace zanvik
