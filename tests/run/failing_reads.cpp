// Placed before the program's C library: reads fail at one sector ("bad"), or from an offset on
// ("error"), like those of a bad disk, or they end ("end"), like those of a file that is cut while
// it is read. ZANVIK_TEST_READS is one of these words followed by the offset.
#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

extern "C" ssize_t pread(int fd, void* buffer, std::size_t count, off_t offset) {
  using function = ssize_t (*)(int, void*, std::size_t, off_t);
  static const auto real = reinterpret_cast<function>(::dlsym(RTLD_NEXT, "pread"));
  const char* const how = std::getenv("ZANVIK_TEST_READS");
  if (!how) return real(fd, buffer, count, offset);
  const char* const digits = std::strpbrk(how, "0123456789");
  const off_t bad = digits ? std::atoll(digits) : 0;
  if (offset < bad) {
    const auto before = static_cast<std::size_t>(bad - offset);
    return real(fd, buffer, count < before ? count : before, offset);
  }
  if (*how == 'b' && offset >= bad + 512) return real(fd, buffer, count, offset);
  if (how[1] == 'n') return 0;
  errno = EIO;
  return -1;
}
