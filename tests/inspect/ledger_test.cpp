// The account: every byte in one line, records that agree with the reader; sums; forms; the verb.
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "../run/program_run.h"
#include "export/line_text.h"
#include "inspect/forms/ledger_forms.h"
#include "ledger_of.h"

namespace zanvik::testing {
namespace {

std::string csv_of(const file_bytes& log) {
  log_ledger ledger = ledger_of(log);
  std::string text;
  append_ledger_csv(text, ledger);
  return text;
}

TEST(checksums, have_the_check_values_of_their_kinds) {
  const byte_vector digits = bytes_of("123456789");
  EXPECT_EQ(crc32_of(digits), 0xcbf43926u);
  EXPECT_EQ(crc32_of(std::span(digits).subspan(4), crc32_of(std::span(digits).first(4))),
            0xcbf43926u);
  sha256 sum;
  sum.add(bytes_of("a"));
  sum.add(bytes_of("bc"));
  EXPECT_EQ(sum.finish(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

struct account_row {
  const char* what;
  std::function<void(log_builder&)> damage;
  area_kind kind;
  std::uint64_t records;
  std::uint64_t read;  // of the six in two chunks
};

TEST(account, records_are_read_or_lost_for_a_reason) {
  const account_row rows[] = {
      {"sound", [](auto&) {}, area_kind::record_read, 6, 6},
      {"cut", [](auto& l) { l.poke_u32(l.record_offset(0, 1) + 4, 65537); }, area_kind::lost_cut, 1,
       4},
      {"behind it", [](auto& l) { l.poke_u32(l.record_offset(0, 1) + 4, 65537); },
       area_kind::lost_behind, 1, 4},
      {"too small", [](auto& l) { l.poke_u32(l.record_offset(0, 1) + 4, 9); }, area_kind::lost_size,
       1, 4},
      {"more than declared", [](auto& l) { l.poke_u64(l.chunk_offset(0) + 32, 1); },
       area_kind::lost_undeclared, 2, 4},
      {"no chunk signature", [](auto& l) { l.poke_u8(l.chunk_offset(0), 0); },
       area_kind::lost_chunk, 3, 3},
      {"numbers are others",
       [](auto& l) {
         l.poke_u64(l.chunk_offset(0) + 24, 10);
         l.poke_u64(l.chunk_offset(0) + 32, 12);
       },
       area_kind::record_outside, 3, 6},
      {"the template is not where it was",
       [](auto& l) { l.poke_u32(l.content_offset(0, 1) + 10, 60000); }, area_kind::record_bare, 1,
       6},
  };
  for (const account_row& row : rows) {
    SCOPED_TRACE(row.what);
    auto log = log_builder()
                   .chunk({record(1), record(2), record(3)})
                   .chunk({record(4), record(5), record(6)});
    row.damage(log);
    const log_ledger ledger = ledger_of(log);
    EXPECT_EQ(ledger.account.line(row.kind).records, row.records);
    EXPECT_EQ(ledger.account.given(), row.read);
    EXPECT_EQ(ledger.account.bytes(), log.size());
  }
}

TEST(account, free_space_is_told_apart) {
  const auto log = log_builder().chunk(
      chunk_builder{record(5), record(6)}.slack(record(6)).slack(record(3)).free_tail(
          bytes_of("leftover")));
  const log_account& account = ledger_of(log).account;
  EXPECT_EQ(account.line(area_kind::free_copy).records, 1u);
  EXPECT_EQ(account.line(area_kind::free_record).records, 1u);
  EXPECT_GE(account.line(area_kind::free_data).bytes, 8u);
  EXPECT_EQ(account.bytes(), log.size());
}

// Every byte changed in turn, and every length: the sum is always the size of the log.
TEST(account, sums_up_whatever_is_damaged) {
  const auto sound = log_builder().chunk(chunk_builder{record(1), record(2)}.slack(record(3)));
  const std::size_t end = sound.record_offset(0, 2) + 600;
  for (std::size_t at = 0; at < end; at += at < 4096 && at >= 128 ? 128 : 1) {
    log_builder log = sound;
    log.poke_u8(at, static_cast<std::uint8_t>(std::to_integer<int>(log.bytes()[at]) ^ 0x81));
    const log_ledger ledger = ledger_of(log);
    ASSERT_EQ(ledger.account.bytes(), log.size()) << "byte " << at;
  }
  for (std::size_t size = 4104; size < sound.size(); size += 997) {
    log_builder log = sound;
    log.truncate(size);
    ASSERT_EQ(ledger_of(log).account.bytes(), size);
  }
  const auto legacy = evt_builder().add({}).add({}).cursor();
  for (std::size_t at = 8; at < legacy.size(); ++at) {
    evt_builder log = legacy;
    log.poke_u8(at, 0xff);
    ASSERT_EQ(ledger_of(log).account.bytes(), log.size()) << "byte " << at;
  }
}

TEST(account, a_legacy_ring_that_wraps) {
  // The newest record reaches past the file's end, and continues after the header.
  const byte_vector wrapped = evt_record_bytes({.record_num = 3, .event_id = 3});
  evt_builder log;
  log.raw(std::span(wrapped).subspan(wrapped.size() - 16));
  log.add({.record_num = 4, .event_id = 4}).cursor();
  const std::size_t begin = log.size();
  log.raw(evt_record_bytes({.record_num = 2, .event_id = 2}));
  log.raw(std::span(wrapped).first(wrapped.size() - 16));
  const std::size_t cursor = log.record_offset(0) + evt_record_bytes({.event_id = 4}).size();
  for (const std::size_t at : {std::size_t{16}, cursor + 20}) {
    log.poke_u32(at, static_cast<std::uint32_t>(begin));
    log.poke_u32(at + 4, static_cast<std::uint32_t>(cursor));
    log.poke_u32(at + 8, 5);
    log.poke_u32(at + 12, 2);
  }
  log.poke_u32(32, static_cast<std::uint32_t>(log.size()));
  const log_ledger ledger = ledger_of(log);
  EXPECT_EQ(names_of(ledger), std::set<std::string>{"record_wrapped"});
  EXPECT_EQ(ledger.account.given(), 2u);
  EXPECT_EQ(ledger.account.line(area_kind::wrapped_rest).bytes, 16u);
  EXPECT_EQ(ledger.account.declared, 3u);
}

// The documentation explains each finding by its name.
TEST(documentation, has_every_finding_and_line_of_the_account) {
  const std::string page = file_text(ZANVIK_SOURCE_DIR "/docs/integrity.md");
  const auto has = [&page](std::string_view name) {
    const std::string quoted = '`' + std::string(name) + '`';
    EXPECT_NE(page.find(quoted), std::string::npos) << name;
  };
  for (std::size_t kind = 0; kind < finding_kinds; ++kind) {
    has(finding_name(static_cast<finding_kind>(kind)));
  }
  for (std::size_t kind = 0; kind < area_kinds; ++kind) {
    if (static_cast<area_kind>(kind) != area_kind::unread_part) {
      has(area_name(static_cast<area_kind>(kind)));
    }
  }
}

TEST(forms, hold_any_text) {
  std::string json;
  append_json_text(json, "a\"\\\n\x1b\xff\xc3\xa4");
  EXPECT_EQ(json, "\"a\\\"\\\\\\n\\u001b\xef\xbf\xbd\xc3\xa4\"");
  // A computer name that would be a formula, and one that controls the terminal.
  const auto log = log_builder().chunk(
      {record(1, {.computer = "=cmd|'calc'!A0"}), record(2, {.computer = "a\x1b[2J\nb,\"c"})});
  const std::string csv = csv_of(log);
  EXPECT_NE(csv.find(",'=cmd|'calc'!A0,"), std::string::npos);
  EXPECT_NE(csv.find("\"a\x1b[2J\nb,\"\"c\""), std::string::npos);
  log_ledger ledger = ledger_of(log);
  std::string table;
  append_ledger_table(table, ledger, {});
  EXPECT_EQ(table.find('\x1b'), std::string::npos);
  EXPECT_NE(table.find("a?[2J?b,\"c"), std::string::npos);
}

// What `check` counts as read is what `export` shows, with free space and without; also for damaged
// logs.
TEST(check_run, agrees_with_export) {
  const scratch_dir scratch;
  auto damaged = log_builder()
                     .chunk(chunk_builder{record(1), record(2), record(3)}.slack(record(9)))
                     .chunk({record(4), record(5)});
  damaged.poke_u32(damaged.record_offset(0, 1) + 4, 3);
  damaged.write(scratch.path("damaged.evtx"));
  std::vector<std::string> paths = {scratch.path("damaged.evtx")};
  for (const auto& sample : std::filesystem::directory_iterator(ZANVIK_SOURCE_DIR "/samples")) {
    const auto extension = sample.path().extension();
    if (extension == ".evtx" || extension == ".evt") paths.push_back(sample.path());
  }
  for (const std::string& path : paths) {
    SCOPED_TRACE(path);
    const auto checked = run_zanvik({"check", "--format", "csv", path});
    ASSERT_TRUE(checked.status == 0 || checked.status == 4) << checked.err;
    const auto cell = [&checked](const std::string& name) {
      const auto at = checked.out.find(",account," + name + ",,,,");
      return std::strtoull(checked.out.c_str() + at + name.size() + 13, nullptr, 10);
    };
    EXPECT_EQ(lines_of(run_zanvik({"export", path}).out).size(), cell("read"));
    EXPECT_EQ(lines_of(run_zanvik({"export", "--slack", path}).out).size(),
              cell("read_with_slack"));
  }
}

TEST(check_run, its_status_is_for_scripts) {
  const scratch_dir scratch;
  const auto sound = log_builder().chunk({record(1)});
  sound.write(scratch.path("sound.evtx"));
  auto gap = log_builder().chunk({record(1), record(3)});
  gap.write(scratch.path("gap.evtx"));
  const auto status = [](const std::vector<std::string>& args) { return run_zanvik(args).status; };
  EXPECT_EQ(status({"check", scratch.path("sound.evtx")}), 0);
  EXPECT_EQ(status({"check", scratch.path("")}), 4);
  EXPECT_EQ(status({"check", scratch.path("gap.evtx"), scratch.path("none.evtx")}), 1);
  EXPECT_EQ(status({"check", "--format", "xml", scratch.path("gap.evtx")}), 2);
  EXPECT_EQ(status({"check"}), 2);
  // To a file, which is none of those to read.
  const std::string gap_path = scratch.path("gap.evtx"), out = scratch.path("ledger");
  EXPECT_EQ(status({"check", "-q", "--output", out, gap_path}), 4);
  EXPECT_EQ(file_text(out), run_zanvik({"check", gap_path}).out);
  EXPECT_EQ(status({"check", "-o", gap_path, scratch.path("")}), 2);
  EXPECT_EQ(run_zanvik({"check", gap_path}).status, 4) << "it is untouched";
}

TEST(check_run, reads_a_stream_as_it_reads_the_file) {
  const scratch_dir scratch;
  const auto log = log_builder().chunk({record(1), record(3)}).chunk({record(4)});
  const std::string path = scratch.path("a.evtx");
  log.write(path);
  const std::string file = run_zanvik({"check", path}).out;
  const auto stream = run_zanvik({"check", "-"}, {.input = file_text(path)});
  EXPECT_EQ(stream.status, 4);
  EXPECT_EQ(stream.out.substr(stream.out.find('\n')), file.substr(file.find('\n')));
}

// One ledger, line by line, worked out by hand: 4,096 bytes of file header, 512 of chunk header,
// records 1 and 3, zeros.
TEST(check_run, prints_a_table) {
  const scratch_dir scratch;
  const auto log = log_builder().chunk({record(1), record(3)});
  log.write(scratch.path("a.evtx"));
  const auto run = run_zanvik({"check", "a.evtx"}, {.folder = scratch.path("")});
  const std::vector<std::string> lines = lines_of(run.out);
  ASSERT_GT(lines.size(), 12u);
  EXPECT_EQ(lines[0], "a.evtx");
  const auto has = [&lines](const std::string& line) {
    EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line;
  };
  has("  file header                                              -             4,096");
  has("  chunk headers                                            -               512");
  has("  sum: live records; size of the log                       2            69,632");
  has("  declared by headers                                      3                 -");
  has("  declared but not found                                   1                 -");
  has("    at " + std::string(10 - std::to_string(log.record_offset(0, 1)).size(), ' ') +
      std::to_string(log.record_offset(0, 1)) +
      ", chunk 0, record 3: 1 record (2) missing before this one");
  has("  with findings");
}

}  // namespace
}  // namespace zanvik::testing
