#include "source/disk_image.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

namespace zanvik {
namespace {

constexpr const char* reader_name = "zanvik-images";

// The reader stands beside the program, or where it is installed.
std::string reader_path() {
  char own[PATH_MAX];
  const ssize_t size = ::readlink("/proc/self/exe", own, sizeof own);
  if (size <= 0) return {};
  std::string folder(own, static_cast<std::size_t>(size));
  folder.erase(folder.rfind('/') + 1);
  for (const std::string& path :
       {folder + reader_name, folder + "../libexec/zanvik/" + reader_name}) {
    if (::access(path.c_str(), X_OK) == 0) return path;
  }
  return {};
}

bool transfer(auto&& call, auto* bytes, std::size_t size) {
  for (std::size_t done = 0; done < size;) {
    const ssize_t got = call(bytes + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    done += static_cast<std::size_t>(got);
  }
  return true;
}

// In the child: makes `from` the descriptor `to`, open across exec, wherever it is now.
void hand_over(int from, int to) {
  if (from == to) {
    ::fcntl(from, F_SETFD, 0);
  } else {
    ::dup2(from, to);
  }
}

}  // namespace

disk_image::~disk_image() {
  if (socket_ >= 0) ::close(socket_);
  if (memory_) ::munmap(const_cast<std::byte*>(memory_), image_piece_bytes);
  if (child_ > 0) {
    ::kill(child_, SIGKILL);
    while (::waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
}

bool disk_image::open(const std::string& path, image_kind kind, image_use use,
                      std::string& problem) {
#ifdef ZANVIK_IMAGES
  const std::string program = reader_path();
  if (program.empty()) {
    problem = std::string("a disk image, and its reader ") + reader_name + " is not installed";
    return false;
  }
  const std::vector<std::string> arguments = {program, std::to_string(static_cast<int>(kind)),
                                              std::to_string(static_cast<int>(use)), path};
  if (start(program, arguments)) return true;
  problem = std::string("the reader of disk images cannot be started: ") + std::strerror(errno);
#else
  (void)path, (void)kind, (void)use;
  problem = "a disk image; this build of zanvik reads none";
#endif
  return false;
}

bool disk_image::start(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const std::string& each : arguments) argv.push_back(const_cast<char*>(each.c_str()));
  argv.push_back(nullptr);
  const int memory = ::memfd_create("zanvik", MFD_CLOEXEC);
  int ends[2] = {-1, -1};
  if (memory < 0 || ::ftruncate(memory, image_piece_bytes) != 0 ||
      ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    if (memory >= 0) ::close(memory);
    return false;
  }
  void* const mapped = ::mmap(nullptr, image_piece_bytes, PROT_READ, MAP_SHARED, memory, 0);
  child_ = mapped == MAP_FAILED ? -1 : ::fork();
  if (child_ == 0) {
    // Out of the way of the places where they belong.
    const int socket = ::fcntl(ends[1], F_DUPFD_CLOEXEC, 10);
    const int shared = ::fcntl(memory, F_DUPFD_CLOEXEC, 10);
    // What its libraries say is theirs.
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      ::dup2(nowhere, standard);
    }
    hand_over(socket, image_socket);
    hand_over(shared, image_memory);
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
  }
  ::close(ends[1]);
  ::close(memory);
  if (mapped != MAP_FAILED) memory_ = static_cast<const std::byte*>(mapped);
  socket_ = ends[0];
  return child_ > 0;
}

std::int64_t disk_image::ask(const image_request& request) {
  if (!stopped_.empty() || socket_ < 0) return -1;
  std::int64_t reply = -1;
  const auto send = [this](const char* at, std::size_t size) {
    return ::send(socket_, at, size, MSG_NOSIGNAL);
  };
  const auto receive = [this](char* at, std::size_t size) { return ::recv(socket_, at, size, 0); };
  if (transfer(send, reinterpret_cast<const char*>(&request), sizeof request) &&
      transfer(receive, reinterpret_cast<char*>(&reply), sizeof reply)) {
    // The reader is not trusted more than the image.
    return std::clamp<std::int64_t>(reply, -1, image_piece_bytes);
  }
  note_end();
  return -1;
}

void disk_image::note_end() {
  int state = 0;
  while (::waitpid(child_, &state, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
  stopped_ = "the reader of disk images gave up on it";
  if (WIFSIGNALED(state)) {
    const int signal = WTERMSIG(state);
    stopped_ += signal == SIGXCPU ? ": it takes too long" : std::string(": ") + ::strsignal(signal);
  }
}

std::optional<disk_image::found_item> disk_image::at(std::uint32_t number) {
  const std::int64_t bytes = ask({image_question::entry, number, 0, 0});
  found_item found;
  constexpr std::size_t head = sizeof(image_entry);
  if (bytes < static_cast<std::int64_t>(head)) return std::nullopt;
  std::memcpy(static_cast<image_entry*>(&found), memory_, head);
  found.path.assign(
      reinterpret_cast<const char*>(memory_) + head,
      std::min<std::size_t>(found.path_bytes, static_cast<std::size_t>(bytes) - head));
  if (found.what == image_item::problem) {
    const std::size_t end = std::min(found.path.find('\0'), found.path.size());
    found.problem = found.path.substr(std::min(end + 1, found.path.size()));
    found.path.resize(end);
  }
  return found;
}

ssize_t disk_image::read(std::uint32_t item, std::span<std::byte> buffer, std::uint64_t offset) {
  std::size_t done = 0;
  while (done < buffer.size()) {
    const std::size_t wanted = std::min(image_piece_bytes, buffer.size() - done);
    const std::int64_t got = ask({image_question::bytes, item, offset + done, wanted});
    if (got <= 0) return done == 0 && got < 0 ? -1 : static_cast<ssize_t>(done);
    const std::size_t bytes = std::min(wanted, static_cast<std::size_t>(got));
    std::memcpy(buffer.data() + done, memory_, bytes);
    done += bytes;
  }
  return static_cast<ssize_t>(done);
}

std::vector<image_extent> disk_image::extents(std::uint32_t item) {
  constexpr std::int64_t most = image_piece_bytes / sizeof(image_extent);
  std::vector<image_extent> all;
  for (;;) {
    const std::int64_t got = ask({image_question::extents, item, all.size(), 0});
    const auto count = static_cast<std::size_t>(std::clamp<std::int64_t>(got, 0, most));
    if (count == 0) return all;
    const std::size_t before = all.size();
    all.resize(before + count);
    std::memcpy(all.data() + before, memory_, count * sizeof(image_extent));
  }
}

}  // namespace zanvik
