// The database of a case: made when there is none, opened when there is one, and refused, with
// nothing touched, when the file is anything else.
//
// Until the case is closed nobody else can write to it: what is remembered of its tables holds.
#pragma once

#include <cstdint>
#include <string>

#include "case/database.h"

namespace zanvik {

// Why the file is no case that could be opened; empty when it is one, or when it is not there or
// has no bytes, so that a case can be made. Only the first bytes are looked at.
std::string why_no_case(const std::string& path);

// Whether a run is adding to the case, or was killed while it did: what it wrote last is beside the
// case.
bool is_unfinished_case(const std::string& path);

// Why the tables of an open database are not those of a case; empty when they are.
std::string why_no_case_tables(database& base);

class case_file {
 public:
  // Opens the case, or makes it with tables and views. Returns what went wrong, or nothing.
  [[nodiscard]] std::string open(const std::string& path, bool full_text);
  database& base() { return base_; }
  bool has_full_text() const { return full_text_; }

  // Says how many bytes of logs may come.
  void expect(std::uint64_t bytes) { bytes_ = bytes; }
  // Before the first log: drops the indexes if that is faster. Until `finish`, what is written goes
  // to the file beside the case that SQLite calls WAL: a log then costs no wait for the disk.
  [[nodiscard]] std::string start_adding();
  // Makes the indexes that are missing, and closes.
  [[nodiscard]] std::string finish();

 private:
  std::string make();
  std::string check();
  std::string add_full_text();
  std::string update_views();

  database base_;
  bool full_text_ = false;
  bool adding_ = false;
  std::uint64_t bytes_ = 0;
};

}  // namespace zanvik
