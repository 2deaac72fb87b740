// A file without a name: it is gone when it is closed, however the program ends.
//
// Bytes are appended, and can be read anywhere. After the first error nothing more is written, and
// `error` has its text.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zanvik {

class temporary_file {
 public:
  temporary_file() = default;
  temporary_file(const temporary_file&) = delete;
  temporary_file& operator=(const temporary_file&) = delete;
  ~temporary_file() { close(); }

  // Creates the file in `folder`; empty means TMPDIR, or /tmp if that is not set.
  [[nodiscard]] bool create(const std::string& folder);
  bool is_open() const { return descriptor_ >= 0; }
  void close();
  void swap(temporary_file& other);

  [[nodiscard]] bool append(std::string_view bytes);
  // Fills `bytes` from `offset` on; all of them must exist.
  [[nodiscard]] bool read(std::uint64_t offset, std::span<char> bytes);
  std::uint64_t size() const { return size_; }
  const std::string& error() const { return error_; }

 private:
  bool fail(int error);

  int descriptor_ = -1;
  std::uint64_t size_ = 0;
  std::string folder_;
  std::string error_;
};

}  // namespace zanvik
