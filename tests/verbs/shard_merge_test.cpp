// Lists of logs, shards and their merged results: the same bytes as one run.
#include <gtest/gtest.h>

#include <filesystem>

#include "../run/program_run.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

std::string log_of(const std::vector<std::uint64_t>& times, std::uint64_t number) {
  chunk_builder chunk;
  for (const std::uint64_t time : times) {
    event made;
    made.filetime = 133'500'000'000'000'000 + time;
    chunk.add(record(number++, made));
  }
  const log_builder log = log_builder().chunk(chunk);
  return {reinterpret_cast<const char*>(log.bytes().data()), log.bytes().size()};
}

// Twelve logs of one to three chunks' size, with times that are equal, or equal where they show.
void make_logs(const std::string& folder) {
  std::filesystem::create_directories(folder);
  for (std::uint64_t i = 0; i < 12; ++i) {
    std::ofstream(folder + "/log " + std::to_string(i % 7) + std::string(i, 'x'))
        << log_of({i % 3, 40 * (i % 2), 10, 10'000 * (i % 4), 20'000'000 + i % 2, 10}, 10 * i)
        << std::string(i % 3 * 65536, '\0');
  }
}

TEST(shard_merge, results_of_lists_merge_into_those_of_one_run) {
  const scratch_dir scratch;
  const run_setup here{.folder = scratch.path("")};
  make_logs(scratch.path("logs"));
  ASSERT_EQ(run_zanvik({"shard", "-n", "4", "-o", "list", "logs"}, here).status, 0);
  std::string listed;
  for (const char* name : {"list1", "list2", "list3", "list4"}) {
    const std::string list = file_text(scratch.path(name));
    EXPECT_NE(list, "") << name;
    listed += list;
  }
  EXPECT_EQ(run_zanvik({"shard", "-n", "1", "logs"}, here).out, listed) << "in one order";
  for (const std::string form : {"jsonl", "csv", "timesketch", "elastic", "l2t", "bodyfile"}) {
    std::vector<std::string> merge{"merge", "-o", "merged"};
    for (const std::string list : {"list1", "list2", "list3", "list4"}) {
      const auto run = run_zanvik(
          {"export", "-f", form, "--order", "time", "-o", list + form, "--from-list", list}, here);
      EXPECT_EQ(run.status, 0) << run.err;
      merge.push_back(list + form);
    }
    const auto one = run_zanvik({"export", "-f", form, "--order", "time", "logs"}, here);
    const auto merged = run_zanvik(merge, here);
    EXPECT_EQ(merged.status, 0) << merged.err;
    EXPECT_TRUE(file_text(scratch.path("merged")) == one.out) << form;
  }
}

TEST(shard_merge, lists_are_about_equal_and_may_be_empty) {
  const scratch_dir scratch;
  const run_setup here{.folder = scratch.path("")};
  std::filesystem::create_directories(scratch.path("a"));
  for (const char* name : {"a/1", "a/2", "a/3", "a/4"}) {
    scratch.write(name, log_of({1}, 1) + std::string(name[2] == '1' ? 300'000 : 0, '\0'));
  }
  EXPECT_EQ(run_zanvik({"shard", "-n", "2", "a"}, here).out, "a/1\n\na/2\na/3\na/4\n");
  EXPECT_EQ(run_zanvik({"shard", "-n", "2", "--only", "2", "a"}, here).out, "a/2\na/3\na/4\n");
  const auto many = run_zanvik({"shard", "-n", "9", "--null", "a"}, here).out;
  EXPECT_EQ(std::count(many.begin(), many.end(), '\0'), 4 + 8) << "nine lists of four logs";
  // A list without a log is a run without an event.
  const auto none = run_zanvik({"export", "-f", "csv", "--from-list", "-"}, here);
  EXPECT_EQ(none.status, 0) << none.err;
  EXPECT_EQ(none.out.find('\n'), none.out.size() - 1);
  scratch.write("a/5\n6", log_of({1}, 1));
  EXPECT_EQ(run_zanvik({"shard", "-n", "1", "a"}, here).status, 1) << "no list of lines holds it";
}

TEST(shard_merge, lists_of_paths) {
  const scratch_dir scratch;
  const auto numbers = [&](const std::string& list, const std::string& more) {
    std::vector<std::string> args{"export", "--from-list", "-"};
    if (!more.empty()) args.push_back(more);
    const auto run = run_zanvik(args, {.input = list, .folder = scratch.path("")});
    EXPECT_EQ(run.status, 0) << run.err;
    const std::string member = "\"record\":";
    std::string seen;
    for (std::size_t at = 0; (at = run.out.find(member, at)) != run.out.npos;) {
      at += member.size();
      seen += run.out.substr(at, run.out.find(',', at) - at) + " ";
    }
    return seen;
  };
  scratch.write("a", log_of({1}, 1));
  scratch.write("b b", log_of({1}, 2));
  scratch.write("c\nd", log_of({1}, 3));
  scratch.write("-", log_of({1}, 4));
  EXPECT_EQ(numbers("b b\na\n", ""), "2 1 ");
  EXPECT_EQ(numbers("\n-\n\nb b", "a"), "1 4 2 ");
  EXPECT_EQ(numbers(std::string("a") + '\0' + "c\nd" + '\0', ""), "1 3 ");
  EXPECT_EQ(run_zanvik({"export", "-", "--from-list", "-"}).status, 2) << "one input for both";
  EXPECT_EQ(run_zanvik({"export", "--from-list", scratch.path("none")}).status, 2);
  EXPECT_EQ(run_zanvik({"check", "--from-list", "-"}, {.input = scratch.path("a") + "\n"}).status,
            0);
}

TEST(shard_merge, what_cannot_be_merged) {
  const scratch_dir scratch;
  const run_setup here{.folder = scratch.path("")};
  scratch.write("log", log_of({5, 3}, 1));
  const auto make = [&](const std::string& form, const std::string& order) {
    const std::string name = form + order;
    EXPECT_EQ(run_zanvik({"export", "-f", form, "--order", order, "-o", name, "log"}, here).status,
              0);
    return name;
  };
  const std::string json = make("jsonl", "time"), csv = make("csv", "time");
  const std::string late = make("jsonl", "log"), xml = make("xml", "time");
  scratch.write("empty", "");
  scratch.write("part", file_text(scratch.path(json)).substr(0, 300));
  scratch.write("table", "time,log,record,other\n");
  struct row {
    std::vector<std::string> files;
    int status;
    std::string_view said;
  };
  for (const row& given :
       {row{{json, "empty", json}, 0, ""}, row{{json, csv}, 1, "is csv, not jsonl"},
        row{{csv, "table"}, 1, "another header"}, row{{xml}, 1, "is no result"},
        row{{json, "none"}, 1, "No such file"}, row{{late}, 1, "not in order of time: event 2"},
        row{{"part"}, 1, "in the middle of an event"}}) {
    std::vector<std::string> args = given.files;
    args.insert(args.begin(), "merge");
    const auto run = run_zanvik(args, here);
    EXPECT_EQ(run.status, given.status) << run.err;
    EXPECT_NE(run.err.find(given.said), std::string::npos) << run.err;
  }
  EXPECT_EQ(run_zanvik({"merge", "-o", json, json}, here).status, 1) << "it would replace itself";
}

}  // namespace
}  // namespace zanvik::testing
