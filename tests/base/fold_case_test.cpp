// Lower case of letters beyond ASCII, by the tables of Unicode.
#include "base/fold_case.h"

#include <gtest/gtest.h>

namespace zanvik {
namespace {

TEST(fold_case, first_and_last_letter_of_each_range) {
  const std::tuple<const char*, const char*> rows[] = {
      {"AZ[@`{", "az[@`{"},
      {"\u00c0\u00d6\u00d8\u00de", "\u00e0\u00f6\u00f8\u00fe"},
      {"\u00bf\u00d7\u00df\u00ff", "\u00bf\u00d7\u00df\u00ff"},
      {"\u0100\u0102\u012e\u0132\u0136", "\u0101\u0103\u012f\u0133\u0137"},
      {"\u0101\u0130\u0131\u0138\u0149", "\u0101\u0130\u0131\u0138\u0149"},
      {"\u0139\u013b\u0147\u014a\u014c\u0176", "\u013a\u013c\u0148\u014b\u014d\u0177"},
      {"\u0178\u0179\u017b\u017d\u017f", "\u00ff\u017a\u017c\u017es"},
      {"\u013a\u0177\u017e\u0385\u0387", "\u013a\u0177\u017e\u0385\u0387"},
      {"\u0386\u0388\u038a\u038c\u038e\u038f", "\u03ac\u03ad\u03af\u03cc\u03cd\u03ce"},
      {"\u038b\u038d\u0390\u03a2\u03ac", "\u038b\u038d\u0390\u03a2\u03ac"},
      {"\u0391\u03a1\u03a3\u03ab", "\u03b1\u03c1\u03c3\u03cb"},
      {"\u0400\u040f\u0410\u042f", "\u0450\u045f\u0430\u044f"},
      {"\u0430\u045f\u0461\u0482", "\u0430\u045f\u0461\u0482"},
      {"\u0460\u0462\u0480\u048a\u048c\u04be", "\u0461\u0463\u0481\u048b\u048d\u04bf"},
      {"\u0531\u0556\u1e00\u1e02\u1e94", "\u0561\u0586\u1e01\u1e03\u1e95"},
      {"\u0530\u0557\u1dff\u1e01\u1e96", "\u0530\u0557\u1dff\u1e01\u1e96"},
      {"\u212a\uff21\uff3a", "k\uff41\uff5a"},
      {"\u2129\u212c\uff20\uff3b", "\u2129\u212c\uff20\uff3b"},
      {"\xc3(A\xf8\x80\x80\x80\x80\xe2\x84Z\xff", "\xc3(a\xf8\x80\x80\x80\x80\xe2\x84z\xff"},
      {"\xf0\x9f\x98\x80X", "\xf0\x9f\x98\x80x"},
  };
  for (const auto& [given, lower] : rows) EXPECT_EQ(folded(given), lower) << given;
}

}  // namespace
}  // namespace zanvik
