#include "base/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <tuple>

#include "base/diag.h"
#include "scratch_dir.h"

namespace zanvik {
namespace {

using testing::file_text;
using testing::scratch_dir;

const std::string erasing = "\x1b[2K\r                           \r";
const std::string front = "\x1b[2K\r    \r";

// Runs `action` with `descriptor` as standard error.
template <typename F>
void with_standard_error(int descriptor, F action) {
  const int kept = ::dup(STDERR_FILENO);
  ASSERT_NE(::dup2(descriptor, STDERR_FILENO), -1);
  action();
  ::dup2(kept, STDERR_FILENO);
  ::close(kept);
}

// What `action` writes to standard error when that is a file.
template <typename F>
std::string file_error(F action) {
  const scratch_dir scratch;
  const std::string path = scratch.path("err");
  const int file = ::open(path.c_str(), O_CREAT | O_WRONLY, 0600);
  with_standard_error(file, action);
  ::close(file);
  return file_text(path);
}

// The same for a terminal with this number of columns.
template <typename F>
std::string terminal_error(unsigned short columns, F action) {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
  EXPECT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
  termios mode = {};
  ::tcgetattr(terminal, &mode);
  ::cfmakeraw(&mode);  // a line end is not made two characters
  ::tcsetattr(terminal, TCSANOW, &mode);
  const winsize size = {24, columns, 0, 0};
  ::ioctl(terminal, TIOCSWINSZ, &size);
  with_standard_error(terminal, action);
  ::close(terminal);
  std::string text;
  char buffer[4096];
  for (ssize_t got; (got = ::read(master, buffer, sizeof(buffer))) > 0;) {
    text.append(buffer, static_cast<std::size_t>(got));
  }
  ::close(master);
  return text;
}

TEST(prob_message, ends_in_a_line_end_on_a_terminal_alone) {
  const auto two = [] {
    EXPECT_EQ(prob_message("prob %s %d\n", "a", 7), 9);
    EXPECT_EQ(prob_message("%s", ""), 0);
    prob_message("b\n");
  };
  EXPECT_EQ(terminal_error(80, two), erasing + "prob a 7\n" + erasing + "\n" + erasing + "b\n");
  EXPECT_EQ(file_error(two), "prob a 7b") << "messages share a line";
}

TEST(prob_message, names_do_not_command_a_terminal) {
  const auto message = [] { prob_message("%s\n", "a\x1b[31m\x7f\n\xc3\xa4"); };
  EXPECT_EQ(terminal_error(80, message), erasing + "a?[31m??\xc3\xa4\n");
  EXPECT_EQ(file_error(message), "a\x1b[31m\x7f\n\xc3\xa4");
}

TEST(prob_message, is_not_printed_from_4097_characters_on) {
  const std::string longest(4096, 'x');
  EXPECT_EQ(file_error([&] { prob_message("%s", longest.c_str()); }), longest.substr(1));
  EXPECT_EQ(file_error([&] { EXPECT_EQ(prob_message("%sy", longest.c_str()), 0); }), "");
}

TEST(print_status, is_cut_to_its_width_and_stays_on_one_line) {
  const std::string text = "ab\ncd\x1b" + std::string(300, '.');
  const auto status = [&](int width, unsigned short columns) {
    return terminal_error(columns, [&] { print_status(width, "%s", text.c_str()); });
  };
  EXPECT_EQ(status(4, 80), front + "abc\r");  // the line feed counts for the width
  EXPECT_EQ(status(500, 80), front + "abcd?" + std::string(64, '.') + "\r");
  EXPECT_EQ(status(-1, 80), front + "\r");
  EXPECT_EQ(status(500, 12), front + "abcd......." + "\r") << "narrower than the terminal by one";
  EXPECT_EQ(status(4, 0), front + "abc\r") << "a terminal that does not know its width";
}

TEST(print_status, is_for_terminals) {
  EXPECT_EQ(file_error([] {
              print_status(70, "at %d", 1);
              clear_status();
            }),
            "");
}

TEST(path_for_message, is_shortened_in_the_middle_for_a_terminal) {
  const std::string path = "/evidence/case 7/Security.evtx";
  const auto shown = [&](unsigned short columns, std::size_t beside) {
    return terminal_error(columns, [&] {
      const std::string text = path_for_message(path, beside);
      ASSERT_EQ(::write(STDERR_FILENO, text.data(), text.size()), std::ssize(text));
    });
  };
  EXPECT_EQ(shown(40, 10), path);
  EXPECT_EQ(shown(39, 10), "/evidence/cas...Security.evtx");
  EXPECT_EQ(shown(10, 10), "/evide...ty.evtx") << "a terminal too narrow for anything";
  file_error([&] { EXPECT_EQ(path_for_message(path, 4000), path); });
}

TEST(shortened_in_middle, takes_whole_sequences) {
  const std::tuple<const char*, const char*, std::size_t, const char*> rows[] = {
      {"it fits", "abcdef", 6, "abcdef"},
      {"one too long", "abcdefg", 6, "a...fg"},
      {"no room for more than the gap", "abcdef", 3, "..."},
      {"not even for that", "abcdef", 2, ".."},
      {"a sequence cut at both ends goes", "\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4", 6, "...\xc3\xa4"},
      {"none but continuations", "\x80\x80\x80\x80\x80\x80", 5, "..."},
  };
  for (const auto& [reason, text, width, expected] : rows) {
    EXPECT_EQ(shortened_in_middle(text, width), expected) << reason;
  }
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
