// A finding: a fact about a log, with its place. What each kind may mean, and its weight, is in one
// table (finding_kinds.cpp) and in docs/integrity.md.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

enum class finding_kind : std::uint8_t {
  header_checksum,
  header_fields,
  header_residue,
  not_closed,
  log_full,
  no_checksums,
  chunk_count,
  oldest_newest,
  next_number,
  file_tail,
  chunk_signature,
  chunk_zeroed,
  chunk_header_checksum,
  chunk_data_checksum,
  checksum_stale,
  chunk_fields,
  declared_count,
  chunk_twice,
  chunk_order,
  number_gap,
  number_repeated,
  number_outside,
  begins_late,
  sizes_differ,
  record_cut,
  record_wrapped,
  record_size,
  record_hidden,
  record_unread,
  record_partial,
  damaged_bytes,
  free_records,
  time_backwards,
  time_backwards_explained,
  time_impossible,
  time_missing,
  end_record,
  log_cleared,
  service_stopped,
  service_started,
  shutdown_unexpected,
  computer_changed,
  unreadable,
};
inline constexpr std::size_t finding_kinds = static_cast<std::size_t>(finding_kind::unreadable) + 1;

// A `note` is a fact that is common in sound logs; a `finding` says that the log is not whole or
// may have been changed. Only findings make a log one "with findings".
enum class finding_weight : std::uint8_t { note, finding };

std::string_view finding_name(finding_kind kind);     // "number_gap"
std::string_view finding_meaning(finding_kind kind);  // what it may mean, one sentence or two
finding_weight usual_weight(finding_kind kind);

struct finding {
  finding_kind kind{};
  finding_weight weight = finding_weight::note;
  std::uint64_t offset = 0;  // in the file
  std::optional<std::uint64_t> chunk;
  std::optional<std::uint64_t> record;  // a record number
  std::string detail;
};

// The findings of one log, in the order they were made; a limited number of each kind is kept
// (limits.h), and all are counted.
class finding_list {
 public:
  // The reference is valid until the next call; it may be to one that is not kept.
  finding& add(finding_kind kind, std::uint64_t offset, std::string detail);
  const std::vector<finding>& kept() const { return kept_; }
  std::uint64_t count(finding_kind kind) const { return counts_[static_cast<std::size_t>(kind)]; }
  // Whether any has the weight of a finding.
  bool any_finding() const;
  // Findings of a kind that others explain become notes.
  void excuse(finding_kind kind);
  // Those of a kind in one chunk become another kind.
  void recast(finding_kind from, std::uint64_t chunk, finding_kind to);
  void sort_by_offset();

 private:
  finding_weight weight_of(finding_kind kind) const;

  std::vector<finding> kept_;
  std::array<std::uint64_t, finding_kinds> counts_{};
  std::array<bool, finding_kinds> excused_{};
  finding not_kept_;
};

}  // namespace zanvik
