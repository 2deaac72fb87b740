#include "base/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "base/diag.h"
#include "scratch_dir.h"

namespace zanvik {
namespace {

using testing::file_text;
using testing::scratch_dir;

const std::string erasing = "\x1b[2K\r                           \r";

// What `action` writes to standard error.
template <typename F>
std::string error_text(F action) {
  const scratch_dir scratch;
  const std::string path = scratch.path("err");
  const int kept = ::dup(STDERR_FILENO);
  const int file = ::open(path.c_str(), O_CREAT | O_WRONLY, 0600);
  ::dup2(file, STDERR_FILENO);
  action();
  ::dup2(kept, STDERR_FILENO);
  ::close(kept);
  ::close(file);
  return file_text(path);
}

TEST(prob_message, loses_its_last_character) {
  EXPECT_EQ(error_text([] { EXPECT_EQ(prob_message("prob %s %d\n", "a", 7), 9); }),
            erasing + "prob a 7");
  EXPECT_EQ(error_text([] { prob_message("%s", ""); }), erasing);
}

TEST(prob_message, is_not_printed_from_4097_characters_on) {
  const std::string longest(4096, 'x');
  EXPECT_EQ(error_text([&] { prob_message("%s", longest.c_str()); }), erasing + longest.substr(1));
  EXPECT_EQ(error_text([&] { EXPECT_EQ(prob_message("%sy", longest.c_str()), 0); }), erasing);
}

TEST(print_status, is_cut_to_its_width_and_stays_on_one_line) {
  const std::string text = "ab\ncd" + std::string(300, '.');
  const auto status = [&](int width) {
    return error_text([&] { print_status(width, "%s", text.c_str()); });
  };
  const std::string front = "\x1b[2K\r    \r";
  EXPECT_EQ(status(4), front + "abc\r");  // the line feed counts for the width
  EXPECT_EQ(status(500), front + "abcd" + std::string(65, '.') + "\r");
  EXPECT_EQ(status(-1), front + "\r");
}

TEST(diag_line, writes_lines_at_once_and_cuts_what_is_far_longer_than_its_format) {
  const scratch_dir scratch;
  diag_trace trace;
  diag_line(trace, "%s", "before the trace is open");
  trace.open(scratch.path("trace"));
  diag_line(trace, "at %s", std::string(400, 'p').c_str());
  EXPECT_EQ(file_text(trace.diag_path), "->at " + std::string(256, 'p') + "\n");
  trace.open(scratch.path("no/such/folder"));
  EXPECT_FALSE(trace.diags_on);
  EXPECT_EQ(trace.diag_path, "");
  diag_line(trace, "%s", "passed over");
}

}  // namespace
}  // namespace zanvik
