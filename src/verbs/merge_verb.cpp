// zanvik merge: results of several runs in one order of time.
#include <sys/resource.h>
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/output_buffer.h"
#include "merge/merge.h"
#include "verbs/case_export.h"
#include "verbs/log_options.h"
#include "verbs/output_target.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

struct merge_options : path_options {
  std::string output;
};

// Buffers of all files together, and of one.
constexpr std::size_t buffers_bytes = std::size_t{256} << 20;
constexpr std::size_t least_buffer = std::size_t{64} << 10;
constexpr std::size_t largest_buffer = std::size_t{1} << 20;

// As many files as the system lets us have.
void allow_many_files() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  (void)::setrlimit(RLIMIT_NOFILE, &limit);
}

class merge_run {
 public:
  explicit merge_run(const merge_options& options) : options_(options) {}

  // Opens the results and looks at their forms. False, with the reason said, when they cannot be
  // merged: one that is missing would be missing in the result.
  bool open() {
    allow_many_files();
    const std::size_t share = buffers_bytes / std::max<std::size_t>(1, options_.paths.size());
    const std::size_t buffer = std::clamp(share, least_buffer, largest_buffer);
    bool good = true;
    for (const std::string& path : options_.paths) {
      inputs_.push_back(std::make_unique<result_input>());
      const std::string error = open(path, *inputs_.back(), buffer);
      if (error.empty()) continue;
      report_problem(path, error);
      good = false;
    }
    return good;
  }

  int run(output_buffer& out) {
    std::vector<sorted_input*> each;
    for (const auto& input : inputs_) each.push_back(input.get());
    out.append(header_);
    (void)merge_inputs(each, [&out](const sort_key&, std::string_view item) {
      out.append(item);
      return !out.failed();
    });
    int status = verb_done;
    const auto problem = [&](const std::string& path, const std::string& what) {
      report_problem(path, what);
      status = verb_problems;
    };
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
      if (!inputs_[i]->error().empty()) problem(options_.paths[i], inputs_[i]->error());
      if (const std::uint64_t item = inputs_[i]->out_of_order(); item != 0) {
        problem(options_.paths[i],
                "is not in order of time: event " + std::to_string(item) + " is before its turn");
      }
    }
    if (!out.flush())
      problem(options_.output.empty() ? "standard output" : options_.output,
              std::strerror(out.error()));
    return status;
  }

 private:
  std::string open(const std::string& path, result_input& input, std::size_t buffer) {
    if (!input.open(path, buffer)) return input.error();
    struct stat here {
    }, there{};
    if (!options_.output.empty() && ::stat(options_.output.c_str(), &there) == 0 &&
        ::fstat(input.descriptor(), &here) == 0 && S_ISREG(here.st_mode) &&
        here.st_dev == there.st_dev && here.st_ino == there.st_ino) {
      return "is the output too";
    }
    if (input.head().empty()) return "";  // no event, and a form without a header
    const result_form* const form = form_of_result(input.head());
    if (!form) return "is no result that can be merged";
    if (form_ && form_ != form) {
      return "is " + std::string(form->name) + ", not " + std::string(form_->name);
    }
    form_ = form;
    input.set_form(*form);
    if (!form->has_header) return "";
    std::string header;
    if (!input.take_header(header)) return "has no whole header";
    if (!header_.empty() && header != header_)
      return "has another header than the results before it";
    header_ = header;
    return "";
  }

  const merge_options& options_;
  std::vector<std::unique_ptr<result_input>> inputs_;
  const result_form* form_ = nullptr;
  std::string header_;
};

// Whether one of the files is a database: then all have to be cases.
bool has_database(const std::vector<std::string>& paths) {
  constexpr std::string_view start = "SQLite format 3";
  return std::any_of(paths.begin(), paths.end(), [start](const std::string& path) {
    char head[start.size()];
    std::ifstream file(path == "-" ? std::string() : path, std::ios::binary);
    return file.read(head, sizeof(head)) && std::string_view(head, sizeof(head)) == start;
  });
}

int run(const merge_options& options) {
  if (has_database(options.paths)) return merge_cases(options.paths, options.output);
  merge_run work(options);
  if (!work.open()) return verb_problems;
  output_target target;
  std::string problem;
  if (!target.open(options.output, problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  output_buffer out(target.descriptor());
  const int status = work.run(out);
  if (!out.failed() && !target.keep(problem)) {
    report_problem(options.output, problem);
    return verb_problems;
  }
  return status;
}

}  // namespace

int run_merge(int argc, char** argv) {
  merge_options options;
  CLI::App app(
      "One file of results that are in one order of time each: of jsonl, csv, timesketch, "
      "elastic,\n"
      "l2t or bodyfile. Name them in the order of their logs; events of one time keep it.\n"
      "Or one case, a database, of many: their logs are added to the one of -o.",
      "zanvik merge");
  app.add_option("-o,--output", options.output,
                 "write to this file, which gets its name when it is complete")
      ->check(output_name_problem)
      ->type_name("FILE");
  add_path_options(app, options, "results, or - for one on standard input");
  bool done = false;
  const int status = parse_verb(app, argc, argv, done);
  return done ? status : run(options);
}

}  // namespace zanvik
