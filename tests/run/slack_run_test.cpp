// Whole runs with and without -inc_slack.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "log_builder.h"
#include "program_run.h"

namespace zanvik::testing {
namespace {

// A row of a CSV listing with offsets: number, offset, and with -inc_slack the mark.
struct listed_row {
  std::uint64_t number = 0;
  std::uint64_t offset = 0;
  std::string mark;
  std::string line;

  auto operator<=>(const listed_row& other) const {
    return std::pair(offset, number) <=> std::pair(other.offset, other.number);
  }
  bool operator==(const listed_row& other) const {
    return offset == other.offset && number == other.number;
  }
};

std::uint64_t number_of(const std::string& text) {
  std::uint64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// The listing's rows by their offsets.
std::vector<listed_row> listed(const std::string& path, bool inc_slack) {
  std::vector<std::string> args{"-log", path, "-quiet", "-csv", "-show_offsets"};
  if (inc_slack) args.emplace_back("-inc_slack");
  const std::string out = run_zanvik(args).out;
  std::vector<listed_row> rows;
  for (const std::string& line : lines_of(out)) {
    const auto cells = split(line, ',');
    if (cells.size() < 7 || cells[0].find_first_not_of("0123456789") != std::string::npos) continue;
    rows.push_back({number_of(cells[0]), number_of(cells[4]), inc_slack ? cells[5] : "", line});
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

// "number@offset" and the mark of each row.
std::vector<std::string> names_of(const std::vector<listed_row>& rows) {
  std::vector<std::string> names;
  for (const listed_row& row : rows) {
    names.push_back(std::to_string(row.number) + "@" + std::to_string(row.offset) + row.mark);
  }
  return names;
}

TEST(slack_run, what_shows_with_and_without_the_option) {
  const auto note = plain_record(8, default_filetime(8), [](bxml_builder& x) {
    x.fragment_header();
    x.open("EventData").close_start().text_element("Note", "x").end_element().end_of_stream();
  });
  auto log = log_builder()
                 .chunk(chunk_builder({record(7), note, record(9000), record(10), record(11)})
                            .declare(7, 11)
                            .slack(record(3))
                            .slack(record(11)))
                 .chunk({record(12)});
  const std::size_t damaged = log.record_offset(0, 3);
  log.poke_u32(damaged, 0x2b2b2b2b);
  const scratch_dir scratch;
  const std::string path = scratch.path("x.evtx");
  log.write(path);
  const auto at = [&](std::size_t chunk, std::size_t record) {
    return std::to_string(log.record_offset(chunk, record));
  };
  EXPECT_EQ(names_of(listed(path, false)),
            (std::vector{"7@" + at(0, 0), "8@" + at(0, 1), "12@" + at(1, 0)}))
      << "9000 is read, but its number is none of its chunk's; damage ends the chunk";
  // In the count, the first record of the tail replaces the lost one, so it counts as declared; but
  // its number is not declared, so it has the mark.
  EXPECT_EQ(names_of(listed(path, true)),
            (std::vector{"7@" + at(0, 0), "8@" + at(0, 1) + "*", "9000@" + at(0, 2) + "*",
                         "11@" + at(0, 4), "3@" + at(0, 5) + "*", "11@" + at(0, 6) + "*",
                         "12@" + at(1, 0)}));
}

TEST(slack_run, slot_columns_end_with_the_block_of_the_candidate) {
  // Fifty chunks are a block. The candidate is in the 49th chunk, so the 50th shows slots too.
  log_builder log;
  for (std::uint64_t number = 1; number <= 51; ++number) {
    auto chunk = chunk_builder({record(number)});
    if (number == 49) chunk.slack(record(900));
    log.chunk(chunk);
  }
  const scratch_dir scratch;
  const std::string path = scratch.path("x.evtx");
  log.write(path);
  const auto rows = listed(path, true);
  ASSERT_EQ(rows.size(), 52u);
  // All rows are in one table, whose columns come from the ordinary records; s04 is the slot of the
  // event ID.
  const auto run = run_zanvik({"-log", path, "-quiet", "-csv", "-show_offsets", "-inc_slack"});
  const auto header_at = run.out.find("Record#");
  const auto header =
      split(run.out.substr(header_at, run.out.find('\n', header_at) - header_at), ',');
  const auto column = std::find(header.begin(), header.end(), "s04") - header.begin();
  ASSERT_LT(column, std::ssize(header));
  std::vector<std::uint64_t> with_slots;
  for (const listed_row& row : rows) {
    const auto cells = split(row.line, ',');
    if (cells.at(static_cast<std::size_t>(column)) == "100") with_slots.push_back(row.number);
  }
  EXPECT_EQ(with_slots, (std::vector<std::uint64_t>{900, 50}));
}

}  // namespace
}  // namespace zanvik::testing
