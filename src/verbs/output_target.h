// Where a verb's output goes: standard output, or a file that gets its name when it is whole.
#pragma once

#include <string>

#include "events/event_view.h"

namespace zanvik {

class output_target {
 public:
  output_target() = default;
  output_target(const output_target&) = delete;
  output_target& operator=(const output_target&) = delete;
  ~output_target();

  // Opens the output: "" and "-" are standard output, anything else a file beside which it is
  // written until `keep`. False, with `problem` set, when that cannot be.
  [[nodiscard]] bool open(const std::string& path, std::string& problem);
  int descriptor() const { return descriptor_; }
  // Gives the file its name. Without it nothing stays.
  [[nodiscard]] bool keep(std::string& problem);

 private:
  void open_beside();

  int descriptor_ = 1;
  std::string path_;       // the name asked for
  std::string temporary_;  // the name it has meanwhile; empty when it is written in place
  bool unnamed_ = false;   // it has that name only when it is whole
};

// Whether the file of that name is the log, under whatever name.
bool is_same_file(const std::string& path, const log_source& log);

}  // namespace zanvik
