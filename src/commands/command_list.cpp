#include "commands/command_list.h"

namespace zanvik {

void CommandList::add_token(std::string_view token) {
  text_ += token;
  token_ends_.push_back(static_cast<std::uint32_t>(text_.size()));
}

void CommandList::copy_tokens(std::size_t command, argument_list& tokens) const {
  const std::size_t first = command == 0 ? 0 : command_ends_[command - 1];
  const std::size_t last = command_ends_[command];
  tokens.resize(last - first);
  for (std::size_t i = first; i < last; ++i) {
    const std::size_t begin = i == 0 ? 0 : token_ends_[i - 1];
    tokens[i - first].assign(text_, begin, token_ends_[i] - begin);
  }
}

}  // namespace zanvik
