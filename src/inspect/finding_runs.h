// Findings of one kind about consecutive records, joined into one for each run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "inspect/area.h"
#include "inspect/finding.h"

namespace zanvik {

class finding_runs {
 public:
  finding_runs(finding_list& findings, finding_kind kind) : findings_(findings), kind_(kind) {}

  // The record's offset is that in the file. It continues the run if its number is the next one, in
  // the same chunk and with the same text.
  void add(const area& record, std::optional<std::uint64_t> chunk, std::string_view text);
  void flush();

 private:
  finding_list& findings_;
  finding_kind kind_;
  std::uint64_t offset_ = 0;
  std::uint64_t first_ = 0;
  std::uint64_t last_ = 0;
  std::optional<std::uint64_t> chunk_;
  std::string text_;
  bool open_ = false;
};

}  // namespace zanvik
