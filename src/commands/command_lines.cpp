// Literal lines: the front end of the built-in reports.
#include <string>
#include <unordered_set>
#include <vector>

#include "commands/command_list.h"
#include "commands/command_tokens.h"

namespace zanvik {
namespace {

// The current command, which is kept when it is complete and differs from all before.
class line_commands {
 public:
  explicit line_commands(CommandList& list) : list_(list) {}

  void start() {
    finish();
    started_ = true;
  }
  void add(std::string_view token) {
    if (started_) tokens_.push_back(token);
  }
  void finish() {
    if (started_ && seen_.insert(joined()).second) {
      for (const std::string_view token : tokens_) list_.add_token(token);
      list_.end_command();
    }
    tokens_.clear();
  }

 private:
  std::string joined() const {
    std::string text;
    for (const std::string_view token : tokens_) text += token;
    return text;
  }

  CommandList& list_;
  std::vector<std::string_view> tokens_;
  std::unordered_set<std::string> seen_;
  bool started_ = false;
};

}  // namespace

void read_command_lines(CommandList& list, std::span<const std::string_view> lines) {
  list.clear();
  line_commands commands(list);
  std::unordered_set<std::string_view> seen;
  for (const std::string_view line : lines) {
    if (!seen.insert(line).second) continue;
    // A command continues on the following lines, up to the next "!cmd".
    for_each_piece(line, [&commands](std::string_view piece) {
      const std::string_view token = clean_token(piece);
      if (token == "!cmd") {
        commands.start();
      } else if (!token.empty()) {
        commands.add(token);
      }
    });
  }
  commands.finish();
}

}  // namespace zanvik
