// Blocks of an open file or stream, one behind the other. A stop signal ends them as the end of the
// input does.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "source/found_log.h"

namespace zanvik {

// Reads until `buffer` is full or the input ends, at the position or at `offset`. Returns the bytes
// read, -1 when the first of them cannot be.
ssize_t read_fully(int descriptor, std::span<std::byte> buffer);
ssize_t read_fully(int descriptor, std::span<std::byte> buffer, std::uint64_t offset);

// The bytes of the log at `offset`; not for streams.
ssize_t read_fully(const found_log& log, std::span<std::byte> buffer, std::uint64_t offset);

// Called with a block and its offset; the bytes may be changed and live until it returns.
using block_use = std::function<void(std::span<std::byte>, std::uint64_t)>;

// Hands out the log from `offset` on in blocks of `block_bytes`, the last one shorter. Holes of a
// file are passed over. Returns false when a part could not be read; what could be has been used.
bool read_blocks(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                 const block_use& use);

// The same in memory that `room` gives, empty or used before. `use` gets it with the number of its
// bytes, which may be 0 when some could not be read (`unread`), and returns false to end this.
using block_room = std::function<std::vector<std::byte>()>;
using owned_block_use = std::function<bool(std::vector<std::byte>&& block, std::uint64_t offset,
                                           std::size_t size, bool unread)>;
void read_blocks_into(const found_log& log, std::uint64_t offset, std::size_t block_bytes,
                      const block_room& room, const owned_block_use& use);

// Where the first chunk of an .evtx log may stand: a log may begin with it.
std::uint64_t first_chunk_offset(const found_log& log);
// Where the next block begins at or behind `offset`, which is where one may: holes of the file are
// passed over. Its size when there is none.
std::uint64_t next_block(const found_log& log, std::uint64_t offset, std::size_t block_bytes);

// The blocks into memory of the caller's: `room` is asked for some of it, for the bytes at an offset,
// and `use` gets their count.
bool read_into(const found_log& log,
               const std::function<std::span<std::byte>(std::uint64_t offset)>& room,
               const std::function<void(std::size_t bytes)>& use);

}  // namespace zanvik
