#include "support/file_filter.h"

#include <gtest/gtest.h>

#include "support/walk_options.h"

namespace zanvik {
namespace {

// An entry in short: its name, with `^` for a star in front, `$` for one behind and `!` for
// everything, and `:` with the same of its stream.
std::string shape(const file_filter_entry& entry) {
  std::string text = entry.match_all ? "!" : "";
  if (entry.star_front) text += '^';
  text += entry.name;
  if (entry.star_back) text += '$';
  if (entry.is_path) text += " path";
  if (!entry.has_stream) return text;
  text += ':';
  if (entry.stream_star_front) text += '^';
  text += entry.stream;
  if (entry.stream_star_back) text += '$';
  return text;
}

TEST(file_filter, terms_become_patterns) {
  struct row {
    const char* reason;
    const char* value;
    std::vector<std::string> shapes;
  };
  const row rows[] = {
      {"lower case", "*.EVTX", {"^.evtx"}},
      {"both ends", "*sec*", {"^sec$"}},
      {"an inner star leaves without a trace", "sec*log", {"seclog"}},
      {"two stars in front", "**x", {"^x"}},
      {"bar before comma", "a,b | c", {"a,b", "c"}},
      {"comma", "a, b", {"a", "b"}},
      {"a star alone drops the others", "a|*|b", {"!"}},
      {"a folder", "/Logs*", {"/logs$ path"}},
      {"a stream", "a*:b*", {"a$:b$"}},
      {"any name with a stream", "*:x", {"!*:x"}},
      {"cut at the first colon", "a:b:c", {"a:b:c"}},
      {"nothing but separators is one term", "|", {"|"}},
      {"an empty value is an empty term", "", {""}},
      {"bytes that are no text count as nothing", "\xff", {""}},
  };
  for (const row& r : rows) {
    std::vector<file_filter_entry> entries;
    parse_filter_list(r.value, entries);
    std::vector<std::string> shapes;
    for (const auto& entry : entries) shapes.push_back(shape(entry));
    EXPECT_EQ(shapes, r.shapes) << r.reason;
  }
}

TEST(file_filter, a_stream_of_a_star_marks_the_first_term) {
  std::vector<file_filter_entry> entries;
  parse_filter_list("a|b:*", entries);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_TRUE(entries[0].stream_all);
  EXPECT_FALSE(entries[1].stream_all);
}

TEST(file_filter, signatures_have_bytes_and_a_place) {
  struct row {
    const char* value;
    std::vector<int> bytes;  // none: no entry
    std::uint64_t offset;
  };
  const row rows[] = {
      {"45 6C", {0x45, 0x6c}, 0},
      {"45 6c | 0x10", {0x45, 0x6c}, 16},
      {"ff,8", {0xff}, 8},
      {"ff|8|9", {0xff}, 0},  // only exactly two items have a place
      {"", {}, 0},
  };
  for (const row& r : rows) {
    std::vector<file_filter_entry> entries;
    parse_signature_filter(r.value, entries);
    ASSERT_EQ(entries.size(), r.bytes.empty() ? 0u : 1u) << r.value;
    if (entries.empty()) continue;
    std::vector<int> bytes;
    for (const std::byte b : entries[0].signature) bytes.push_back(std::to_integer<int>(b));
    EXPECT_EQ(bytes, r.bytes) << r.value;
    EXPECT_EQ(entries[0].signature_offset, r.offset) << r.value;
  }
}

TEST(file_filter, options_repeat_and_the_first_path_goes_to_the_terms_to_skip) {
  argument_list list = {"p",  "-filter",      "a", "-filter_path", "/One", "-filter_sig",
                        "ff", "-filter_path", "T", "-filter",      "b",    "-filter_skip",
                        "x|y"};
  walk_options walk;
  take_filter_options(list, walk);
  EXPECT_EQ(list, argument_list{"p"});
  ASSERT_EQ(walk.skip_filters.size(), 2u);
  EXPECT_EQ(walk.skip_filters[1].path, "/one");
  ASSERT_EQ(walk.file_filters.size(), 3u);
  EXPECT_EQ(walk.file_filters[0].path + walk.file_filters[1].name, "tb");
  EXPECT_EQ(walk.file_filters[2].path, "");  // a signature comes behind the path
}

TEST(file_times, bounds_turn_on_only_for_valid_times) {
  struct row {
    const char* reason;
    argument_list list;
    bool goes_on;
    bool start_on;
    bool stop_on;
    std::uint32_t stop_seconds;
  };
  constexpr std::uint32_t all = 0xffffffff;
  const row rows[] = {
      {"a start opens the stop", {"-cmd_start_time", "2012-03-01"}, true, true, true, all},
      {"a stop's day counts whole",
       {"-cmd_stop_time", "2012/03/01"},
       true,
       false,
       true,
       1330646399},
      {"a stop with a time", {"-cmd_stop_time", "2012-3-1 0:0:1"}, true, false, true, 1330560001},
      {"no date at all ends the run", {"-cmd_start_time", "12:00:00"}, false, false, false, 0},
      {"an empty one too", {"-cmd_stop_time", ""}, false, false, false, 0},
      {"a date that does not read too", {"-cmd_start_time", "2012-13-01"}, false, false, false, 0},
      {"a time before 1900 is ignored", {"-cmd_start_time", "1850-01-01"}, true, false, false, 0},
      {"a stop before the start is ignored",
       {"-cmd_start_time", "2012-03-02", "-cmd_stop_time", "2012-03-01"},
       true,
       true,
       false,
       0},
  };
  for (const row& r : rows) {
    argument_list list = r.list;
    walk_options walk;
    EXPECT_EQ(take_file_time_options(list, walk), r.goes_on) << r.reason;
    EXPECT_EQ(walk.cmd_start.on, r.start_on) << r.reason;
    EXPECT_EQ(walk.cmd_stop.on, r.stop_on) << r.reason;
    EXPECT_EQ(walk.cmd_stop.unix_seconds, r.stop_seconds) << r.reason;
  }
}

}  // namespace
}  // namespace zanvik
