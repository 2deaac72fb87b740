// zanvik-images: reads disk images for zanvik, which starts it and asks (image_protocol.h). It is
// of no use to people.
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "images/image_files.h"

namespace zanvik {
namespace {

// An image may take this much memory, and this long without progress; what it asks for beyond that
// ends this process.
constexpr rlim_t memory_bytes = rlim_t{4} << 30;
constexpr rlim_t seconds_without_progress = 120;

void limit(int what, rlim_t value) {
  const rlimit both{value, value};
  (void)::setrlimit(static_cast<__rlimit_resource>(what), &both);
}

void allow_more_time() {
  rusage used{};
  ::getrusage(RUSAGE_SELF, &used);
  const auto seconds = static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec);
  const rlimit both{seconds + seconds_without_progress, RLIM_INFINITY};
  (void)::setrlimit(RLIMIT_CPU, &both);
}

// Allowing costs a system call.
void note_progress() {
  static unsigned calls = 0;
  if (calls++ % 64 == 0) allow_more_time();
}

bool transfer(auto&& call, auto* bytes, std::size_t size) {
  for (std::size_t done = 0; done < size;) {
    const ssize_t got = call(image_socket, bytes + done, size - done);
    if (got <= 0) return false;
    done += static_cast<std::size_t>(got);
  }
  return true;
}

class server {
 public:
  server(image_files& files, std::span<std::byte> memory) : files_(files), memory_(memory) {}

  void run() {
    image_request request;
    while (transfer(::read, reinterpret_cast<char*>(&request), sizeof request)) {
      allow_more_time();
      const std::int64_t reply = answer(request);
      if (!transfer(::write, reinterpret_cast<const char*>(&reply), sizeof reply)) return;
    }
  }

 private:
  std::int64_t answer(const image_request& request) {
    if (request.item >= files_.items().size()) return 0;
    const image_files::item& item = files_.items()[request.item];
    switch (request.question) {
      case image_question::entry:
        return put_entry(item);
      case image_question::bytes:
        return files_.read(item, memory_.first(std::min<std::size_t>(request.size, memory_.size())),
                           request.offset);
      case image_question::extents:
        return put_extents(item, request.offset);
    }
    return -1;
  }

  std::int64_t put_entry(const image_files::item& item) {
    image_entry head = item;
    constexpr std::size_t longest_path = 64 << 10;
    head.path_bytes = static_cast<std::uint32_t>(std::min(item.path.size(), longest_path));
    std::memcpy(memory_.data(), &head, sizeof head);
    std::memcpy(memory_.data() + sizeof head, item.path.data(), head.path_bytes);
    return static_cast<std::int64_t>(sizeof head + head.path_bytes);
  }

  std::int64_t put_extents(const image_files::item& item, std::uint64_t from) {
    const std::size_t most = memory_.size() / sizeof(image_extent);
    const std::size_t begin = std::min<std::uint64_t>(from, item.extents.size());
    const std::size_t count = std::min(most, item.extents.size() - begin);
    if (count != 0) {
      std::memcpy(memory_.data(), item.extents.data() + begin, count * sizeof(image_extent));
    }
    return static_cast<std::int64_t>(count);
  }

  image_files& files_;
  std::span<std::byte> memory_;
};

int serve(char** argv) {
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_FSIZE, 0);
#ifndef __SANITIZE_ADDRESS__
  limit(RLIMIT_AS, memory_bytes);
#endif
  (void)::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  (void)::prctl(PR_SET_PDEATHSIG, SIGKILL);
  allow_more_time();
  void* const memory =
      ::mmap(nullptr, image_piece_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, image_memory, 0);
  if (memory == MAP_FAILED) return 1;
  image_files files;
  files.on_progress = note_progress;
  files.open(argv[3], static_cast<image_kind>(std::atoi(argv[1])),
             static_cast<image_use>(std::atoi(argv[2])));
  server(files, {static_cast<std::byte*>(memory), image_piece_bytes}).run();
  std::_Exit(0);
}

}  // namespace
}  // namespace zanvik

int main(int argc, char** argv) {
  if (argc == 4) return zanvik::serve(argv);
  std::fputs("zanvik starts this program to read disk images.\n", stderr);
  return 2;
}
