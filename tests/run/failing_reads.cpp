// Put in front of the program's C library: reads fail at one sector ("bad"), or from an offset on
// ("error"), as of a disk that is bad there, or they end ("end"), as of a file that was cut while
// it was read. ZANVIK_TEST_READS is one of the words with the offset behind it.
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
