#include "options/dir_walk.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "scratch_dir.h"

namespace zanvik::qxportdir {
namespace {

using testing::scratch_dir;
using lines = std::vector<std::string>;

// A scratch folder that is filled from a list: a name that ends in `/` is a folder.
class tree : public scratch_dir {
 public:
  explicit tree(const lines& names) {
    for (const std::string& name : names) {
      if (name.ends_with('/')) {
        EXPECT_EQ(::mkdir(path(name).c_str(), 0700), 0) << name;
      } else {
        write(name, "abc");
      }
    }
  }

  // The paths without this folder, each run of files in one folder in order.
  lines shortened(lines paths) const {
    for (std::string& text : paths) text.erase(0, path("").size());
    return paths;
  }
  lines sorted(lines paths) const {
    std::sort(paths.begin(), paths.end());
    return shortened(std::move(paths));
  }
};

lines walked(const std::string& root, std::int32_t depth, const walk_options& options = {}) {
  stdin_stream_ex stream(options);
  EXPECT_TRUE(stream.start_walk(root, depth, options.file_filters));
  lines found;
  for (std::string name; stream.read_line(name, true);) found.push_back(name);
  return found;
}

TEST(wildcard_folders, stars_stand_for_folders) {
  const tree files({"a/", "a/logs/", "b/", "b/*/", "b/*/c/", "f"});
  ASSERT_EQ(::symlink("a", files.path("link").c_str()), 0);
  const std::tuple<const char*, const char*, lines> rows[] = {
      {"itself", "a", {"a/"}},
      {"no slash is doubled", "a/", {"a/"}},
      {"all folders, and no link or file", "*", {"a/", "b/"}},
      {"what stands behind stays", "*/logs", {"a/logs/", "b/logs/"}},
      {"star behind star; a folder of that name is no star", "*/*/", {"a/logs/", "b/*/"}},
      {"three stars", "*/*/*", {"b/*/c/"}},
      {"a star in a name cuts", "a*b/c", {"a/"}},
      {"nothing in that place", "f/*/a", {}},
  };
  for (const auto& [reason, root, folders] : rows) {
    EXPECT_EQ(files.sorted(wildcard_folders(files.path(root))), folders) << reason;
  }
  EXPECT_EQ(wildcard_folders("logs"), lines{}) << "a root without a slash";
  EXPECT_EQ(wildcard_folders("./logs"), lines{"./logs/"});
}

TEST(list_folder, patterns_hold_for_files_alone) {
  const tree files({"d.x/", "a.evtx", "B.EVTX", "a.b.evt", "none"});
  struct row {
    const char* pattern;
    lines names;
  };
  const row rows[] = {
      {"*.*", {"B.EVTX", "a.b.evt", "a.evtx", "d.x", "none"}},
      {"*.Evtx", {"B.EVTX", "a.evtx", "d.x"}},
      {"A.*", {"a.evtx", "d.x"}},
      {"a.b.evt", {"a.b.evt", "d.x"}},
  };
  for (const row& r : rows) {
    lines names;
    list_folder(files.path(""), 3, r.pattern,
                [&](const _DIR_NODE& node) { names.push_back(node.name); });
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, r.names) << r.pattern;
  }
}

TEST(folder_walk, goes_as_deep_as_it_may) {
  const tree files({"1", "d/", "d/2", "d/e/", "d/e/3"});
  EXPECT_EQ(files.shortened(walked(files.path(""), 0)), lines{"1"});
  EXPECT_EQ(files.shortened(walked(files.path(""), 1)), (lines{"1", "d/2"}));
  EXPECT_EQ(files.shortened(walked(files.path(""), 0x7fffffff)), (lines{"1", "d/2", "d/e/3"}));
  EXPECT_EQ(walked(files.path(""), -1), lines{});
  EXPECT_EQ(files.shortened(walked(files.path("*"), 0)), lines{"d/2"}) << "the star is no depth";
  EXPECT_EQ(walked(files.path("lost"), 1), lines{});
  EXPECT_EQ(walked(files.path("1"), 1), lines{}) << "a file is no folder";
  EXPECT_EQ(walked("/\xff", 1), lines{});
  EXPECT_EQ(walked("", 1), lines{});
}

TEST(folder_walk, takes_any_kind_of_file_and_follows_no_link) {
  const tree files({"d/", "d/a b%1.evtx", "x.evtx/", "*/", "*/star", "line\nend\n"});
  files.write("\xff.evtx", "abc");
  ASSERT_EQ(::mkdir(files.path("\xfe").c_str(), 0700), 0);
  files.write("\xfe/inside", "abc");
  ASSERT_EQ(::mkfifo(files.path("fifo").c_str(), 0600), 0);
  ASSERT_EQ(::symlink(".", files.path("d/loop").c_str()), 0);
  ASSERT_EQ(::symlink("nowhere", files.path("lost").c_str()), 0);
  EXPECT_EQ(files.sorted(walked(files.path(""), 100)),
            (lines{"*/star", "d/a b%1.evtx", "d/loop", "fifo", "line\nend\n", "lost"}));
}

TEST(folder_walk, folders_may_vanish_and_come_under_it) {
  const tree files({"1", "d/", "d/2"});
  const walk_options options;
  stdin_stream_ex stream(options);
  ASSERT_TRUE(stream.start_walk(files.path(""), 5, {}));
  std::string name;
  ASSERT_TRUE(stream.read_line(name, true));
  std::filesystem::remove_all(files.path("d"));
  EXPECT_FALSE(stream.read_line(name, true));
  EXPECT_FALSE(stream.read_line(name, true)) << "an end stays one";
}

TEST(folder_walk, filters_and_times_decide_before_a_name_is_held) {
  const tree files({"a.evtx", "b.evtx", "c.txt", "d.evtx/", "d.evtx/e.txt"});
  const struct timespec old[2] = {{0, 0}, {500, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, files.path("b.evtx").c_str(), old, 0), 0);
  walk_options options;
  parse_filter_list("*.evtx", options.file_filters);
  EXPECT_EQ(files.sorted(walked(files.path(""), 0, options)), (lines{"a.evtx", "b.evtx"}));
  options.cmd_start = {true, 0, 501};
  EXPECT_EQ(files.shortened(walked(files.path(""), 0, options)), lines{"a.evtx"});
  options.file_filters.clear();
  parse_signature_filter("61 62 63 64", options.file_filters);  // a byte more than any file has
  EXPECT_EQ(files.sorted(walked(files.path(""), 1, options)),
            (lines{"a.evtx", "c.txt", "d.evtx/e.txt"}))
      << "too short to tell";
}

TEST(folder_walk, a_device_head_goes_unless_it_is_a_global_name) {
  const tree files({"1"});
  EXPECT_EQ(walked("\\\\?\\" + files.path(""), 0), lines{files.path("1")});
  EXPECT_EQ(walked("\\\\?\\GLOBAL" + files.path(""), 0), lines{});
}

}  // namespace
}  // namespace zanvik::qxportdir
