// Command files: the front end of `-cmdfile`.
#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/fileio.h"
#include "commands/command_list.h"
#include "commands/command_tokens.h"

namespace zanvik {
namespace {

constexpr std::string_view command_mark = "!cmd,";

// Marks of other programs that use this file format; their tokens do not count.
constexpr std::array<std::string_view, 8> foreign_marks = {
    "!run-", "!repeat-", "!timeout-", "!dir-", "!name-", "!comment-", "!spawn-", "!custom-"};

bool is_foreign(std::string_view token) {
  return std::any_of(foreign_marks.begin(), foreign_marks.end(),
                     [token](std::string_view mark) { return token.starts_with(mark); });
}

// The value after the first token equal to `name`, as options are looked up.
std::optional<std::string_view> value_of(std::string_view name,
                                         const std::vector<std::string_view>& tokens) {
  const auto found = std::find_if(tokens.begin(), tokens.end(), [name](std::string_view token) {
    return option_equal(token, name);
  });
  if (found == tokens.end() || found + 1 == tokens.end()) return std::nullopt;
  return *(found + 1);
}

std::string name_from_comment(std::optional<std::string_view> comment) {
  if (!comment) return "unk_name";
  std::string name(*comment);
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == ' ' || c == ',' || c == ';'; }, '_');
  return name;
}

// Adds the command in `text`, which follows the mark.
void add_command(CommandList& list, std::string_view text, std::vector<std::string_view>& tokens) {
  tokens.clear();
  const auto keep = [&tokens](std::string_view piece) {
    const std::string_view token = clean_token(piece);
    if (!is_foreign(token)) tokens.push_back(token);
  };
  if (text.find(',') == std::string_view::npos) {
    keep(text);  // stays one token, even an empty one
  } else {
    for_each_piece(text, keep);
  }
  for (const std::string_view token : tokens) list.add_token(token);
  const auto name = value_of("-name", tokens);
  const auto comment = value_of("-comment", tokens);
  if (!name) {
    // Meant: a "-name" that was last and had no value now takes this one as its value.
    list.add_token("-name");
    list.add_token(name_from_comment(comment));
  } else if (!comment) {
    list.add_token("-comment");
    list.add_token(*name);
  }
  list.end_command();
}

}  // namespace

void read_command_text(CommandList& list, std::string_view text) {
  list.clear();
  std::vector<std::string_view> tokens;
  while (!text.empty()) {
    const auto end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.starts_with("//")) continue;
    const auto mark = line.find(command_mark);
    if (mark == std::string_view::npos) continue;
    add_command(list, line.substr(mark + command_mark.size()), tokens);
  }
}

void read_command_file(CommandList& list, const std::string& path) {
  list.clear();
  std::vector<std::byte> bytes;
  if (path.empty() || !uni::read_file_head(bytes, path, command_file_bytes)) return;
  read_command_text(list, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace zanvik
