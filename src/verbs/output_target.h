// Where a verb's output goes: standard output, or a file that gets its name when it is complete.
#pragma once

#include <sys/stat.h>

#include <string>

#include "events/event_view.h"

namespace zanvik {

class output_target {
 public:
  output_target() = default;
  output_target(const output_target&) = delete;
  output_target& operator=(const output_target&) = delete;
  ~output_target();

  // Opens the output: "" and "-" are standard output, anything else is a file, which is written
  // under another name until `keep`, and has the rights of the file whose name it gets. False, with
  // `problem` set, if that is not possible.
  [[nodiscard]] bool open(const std::string& path, std::string& problem);
  int descriptor() const { return descriptor_; }
  // Gives the file its name, or one that says that it is not whole. Without this call, the file is
  // removed.
  [[nodiscard]] bool keep(std::string& problem, bool whole = true);
  // The name that the file got.
  const std::string& name() const { return path_; }

 private:
  void open_beside();
  void keep_rights(const struct stat& old);

  int descriptor_ = 1;
  std::string path_;       // the name asked for
  std::string temporary_;  // the name it has meanwhile; empty when it is written in place
  bool unnamed_ = false;   // it has that name only when it is whole
};

// Ends a run whose status is `status`: keeps the output, if it could be written, and says where the
// results end when a signal stopped the run (0: none did). Returns the status of the program.
int finish_run(output_target& target, bool written, int stopped_by, int status);

// Whether this file is the log, under any name.
bool is_same_file(const std::string& path, const log_source& log);

}  // namespace zanvik
