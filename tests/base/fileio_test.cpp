#include "base/fileio.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include "base/fileio_output.h"
#include "scratch_dir.h"

namespace zanvik::uni {
namespace {

using testing::file_text;
using testing::scratch_dir;

std::string text_of(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(fileio, opens_what_can_be_read_without_waiting) {
  const scratch_dir scratch;
  scratch.write("a.evtx", "text");
  scratch.write("\xff.evtx", "text");
  ASSERT_EQ(::mkfifo(scratch.path("fifo").c_str(), 0600), 0);
  const std::tuple<const char*, std::string, bool> rows[] = {
      {"a file", scratch.path("a.evtx"), true},
      {"trailing separators go", scratch.path("a.evtx/\\/"), true},
      {"a folder, which has no bytes", scratch.path(""), true},
      {"nothing there", scratch.path("b.evtx"), false},
      {"a name that is not UTF-8", scratch.path("\xff.evtx"), false},
      {"a FIFO, which would have to be waited for", scratch.path("fifo"), false},
      {"separators only", "//", false},
      {"no path", "", false},
  };
  for (const auto& [reason, path, opens] : rows) {
    fileio file;
    EXPECT_EQ(file.open(path), opens) << reason;
    EXPECT_EQ(file.is_open(), opens) << reason;
    std::vector<std::byte> bytes;
    EXPECT_EQ(read_file_head(bytes, path, 4), path.find("a.evtx") != std::string::npos) << reason;
  }
}

TEST(fileio, reads_end_where_the_file_ends) {
  const scratch_dir scratch;
  fileio file;
  ASSERT_TRUE(file.open(scratch.write("f", "0123456789")));
  constexpr auto all = ~std::uint64_t{0};
  std::vector<std::byte> bytes;
  EXPECT_TRUE(file.read(bytes, 4, 8));
  EXPECT_EQ(text_of(bytes), "89");
  EXPECT_TRUE(file.read(bytes, all, 0));
  EXPECT_EQ(text_of(bytes), "0123456789");
  EXPECT_TRUE(file.read(bytes, 0, 9));
  EXPECT_FALSE(file.read(bytes, 0, 10)) << "the end is beyond the file, even for no byte";
  EXPECT_FALSE(file.read(bytes, 1, all));
  std::byte raw[4];
  std::size_t count = 9;  // more than there is room for
  EXPECT_TRUE(file.read_raw(raw, count, 1));
  EXPECT_EQ(text_of(std::span(raw).first(count)), "1234");
}

// Walks the file in blocks and returns them as "offset:bytes ".
std::string blocks_of(fileio& file, std::uint64_t block_size, std::uint64_t start, bool& result) {
  std::string text;
  const std::byte* buffer = nullptr;
  result = file.walk_blocks(block_size, start, [&](std::span<std::byte> bytes, std::uint64_t at) {
    EXPECT_TRUE(buffer == nullptr || buffer == bytes.data()) << "one buffer serves all blocks";
    buffer = bytes.data();
    text += std::to_string(at) + ":" + text_of(bytes) + " ";
    return true;
  });
  return text;
}

TEST(walk_blocks, gives_each_byte_once) {
  const scratch_dir scratch;
  fileio file;
  ASSERT_TRUE(file.open(scratch.write("f", "0123456789")));
  constexpr auto all = ~std::uint64_t{0};
  const std::tuple<std::uint64_t, std::uint64_t, bool, const char*> rows[] = {
      {4, 1, true, "1:1234 5:5678 9:9 "},
      {5, 0, true, "0:01234 5:56789 "},
      {all, 3, true, "3:3456789 "},
      {4, 10, false, ""},
      {4, all, false, ""},
      {0, 0, false, ""}};
  for (const auto& [block_size, start, expected, blocks] : rows) {
    bool walked = false;
    EXPECT_EQ(blocks_of(file, block_size, start, walked), blocks) << block_size;
    EXPECT_EQ(walked, expected) << block_size;
  }
}

TEST(walk_blocks, a_file_that_shrinks_gives_what_is_left) {
  const scratch_dir scratch;
  const std::string path = scratch.write("f", "0123456789");
  fileio file;
  ASSERT_TRUE(file.open(path));
  std::string text;
  EXPECT_TRUE(file.walk_blocks(4, 0, [&](std::span<std::byte> bytes, std::uint64_t) {
    text += text_of(bytes) + " ";
    return ::truncate(path.c_str(), 6) == 0;
  }));
  EXPECT_EQ(text, "0123 45 ");
}

// A very large file with the byte 'a' first and 'z' last; empty if the file system does not support
// holes.
std::string file_with_a_hole(const scratch_dir& scratch, off_t size) {
  const std::string path = scratch.write("hole", "a");
  const int fd = ::open(path.c_str(), O_RDWR);
  const bool made = ::pwrite(fd, "z", 1, size - 1) == 1 && ::lseek(fd, 0, SEEK_HOLE) < size;
  ::close(fd);
  return made ? path : "";
}

TEST(walk_blocks, holes_cost_neither_time_nor_memory) {
  const scratch_dir scratch;
  constexpr off_t size = off_t{1} << 42;
  const std::string path = file_with_a_hole(scratch, size);
  if (path.empty()) GTEST_SKIP() << "no files with holes here";
  fileio file;
  ASSERT_TRUE(file.open(path));
  std::vector<std::uint64_t> offsets;
  EXPECT_TRUE(file.walk_blocks(1 << 20, 0, [&](auto, std::uint64_t offset) {
    offsets.push_back(offset);
    return true;
  }));
  EXPECT_EQ(offsets, (std::vector<std::uint64_t>{0, size - (1 << 20)}));
  EXPECT_FALSE(file.walk_blocks(size, 0, [](auto, auto) { return true; }))
      << "a block of 4 TiB should not be had";
}

TEST(walk_blocks, a_large_block_holds_its_data_in_place) {
  const scratch_dir scratch;
  constexpr off_t size = off_t{64} << 20;  // above what comes from the heap
  const std::string path = file_with_a_hole(scratch, size);
  if (path.empty()) GTEST_SKIP() << "no files with holes here";
  fileio file;
  ASSERT_TRUE(file.open(path));
  EXPECT_TRUE(file.walk_blocks(size, 0, [&](std::span<std::byte> bytes, std::uint64_t) {
    EXPECT_EQ(bytes.size(), size);
    EXPECT_EQ(text_of(bytes.first(2)), std::string("a\0", 2));
    EXPECT_EQ(text_of(bytes.last(2)), std::string("\0z", 2));
    return true;
  }));
}

TEST(fileio_output, text_of_any_length_arrives_in_order) {
  const scratch_dir scratch;
  fileio file;
  ASSERT_TRUE(file.open(scratch.path("out"), open_mode::replace));
  std::string expected;
  {
    fileio_output out(file.descriptor(), 16);
    for (const std::size_t length : {0, 1, 15, 16, 17, 3, 100}) {
      const std::string text(length, static_cast<char>('a' + length % 26));
      out << text << '.';
      expected += text + '.';
    }
    for (char c = 'a'; c <= 'z'; ++c) {
      out.rdbuf()->sputc(c);
      expected += c;
    }
    out << std::flush;
    EXPECT_EQ(file_text(file.path()), expected);
    struct stat made = {};
    EXPECT_TRUE(::stat(file.path().c_str(), &made) == 0 && (made.st_mode & 0600) == 0600);
    out << "end";
  }
  EXPECT_EQ(file_text(file.path()), expected + "end");
}

TEST(fileio_output, short_writes_go_on) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);  // writes come short and fail with EAGAIN
  std::string received;
  std::thread reader([&] {
    char buffer[5000];
    for (ssize_t n; (n = ::read(ends[0], buffer, sizeof(buffer))) > 0;) {
      received.append(buffer, static_cast<std::size_t>(n));
    }
  });
  std::string expected;
  {
    fileio_output out(ends[1]);
    for (int i = 0; i < 100'000; ++i) {
      const std::string text = std::to_string(i) + '\n';
      expected += text;
      out << text;
    }
  }
  ::close(ends[1]);
  reader.join();
  ::close(ends[0]);
  EXPECT_EQ(received, expected);
}

}  // namespace
}  // namespace zanvik::uni
