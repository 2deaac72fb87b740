// zanvik shard: lists of logs of about equal size, for as many runs.
//
// The logs are those that export finds, in its order, and a list is a stretch of that order. So the
// results of the lists, merged in the order of the lists, are what one run gives.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <string>
#include <vector>

#include "export/output_buffer.h"
#include "source/log_finder.h"
#include "verbs/log_options.h"
#include "verbs/output_target.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct shard_options : path_options {
  std::uint64_t count = 0;
  std::uint64_t only = 0;  // the number of the list that is wanted, from 1; 0 for all
  std::string prefix;      // of files, one a list; empty for standard output
  bool null = false;
};

struct sized_log {
  std::string path;
  std::uint64_t bytes;
};

// Opening a log and learning its templates costs about as much as reading this much of it.
constexpr std::uint64_t bytes_of_opening = 64 << 10;

// The numbers of the logs where lists begin, and the end of the last: `count` + 1 of them. A log is
// in the list in whose share of all bytes its middle lies.
std::vector<std::size_t> cut(const std::vector<sized_log>& logs, std::uint64_t count) {
  double all = 0, before = 0;
  for (const sized_log& log : logs) all += static_cast<double>(log.bytes + bytes_of_opening);
  std::vector<std::size_t> begins{0};
  for (std::size_t i = 0; i < logs.size(); ++i) {
    const auto bytes = static_cast<double>(logs[i].bytes + bytes_of_opening);
    const auto list =
        static_cast<std::uint64_t>((before + bytes / 2) / all * static_cast<double>(count));
    while (begins.size() <= std::min(list, count - 1)) begins.push_back(i);
    before += bytes;
  }
  begins.resize(count + 1, logs.size());
  return begins;
}

class shard_run {
 public:
  explicit shard_run(const shard_options& options) : options_(options) {}

  int run() {
    log_finder finder(
        [this](found_log& log) {
          // An image is opened as a whole, however many logs are in it.
          const std::string& path = log.image.empty() ? log.source.path : log.image;
          if (!log.image.empty() && !logs_.empty() && logs_.back().path == path) {
            logs_.back().bytes += log.size;
            return;
          }
          if (!options_.null && path.find('\n') != path.npos) {
            problem(path, "has a line end in its name: use --null");
          } else {
            logs_.push_back({path, log.size});
          }
        },
        [this](const std::string& path, const std::string& what) { problem(path, what); });
    for (const std::string& path : options_.paths) finder.find(path);
    const std::vector<std::size_t> begins = cut(logs_, options_.count);
    for (std::uint64_t i = 0; i < options_.count; ++i) {
      if (options_.only != 0 && options_.only != i + 1) continue;
      std::string list;
      for (std::size_t k = begins[i]; k < begins[i + 1]; ++k) {
        list += logs_[k].path + (options_.null ? '\0' : '\n');
      }
      write(i, list);
    }
    return status_;
  }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  // Names of files are as long as each other, so that a shell lists them in order.
  std::string file_of(std::uint64_t list) const {
    const std::size_t digits = std::to_string(options_.count).size();
    const std::string number = std::to_string(list + 1);
    return options_.prefix + std::string(digits - number.size(), '0') + number;
  }

  void write(std::uint64_t number, const std::string& list) {
    const bool to_file = !options_.prefix.empty();
    const std::string name = to_file ? file_of(number) : "standard output";
    output_target target;
    std::string error;
    if (to_file && !target.open(name, error)) return problem(name, error);
    output_buffer out(target.descriptor());
    out.append(list);
    // On standard output an empty line parts the lists.
    if (!to_file && options_.only == 0 && number + 1 != options_.count) {
      out.append(std::string(1, options_.null ? '\0' : '\n'));
    }
    if (!out.flush()) return problem(name, std::strerror(out.error()));
    if (to_file && !target.keep(error)) problem(name, error);
  }

  const shard_options& options_;
  std::vector<sized_log> logs_;
  int status_ = verb_done;
};

}  // namespace

int run_shard(int argc, char** argv) {
  shard_options options;
  CLI::App app(
      "Lists of logs of about equal size. Runs of `zanvik export --order time --from-list LIST`, "
      "one\n"
      "for each, and `zanvik merge` of their results in the order of the lists give what one run "
      "gives.",
      "zanvik shard");
  app.add_option("-n,--count", options.count, "how many lists")
      ->required()
      ->check(CLI::Range(1, 1'000'000))
      ->type_name("N");
  app.add_option("-o,--output", options.prefix,
                 "write files: this and the number of the list, such as PREFIX07; without it all "
                 "lists are printed, with an empty line between")
      ->type_name("PREFIX");
  app.add_option("--only", options.only, "only this list, from 1")->type_name("NUMBER");
  app.add_flag("--null", options.null, "a NUL after each path instead of a line end");
  add_path_options(app, options, "logs, or folders of logs");
  app.final_callback([&] {
    if (options.only > options.count) throw CLI::ValidationError("--only", "there is no such list");
    for (const std::string& path : options.paths) {
      if (path == "-")
        throw CLI::ValidationError("PATH", "standard input can be read by one run only");
    }
  });
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  return done ? status : shard_run(options).run();
}

}  // namespace zanvik
