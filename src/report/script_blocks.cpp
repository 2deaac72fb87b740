#include "report/script_blocks.h"

#include <algorithm>

#include "report/page_text.h"
#include "report/report_limits.h"

namespace zanvik {
namespace {

// Of hosts, IDs and paths; longer ones are made up.
constexpr std::size_t longest_name = 1024;

// "2, 5 to 7", at most `most` ranges.
std::string missing_text(const std::set<std::uint64_t>& numbers, std::uint64_t total,
                         std::size_t most) {
  std::string out;
  std::uint64_t next = 1;
  const auto add = [&](std::uint64_t first, std::uint64_t last) {
    if (first > last) return true;
    if (most-- == 0) {
      out += ", ...";
      return false;
    }
    if (!out.empty()) out += ", ";
    out += std::to_string(first);
    if (last > first) out += " to " + std::to_string(last);
    return true;
  };
  for (const std::uint64_t number : numbers) {
    if (!add(next, number - 1)) return out;
    next = number + 1;
  }
  add(next, total);
  return out;
}

}  // namespace

std::string script_block::joined() const {
  std::string out;
  std::uint64_t next = 1;
  bool left_out = false;
  for (const std::uint64_t number : numbers) {
    if (number != next) {
      const std::string first = std::to_string(next), last = std::to_string(number - 1);
      out += first == last ? "\n[part " + first + " is missing]\n"
                           : "\n[parts " + first + " to " + last + " are missing]\n";
    }
    next = number + 1;
    const auto text = texts.find(number);
    if (text == texts.end()) {
      left_out = true;
      break;
    }
    append_visible(out, text->second, text->second.size());
  }
  if (left_out) out += "\n[the rest is left out]";
  return out;
}

std::string script_block::parts_text() const {
  if (numbers.size() == total) return std::to_string(total);
  return std::to_string(numbers.size()) + " of " + std::to_string(total) +
         "; missing: " + missing_text(numbers, total, 5);
}

// What is not among the first bytes of the block goes.
void script_blocks::keep_text(script_block& block, const script_part& part) {
  if (bytes_ >= report_limits::all_script_bytes) return;
  const std::string_view text = part.text.substr(0, report_limits::script_bytes);
  block.texts.emplace(part.number, text);
  block.bytes += text.size();
  bytes_ += text.size();
  while (!block.texts.empty()) {
    const auto last = std::prev(block.texts.end());
    if (block.bytes - last->second.size() < report_limits::script_bytes) return;
    block.bytes -= last->second.size();
    bytes_ -= last->second.size();
    block.texts.erase(last);
  }
}

void script_blocks::add(const script_part& part, const row_place& place) {
  const std::string host(part.host.substr(0, longest_name));
  std::string key = host;
  key.append(1, '\0').append(part.block_id.substr(0, longest_name));
  const auto [known, is_new] = numbers_.try_emplace(key, blocks_.size());
  if (is_new) {
    if (blocks_.size() == report_limits::script_blocks) {
      numbers_.erase(known);
      ++left_out_;
      return;
    }
    script_block& made = blocks_.emplace_back();
    made.host = host;
    made.block_id = part.block_id.substr(0, longest_name);
    made.place = place;
  }
  script_block& block = blocks_[known->second];
  if (place.time < block.place.time) block.place = place;
  if (block.path.empty()) block.path = part.path.substr(0, longest_name);
  if (block.user.empty()) block.user = part.user.substr(0, longest_name);
  if (block.mark.empty()) block.mark = part.mark;
  block.total = std::max({block.total, part.total, part.number});
  if (parts_ == report_limits::script_parts) {
    ++left_out_;
  } else if (block.numbers.insert(part.number).second) {
    ++parts_;
    keep_text(block, part);
  }
}

}  // namespace zanvik
