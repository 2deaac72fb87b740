// The ledger of a log that a test made, in short form.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "evt_builder.h"
#include "inspect/checksum.h"
#include "inspect/chunk_walk.h"
#include "inspect/inspect_log.h"
#include "log_builder.h"
#include "scratch_dir.h"
#include "source/log_finder.h"

namespace zanvik::testing {

inline log_ledger ledger_of(const file_bytes& log) {
  const scratch_dir scratch;
  const std::string path = scratch.path("made.log");
  log.write(path);
  log_ledger ledger;
  log_finder([&ledger](found_log& found) { inspect_log(found, ledger); },
             [](const std::string&, const std::string& what) { ADD_FAILURE() << what; })
      .find(path);
  return ledger;
}

// The names of the findings and notes, each once.
inline std::set<std::string> names_of(const log_ledger& ledger) {
  std::set<std::string> names;
  for (const finding& found : ledger.findings.kept()) names.emplace(finding_name(found.kind));
  return names;
}

// Corrects the checksums of a chunk, as a careful forger would.
inline void mend_chunk(log_builder& log, std::size_t chunk) {
  const std::size_t at = log.chunk_offset(chunk);
  const auto bytes = std::span<const std::byte>(log.bytes()).subspan(at, chunk_bytes);
  log.poke_u32(at + 52, data_checksum_of(bytes, read_chunk_header(bytes).free_at));
  log.poke_u32(at + 124, header_checksum_of(bytes));
}

inline void mend_header(log_builder& log) {
  log.poke_u32(124, crc32(std::span<const std::byte>(log.bytes()).first(120)));
}

}  // namespace zanvik::testing
