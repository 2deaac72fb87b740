#include "commands/command_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scratch_dir.h"

namespace zanvik {
namespace {

using namespace zanvik::testing;
using namespace std::string_literals;

// The commands, each its tokens joined by "/".
std::vector<std::string> commands_of(const CommandList& list) {
  std::vector<std::string> commands;
  argument_list tokens;
  for (std::size_t i = 0; i < list.size(); ++i) {
    list.copy_tokens(i, tokens);
    std::string& text = commands.emplace_back();
    for (std::size_t t = 0; t < tokens.size(); ++t) text += (t == 0 ? "" : "/") + tokens[t];
  }
  return commands;
}

using commands = std::vector<std::string>;

TEST(read_command_lines, tokens_and_repeats) {
  const std::tuple<const char*, std::vector<std::string_view>, commands> rows[] = {
      {"trimmed, empty ones dropped", {"!cmd, -id ,\t12,, -name, a b ,"}, {"-id/12/-name/a b"}},
      {"an equal line counts once", {"!cmd, a", "!cmd, b", "!cmd, a"}, {"a", "b"}},
      {"equal tokens of other lines, too", {"!cmd, a", "!cmd,a "}, {"a"}},
      {"equal when joined", {"!cmd, a, b", "!cmd, ab"}, {"a/b"}},
      {"the mark counts in its case", {"!CMD, a, !cmd, b"}, {"b"}},
      {"before the first mark nothing counts", {"x, y, !cmd, a"}, {"a"}},
      {"two on one line", {"!cmd, a, !cmd, b"}, {"a", "b"}},
      {"a line without mark goes on", {"!cmd, a", "b"}, {"a/b"}},
      {"no tokens is a command as well", {"!cmd"}, {""}},
      {"nothing", {}, {}},
  };
  for (const auto& [reason, lines, expected] : rows) {
    CommandList list;
    read_command_lines(list, lines);
    EXPECT_EQ(commands_of(list), expected) << reason;
  }
}

TEST(read_command_text, lines_tokens_and_names) {
  const std::tuple<const char*, std::string, commands> rows[] = {
      {"a name is its comment as well", "!cmd,-name,a b", {"-name/a b/-comment/a b"}},
      {"a comment becomes a name", "!cmd,-comment,a b;c", {"-comment/a b;c/-name/a_b_c"}},
      {"both stay", "!cmd,-name,n,-comment,c\r\n", {"-name/n/-comment/c"}},
      {"neither", "!cmd,-id,1", {"-id/1/-name/unk_name"}},
      {"a name without value takes the one that is added",
       "!cmd,-id,-name",
       {"-id/-name/-name/unk_name"}},
      {"blanks alone are an empty token, nothing is none", "!cmd,a, ,,b", {"a//b/-name/unk_name"}},
      {"no comma: one token", "!cmd,  -all_data ", {"-all_data/-name/unk_name"}},
      {"not even that", "!cmd,", {"/-name/unk_name"}},
      {"commas alone are no token", "!cmd,,", {"-name/unk_name"}},
      {"before the mark nothing counts", "//no\nsee !cmd,a", {"a/-name/unk_name"}},
      {"comment lines", "//!cmd,a\n //!cmd,b", {"b/-name/unk_name"}},
      {"the mark needs its comma", "!cmd\n!cmd a,b\n!CMD,a\n", {}},
      {"equal lines count twice", "!cmd,a\n!cmd,a", {"a/-name/unk_name", "a/-name/unk_name"}},
      {"marks of other programs go", "!cmd,!run-x,a, !name-y", {"a/-name/unk_name"}},
      {"a second mark is a token", "!cmd,a,!cmd,b", {"a/!cmd/b/-name/unk_name"}},
      {"NULs are characters", "!cmd,a\0b"s, {"a\0b/-name/unk_name"s}},
  };
  for (const auto& [reason, text, expected] : rows) {
    CommandList list;
    read_command_text(list, text);
    EXPECT_EQ(commands_of(list), expected) << reason;
  }
}

TEST(read_command_file, what_is_behind_the_limit_does_not_count) {
  const scratch_dir scratch;
  std::string text(command_file_bytes, ' ');
  text.replace(text.size() - 9, 9, "\n!cmd,abc");
  CommandList list;
  read_command_file(list, scratch.write("a.cmd", text + "d"));
  EXPECT_EQ(commands_of(list), commands{"abc/-name/unk_name"});
  for (const std::string& path : {""s, scratch.path(""), scratch.path("lost")}) {
    read_command_file(list, path);
    EXPECT_TRUE(list.empty()) << path;
  }
}

}  // namespace
}  // namespace zanvik
