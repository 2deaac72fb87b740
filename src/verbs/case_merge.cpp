#include <sys/stat.h>

#include "case/case.h"
#include "verbs/case_export.h"
#include "verbs/case_reports.h"
#include "verbs/verbs.h"

namespace zanvik {
namespace {

bool is_same_file(const std::string& a, const std::string& b) {
  struct stat one {
  }, other{};
  return ::stat(a.c_str(), &one) == 0 && ::stat(b.c_str(), &other) == 0 &&
         one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

class merge_of_cases {
 public:
  explicit merge_of_cases(const std::string& output) : output_(output) {}

  // Looks at the cases. False, with the reasons said, when one cannot be merged: nothing is written
  // then.
  bool check(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      case_source source;
      const std::string error =
          is_same_file(path, output_) ? "is the output too" : source.open(path);
      if (!error.empty()) problem(path, error);
      full_text_ = full_text_ || source.has_full_text();
      bytes_ += source.log_bytes();
    }
    return status_ == verb_done;
  }

  int run(const std::vector<std::string>& paths) {
    case_file file;
    std::string error = file.open(output_, full_text_);
    file.expect(bytes_);
    if (error.empty()) {
      case_rows rows(file);
      for (const std::string& path : paths) {
        if (!rows.failed()) add(path, rows);
      }
      if (rows.failed()) problem(output_, rows.error());
    }
    if (error.empty()) error = file.finish();
    if (!error.empty()) problem(output_, error);
    return status_;
  }

 private:
  void problem(const std::string& path, const std::string& what) {
    report_problem(path, what);
    status_ = verb_problems;
  }

  void add(const std::string& path, case_rows& rows) {
    case_source source;
    const std::string error = source.open(path);
    if (!error.empty()) return problem(path, error);
    while (source.next_log()) {
      const kept_log kept = rows.find(source.log());
      if (kept.id != 0) {
        if (!report_kept(kept, source.log(), false)) status_ = verb_problems;
      } else if (!source.add_to(rows)) {
        break;
      }
    }
    if (!source.error().empty()) problem(path, source.error());
  }

  const std::string& output_;
  bool full_text_ = false;
  std::uint64_t bytes_ = 0;
  int status_ = verb_done;
};

}  // namespace

int merge_cases(const std::vector<std::string>& paths, const std::string& output) {
  if (output.empty() || output == "-") {
    report_problem("zanvik merge", "cases need -o FILE");
    return verb_bad_command;
  }
  merge_of_cases work(output);
  return work.check(paths) ? work.run(paths) : verb_problems;
}

}  // namespace zanvik
