// The searches of the compiled matcher, each against its plain way, on texts and literals made of
// few letters, so that much overlaps.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "reference/random_rules.h"
#include "sigma/anchored_set.h"
#include "sigma/literal_set.h"
#include "sigma/regex.h"

namespace zanvik::sigma {
namespace {

using generator = std::mt19937;

std::string random_text(generator& random, std::string_view letters, std::size_t most) {
  std::string out(random() % (most + 1), ' ');
  for (char& c : out) c = letters[random() % letters.size()];
  return out;
}

TEST(searches, literals_are_found_as_by_plain_searching) {
  generator random(1);
  for (int round = 0; round < 40; ++round) {
    std::vector<std::string> literals;
    for (int i = 0; i < 30; ++i) {
      const std::string literal = "a" + random_text(random, "ab\\", 5);
      if (std::find(literals.begin(), literals.end(), literal) == literals.end()) {
        literals.push_back(literal);
      }
    }
    literal_scratch scratch;
    anchored_set starts(false), ends(true);
    const auto plain = make_plain_literal_set(literals);
    const auto quick = make_literal_set(literals);
    plain->prepare(scratch);
    quick->prepare(scratch);
    for (std::uint32_t i = 0; i < literals.size(); ++i)
      starts.add(literals[i], i), ends.add(literals[i], i);
    starts.finish();
    ends.finish();
    for (int t = 0; t < 50; ++t) {
      const std::string text = random_text(random, "ab\\", 20);
      std::vector<std::uint32_t> inside, first, last, found;
      for (std::uint32_t i = 0; i < literals.size(); ++i) {
        if (text.find(literals[i]) != std::string::npos) inside.push_back(i);
        if (text.starts_with(literals[i])) first.push_back(i);
        if (text.ends_with(literals[i])) last.push_back(i);
      }
      const auto sorted = [](std::vector<std::uint32_t> list) {
        std::sort(list.begin(), list.end());
        return list;
      };
      plain->find(text, scratch);
      EXPECT_EQ(sorted(scratch.found), inside) << text;
      quick->find(text, scratch);
      EXPECT_EQ(sorted(scratch.found), inside) << text;
      starts.find(text, [&](std::uint32_t i) { found.push_back(i); });
      EXPECT_EQ(sorted(found), first) << text;
      found.clear();
      ends.find(text, [&](std::uint32_t i) { found.push_back(i); });
      EXPECT_EQ(sorted(found), last) << text;
    }
  }
}

struct literal_case {
  const char* expression;
  const char* literal;
  const char* reason;
};

const literal_case literal_cases[] = {
    {"abc", "abc", "all of it"},
    {"ABC", "abc", "folded"},
    {"abc?def", "def", "what may be none does not count"},
    {"ab{0,2}cde", "cde", "nor what may come no times"},
    {"ab+cd", "ab", "a repetition ends the literal behind its first"},
    {"a\\.exe", "a.exe", "an escaped character is plain"},
    {"\\d\\\\users", "\\users", "a class is none"},
    {"one|other", "", "alternatives"},
    {"(one|other) thing", " thing", "alternatives in brackets"},
    {"(?i)\\$env:x", "$env:x", "flags"},
    {"(?x)a b", "", "free spacing changes what blanks mean"},
    {"\\x41bc", "", "an escape that is not understood"},
    {"\\Qa.b\\E", "", "quoted text"},
    {"[]a]bcd", "bcd", "a bracket that is first in a class is plain"},
    {"a\u00e4bcd", "bcd", "other letters have other cases"},
};

TEST(searches, expressions_give_a_literal_that_they_ask_for) {
  for (const literal_case& c : literal_cases) {
    EXPECT_EQ(literal_of_regex(c.expression), c.literal) << c.reason;
  }
}

TEST(searches, random_rules_match_as_the_plain_way_says) {
  generator random(7);
  random_rules made([&] { return static_cast<std::uint32_t>(random()); });
  std::size_t matches = 0, chances = 0;
  for (int round = 0; round < 30; ++round) {
    std::string text;
    for (int i = 0; i < 12; ++i) text += made.rule();
    const log_source_table sources;
    rule_set set;
    load_rule_texts({{"random.yml", text}}, {}, sources, set);
    ASSERT_EQ(set.running(), 12U) << set.messages.front() << text;
    all_ways ways(set);
    for (int e = 0; e < 40; ++e) {
      const auto answer = ways.match(made.event());
      ASSERT_TRUE(answer.agree()) << text;
      matches += answer.plain.size();
      chances += 12;
    }
  }
  // Rules that never or always match would show nothing.
  EXPECT_GT(matches, chances / 10);
  EXPECT_LT(matches, chances * 9 / 10);
}

}  // namespace
}  // namespace zanvik::sigma
