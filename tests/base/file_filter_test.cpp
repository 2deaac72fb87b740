#include "base/file_filter.h"

#include <gtest/gtest.h>

#include "options/walk_options.h"

namespace zanvik {
namespace {

// An entry in short: its name, with `^` for a star at the start, `$` for one at the end and `!` for
// everything, and `:` with the same for its stream.
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
  const std::tuple<const char*, const char*, std::vector<std::string>> rows[] = {
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
      {"bytes that are no text count as nothing", "\xff", {""}},
  };
  for (const auto& [reason, value, expected] : rows) {
    std::vector<file_filter_entry> entries;
    parse_filter_list(value, entries);
    std::vector<std::string> shapes;
    for (const auto& entry : entries) shapes.push_back(shape(entry));
    EXPECT_EQ(shapes, expected) << reason;
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
  std::vector<file_filter_entry> entries;
  for (const char* value : {"45 6c | 0x10", "ff,8", "ff|8|9", ""}) {
    parse_signature_filter(value, entries);
  }
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].signature, (std::vector<std::byte>{std::byte{0x45}, std::byte{0x6c}}));
  EXPECT_EQ(entries[0].signature_offset, 16u);
  EXPECT_EQ(entries[1].signature_offset, 8u);
  EXPECT_EQ(entries[2].signature_offset, 0u) << "only exactly two items have a place";
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
  // `start`: null: not given
  // `bounds`: seconds of both, "-" for one that is off; "stop": the run must end
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"a start opens the stop", "2012-03-01", nullptr, "1330560000 4294967295"},
      {"a stop's day counts whole", nullptr, "2012/03/01", "- 1330646399"},
      {"a stop with a time", nullptr, "2012-3-1 0:0:1", "- 1330560001"},
      {"no date at all", "12:00:00", nullptr, "stop"},
      {"a date that does not read", nullptr, "2012-13-01", "stop"},
      {"a time before 1900 is ignored", "1850-01-01", nullptr, "- -"},
      {"a stop before the start is ignored", "2012-03-01", "2012-02-01", "1330560000 -"},
  };
  const auto text = [](const file_time_bound& bound) {
    return bound.on ? std::to_string(bound.unix_seconds) : "-";
  };
  for (const auto& [reason, start, stop, bounds] : rows) {
    argument_list list;
    if (start != nullptr) list.insert(list.end(), {"-cmd_start_time", start});
    if (stop != nullptr) list.insert(list.end(), {"-cmd_stop_time", stop});
    walk_options walk;
    const bool goes_on = take_file_time_options(list, walk);
    EXPECT_EQ(goes_on ? text(walk.cmd_start) + " " + text(walk.cmd_stop) : "stop", bounds)
        << reason;
  }
}

}  // namespace
}  // namespace zanvik
