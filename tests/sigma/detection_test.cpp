// What values, modifiers, lists and conditions mean. Each row is matched by the plain way and by
// the compiled matchers, which have to agree.
#include <gtest/gtest.h>

#include "reference/rule_checks.h"

namespace zanvik::sigma {
namespace {

std::string rule_text(const std::string& detection) {
  return "title: test\nlogsource: {product: windows, category: process_creation}\ndetection:\n" +
         detection + "\n";
}

rule_set load(const std::string& text, const rule_choice& choice = {}) {
  const log_source_table sources;
  rule_set set;
  load_rule_texts({{"test.yml", text}}, choice, sources, set);
  return set;
}

struct field_case {
  const char* key;    // field and modifiers
  const char* value;  // YAML
  std::string text;   // the event's value of field F
  bool matches;
  const char* reason;
};

const std::string word = null_value.data();

const field_case field_cases[] = {
    // Whole values, in any case.
    {"F", "whoami", "WhoAmI", true, "values are compared in any case"},
    {"F", "whoami", "whoami.exe", false, "a value is the whole field"},
    {"F", "'\u00c4RGER \u0416'", "\u00e4rger \u0436", true, "letters beyond ASCII have cases, too"},
    {"F|cased", "Who", "who", false, "cased takes the case as it stands"},
    {"F|cased|contains", "Who", "aWhob", true, "cased goes with the other modifiers"},
    {"F", "4688", "4688", true, "a number is compared as it is written"},
    {"F", "true", "True", true, "so is a truth value"},
    {"F", "''", "", true, "an empty value"},
    {"F", "''", "x", false, "an empty value is no wildcard"},
    {"F", "''", word, true, "a field without a value has an empty text"},
    {"F", "null", word, true, "null is a field without a value"},
    {"F", "null", "", false, "an empty text is a value"},
    {"G", "null", "x", true, "null is a field that is not there"},
    // Wildcards and escapes, as the specification lists them.
    {"F", "'prog?.exe'", "progA.exe", true, "? is one character"},
    {"F", "'prog?.exe'", "prog.exe", false, "? is not none"},
    {"F", "'prog?.exe'", "prog\u00e4.exe", true, "a character may have two bytes"},
    {"F", "'a*c'", "abcbc", true, "* takes as much as the end needs"},
    {"F", "'*a*b*'", "xbxaxxb", true, "pieces come in their order"},
    {"F", "'*a*b*'", "xbxa", false, "and not in another"},
    {"F", "'ab*ba'", "aba", false, "start and end do not overlap"},
    {"F", "'a\\*b'", "a*b", true, "an escaped wildcard is plain"},
    {"F", "'a\\*b'", "axb", false, "and no wildcard"},
    {"F", "'a\\\\*'", "a\\xyz", true, "an escaped backslash before a wildcard"},
    {"F", "'a\\\\*'", "a*", false, "needs the backslash"},
    {"F", "'a\\\\\\*'", "a\\*", true, "three backslashes: backslash and plain wildcard"},
    {"F", "'C:\\Win'", "c:\\win", true, "a single backslash is plain"},
    {"F", "'C:\\\\Win'", "c:\\win", true, "two are one"},
    {"F", "'\\\\\\\\srv'", "\\\\srv", true, "four are two"},
    {"F", "'\\\\\\srv'", "\\\\srv", true, "three are two"},
    {"F|contains", "'\\'", "a\\b", true, "a backslash does not escape what a modifier adds"},
    // Anchors.
    {"F|startswith", "adm", "Administrator", true, "start"},
    {"F|startswith", "adm", "badmin", false, "not in the middle"},
    {"F|endswith", "'\\cmd.exe'", "C:\\CMD.EXE", true, "end"},
    {"F|endswith", "'\\cmd.exe'", "cmd.exe", false, "longer than the text"},
    {"F|contains", "'a*b'", "xxaxxbxx", true, "wildcards stay wildcards"},
    {"F|contains", "''", "x", true, "the empty text is in any value"},
    {"F|contains", "a-literal-that-is-longer-than-what-is-searched", "a-literal-that-is-longer",
     false, "the rest of a long literal counts"},
    {"F|contains|all", "[b, a]", "xaxb", true, "all, in any order"},
    {"F|contains|all", "[b, a]", "xax", false, "not only one of them"},
    {"F|contains", "[b, a]", "xax", true, "a list means any of it"},
    {"F|neq", "[a, b]", "c", true, "different from each"},
    {"F|neq", "[a, b]", "B", false, "not different from one"},
    // Dashes.
    {"F|windash|contains", "' -enc'", "p /enc", true, "a slash for a hyphen"},
    {"F|windash|contains", "' /enc'", "p \u2014enc", true, "an em dash for a slash"},
    {"F|windash|contains", "' -a -b'", " /a \u2013b", true, "each on its own"},
    {"F|windash|contains", "' -enc'", "p enc", false, "no dash at all"},
    {"F|contains", "' -enc'", "p /enc", false, "only with the modifier"},
    {"F|windash|base64", "'-a'", "L2E=", true, "an encoding takes all of them"},
    // Encodings.
    {"F|base64", "'foobar'", "Zm9vYmFy", true, "Base64"},
    {"F|base64offset|contains", "'http://'", "xxaHR0cDovLxx", true, "at offset 0"},
    {"F|base64offset|contains", "'http://'", "xxodHRwOi8vxx", true, "at offset 1"},
    {"F|base64offset|contains", "'http://'", "xxh0dHA6Ly", true, "at offset 2"},
    {"F|wide|base64offset|contains", "'cmd'", "xxYwBtAGQAxx", true, "UTF-16LE before Base64"},
    {"F|utf16le|base64", "'cmd'", "YwBtAGQA", true, "wide is utf16le"},
    {"F|utf16be|base64", "'cmd'", "AGMAbQBk", true, "big-endian"},
    {"F|utf16|base64", "'cmd'", "//5jAG0AZAA=", true, "with a byte order mark"},
    // Regular expressions.
    {"F|re", "'^a.c$'", "abc", true, "expression"},
    {"F|re", "'b'", "abc", true, "anywhere"},
    {"F|re", "'ABC'", "abc", false, "with case"},
    {"F|re|i", "'ABC'", "xabcx", true, "i: in any case"},
    {"F|re|i", "'k'", "\u212a", true, "as PCRE2 folds"},
    {"F|re", "'^b'", "a\nb", false, "one line"},
    {"F|re|m", "'^b'", "a\nb", true, "m: many lines"},
    {"F|re", "'a.b'", "a\nb", false, "the dot takes no line end"},
    {"F|re|s", "'a.b'", "a\nb", true, "s: it does"},
    {"F|re", "'colou?r [a-z]{2,3}!'", "a color abc!", true,
     "its literal leaves out what may be none"},
    {"F|re", "'(one|two)three|four'", "four", true, "alternatives have no literal in common"},
    // Numbers.
    {"F|gt", "10", "11", true, "numbers, not texts"},
    {"F|gt", "10", "9", false, "9 is less than 10"},
    {"F|gte", "10", "0xA", true, "hexadecimal numbers of events"},
    {"F|lt", "1.5", "1.25", true, "fractions"},
    {"F|lte", "10", "ten", false, "no number"},
    {"F|gt", "18446744073709551614", "18446744073709551615", true, "64 bits without loss"},
    // Addresses.
    {"F|cidr", "10.0.0.0/8", "10.255.1.2", true, "IPv4"},
    {"F|cidr", "10.0.0.0/9", "10.128.0.0", false, "bits within a byte"},
    {"F|cidr", "'fe80::/10'", "febf::1", true, "IPv6"},
    {"F|cidr", "10.0.0.0/8", "::ffff:10.1.1.1", true, "IPv4 as Windows writes it in IPv6"},
    {"F|cidr", "'::/0'", "host", false, "no address"},
    {"F|cidr", "'::/0'", "10.1.1.1", false, "IPv4 is in no IPv6 network"},
    {"F|cidr", "'::ffff:0:0/96'", "10.1.1.1", true, "but in the one that is all of IPv4"},
    // Times.
    {"F|hour|gte", "22", "2017-12-26T23:10:29.1368791Z", true, "a part of a date, compared"},
    {"F|minute", "10", "2017-12-26 23:10:29", true, "a part alone is equal"},
    {"F|day", "26", "2017-12-26", true, "a date has a day"},
    {"F|hour", "0", "2017-12-26", false, "and no hour"},
    {"F|week", "1", "2018-12-31", true, "weeks by ISO 8601: this one is of the next year"},
    {"F|month", "12", "2017-13-26", false, "no date"},
    {"F|year|lt", "2018", "2017-12-26 23:10:29", true, "year"},
    // Other fields, and whether a field is there.
    {"F|exists", "true", "", true, "there, and empty"},
    {"F|exists", "true", word, true, "there, without a value"},
    {"G|exists", "false", "x", true, "not there"},
    {"F|fieldref", "Other", "EQUAL", true, "equal in any case"},
    {"F|fieldref|neq", "Other", "else", true, "another field's value, not equal"},
    {"F|fieldref|endswith", "Other", "it is equal", true, "ends with the other's value"},
    {"F|fieldref", "G", "x", false, "the other one is not there"},
};

TEST(detection, a_field_and_its_value) {
  for (const field_case& c : field_cases) {
    const rule_set set =
        load(rule_text(std::string("  s: {'") + c.key + "': " + c.value + "}\n  condition: s"));
    ASSERT_EQ(set.rules.size(), 1U);
    ASSERT_EQ(set.rules[0].reason, "") << c.key << ": " << c.value;
    const auto answer = all_ways(set).match({{"F", c.text}, {"Other", "equal"}});
    EXPECT_EQ(!answer.plain.empty(), c.matches) << c.reason;
    EXPECT_TRUE(answer.agree()) << c.reason;
  }
}

struct rule_case {
  const char* detection;
  std::vector<bool> matches;  // of each event below
  const char* reason;
};

const made_event rule_events[] = {
    {{"A", "1"}, {"B", "2"}},
    {{"A", "1"}, {"B", "3"}, {"C", "evil word"}},
    {{"A", "2"}, {"C", "x"}, {"C", "good"}},
};

const rule_case rule_cases[] = {
    {"  s: {A: 1, B: 2}\n  condition: s", {true, false, false}, "a map wants all of it"},
    {"  s: [{A: 2}, {B: 3}]\n  condition: s", {false, true, true}, "a list of maps wants one"},
    {"  k: [evil, good]\n  condition: k", {false, true, true}, "keywords are in any field"},
    {"  k: {'|all': [evil, '3']}\n  condition: k", {false, true, false}, "all keywords"},
    {"  k: [{B: 2}, good]\n  condition: k", {true, false, true}, "maps and keywords in one list"},
    {"  s: {C: good}\n  condition: s", {false, false, true}, "any of a field's values"},
    {"  a: {A: 1}\n  b: {B: 2}\n  condition: a and not b", {false, true, false}, "not"},
    {"  a: {A: 2}\n  b: {B: 2}\n  c: {B: 3}\n  condition: a or b and c",
     {false, false, true},
     "and binds before or"},
    {"  a: {A: 2}\n  b: {B: 2}\n  c: {B: 3}\n  condition: (a or b) and not c",
     {true, false, true},
     "brackets"},
    {"  s1: {A: 1}\n  s2: {B: 2}\n  o: {A: 9}\n  condition: all of s*",
     {true, false, false},
     "all of a pattern"},
    {"  s1: {A: 9}\n  s2: {B: 2}\n  _s: {A: 2}\n  condition: 1 of them",
     {true, false, false},
     "them leaves out what begins with _"},
    {"  s: {A: 1}\n  t: {B: 3}\n  condition: [t, s and t]",
     {false, true, false},
     "conditions of a list are alternatives"},
    {"  s: {A: 1}\n  condition: not (not s)", {true, true, false}, "not of not"},
    {"  s: {A|contains: ['1', '2']}\n  f: {C: null}\n  condition: s and not f",
     {false, true, true},
     "a filter on null"},
    {"  s: {B: null}\n  condition: s", {false, false, true}, "no search finds what is not there"},
    {"  s: {A|re: '^1$', B|re: '[23]'}\n  condition: s", {true, true, false}, "only expressions"},
};

TEST(detection, identifiers_and_conditions) {
  for (const rule_case& c : rule_cases) {
    const rule_set set = load(rule_text(c.detection));
    ASSERT_EQ(set.rules[0].reason, "") << c.reason;
    all_ways ways(set);
    for (std::size_t e = 0; e < std::size(rule_events); ++e) {
      const auto answer = ways.match(rule_events[e]);
      EXPECT_EQ(!answer.plain.empty(), c.matches[e]) << c.reason << ", event " << e;
      EXPECT_TRUE(answer.agree()) << c.reason << ", event " << e;
    }
  }
}

TEST(detection, one_matcher_holds_many_rules) {
  std::string text;
  for (const char* detection :
       {"  s: {A|contains: bc}\n  condition: s", "  s: {A|endswith: bcd}\n  condition: s",
        "  s: {A|startswith: ab}\n  condition: s", "  s: {A: abcd}\n  condition: s",
        "  s: {A|contains: bc, B: x}\n  condition: s", "  s: {A: 'a?c*'}\n  condition: s"}) {
    text += rule_text(detection) + "---\n";
  }
  const rule_set set = load(text);
  all_ways ways(set);
  EXPECT_EQ(ways.match({{"A", "abcd"}}).quick, (std::vector<std::uint32_t>{0, 1, 2, 3, 5}));
  EXPECT_EQ(ways.match({{"A", "xbcx"}, {"B", "X"}}).quick, (std::vector<std::uint32_t>{0, 4}));
  // Nothing of the event before is left.
  EXPECT_TRUE(ways.match({{"A", "none"}}).quick.empty());
}

TEST(detection, placeholders_stand_for_all_their_values) {
  rule_choice choice;
  choice.placeholders = {{"admins", "adm_*"}, {"admins", "root"}};
  const rule_set set = load(
      rule_text("  s: {F|expand: '%admins%', G|expand: '\\%admins% %'}\n  condition: s"), choice);
  ASSERT_EQ(set.rules[0].reason, "");
  all_ways ways(set);
  EXPECT_EQ(ways.match({{"F", "adm_x"}, {"G", "%admins% %"}}).plain.size(), 1U);
  EXPECT_EQ(ways.match({{"F", "Root"}, {"G", "%admins% %"}}).plain.size(), 1U);
  EXPECT_EQ(ways.match({{"F", "user"}, {"G", "%admins% %"}}).plain.size(), 0U);
}

struct problem_case {
  const char* detection;
  rule_state state;
  const char* reason;  // a part of it
};

const problem_case problem_cases[] = {
    {"  s: {F|nosuch: 1}\n  condition: s", rule_state::broken, "'nosuch' is not known"},
    {"  s: {F|i: a}\n  condition: s", rule_state::broken, "without 're'"},
    {"  s: {F|re: '('}\n  condition: s", rule_state::broken, "regular expression"},
    {"  s: {F|cidr: 10.0.0.0/33}\n  condition: s", rule_state::broken, "no network"},
    {"  s: {F|gt: many}\n  condition: s", rule_state::broken, "no number"},
    {"  s: {F: [a, null]}\n  condition: s", rule_state::broken, "null cannot be part"},
    {"  s: {F: []}\n  condition: s", rule_state::broken, "list of values is empty"},
    {"  s: {F: {G: 1}}\n  condition: s", rule_state::broken, "neither a text nor a list"},
    {"  s: {F|base64: 'a*'}\n  condition: s", rule_state::broken, "wildcards or many dashes"},
    {"  s: {F|base64offset: 'a'}\n  condition: s and", rule_state::broken, "ends too early"},
    {"  s: {F: 1}\n  condition: t", rule_state::broken, "no search identifier 't'"},
    {"  s: {F: 1}\n  condition: 1 of t*", rule_state::broken, "nothing fits 't*'"},
    {"  s: {F: 1}\n  condition: 2 of s*", rule_state::broken, "neither '1 of' nor"},
    {"  s: {F: 1}\n  condition: (s", rule_state::broken, "not closed"},
    {"  s: {F: 1}\n  condition: s s", rule_state::broken, "unexpected 's'"},
    {"  s: {F: 1}", rule_state::broken, "'condition' is missing"},
    {"  s: {F: 1}\n  condition: s | count() > 5", rule_state::unsupported, "obsolete"},
    {"  s: {F|expand: '%nobody%'}\n  condition: s", rule_state::unsupported, "%nobody% has no"},
};

TEST(detection, what_cannot_be_used_says_why) {
  for (const problem_case& c : problem_cases) {
    const rule_set set = load(rule_text(c.detection));
    EXPECT_EQ(set.rules[0].state, c.state) << c.detection;
    EXPECT_NE(set.rules[0].reason.find(c.reason), std::string::npos) << set.rules[0].reason;
    EXPECT_EQ(set.messages.size(), c.state == rule_state::broken ? 1U : 0U) << c.detection;
  }
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string out;
  while (times-- > 0) out += text;
  return out;
}

struct hostile_case {
  std::string detection;
  const char* reason;  // empty: the rule runs
};

// A rule is input of any origin: none may take long or grow, whatever it asks.
TEST(detection, hostile_rules_come_to_an_end) {
  std::string doubled = "s";
  for (int i = 0; i < 12; ++i) doubled = "(" + doubled + " or " + doubled + ")";
  std::string numbered;
  for (int i = 0; i < 300; ++i) numbered += "  s" + std::to_string(i) + ": {F: 1}\n";
  const hostile_case cases[] = {
      {"  s: {F: 1}\n  condition: " + repeated("(", 100000), "nested too deep"},
      {"  s: {F: 1}\n  condition: " + repeated("not ", 50000) + "s", ""},
      {"  s: {F: 1}\n  condition: " + doubled, "too many steps"},
      {numbered + "  condition: " + repeated("1 of s* or ", 300) + "s1", "too many steps"},
      {"  s: {F|re: ['" + repeated("((abcdefghij){1,40}){1,40}', '", 50) + "']}\n  condition: s",
       "too large together"},
      {"  s: {F: 'x" + repeated("?", 300) + "'}\n  condition: s", "too many wildcards"},
      {"  s: {F: '" + repeated("*a", 300) + "'}\n  condition: s", "too many wildcards"},
      {"  s: {F|windash|base64offset: [" + repeated("'-----',", 300) + "]}\n  condition: s",
       "too many values"},
      {"  s: " + repeated("[", 100000), "nested too deep"},
      {"  s: {F: '" + std::string(600000, 'x') + "'}\n  condition: s", "too large for a rule"},
  };
  for (const hostile_case& c : cases) {
    const rule_set set = load(rule_text(c.detection));
    ASSERT_EQ(set.rules.size(), 1U);
    EXPECT_EQ(set.rules[0].state == rule_state::runs, *c.reason == 0)
        << c.detection.substr(0, 80) << set.rules[0].reason;
    EXPECT_NE(set.rules[0].reason.find(c.reason), std::string::npos) << set.rules[0].reason;
  }
}

TEST(detection, aliases_do_not_grow_without_end) {
  std::string copies = "a: &a [x, x, x, x, x, x, x, x, x, x]\n";
  for (char c = 'b'; c < 'k'; ++c) {
    copies += std::string(1, c) + ": &" + c + " [";
    for (int i = 0; i < 10; ++i) copies += std::string(i ? ", " : "") + "*" + char(c - 1);
    copies += "]\n";
  }
  const rule_set grown = load(copies);
  ASSERT_EQ(grown.rules.size(), 1U);
  EXPECT_EQ(grown.rules[0].reason, "too many values");
}

TEST(detection, an_expression_that_goes_back_without_end_is_given_up) {
  const rule_set slow = load(rule_text("  s: {F|re: '(a+)+$'}\n  condition: s"));
  test_scratch scratch;
  const std::string text = std::string(5000, 'a') + "b";
  const field_value value{text, text, false};
  EXPECT_FALSE(value_passes(slow.rules[0].content.tests[0], value, scratch));
  EXPECT_TRUE(scratch.gave_up);
}

}  // namespace
}  // namespace zanvik::sigma
