#include "verbs/path_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace zanvik {
namespace {

// The whole of a file; returns the errno, or 0.
int read_all(int descriptor, std::string& text) {
  char piece[1 << 16];
  for (;;) {
    const ssize_t got = ::read(descriptor, piece, sizeof(piece));
    if (got == 0) return 0;
    if (got > 0) {
      text.append(piece, static_cast<std::size_t>(got));
    } else if (errno != EINTR) {
      return errno;
    }
  }
}

}  // namespace

std::string read_path_list(const std::string& file, std::vector<std::string>& paths) {
  const bool is_input = file == "-";
  const int descriptor =
      is_input ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (descriptor < 0) return std::strerror(errno);
  std::string text;
  const int error = read_all(descriptor, text);
  if (!is_input) ::close(descriptor);
  if (error != 0) return std::strerror(error);
  const std::size_t first = text.find_first_of(std::string_view("\n\0", 2));
  const char separator = first == text.npos ? '\n' : text[first];
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view path = rest.substr(0, rest.find(separator));
    if (!path.empty()) paths.emplace_back(path == "-" ? "./-" : path);
    rest.remove_prefix(std::min(rest.size(), path.size() + 1));
  }
  return "";
}

}  // namespace zanvik
