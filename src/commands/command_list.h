// The text of report commands, split: the lines of a built-in report, or a command file of the
// user's, become a list of commands, each a row of tokens. command_build.h gives the tokens their
// meaning.
//
// A command is a line "!cmd, -option, value, ...", split at its commas, so no value can contain
// one. Bad text is not an error: what is not a command is not in the list. The tokens of a list are
// in one block, so that its memory is in proportion to the text.
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
  // Adds a token to the current command, and ends that command.
  void add_token(std::string_view token);
  void end_command() { command_ends_.push_back(token_ends_.size()); }

 private:
  std::string text_;                       // all tokens, one after the other
  std::vector<std::uint32_t> token_ends_;  // in `text_`, which a command file's limit keeps small
  std::vector<std::size_t> command_ends_;  // in `token_ends_`
};

// The bytes of a command file after this are not read.
inline constexpr std::size_t command_file_bytes = 0x1000000;

// Sets `list` to the commands of literal lines. Equal lines count once, and so do commands of equal
// tokens; tokens are trimmed, and empty ones and those before the first "!cmd" are dropped.
void read_command_lines(CommandList& list, std::span<const std::string_view> lines);

// Sets `list` to the commands of the file at `path`; none if it cannot be read. Here equal lines
// count each time, a line that begins with "//" is a comment, a token of blanks is an empty one,
// and every command gets a `-name`.
void read_command_file(CommandList& list, const std::string& path);
// The same for text that was read.
void read_command_text(CommandList& list, std::string_view text);

}  // namespace zanvik
