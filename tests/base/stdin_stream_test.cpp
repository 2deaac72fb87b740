#include "base/stdin_stream.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scratch_dir.h"

namespace zanvik {
namespace {

using namespace std::string_literals;

std::vector<std::string> lines_of(const std::string& input, bool strip) {
  const testing::scratch_dir scratch;
  const int descriptor = ::open(scratch.write("in", input).c_str(), O_RDONLY);
  uni::stdin_stream stream(descriptor);
  std::vector<std::string> lines;
  for (std::string line; stream.read_line(line, strip);) lines.push_back(line);
  ::close(descriptor);
  return lines;
}

TEST(stdin_stream, lines_as_they_come) {
  const std::string full(4095, 'x');
  const std::tuple<const char*, std::string, std::vector<std::string>> rows[] = {
      {"no input", "", {}},
      {"the last line needs no end", "a b\n%c", {"a b", "%c"}},
      {"any number of CRs and LFs at the end", "a\r\r\nb\r\n\r\n", {"a", "b", ""}},
      {"a CR inside stays", "a\rb\n", {"a\rb"}},
      {"a NUL hides the rest of its line", "a\0b\nc\n\0\nd"s, {"a", "c", "", "d"}},
      {"bytes that are no text", "\xff\n", {"\xff"}},
      {"one byte below the limit", full.substr(1) + "\nb", {full.substr(1), "b"}},
      {"a full line's end comes by itself", full + "\nb", {full, "", "b"}},
      {"a longer line in pieces", full + "yz\nb", {full, "yz", "b"}},
      {"pieces of pieces", full + full + "y", {full, full, "y"}},
      {"a line over the end of the buffer", "ab\n" + full + "\nc", {"ab", full, "", "c"}},
      {"a NUL in a piece hides that piece only", "\0"s + full + "y\n", {"", "xy"}},
  };
  for (const auto& [reason, input, lines] : rows) EXPECT_EQ(lines_of(input, true), lines) << reason;
  EXPECT_EQ(lines_of("a\r\nb", false), (std::vector<std::string>{"a\r\n", "b"}));
}

TEST(stdin_stream, what_cannot_be_read_has_ended) {
  const testing::scratch_dir scratch;
  const int folder = ::open(scratch.path("").c_str(), O_RDONLY);
  uni::stdin_stream stream(folder);
  std::string line = "before";
  EXPECT_FALSE(stream.read_line(line, true));
  EXPECT_EQ(line, "before");
  ::close(folder);
}

}  // namespace
}  // namespace zanvik
