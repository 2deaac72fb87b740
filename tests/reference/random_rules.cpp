#include "reference/random_rules.h"

#include <iterator>

namespace zanvik::sigma {

std::string random_rules::text(std::string_view letters, std::size_t most) {
  std::string out(next_() % (most + 1), ' ');
  for (char& c : out) c = one_of(letters);
  return out;
}

std::string random_rules::field_and_value() {
  constexpr const char* modifiers[] = {"",
                                       "|contains",
                                       "|startswith",
                                       "|endswith",
                                       "|cased|contains",
                                       "|cased",
                                       "|windash",
                                       "|windash|contains",
                                       "|windash|contains|all",
                                       "|base64offset|contains",
                                       "|re",
                                       "|re|i",
                                       "|neq",
                                       "|contains|all",
                                       "|fieldref",
                                       "|fieldref|contains",
                                       "|exists",
                                       "|cidr",
                                       "|minute|gte",
                                       "|gt"};
  const std::string field(1, one_of(std::string_view("FGH")));
  const std::string modifier = one_of(modifiers);
  const bool encoded = modifier.starts_with("|base64");
  std::string value = "'" + text(encoded ? "aAbB-" : "aAbB*?\\-/", 5) + (encoded ? "ab'" : "'");
  if (modifier.starts_with("|re")) {
    constexpr const char* expressions[] = {"a+b",   "^b", "[^a]b?", "(a|b)-a", "(a+)+$",
                                           "A.*b$", "bb", "\\\\a",  "ab{0}a",  "(?i)ab|b"};
    value = std::string("'") + one_of(expressions) + "'";
  }
  if (modifier.ends_with("|all")) value = "[" + value + ", b]";
  if (modifier.starts_with("|fieldref")) value = "G";
  if (modifier == "|exists") value = next_() % 2 != 0 ? "true" : "false";
  if (modifier == "|gt" || modifier == "|minute|gte") value = "5";
  if (modifier == "|cidr") value = next_() % 2 != 0 ? "7.0.0.0/8" : "'::/1'";
  if (modifier.empty() && next_() % 5 == 0) value = "null";
  return "'" + field + modifier + "': " + value;
}

std::string random_rules::rule() {
  constexpr const char* conditions[] = {
      "s1 and not s2",         "s1 or s2",           "all of s*", "not s1",
      "s3 and (s1 or not s2)", "1 of s* and not s3", "k or s2",   "1 of them",
      "not (s1 and 1 of s*)"};
  std::string out = "title: r\nlogsource: {product: windows, service: security}\ndetection:\n";
  for (const char* name : {"s1", "s2", "s3"}) {
    const std::string one = field_and_value(), other = field_and_value();
    out += std::string("  ") + name + ":\n";
    out +=
        next_() % 2 != 0 ? "    - {" + one + "}\n    - {" + other + "}\n" : "    {" + one + "}\n";
  }
  out += "  k: ['" + text("aAbB-", 3) + "x', '-b']\n";
  return out + "  condition: " + one_of(conditions) + "\n---\n";
}

made_event random_rules::event() {
  constexpr const char* odd[] = {null_value.data(),     "7.1.2.3",  "::ffff:7.1.1.1",
                                 "2024-01-02 03:04:05", "\xc3\x84", "\xff"};
  made_event out;
  for (const char* field : {"F", "G", "H"}) {
    for (std::size_t values = next_() % 3; values > 0; --values) {
      out.emplace_back(field,
                       next_() % 6 == 0 ? std::string(one_of(odd)) : text("aAbB-/\\\\7", 12));
    }
  }
  return out;
}

}  // namespace zanvik::sigma
