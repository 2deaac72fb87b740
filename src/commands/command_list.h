// The text of report commands, taken apart: the lines that a built-in report holds, or a command
// file of the user's, become a list of commands, each a row of tokens. What the tokens mean is for
// command_build.h.
//
// A command is a line "!cmd, -option, value, ...", cut at its commas, so that no value can hold
// one. Bad text is no error: what is no command is not in the list. The tokens of a list stand in
// one block, so that its memory stays in proportion to the text, whatever that is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "options/argument_list.h"

namespace zanvik {

class CommandList {
 public:
  bool empty() const { return command_ends_.empty(); }
  std::size_t size() const { return command_ends_.size(); }

  // Copies the tokens of a command, without the "!cmd", to `tokens`.
  void copy_tokens(std::size_t command, argument_list& tokens) const;

  void clear() { *this = {}; }
  // Adds a token to the command in hand, and ends that command.
  void add_token(std::string_view token);
  void end_command() { command_ends_.push_back(token_ends_.size()); }

 private:
  std::string text_;                       // all tokens, one behind the other
  std::vector<std::uint32_t> token_ends_;  // in `text_`, which a command file's limit keeps short
  std::vector<std::size_t> command_ends_;  // in `token_ends_`
};

// A command file's bytes behind this are not read.
inline constexpr std::size_t command_file_bytes = 0x1000000;

// Sets `list` to the commands of literal lines. Each equal line counts once, and so does each
// command of equal tokens; tokens are trimmed, empty ones dropped, and those before the first
// "!cmd" as well.
void read_command_lines(CommandList& list, std::span<const std::string_view> lines);

// Sets `list` to the commands of the file at `path`; none when it cannot be read. Here equal lines
// count as often as they stand there, a line that begins "//" is a comment, a token of blanks is
// an empty one, and each command is given a `-name`.
void read_command_file(CommandList& list, const std::string& path);
// The same of text that was read.
void read_command_text(CommandList& list, std::string_view text);

}  // namespace zanvik
