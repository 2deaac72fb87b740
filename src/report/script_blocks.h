// Script blocks put together from the parts that PowerShell logs them in.
//
// Parts come in any order and from several logs; the same part may come again. A part that never
// comes is named. Of a long block only the beginning is kept, and of all blocks only so much text
// (report_limits.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/hash_mix.h"
#include "report/row_store.h"

namespace zanvik {

struct script_part {
  std::string_view host, block_id, path, user;
  std::string_view mark;
  std::uint64_t number = 1, total = 1;
  std::string_view text;  // as it is in the event
};

struct script_block {
  std::string host, block_id, path, user, mark;
  row_place place;  // of the earliest part
  std::uint64_t total = 1;
  std::set<std::uint64_t> numbers;             // of the parts that came
  std::map<std::uint64_t, std::string> texts;  // of those that are kept, by number
  std::size_t bytes = 0;                       // of `texts`

  // The parts in their order; says which are missing and what is left out.
  std::string joined() const;
  // "3", or "2 of 3; missing: 2".
  std::string parts_text() const;
};

class script_blocks {
 public:
  void add(const script_part& part, const row_place& place);
  const std::vector<script_block>& blocks() const { return blocks_; }
  // Events whose block or part was one too many.
  std::uint64_t left_out() const { return left_out_; }

 private:
  void keep_text(script_block& block, const script_part& part);

  std::vector<script_block> blocks_;
  std::unordered_map<std::string, std::size_t, keyed_text_hash> numbers_;  // by host and ID
  std::size_t bytes_ = 0;
  std::size_t parts_ = 0;
  std::uint64_t left_out_ = 0;
};

}  // namespace zanvik
