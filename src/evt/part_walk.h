// The walk over a legacy log that comes in parts, so that memory does not grow with the log.
//
// In: parts of the log, one behind the other; each begins where the caller kept the bytes from
// `position` on. Out: the records that walk_evt_log finds in the whole log. A record longer than
// limits::evt_record_bytes is passed over, which `passed_over` says.
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
  bool passed_over() const { return passed_over_; }

 private:
  bool start(const byte_cursor& bytes);
  // The record at `at` of the part. False when the part does not hold all that it may need.
  bool take_record(const byte_cursor& bytes, std::uint64_t at, std::uint64_t begin, bool last);

  evt_sink& sink_;
  std::uint64_t log_bytes_;
  std::uint64_t at_ = 0;
  bool started_ = false;
  bool ended_ = false;
  bool passed_ = false;  // a long record, which may lead out of the log
  bool passed_over_ = false;
  std::int64_t text_spent_ = 0;
  evt_record record_;
};

}  // namespace zanvik
