// The checks that `-strict` makes of a command file.
#pragma once

#include <set>
#include <string>

#include "commands/command_list.h"
#include "commands/report_command.h"
#include "options/strict_notes.h"

namespace zanvik {

// Notes a file without commands, lines that are neither commands nor comments, unknown words, and
// numbers that cannot be read. `list` was read from `path`.
void check_command_file(const CommandList& list, const std::string& path, strict_notes& notes);

// Adds the positions of the commands in `set` to `used`.
void note_used_commands(const CommandSet& set, std::set<std::size_t>& used);
// Notes the commands of `list` that are not in `used`, so were used for no log of the run.
void check_unused_commands(const CommandList& list, const std::set<std::size_t>& used,
                           strict_notes& notes);

}  // namespace zanvik
