// Whole runs with one order over all logs: the order itself, the forms around it, copies.
#include <gtest/gtest.h>

#include "../run/program_run.h"
#include "evt_builder.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

std::string bytes_of_log(const file_bytes& log) {
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

constexpr std::uint64_t noon = 133'500'000'000'000'000;

event event_at(std::uint64_t filetime) {
  event made;
  made.filetime = filetime;
  return made;
}

// A log of records with these times, numbered from `number` on.
std::string log_at(const std::vector<std::uint64_t>& times, std::uint64_t number) {
  chunk_builder chunk;
  for (const std::uint64_t time : times) chunk.add(record(number++, event_at(time)));
  return bytes_of_log(log_builder().chunk(chunk));
}

// The record numbers, by the member that the form has for them.
std::string numbers_in(const std::string& text, const std::string& before) {
  std::string seen;
  for (std::size_t at = 0; (at = text.find(before, at)) != std::string::npos;) {
    at += before.size();
    seen += text.substr(at, text.find_first_not_of("0123456789", at) - at) + " ";
  }
  return seen;
}

TEST(order_run, times_then_logs_then_places) {
  const scratch_dir scratch;
  const std::string b = scratch.write("b", log_at({noon + 30, noon + 10, noon + 10, noon + 12}, 1));
  const std::string a = scratch.write("a", log_at({noon + 15, noon + 10, noon + 11}, 5));
  const std::string before = "\"record\":";
  const auto run = [&](std::vector<std::string> args) {
    args.insert(args.begin(), {"export", b, a});
    const auto done = run_zanvik(args);
    EXPECT_EQ(done.status, 0) << done.err;
    return done.out;
  };
  EXPECT_EQ(numbers_in(run({}), before), "1 2 3 4 5 6 7 ");
  EXPECT_EQ(numbers_in(run({"--order", "time"}), before), "2 3 6 7 4 5 1 ");
  // Timesketch counts microseconds: what is one to it is in the order of the logs.
  const std::string sketch = "\"record_number\":";
  EXPECT_EQ(numbers_in(run({"-f", "timesketch"}), sketch), "2 3 4 6 7 5 1 ");
  EXPECT_EQ(numbers_in(run({"-f", "timesketch", "--order", "log"}), sketch), "1 2 3 4 5 6 7 ");
}

TEST(order_run, what_is_around_the_events_stays_in_place) {
  const scratch_dir scratch;
  const std::string log = scratch.write("a", log_at({noon + 1, noon}, 1));
  for (const std::string form : {"jsonl", "xml", "csv", "elastic"}) {
    auto plain = run_zanvik({"export", "-f", form, log}).out;
    const auto ordered = run_zanvik({"export", "-f", form, "--order", "time", log}).out;
    EXPECT_NE(ordered, plain);
    // The two events are lines; they have changed places.
    std::vector<std::string> lines, ordered_lines;
    std::istringstream in(plain), ordered_in(ordered);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    for (std::string line; std::getline(ordered_in, line);) ordered_lines.push_back(line);
    const std::size_t first = form == "xml" ? 2 : form == "csv" ? 1 : 0;
    ASSERT_GE(lines.size(), first + 2);
    std::swap(lines[first], lines[first + 1]);
    EXPECT_EQ(lines, ordered_lines);
  }
}

TEST(order_run, more_than_memory_holds_gives_the_same) {
  const scratch_dir scratch;
  std::vector<std::string> logs;
  for (std::uint64_t i = 0; i < 8; ++i) {
    std::vector<std::uint64_t> times;
    for (std::uint64_t k = 0; k < 40; ++k) times.push_back(noon + (k * 7919 + i * 31) % 97);
    logs.push_back(scratch.write(std::to_string(i), log_at(times, 100 * i)));
  }
  std::vector<std::string> args{"export", "--order", "time"};
  for (int i = 0; i < 12; ++i) args.insert(args.end(), logs.begin(), logs.end());
  const auto usual = run_zanvik(args).out;
  EXPECT_GT(usual.size(), std::size_t{2} << 20);
  args.insert(args.end(), {"--memory", "1M", "--temp-dir", scratch.path("")});
  EXPECT_TRUE(run_zanvik(args).out == usual);
  args.back() = scratch.path("none");
  const auto failed = run_zanvik(args);
  EXPECT_EQ(failed.status, 1);
  EXPECT_NE(failed.err.find("temporary file in " + scratch.path("none") + ": No such file"),
            std::string::npos)
      << failed.err;
}

TEST(order_run, copies_come_once_and_are_counted) {
  const scratch_dir scratch;
  const std::string b = scratch.write("b", log_at({noon, noon + 3}, 1));
  const std::string a = scratch.write("a", log_at({noon + 2, noon, noon + 3}, 1));
  // The same number and time with another value, channel or computer is another event.
  event other_value = event_at(noon), other_channel = event_at(noon),
        other_computer = event_at(noon);
  other_value.data = {{"Text", slot::utf16("other")}};
  other_channel.channel = "Other";
  other_computer.computer = "OTHER";
  std::vector<std::string> args{"export", "--unique", "--order", "time", b, a, b, b};
  for (const event& other : {other_value, other_channel, other_computer}) {
    args.push_back(scratch.write(std::to_string(args.size()),
                                 bytes_of_log(log_builder().chunk({record(1, other)}))));
  }
  const auto run = run_zanvik(args);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(numbers_in(run.out, "\"copies\":"), "3 1 1 1 1 1 3 1 ") << run.out;
  EXPECT_EQ(run.out.find("\"log\":\"" + b), run.out.find("\"log\":\"")) << "the first is the one";

  const auto table = run_zanvik({"export", "--unique", "--order", "time", "-f", "csv", b, b}).out;
  EXPECT_NE(table.find("data,copies\n"), std::string::npos);
  EXPECT_NE(table.find(",2\n"), std::string::npos) << table;
  const auto xml = run_zanvik({"export", "--unique", "--order", "time", "-f", "xml", b, b}).out;
  EXPECT_EQ(numbers_in(xml, "copies=\""), "2 2 ");
  EXPECT_EQ(run_zanvik({"export", "--unique", b}).status, 2) << "there is no one order";
}

}  // namespace
}  // namespace zanvik::testing
