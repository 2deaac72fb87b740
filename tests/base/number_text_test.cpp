// Numbers from text and to text, GUIDs, paths and references to the environment.
#include "base/number_text.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "base/digits.h"
#include "base/path_text.h"

namespace zanvik {
namespace {

constexpr auto none = std::nullopt;

TEST(qx_number, unsigned_prefixes) {
  const std::tuple<std::string, std::optional<std::uint32_t>> rows[] = {
      {"0x1F", 31},
      {" X1f\n", 31},
      {"zx10", 16},  // only the second place is looked at
      {"0x", 0},
      {"o17", 15},
      {"o18", 1},
      {"42 and", 42},
      {"-1", 0xffffffffu},
      {"4294967297", 1},  // cut to its low bits
      {"99999999999999999999", 0xffffffffu},
      {"'A'", 65},  // in the case it was typed
      {"''", none},
      {"", none},
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(unsigned_from_text(text), value) << text;
}

TEST(qx_number, signed_prefixes) {
  const std::tuple<std::string, std::optional<std::int64_t>> rows[] = {
      {"4624", 4624},
      {"12x10", 16},  // what stands before the x does not matter
      {"0xffffffff", -1},
      {"foo17", 0},  // digits from behind the first o: none
      {"no17", 15},
      {"4294967295", -1},
      {"2147483648", -2147483648LL},
      {"99999999999999999999", -1},  // the largest 64-bit value, cut
      {"0X10", 0},                   // a capital is no prefix
      {" 1", none},
      {"", none},
  };
  for (const auto& [text, value] : rows) {
    EXPECT_EQ(number_from_text(text), value) << text;
    EXPECT_EQ(std::optional<std::int64_t>(signed_from_text(text)), value) << text;
  }
}

TEST(qx_number, sixty_four_bits) {
  const std::tuple<std::string, std::optional<std::uint64_t>> rows[] = {
      {"  18446744073709551615", ~0ull},
      {"18446744073709551616", ~0ull},
      {"123456789012345678901", none},  // 21 digits
      {"0xffffffffffffffff", ~0ull},
      {"0x1ffffffffffffffff", none},  // 17 digits
      {"X10", 16},
      {"0x", 0},  // two characters are no prefix
      {"O17", 15},
      {"12ab", 12},
      {"-1", ~0ull},
      {"12 ", none},
      {"abc", 0},
      {"", 0},
      {std::string(30, ' ') + "1", none},  // more than 30 characters
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(u64_from_text(text), value) << text;
}

TEST(qx_number, hexadecimal_width_goes_by_the_value) {
  const std::tuple<std::uint64_t, unsigned, std::string> rows[] = {
      {254, 0, "0xfe"},
      {255, 0, "0x00ff"},
      {65535, 0, "0x00ffff"},
      {0xffffff, 0, "0x00ffffff"},
      {0x1'0000'0000, 0, "0x100000000"},
      {5, 3, "0x005"},
      {0x1234, 2, "0x1234"},
  };
  for (const auto& [value, width, text] : rows) EXPECT_EQ(number_to_text(value, true, width), text);
  EXPECT_EQ(number_to_text(~0ull, false, 0), "18446744073709551615");
}

TEST(qx_path, dividing) {
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"/a/b.evtx", "/a", "b.evtx"},
      {R"(C:\a/b)", "C:", "a/b"},  // a backslash goes before any slash
      {"/b", ".", "/b"},           // a divider at the start is none
      {R"(\a/b)", R"(\a)", "b"},
      {"..", "..", "."},
      {"a/..", "a//..", "."},  // two slashes
      {R"(a\..)", R"(a\..)", "."},
  };
  for (const auto& [path, expected_folder, expected_name] : rows) {
    std::string folder, name;
    EXPECT_TRUE(split_path(path, folder, name));
    EXPECT_EQ(folder, expected_folder) << path;
    EXPECT_EQ(name, expected_name) << path;
  }
  std::string folder = "x", name = "y", extension = "z";
  EXPECT_FALSE(split_path_parts("", folder, name, extension));
  EXPECT_EQ(folder + name + extension, "");
  EXPECT_TRUE(split_path_parts("a.b/c.d.evtx", folder, name, extension));
  EXPECT_EQ(folder + "|" + name + "|" + extension, "a.b|c.d|evtx");
}

TEST(qx_path, references_to_the_environment) {
  setenv("ZT_A", "/logs", 1);
  setenv("ZT_B", "%ZT_A%/b", 1);
  setenv("ZT_SELF", "%ZT_SELF%", 1);
  setenv("ZT_GROW", "%ZT_GROW%%ZT_GROW%", 1);
  setenv("Z", "z", 1);
  std::string many;  // as many as a path has room for
  for (int i = 0; i < 170; ++i) many += "%Z%";
  unsetenv("ZT_NONE");
  unsetenv("vss");
  unsetenv("VSS");
  const std::string device = R"(\\?\GLOBALROOT\Device\HarddiskVolumeShadowCopy)";
  const std::tuple<std::string, bool, std::string> rows[] = {
      {"%ZT_A%/x", false, "/logs/x"},
      {"%ZT_B%/%ZT_A%", false, "/logs/b//logs"},  // what came in is looked through again
      {"%ZT_NONE%/%ZT_A%", false, "%ZT_NONE%//logs"},
      {"100%/%ZT_A%", false, "100%/%ZT_A%"},  // "/" is the unknown name, the last % has no partner
      {"%VSS%2/x", true, device + "2/x"},
      {"%ZT_SELF%", false, "%ZT_SELF%"},  // ends
      {many, false, std::string(170, 'z')},
      {"%ZT_A%" + std::string(506, 'x'), false, "/logs" + std::string(506, 'x')},
      {"%ZT_A%" + std::string(507, 'x'), false, "%ZT_A%" + std::string(507, 'x')},  // 513 bytes
  };
  for (const auto& [path, allow_vss, expanded] : rows) {
    EXPECT_EQ(expand_env_references(path, allow_vss), expanded);
  }
  EXPECT_LT(expand_env_references("%ZT_GROW%", false).size(), 70'000u);
}

// Each number of digits, from its least to its greatest.
TEST(digits, as_printf_writes_them) {
  std::vector<std::uint64_t> values = {0, ~0ull, 0x0123456789abcdef, 1234567890123456789};
  for (std::uint64_t power = 10; power != 10'000'000'000'000'000'000u; power *= 10) {
    for (const std::uint64_t value : {power - 1, power, power + 1, 7 * power}) {
      values.push_back(value);
    }
  }
  for (unsigned bit = 0; bit < 64; ++bit) values.push_back((1ull << bit) - (bit % 3));
  for (const std::uint64_t value : values) {
    for (const unsigned width : {1u, 2u, 4u, 12u, 20u}) {
      char expected[64], digits[64];
      std::snprintf(expected, sizeof(expected), "%0*" PRIu64, static_cast<int>(width), value);
      EXPECT_EQ(std::string(digits, write_decimal(digits, value, width)), expected);
      std::snprintf(expected, sizeof(expected), "%0*" PRIx64, static_cast<int>(width), value);
      EXPECT_EQ(std::string(digits, write_hex(digits, value, width)), expected);
    }
  }
}

}  // namespace
}  // namespace zanvik
