// The walk over a legacy log that comes in parts, so that memory does not grow with the log.
//
// In: parts of the log, one behind the other; each begins where the caller kept the bytes from
// `position` on. Out: the records that walk_evt_log finds in the whole log, but for those longer
// than limits::evt_record_bytes; and the number of records that are there and were not handed on.
#pragma once

#include <cstdint>
#include <span>

#include "evt/evt.h"

namespace zanvik {

class evt_part_walk {
 public:
  // `log_bytes` is the length of the log, 0 if it is not known.
  evt_part_walk(evt_sink& sink, std::uint64_t log_bytes) : sink_(sink), log_bytes_(log_bytes) {}

  // Walks on in `part`, which begins at the offset `begin` of the log, not behind `position`. The
  // `last` part ends with the log.
  void walk(std::span<const std::byte> part, std::uint64_t begin, bool last);

  // Nothing before this offset of the log is needed any more.
  std::uint64_t position() const { return at_; }
  // Records that are too long, that the log's end cuts, or that are behind such a cut one. Behind
  // it, what has a signature and a possible length counts as a record.
  std::uint64_t lost() const { return lost_; }

 private:
  bool start(const byte_cursor& bytes);
  // The record at `at` of the part. False when the part does not hold all that it may need.
  bool take_record(const byte_cursor& bytes, std::uint64_t at, std::uint64_t begin, bool last);
  void count_lost(const byte_cursor& bytes, std::uint64_t begin);

  evt_sink& sink_;
  std::uint64_t log_bytes_;
  std::uint64_t at_ = 0;
  bool started_ = false;
  bool is_log_ = true;
  bool cut_ = false;  // by a record that reaches past the end of the log
  std::uint64_t lost_ = 0;
  std::int64_t text_spent_ = 0;
  evt_record record_;
};

}  // namespace zanvik
