#include "options/file_match.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "scratch_dir.h"

namespace zanvik {
namespace {

using testing::scratch_dir;

bool matches(const std::string& path, const char* terms) {
  std::vector<file_filter_entry> filters;
  if (terms != nullptr) parse_filter_list(terms, filters);
  bool undecided = true;
  const bool matched = match_filters(walk_options(), undecided, path, filters, nullptr);
  EXPECT_FALSE(undecided) << path;
  return matched;
}

TEST(match_filters, terms_against_names) {
  const std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {"no terms", "/d/a", nullptr, true},
      {"no path", "", nullptr, false},
      {"no text", "/d/\xff.evtx", nullptr, false},
      {"everything", "/d/a", "x|*", true},
      {"whole name", "/d/a.evtx", "b|A.EVTX", true},
      {"not a part of it", "/d/aa.evtx", "a.evtx|a", false},
      {"the folder is no part of it", "/sec/a", "*sec*", false},
      {"anywhere", "/d/MySecurity.evtx", "*sec*", true},
      {"end, in any case", "/d/SECURITY.EVTX", "*.evtx", true},
      {"end, and only the first place counts", "/d/a.log.log", "*.log", false},
      {"start", "/d/security.evtx", "sec*", true},
      {"an inner star is nothing at all", "/d/sec1.log", "sec*.log", false},
      {"folder as a whole part", "/x/Logs/y/a", "/LOGS", true},
      {"more than the part", "/x/logs2/a", "/logs", false},
      {"the first place alone counts", "/logs2/logs/a", "/logs", false},
      {"folders of the other world", "c:\\x\\Logs\\a", "/logs", true},
      {"name of the other world", "c:\\x/y\\a.evtx", "a.evtx", true},
      {"a backslash divides before a slash", "c:\\x/a.evtx", "a.evtx", false},
      {"right below the root", "/a.evtx", "a.evtx", true},
      {"two dots are a folder", "/d/..", ".", true},
      {"a term that is no text passes nothing", "/d/a", "\xff", false},
  };
  for (const auto& [reason, path, terms, matched] : rows)
    EXPECT_EQ(matches(path, terms), matched) << reason;
}

TEST(match_filters, signatures_against_bytes) {
  const scratch_dir scratch;
  const std::string file = scratch.write("f", "0123");
  ASSERT_EQ(::mkfifo(scratch.path("fifo").c_str(), 0600), 0);
  const std::tuple<const char*, std::string, const char*, bool, bool> rows[] = {
      {"at the start", file, "30 31", true, false},
      {"up to the end", file, "32 33|2", true, false},
      {"other bytes", file, "31", false, false},
      {"a byte too long", file, "32 33|3", false, true},
      {"a place that no file has", file, "30|0xffffffffffffffff", false, true},
      {"no file", scratch.path("lost"), "30", false, false},
      {"nothing to open", scratch.path("fifo"), "30", false, false},
  };
  for (const auto& [reason, path, signature, matched, too_short] : rows) {
    std::vector<file_filter_entry> filters;
    parse_filter_list("other", filters);
    parse_signature_filter(signature, filters);
    bool undecided = false;
    EXPECT_EQ(match_filters({}, undecided, path, filters, nullptr), matched) << reason;
    EXPECT_EQ(undecided, too_short) << reason;
  }
}

TEST(match_filters, times_against_the_window) {
  const scratch_dir scratch;
  const std::string file = scratch.write("f", "");
  const file_time_bound off;
  const auto at = [](std::uint32_t seconds) { return file_time_bound{true, 0, seconds}; };
  const std::tuple<const char*, std::int64_t, file_time_bound, file_time_bound, bool> rows[] = {
      {"no window", -1, off, off, true},           {"on the start", 1000, at(1000), off, true},
      {"before it", 999, at(1000), off, false},    {"on the stop", 1000, off, at(1000), true},
      {"after it", 1001, off, at(1000), false},    {"before 1970", -1, off, at(1000), false},
      {"no time at all", 0, off, at(1000), false},
  };
  for (const auto& [reason, modified, start, stop, matched] : rows) {
    const struct timespec times[2] = {{0, 0}, {modified, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    walk_options options;
    options.cmd_start = start;
    options.cmd_stop = stop;
    bool undecided = false;
    file_info info;
    EXPECT_EQ(match_filters(options, undecided, file, {}, &info), matched) << reason;
    EXPECT_TRUE(match_filters(options, undecided, file, {}, nullptr)) << reason;
    file_info gone;
    EXPECT_EQ(match_filters(options, undecided, file + "x", {}, &gone), !start.on && !stop.on);
  }
}

}  // namespace
}  // namespace zanvik
