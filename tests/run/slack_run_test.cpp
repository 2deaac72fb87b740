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
  // The lost record is replaced in the count by the first of the tail, so that this one counts as
  // declared; its number is not, so it has the mark all the same.
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
  // All rows are in one table, whose columns the ordinary records give; s04 is the event ID's slot.
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

// The real logs beside the source folder.
const std::filesystem::path logs =
    std::filesystem::path(ZANVIK_SOURCE_DIR).parent_path() / "shared" / "logs";

// "5@100+20*3" is 5@100, 6@120 and 7@140.
std::vector<std::string> names_in(const std::string& runs) {
  std::vector<std::string> names;
  for (const std::string& run : split(runs, ' ')) {
    const auto part = [&run](char mark, std::uint64_t missing) {
      const auto found = run.find(mark);
      return found == run.npos ? missing : number_of(run.substr(found + 1));
    };
    for (std::uint64_t i = 0; i < part('*', run.empty() ? 0 : 1); ++i) {
      names.push_back(std::to_string(number_of(run) + i) + "@" +
                      std::to_string(part('@', 0) + i * part('+', 0)));
    }
  }
  return names;
}

// Records that only -inc_slack shows: hidden ones whose numbers their chunks do not declare, ones
// behind damage, ones in free tails. Found by a script of some lines, apart from this program: it
// walks the headers, scans the tails, and asks whether the template that a record names is there.
const std::tuple<const char*, std::size_t, const char*> found_by_scan[] = {
    {"damaged/bad_chunk_magic.evtx", 81,
     "47675@487888+504*4 47679@489872+472*3 47682@491320+504*4 47686@493304+504*9 "
     "47695@497808+504*3 47698@499288+504*5 47703@501776+504*3 45641@503704+504*2 "
     "45643@504680+472*3 45646@506128+504*2 45648@507104+504*3 45651@508584+472*7 "
     "45658@511880+464*2 45660@512816+472*7 45667@516152+504*2 45669@517128+504*15 "
     "45684@524656+472*2 45686@525632+472*2 45688@526608+472*2 45690@527584"},
    {"damaged/no_crc32.evtx", 31,
     "415@29512+648*2 417@31024+2096*2 419@35664+1008*2 421@36944+208*2 "
     "423@38336+296*2 425@38864 390@40160+7120*2 392@47928+272*2 397@49136+888*2 "
     "399@50344+328*2 401@50912+208*2 403@52952+7120*2 405@60312+288*2 "
     "407@61592+1720*2 302@68352+240*2 304@68944+280*2"},
    {"win7/Microsoft-Windows-TerminalServices-RemoteConnectionManager%4Operational.evtx", 367,
     "462980@86408+496*6 462986@89640+496*26 401576@102776+496*21 "
     "399549@113192+496*12 463045@118904+496*32 442643@157896+496*21 "
     "463140@168312+496*16 463156@176504+496*48 420378@292440+496*14 "
     "463393@299184+496*11 463404@304720+496*30 461392@319720+496*24 "
     "380376@781944+496*17 462726@1003912+496*66 350163@1041112+496*23"},
    {"damaged/System2.evtx", 0, ""},
};

TEST(slack_run, real_logs_give_what_a_scan_of_their_bytes_gives) {
  if (!exists(logs)) GTEST_SKIP() << "there are no real logs beside the source folder";
  for (const auto& [log, count, records] : found_by_scan) {
    const std::string path = (logs / log).string();
    const auto declared = listed(path, false);
    const auto all = listed(path, true);
    std::vector<listed_row> more;
    std::set_difference(all.begin(), all.end(), declared.begin(), declared.end(),
                        std::back_inserter(more));
    for (listed_row& found : more) found.mark.clear();
    EXPECT_EQ(names_of(more), names_in(records)) << log;
    EXPECT_EQ(more.size(), count) << log;
    EXPECT_EQ(all.size(), declared.size() + more.size()) << log << ": the declared ones stay";
  }
}

TEST(slack_run, three_records_as_their_bytes_have_them) {
  if (!exists(logs)) GTEST_SKIP() << "there are no real logs beside the source folder";
  // Read off a hex dump: size, number and time of the header, then the slot table, in which
  // level, event ID and qualifiers are the first, fourth and fifth value.
  const std::tuple<const char*, std::uint64_t, std::uint64_t, const char*, const char*> rows[] = {
      // Number be 18 06 00, time bf f6 3e 2b b5 2b d4 01.
      {"win7/Microsoft-Windows-TerminalServices-RemoteConnectionManager%4Operational.evtx", 399550,
       113688, "399550,261,2018-08-04, 05:37:01.520,113688,*,info,",
       ",2018-08-04 05:37:01.5208639"},
      // Number 9f 01, time c1 9e d3 4c 88 26 d7 01; 02, 06 20, 00 c0; a text "hr=0x803F7001".
      {"damaged/no_crc32.evtx", 415, 29512, "415,8198,2021-03-31, 23:48:07.706,29512,*,error,",
       ",hr=0x803F7001;"},
      // A size of nothing; number 03, time 80 ea e6 47 20 42 d5 01; 04, 75 17, 00 80; the last
      // datum is 24 bytes.
      {"damaged/zero_data_size_event.evtx", 3, 6176, "3,6005,2019-07-24, 13:04:09.000,6176,*,info,",
       ",24,e3 07 07 00 03 00 18 00 0d 00 04 00 09 00 34 01 00 00 00 00 00 00 00 00,"},
  };
  for (const auto& [log, number, offset, starts, holds] : rows) {
    const auto all = listed((logs / log).string(), true);
    const auto found = std::find(all.begin(), all.end(), listed_row{number, offset, "", ""});
    ASSERT_NE(found, all.end()) << log;
    EXPECT_EQ(found->line.substr(0, std::string_view(starts).size()), starts);
    EXPECT_NE(found->line.find(holds), std::string::npos) << found->line;
  }
}

}  // namespace
}  // namespace zanvik::testing
