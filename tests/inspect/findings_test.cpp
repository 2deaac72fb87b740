// Each finding, made by a builder: the change to a sound log, and everything that the ledger then
// says.
#include <functional>

#include "inspect/finding_runs.h"
#include "inspect/forms/ledger_forms.h"
#include "inspect/record_sequence.h"
#include "ledger_of.h"

namespace zanvik::testing {
namespace {

using names = std::set<std::string>;

// Where the finding of the row should be; -1 if the row does not say.
struct place {
  std::int64_t offset = -1;
  std::int64_t chunk = -1;
  std::int64_t record = -1;
};

void expect_place(const log_ledger& ledger, std::string_view name, const place& where) {
  for (const finding& found : ledger.findings.kept()) {
    if (finding_name(found.kind) != name) continue;
    if (where.offset >= 0) {
      EXPECT_EQ(found.offset, static_cast<std::uint64_t>(where.offset));
    }
    if (where.chunk >= 0) {
      EXPECT_EQ(found.chunk, static_cast<std::uint64_t>(where.chunk));
    }
    if (where.record >= 0) {
      EXPECT_EQ(found.record, static_cast<std::uint64_t>(where.record));
    }
    return;
  }
  ADD_FAILURE() << "no " << name;
}

// Three chunks of records 1 to 9.
log_builder sound_log() {
  return log_builder()
      .chunk({record(1), record(2), record(3)})
      .chunk({record(4), record(5), record(6)})
      .chunk({record(7), record(8), record(9)});
}

event at_time(std::uint64_t filetime) { return {.filetime = filetime}; }

struct evtx_row {
  const char* what;
  std::function<log_builder()> make;
  names expected;  // the first one is not special; the place is of `named`
  const char* named;
  place where;
  bool whole = false;
};

constexpr std::int64_t chunk0 = 4096, chunk1 = chunk0 + 65536, chunk2 = chunk1 + 65536;

// A sound log after `damage`, with the checksums of header and chunks corrected.
std::function<log_builder()> forged(std::function<void(log_builder&)> damage) {
  return [damage] {
    log_builder log = sound_log();
    damage(log);
    for (std::size_t chunk = 0; chunk < 3; ++chunk) mend_chunk(log, chunk);
    mend_header(log);
    return log;
  };
}
// The same with the old checksums.
std::function<log_builder()> damaged(std::function<void(log_builder&)> damage) {
  return [damage] {
    log_builder log = sound_log();
    damage(log);
    return log;
  };
}

TEST(findings, of_an_evtx_log) {
  const evtx_row rows[] = {
      {"nothing was done", [] { return sound_log(); }, {}, nullptr, {}, true},
      {"a log without records, as a new one is",
       [] { return log_builder().chunk(chunk_builder()); },
       {},
       nullptr,
       {},
       true},
      // The file header.
      {"a byte of the header changed",
       damaged([](auto& l) { l.poke_u8(8, 1); }),
       {"header_checksum", "oldest_newest"},
       "header_checksum",
       {124}},
      {"version 4.0",
       forged([](auto& l) { l.poke_u32(36, 0x00040000); }),
       {"header_fields"},
       "header_fields",
       {36}},
      {"a flag that is none",
       forged([](auto& l) { l.poke_u32(120, 0x10); }),
       {"header_fields"},
       "header_fields",
       {120}},
      {"something behind the header",
       forged([](auto& l) { l.poke_u8(200, 1); }),
       {"header_residue"},
       "header_residue",
       {128}},
      {"the dirty flag",
       forged([](auto& l) { l.poke_u32(120, 1); }),
       {"not_closed"},
       "not_closed",
       {120},
       true},
      {"the full flag",
       forged([](auto& l) { l.poke_u32(120, 2); }),
       {"log_full"},
       "log_full",
       {120},
       true},
      {"a log without checksums",
       damaged([](auto& l) {
         l.poke_u32(120, 4);
         l.poke_u32(124, 0);
       }),
       {"no_checksums"},
       "no_checksums",
       {120},
       true},
      {"a chunk taken off the end",
       forged([](auto& l) { l.poke_u16(42, 4); }),
       {"chunk_count"},
       "chunk_count",
       {42}},
      {"the newest chunk is another one",
       forged([](auto& l) { l.poke_u64(16, 1); }),
       {"oldest_newest"},
       "oldest_newest",
       {8}},
      {"the next number is too high",
       forged([](auto& l) { l.poke_u64(24, 20); }),
       {"next_number"},
       "next_number",
       {24}},
      {"the same in a log that was not closed",
       forged([](auto& l) {
         l.poke_u32(120, 1);
         l.poke_u64(24, 20);
       }),
       {"next_number", "not_closed"},
       "next_number",
       {24},
       true},
      {"half a chunk behind the last",
       damaged([](auto& l) { l.truncate(l.size() + 5000); }),
       {"file_tail"},
       "file_tail",
       {chunk2 + 65536}},
      // Chunks.
      {"a chunk's signature is gone",
       damaged([](auto& l) { l.poke_u8(chunk1, 'X'); }),
       {"chunk_count", "chunk_signature", "number_gap"},
       "chunk_signature",
       {chunk1, 1}},
      {"a chunk was wiped",
       damaged([](auto& l) { l.poke_bytes(chunk1, byte_vector(65536)); }),
       {"chunk_count", "chunk_zeroed", "number_gap"},
       "chunk_zeroed",
       {chunk1, 1}},
      {"a byte of a chunk's string table changed",
       damaged([](auto& l) { l.poke_u8(chunk1 + 130, 0xff); }),
       {"chunk_header_checksum"},
       "chunk_header_checksum",
       {chunk1 + 124, 1}},
      {"a value of a record changed",
       damaged([](auto& l) { l.poke_u8(l.record_offset(1, 1) + 80, 0xff); }),
       {"chunk_data_checksum"},
       "chunk_data_checksum",
       {chunk1 + 52, 1}},
      {"the same in an older chunk of a log that was not closed",
       [] {
         log_builder log = sound_log();
         log.poke_u8(log.record_offset(1, 1) + 80, 0xff);
         log.poke_u32(120, 1);
         return log;
       },
       {"chunk_data_checksum", "not_closed"},
       "chunk_data_checksum",
       {chunk1 + 52, 1}},
      {"the same in the chunk that was being written",
       [] {
         log_builder log = sound_log();
         log.poke_u8(log.record_offset(2, 1) + 80, 0xff);
         log.poke_u32(120, 1);
         return log;
       },
       {"checksum_stale", "not_closed"},
       "checksum_stale",
       {chunk2 + 52, 2},
       true},
      {"the last record is said to be elsewhere",
       forged([](auto& l) { l.poke_u32(chunk1 + 44, 512); }),
       {"chunk_fields"},
       "chunk_fields",
       {chunk1 + 44, 1}},
      {"free space is said to begin outside",
       forged([](auto& l) { l.poke_u32(chunk1 + 48, 70000); }),
       {"chunk_data_checksum", "chunk_fields"},
       "chunk_fields",
       {chunk1 + 48, 1}},
      {"a declared range that no chunk can hold",
       forged([](auto& l) { l.poke_u64(chunk1 + 32, 4'000'000); }),
       {"chunk_fields"},
       "chunk_fields",
       {chunk1 + 24, 1}},
      {"two counts of a chunk's records differ",
       forged([](auto& l) { l.poke_u64(chunk1 + 16, 9); }),
       {"chunk_fields"},
       "chunk_fields",
       {chunk1 + 8, 1}},
      {"a chunk that declares fewer records",
       forged([](auto& l) { l.poke_u64(chunk1 + 32, 5); }),
       {"chunk_fields", "declared_count", "record_unread"},
       "declared_count",
       {chunk1 + 24, 1}},
      {"a chunk that comes twice",
       [] {
         return log_builder().chunk({record(1), record(2)}).chunk({record(1), record(2)});
       },
       {"chunk_twice", "number_repeated"},
       "chunk_twice",
       {chunk1, 1}},
      {"chunks in another order",
       [] {
         log_builder log = log_builder()
                               .chunk({record(1), record(2)})
                               .chunk({record(5), record(6)})
                               .chunk({record(3), record(4)});
         log.poke_u64(16, 1);
         mend_header(log);
         return log;
       },
       {"chunk_order", "number_gap"},
       "chunk_order",
       {chunk2 + 512, 2}},
      {"a ring that begins in its second chunk",
       [] {
         log_builder log =
             log_builder().chunk({record(3), record(4)}).chunk({record(1), record(2)});
         log.poke_u64(8, 1);
         log.poke_u64(16, 0);
         mend_header(log);
         return log;
       },
       {},
       nullptr,
       {},
       true},
      // Record numbers.
      {"a record is missing in a chunk",
       [] {
         return log_builder().chunk({record(1), record(2), record(4)});
       },
       {"declared_count", "number_gap"},
       "number_gap",
       {-1, 0, 4}},
      {"records are missing between chunks",
       [] {
         return log_builder().chunk({record(1), record(2)}).chunk({record(8), record(9)});
       },
       {"number_gap"},
       "number_gap",
       {chunk1 + 512, 1, 8}},
      {"a number comes twice",
       [] {
         return log_builder().chunk({record(1), record(2), record(2), record(3)});
       },
       {"declared_count", "number_repeated", "record_unread"},
       "number_repeated",
       {-1, 0, 2}},
      {"a number that its chunk does not declare",
       [] {
         return log_builder().chunk(chunk_builder{record(1), record(2)}.declare(2, 3));
       },
       {"number_outside"},
       "number_outside",
       {chunk0 + 512, 0, 1}},
      // Records.
      {"the size at a record's end differs",
       forged([](auto& l) { l.poke_u32(l.record_offset(1, 1) - 4, 8); }),
       {"sizes_differ"},
       "sizes_differ",
       {-1, 1, 4}},
      {"a size that leads out of the chunk",
       forged([](auto& l) { l.poke_u32(l.record_offset(1, 1) + 4, 65535); }),
       {"record_cut", "record_unread"},
       "record_cut",
       {-1, 1, 5}},
      {"a size of nothing",
       forged([](auto& l) { l.poke_u32(l.record_offset(1, 1) + 4, 0); }),
       {"record_size", "record_unread"},
       "record_size",
       {-1, 1, 5}},
      {"a record's signature is gone",
       forged([](auto& l) { l.poke_u8(l.record_offset(1, 1), 0); }),
       {"damaged_bytes", "declared_count", "number_gap", "record_unread"},
       "damaged_bytes",
       {-1, 1}},
      {"a record's content is gone",
       forged([](auto& l) { l.poke_bytes(l.content_offset(1, 1), byte_vector(60)); }),
       {"record_partial"},
       "record_partial",
       {-1, 1, 5}},
      // Times.
      {"a time before 1990",
       [] { return log_builder().chunk({record(1, at_time(filetime(1985, 1, 1)))}); },
       {"time_impossible"},
       "time_impossible",
       {chunk0 + 512, 0, 1}},
      {"a time after the file's own",
       [] { return log_builder().chunk({record(1, at_time(filetime(2150, 1, 1)))}); },
       {"time_impossible"},
       "time_impossible",
       {chunk0 + 512, 0, 1}},
      {"no time, as exports have it in their last record",
       forged([](auto& l) { l.poke_u64(l.record_offset(2, 2) + 16, 0); }),
       {"time_missing"},
       "time_missing",
       {-1, 2, 9},
       true},
      // Free space.
      {"records of another time in free space",
       [] {
         return log_builder().chunk(chunk_builder{record(1), record(2)}.slack(record(7)));
       },
       {"free_records"},
       "free_records",
       {chunk0, 0},
       true},
      {"a living record's copy in free space",
       [] {
         return log_builder().chunk(chunk_builder{record(1), record(2)}.slack(record(2)));
       },
       {},
       nullptr,
       {},
       true},
  };
  for (const evtx_row& row : rows) {
    SCOPED_TRACE(row.what);
    const log_builder log = row.make();
    const log_ledger ledger = ledger_of(log);
    EXPECT_EQ(names_of(ledger), row.expected);
    EXPECT_EQ(!ledger.findings.any_finding(), row.whole);
    EXPECT_EQ(ledger.account.bytes(), log.size());
    if (row.named) expect_place(ledger, row.named, row.where);
  }
}

// The size of record 1 is increased over record 2, whose own header is still there, and numbers,
// counts and checksums are corrected, so that no other sign is left.
TEST(findings, a_record_inside_another_one) {
  log_builder log = log_builder().chunk({record(1), record(2), record(3)});
  const std::size_t outer = log.record_offset(0, 0);
  const std::size_t inner = log.record_offset(0, 1);
  const std::size_t behind = log.record_offset(0, 2);
  const auto size = static_cast<std::uint32_t>(behind - outer);
  log.poke_u32(outer + 4, size);
  log.poke_u32(behind - 4, size);
  log.poke_u64(behind + 8, 2);
  log.poke_u64(4096 + 16, 2);
  log.poke_u64(4096 + 32, 2);
  log.poke_u64(24, 3);
  mend_chunk(log, 0);
  mend_header(log);
  const log_ledger ledger = ledger_of(log);
  EXPECT_EQ(names_of(ledger), names{"record_hidden"});
  expect_place(ledger, "record_hidden", {static_cast<std::int64_t>(inner), 0, 2});
  EXPECT_EQ(ledger.account.line(area_kind::record_read).records, 2u);
}

TEST(findings, of_a_legacy_log) {
  const auto sound = [] {
    return evt_builder().add({.event_id = 1}).add({.event_id = 2}).add({.event_id = 3}).cursor();
  };
  struct row {
    const char* what;
    std::function<evt_builder()> make;
    names expected;
    bool whole = false;
    std::string said = {};  // by one of the findings
  };
  const auto changed = [sound](std::function<void(evt_builder&)> damage) {
    return [sound, damage] {
      evt_builder log = sound();
      log.poke_u32(32, static_cast<std::uint32_t>(log.size()));
      damage(log);
      return log;
    };
  };
  const row rows[] = {
      {"nothing was done", changed([](auto&) {}), {}, true},
      {"the dirty flag", changed([](auto& l) { l.poke_u32(36, 1); }), {"not_closed"}, true},
      {"the full flag", changed([](auto& l) { l.poke_u32(36, 4); }), {"log_full"}, true},
      {"another size than declared",
       changed([](auto& l) { l.poke_u32(32, 12345); }),
       {"file_tail"},
       false,
       "declares 12345 bytes, the file has " + std::to_string(sound().size())},
      {"version 2.1",
       changed([](auto& l) { l.poke_u32(8, 2); }),
       {"header_fields"},
       false,
       "version 2.1"},
      {"version 1.2",
       changed([](auto& l) { l.poke_u32(12, 2); }),
       {"header_fields"},
       false,
       "version 1.2"},
      {"the size at the header's end",
       changed([](auto& l) { l.poke_u32(44, 47); }),
       {"header_fields"},
       false,
       "sizes 48 in front, 47 at the end"},
      {"header and end-of-file record differ",
       changed([](auto& l) { l.poke_u32(24, 77); }),
       {"end_record"},
       false,
       "the header 1 to below 77 from 48 to " + std::to_string(sound().size() - 40)},
      {"the end-of-file record is elsewhere",
       changed([](auto& l) {
         l.poke_u32(20, 48);
         l.poke_u32(l.size() - 40 + 24, 48);
       }),
       {"end_record"},
       false,
       "says that it stands at 48"},
      {"two end-of-file records",
       [] {
         evt_builder log = evt_builder().add({.event_id = 1}).cursor().cursor();
         log.poke_u32(32, static_cast<std::uint32_t>(log.size()));
         return log;
       },
       {"end_record"},
       false,
       "one more end-of-file record"},
      {"the same in a log that was not closed",
       changed([](auto& l) {
         l.poke_u32(24, 77);
         l.poke_u32(36, 1);
       }),
       {"not_closed"},
       true},
      {"the size at a record's end differs",
       changed([](auto& l) { l.poke_u32(l.record_offset(1) - 4, 8); }),
       {"sizes_differ"},
       false,
       "in front, 8 at the end"},
      {"a record's signature is gone",
       changed([](auto& l) { l.poke_u8(l.record_offset(1) + 4, 0); }),
       {"damaged_bytes", "number_gap"}},
      {"a size of nothing",
       changed([](auto& l) { l.poke_u32(l.record_offset(1), 8); }),
       {"record_size"}},
      {"a size that leads out of the file",
       changed([](auto& l) { l.poke_u32(l.record_offset(1), 100000); }),
       {"record_cut", "record_unread"}},
      {"a number is missing",
       [] {
         evt_builder log =
             evt_builder().add({.event_id = 1}).add({.record_num = 5, .event_id = 2}).cursor();
         log.poke_u32(32, static_cast<std::uint32_t>(log.size()));
         return log;
       },
       {"number_gap"}},
  };
  for (const row& row : rows) {
    SCOPED_TRACE(row.what);
    const evt_builder log = row.make();
    const log_ledger ledger = ledger_of(log);
    EXPECT_EQ(names_of(ledger), row.expected);
    EXPECT_EQ(!ledger.findings.any_finding(), row.whole);
    EXPECT_EQ(ledger.account.bytes(), log.size());
    std::string said;
    for (const finding& found : ledger.findings.kept()) said += found.detail + "\n";
    EXPECT_NE(said.find(row.said), std::string::npos) << said;
  }
}

TEST(findings, stand_in_a_list_of_the_json_form) {
  evt_builder log = evt_builder().add({.event_id = 1}).add({.event_id = 2}).cursor();
  log.poke_u32(8, 2);
  log.poke_u32(32, 7);
  log_ledger ledger = ledger_of(log);
  std::string json;
  append_ledger_json(json, ledger);
  std::erase_if(json, [](char c) { return c == ' ' || c == '\n'; });
  const auto expect_part = [&json](const std::string& part) {
    EXPECT_NE(json.find(part), std::string::npos) << part << " in " << json;
  };
  expect_part(R"("findings":[{"name":"header_fields","weight":"finding","offset":8,"detail":)"
              R"("version2.1","may_mean":")");
  expect_part(R"(},{"name":"file_tail","weight":"finding","offset":32,"detail":"declares7bytes)");
  expect_part(R"("}],"finding_counts":{"header_fields":1,"file_tail":1})");

  log_builder damaged = sound_log();
  damaged.poke_u8(chunk1, 'X');
  ledger = ledger_of(damaged);
  json.clear();
  append_ledger_json(json, ledger);
  std::erase_if(json, [](char c) { return c == ' ' || c == '\n'; });
  expect_part(R"("chunks":[{"chunk":0,"offset":4096,"state":"sound","declared_first":1,)"
              R"("declared_last":3,)");
  expect_part(R"({"chunk":1,"offset":69632,"state":")");
  expect_part(R"("name":"chunk_signature","weight":"finding","offset":69632,"chunk":1,"detail":")");
}

TEST(findings, of_consecutive_records_are_joined) {
  finding_list findings;
  finding_runs runs(findings, finding_kind::record_unread);
  const auto add = [&](std::uint64_t number, std::optional<std::uint64_t> chunk, const char* text) {
    runs.add({number * 100, 90, area_kind::lost_cut, number}, chunk, text);
  };
  for (const std::uint64_t number : {3, 4, 5}) add(number, 0, "cut");
  add(6, 1, "cut");
  add(7, 1, "behind");
  add(9, 1, "behind");
  add(~std::uint64_t{0}, 1, "behind");
  add(0, 1, "behind");
  add(1, std::nullopt, "behind");
  runs.flush();
  runs.flush();
  std::string seen;
  for (const finding& found : findings.kept()) {
    seen += std::to_string(found.offset / 100 % 1000) + ": " + found.detail + "; ";
    EXPECT_EQ(found.record.value_or(77) * 100, found.offset);
  }
  const std::string last = std::to_string(~std::uint64_t{0});
  EXPECT_EQ(seen, "3: " + numbers_text(3, 5) + ", cut; 6: " + numbers_text(6, 6) +
                      ", cut; 7: " + numbers_text(7, 7) + ", behind; 9: " + numbers_text(9, 9) +
                      ", behind; " + std::to_string(~std::uint64_t{0} * 100 / 100 % 1000) + ": " +
                      numbers_text(~std::uint64_t{0}, ~std::uint64_t{0}) + ", behind; 0: " +
                      numbers_text(0, 0) + ", behind; 1: " + numbers_text(1, 1) + ", behind; ");
}

}  // namespace
}  // namespace zanvik::testing
