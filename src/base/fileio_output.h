// A buffered output stream over a file descriptor: the results file, or standard output.
//
// Bytes are written when the buffer is full, on a flush and at destruction; a short or interrupted
// write is continued. After a real error the stream is bad, without a message, and accepts no more
// bytes; `write_error` says which error it was. The descriptor belongs to the caller and has to
// outlive the stream.
#pragma once

#include <cstddef>
#include <memory>
#include <ostream>
#include <streambuf>

#include "base/fileio.h"

namespace zanvik::uni {

inline constexpr std::size_t results_buffer_bytes = 0x40000;

class fileio_streambuf : public std::streambuf {
 public:
  fileio_streambuf(int descriptor, std::size_t buffer_bytes);
  ~fileio_streambuf() override;

  int write_error() const { return error_; }
  bool is_lost() const;
  bool is_terminal() const { return is_terminal_; }

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int sync() override;

 private:
  bool flush_pending();
  bool write_out(const char* bytes, std::size_t count);

  int descriptor_;
  bool is_terminal_;
  int error_ = 0;
  std::size_t buffer_bytes_;
  std::unique_ptr<char[]> buffer_;
};

class fileio_output : public std::ostream {
 public:
  explicit fileio_output(int descriptor, std::size_t buffer_bytes = results_buffer_bytes)
      : std::ostream(nullptr), buffer_(descriptor, buffer_bytes) {
    rdbuf(&buffer_);
  }
  explicit fileio_output(const fileio& file) : fileio_output(file.descriptor()) {}
  ~fileio_output() override { rdbuf(nullptr); }

  // The errno of the failed write, 0 if none failed.
  int write_error() const { return buffer_.write_error(); }
  // True if nothing that is written arrives any more: a write failed, or the other end of the pipe
  // is closed. Asks the system, so do not call it for each byte.
  bool is_lost() const { return buffer_.is_lost(); }
  bool is_terminal() const { return buffer_.is_terminal(); }

 private:
  fileio_streambuf buffer_;
};

}  // namespace zanvik::uni
