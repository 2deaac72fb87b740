#include "source/log_parts.h"

#include <fcntl.h>

#include <algorithm>
#include <span>
#include <utility>

#include "base/byte_cursor.h"
#include "base/stop_signal.h"
#include "evtx/evtx.h"
#include "source/block_reader.h"

namespace zanvik {
namespace {

namespace layout = evtx_layout;

bool is_file(const found_log& log) { return !log.is_stream && !log.read_at; }

log_part block_of(const std::shared_ptr<const found_log>& log, std::uint64_t offset) {
  log_part part;
  part.log = log;
  part.offset = offset;
  part.is_block = true;
  return part;
}

// Blocks of a file, for others to read; the next one is announced to the system.
void cut_file(const std::shared_ptr<const found_log>& log, const part_use& use) {
  std::uint64_t at = next_block(*log, first_chunk_offset(*log), layout::block_bytes);
  do {
    log_part part = block_of(log, at);
    part.size = std::min<std::uint64_t>(layout::block_bytes, log->size - std::min(at, log->size));
    at = next_block(*log, at + part.size, layout::block_bytes);
    part.last = at >= log->size;
    if (!part.last) {
      (void)::posix_fadvise(log->descriptor, static_cast<off_t>(at), layout::block_bytes,
                            POSIX_FADV_WILLNEED);
    }
    use(std::move(part));
  } while (at < log->size && stop_signal() == 0);
}

// Blocks that are read here. A block that a stop signal cut short is left out.
void cut_by_reading(const std::shared_ptr<const found_log>& log, block_memory& memory,
                    const part_use& use) {
  const std::uint64_t begin = first_chunk_offset(*log);
  read_blocks_into(
      *log, begin, layout::block_bytes, [&] { return memory.take(); },
      [&](std::vector<std::byte>&& bytes, std::uint64_t offset, std::size_t size, bool unread) {
        if (stop_signal() != 0) return false;
        log_part part = block_of(log, offset);
        part.bytes = std::move(bytes);
        part.size = size;
        part.unread = unread;
        use(std::move(part));
        return true;
      });
  if (stop_signal() != 0) return;
  log_part end = block_of(log, 0);
  end.last = true;
  use(std::move(end));
}

}  // namespace

std::vector<std::byte> block_memory::take() {
  const std::lock_guard held(mutex_);
  if (free_.empty()) return {};
  std::vector<std::byte> block = std::move(free_.back());
  free_.pop_back();
  return block;
}

void block_memory::give_back(std::vector<std::byte>&& block) {
  const std::lock_guard held(mutex_);
  free_.push_back(std::move(block));
}

void cut_log(const std::shared_ptr<const found_log>& log, block_memory& memory,
             const part_use& use) {
  if (log->carve || log->source.kind != log_kind::evtx) {
    use(whole_log(log));
  } else if (is_file(*log)) {
    cut_file(log, use);
  } else {
    cut_by_reading(log, memory, use);
  }
}

log_part whole_log(const std::shared_ptr<const found_log>& log) {
  log_part part;
  part.log = log;
  part.last = true;
  return part;
}

bool is_shared(const log_part& part) { return part.is_block || is_file(*part.log); }

}  // namespace zanvik
