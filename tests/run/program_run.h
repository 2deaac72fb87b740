// Runs the built program and returns what can be seen of the run: exit status and both outputs.
//
//   const auto run = run_zanvik({"-log", path, "-csv"});
//   EXPECT_EQ(run.status, 0);
//
// The program is called as "zanvik", reads `input` on its standard input, and is stopped after a
// minute.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "scratch_dir.h"

namespace zanvik::testing {

struct program_run {
  int status = 0;  // exit status; a signal that ended the run is its negative number
  std::string out;
  std::string err;
};

struct run_setup {
  std::string input{};
  std::string folder{};  // working folder; empty: the test's
  int out_fd = -1;       // standard output, if it is not to be captured
};

// In the child: `target` becomes the file at `path`, or `fd` if that is one.
inline void redirect(int target, const std::string& path, int flags, int fd = -1) {
  if (fd == -1) fd = ::open(path.c_str(), flags, 0600);
  if (fd == -1 || ::dup2(fd, target) == -1) ::_exit(126);
}

inline program_run run_zanvik(const std::vector<std::string>& args, const run_setup& setup = {}) {
  const scratch_dir scratch;
  const std::string in = scratch.write("in", setup.input);
  const std::string out = scratch.path("out");
  const std::string err = scratch.path("err");
  std::string name = "zanvik";
  std::vector<std::string> words = args;
  std::vector<char*> argv{name.data()};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    redirect(STDIN_FILENO, in, O_RDONLY);
    redirect(STDOUT_FILENO, out, O_CREAT | O_WRONLY, setup.out_fd);
    redirect(STDERR_FILENO, err, O_CREAT | O_WRONLY);
    if (!setup.folder.empty() && ::chdir(setup.folder.c_str()) != 0) ::_exit(126);
    ::alarm(60);
    ::execv(ZANVIK_PROGRAM, argv.data());
    ::_exit(127);
  }
  int state = 0;
  ::waitpid(child, &state, 0);
  const int status = WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
  return {status, file_text(out), file_text(err)};
}

// The texts between the separators; a line end after the last line makes no line.
inline std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
  if (separator != '\n' && (text.empty() || text.back() == separator)) parts.emplace_back();
  return parts;
}
inline std::vector<std::string> lines_of(const std::string& text) { return split(text, '\n'); }

}  // namespace zanvik::testing
