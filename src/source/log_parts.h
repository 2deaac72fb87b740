// Logs cut into the parts that are read on their own, in any order and on any thread.
//
// In: a log that was found. Out: its parts, in order. A part of an .evtx log is a block of chunks;
// a legacy log and bytes to be carved are one part. What cannot be read from several threads is
// read here: blocks of streams and of logs in disk images come with their bytes. A stop signal ends
// the parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "source/found_log.h"

namespace zanvik {

struct log_part {
  std::shared_ptr<const found_log> log;
  std::uint64_t number = 0;      // of the log; the caller's
  std::uint64_t offset = 0;      // of the block
  std::size_t size = 0;          // of the block; 0 is a part without bytes, which only ends its log
  std::vector<std::byte> bytes;  // the block, if it has been read
  bool is_block = false;         // otherwise the whole log
  bool unread = false;           // some of the block could not be read
  bool last = false;             // of its log
};

// Memory for blocks, used again. For any thread.
class block_memory {
 public:
  std::vector<std::byte> take();
  void give_back(std::vector<std::byte>&& block);

 private:
  std::mutex mutex_;
  std::vector<std::vector<std::byte>> free_;
};

using part_use = std::function<void(log_part&&)>;

// Hands on the parts of the log, at least one, except after a stop signal.
void cut_log(const std::shared_ptr<const found_log>& log, block_memory& memory,
             const part_use& use);

// The log as one part.
log_part whole_log(const std::shared_ptr<const found_log>& log);

// Whether the part can be read on another thread, after the callback that brought the log. If not,
// it has to be read before that returns.
bool is_shared(const log_part& part);

}  // namespace zanvik
