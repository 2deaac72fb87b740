#include "commands/command_check.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/fileio.h"
#include "base/number_text.h"
#include "base/text.h"

namespace zanvik {
namespace {

constexpr std::array<std::string_view, 13> with_value = {
    "-id",   "-name",       "-comment",     "-log",           "-hist",
    "-type", "-start_time", "-stop_time",   "-string_exists", "-conditions",
    "-pull", "-translate",  "-success_type"};
constexpr std::array<std::string_view, 4> alone = {"-all_data", "-event_lookup", "-enum_evtxlog",
                                                   "-enum_evtlog"};

bool is_one_of(std::span<const std::string_view> names, const std::string& word) {
  return std::any_of(names.begin(), names.end(),
                     [&](std::string_view name) { return option_equal(name, word); });
}

std::string title_of(const CommandList& list, std::size_t command) {
  argument_list tokens;
  list.copy_tokens(command, tokens);
  std::string title = "command " + std::to_string(command + 1), name;
  if (take_value_option("-name", name, tokens)) title += " (" + name + ")";
  return title;
}

void check_lines(const std::string& path, strict_notes& notes) {
  std::vector<std::byte> bytes;
  if (!uni::read_file_head(bytes, path, command_file_bytes)) {
    return notes.add("command file " + path + " cannot be read");
  }
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  for (std::size_t number = 1; !text.empty(); ++number) {
    const auto end = text.find('\n');
    std::string line(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.starts_with("//") || line.find("!cmd,") != std::string::npos) continue;
    if (trim_blanks(line)) {
      notes.add(path + ", line " + std::to_string(number) + ": neither a command nor a comment");
    }
  }
}

void check_words(const CommandList& list, std::size_t command, strict_notes& notes) {
  argument_list tokens;
  list.copy_tokens(command, tokens);
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const std::string& word = tokens[i];
    if (is_one_of(alone, word)) continue;
    if (!is_one_of(with_value, word) || i + 1 == tokens.size()) {
      notes.add(title_of(list, command) + ": \"" + word + "\" is unknown or has no effect");
      continue;
    }
    ++i;
    if (option_equal(word, "-id") && !is_whole_number(tokens[i])) {
      notes.add(title_of(list, command) + ": -id " + tokens[i] + " is no number");
    }
  }
}

}  // namespace

void check_command_file(const CommandList& list, const std::string& path, strict_notes& notes) {
  if (!notes.is_strict()) return;
  check_lines(path, notes);
  if (list.empty()) notes.add("command file " + path + " holds no command");
  for (std::size_t i = 0; i < list.size(); ++i) check_words(list, i, notes);
}

void note_used_commands(const CommandSet& set, std::set<std::size_t>& used) {
  for (const auto& [path, command] : set) used.insert(static_cast<std::size_t>(command.index));
}

void check_unused_commands(const CommandList& list, const std::set<std::size_t>& used,
                           strict_notes& notes) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (!used.contains(i)) notes.add(title_of(list, i) + ": no log is of its kind and type");
  }
}

}  // namespace zanvik
