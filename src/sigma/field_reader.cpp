// `field|modifier|…: value` -> tests.
#include <algorithm>
#include <array>
#include <cctype>

#include "base/text.h"
#include "sigma/encodings.h"
#include "sigma/rule_reader.h"
#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

using kind = field_test::kind;
using relation = field_test::relation;
using time_part = field_test::time_part;

// Modifiers that change the texts of a value, in the order of the key.
enum class change {
  starts_with,
  ends_with,
  contains,
  windash,
  utf16le,
  utf16be,
  utf16,
  base64,
  base64offset
};

struct change_name {
  std::string_view name;
  change what;
};
constexpr std::array<change_name, 10> changes{{
    {"startswith", change::starts_with},
    {"endswith", change::ends_with},
    {"contains", change::contains},
    {"windash", change::windash},
    {"utf16le", change::utf16le},
    {"wide", change::utf16le},
    {"utf16be", change::utf16be},
    {"utf16", change::utf16},
    {"base64", change::base64},
    {"base64offset", change::base64offset},
}};

struct relation_name {
  std::string_view name;
  relation what;
};
constexpr std::array<relation_name, 4> relations{{
    {"lt", relation::less},
    {"lte", relation::less_equal},
    {"gt", relation::greater},
    {"gte", relation::greater_equal},
}};

struct time_name {
  std::string_view name;
  time_part what;
};
constexpr std::array<time_name, 6> time_parts{{
    {"minute", time_part::minute},
    {"hour", time_part::hour},
    {"day", time_part::day},
    {"week", time_part::week},
    {"month", time_part::month},
    {"year", time_part::year},
}};

// A field's name and its modifiers.
struct field_key {
  std::string field;
  std::vector<change> changes;
  kind what = kind::text;
  relation compare = relation::equal;
  time_part part = time_part::none;
  regex_flags flags;
  bool cased = false, all = false, negated = false, expand = false;
};

// Whether a text between two percent signs names a placeholder.
bool is_name(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '_' || c == '-' || c == '.';
  });
}

template <typename Names>
auto find_name(const Names& names, std::string_view name) {
  return std::find_if(names.begin(), names.end(), [&](const auto& n) { return n.name == name; });
}

class key_reader {
 public:
  key_reader(const std::string& key, std::size_t line) : line_(line) {
    std::size_t begin = std::min(key.find('|'), key.size());
    out.field = key.substr(0, begin);
    // Field names are compared without blanks.
    remove_char(out.field, ' ');
    while (begin < key.size()) {
      const std::size_t end = std::min(key.find('|', begin + 1), key.size());
      take(std::string_view(key).substr(begin + 1, end - begin - 1));
      begin = end;
    }
    check();
  }

  field_key out;

 private:
  void become(kind what, std::string_view name) {
    if (out.what != kind::text && out.what != what) {
      throw rule_problem{line_, "modifier '" + std::string(name) + "' does not go with the others"};
    }
    out.what = what;
  }

  void take(std::string_view name) {
    if (const auto c = find_name(changes, name); c != changes.end()) {
      out.changes.push_back(c->what);
    } else if (const auto r = find_name(relations, name); r != relations.end()) {
      become(kind::number, name);
      out.compare = r->what;
    } else if (const auto t = find_name(time_parts, name); t != time_parts.end()) {
      become(kind::number, name);
      out.part = t->what;
    } else if (!take_switch(name) && !take_type(name)) {
      throw rule_problem{line_, "modifier '" + std::string(name) + "' is not known"};
    }
  }

  bool take_switch(std::string_view name) {
    bool* const flag = name == "all"      ? &out.all
                       : name == "neq"    ? &out.negated
                       : name == "cased"  ? &out.cased
                       : name == "expand" ? &out.expand
                       : name == "i"      ? &out.flags.any_case
                       : name == "m"      ? &out.flags.multi_line
                       : name == "s"      ? &out.flags.single_line
                                          : nullptr;
    if (flag == nullptr) return false;
    if (name.size() == 1 && out.what != kind::regex) {
      throw rule_problem{line_, "modifier '" + std::string(name) + "' stands without 're'"};
    }
    *flag = true;
    return true;
  }

  bool take_type(std::string_view name) {
    const kind what = name == "re"         ? kind::regex
                      : name == "cidr"     ? kind::address
                      : name == "exists"   ? kind::exists
                      : name == "fieldref" ? kind::field
                                           : kind::text;
    if (what == kind::text) return false;
    become(what, name);
    return true;
  }

  void check() const {
    const bool only_ends = std::all_of(out.changes.begin(), out.changes.end(),
                                       [](change c) { return c <= change::contains; });
    const bool fits =
        out.changes.empty() || out.what == kind::text || (out.what == kind::field && only_ends);
    if (!fits) throw rule_problem{line_, "modifiers for texts do not go with the others"};
    if (out.field.empty() && (out.what == kind::exists || out.what == kind::field)) {
      throw rule_problem{line_, "a keyword cannot be asked for 'exists' or 'fieldref'"};
    }
  }

  std::size_t line_;
};

// Makes the tests of one field.
class field_reader {
 public:
  field_reader(const field_key& key, const placeholder_values& placeholders,
               std::vector<field_test>& tests)
      : key_(key), placeholders_(placeholders), tests_(tests) {}

  expression read(const yaml_node& value) {
    std::vector<expression> parts;
    if (!value.is_list()) {
      parts.push_back(one(value));
    } else {
      if (value.items.empty()) throw rule_problem{value.line, "a list of values is empty"};
      for (const yaml_node& item : value.items) {
        if (item.what == yaml_node::kind::null) {
          throw rule_problem{item.line, "null cannot be part of a list of values"};
        }
        parts.push_back(one(item));
      }
    }
    expression out = expression::join(
        key_.all ? expression::kind::all_of : expression::kind::any_of, std::move(parts));
    return key_.negated ? expression::negate(std::move(out)) : out;
  }

 private:
  field_test fresh(kind what) const {
    field_test test;
    test.field = key_.field;
    test.what = what;
    test.cased = key_.cased;
    return test;
  }

  expression add(field_test test) {
    if (tests_.size() == limits::rule_tests) throw rule_problem{line_, "too many values in a rule"};
    tests_.push_back(std::move(test));
    return expression::of_test(tests_.size() - 1);
  }

  expression one(const yaml_node& value) {
    line_ = value.line;
    if (value.is_map() || value.is_list()) {
      throw rule_problem{value.line, "the value of a field is neither a text nor a list of texts"};
    }
    if (value.what == yaml_node::kind::null) {
      if (key_.what != kind::text || !key_.changes.empty() || key_.field.empty()) {
        throw rule_problem{value.line, "null does not go with the modifiers"};
      }
      return add(fresh(kind::null));
    }
    std::vector<expression> parts;
    for (const std::string& text : expanded(value)) parts.push_back(from_text(text, value));
    return expression::join(expression::kind::any_of, std::move(parts));
  }

  expression from_text(const std::string& text, const yaml_node& value) {
    field_test test = fresh(key_.what);
    switch (key_.what) {
      case kind::text:
        return from_patterns(text, value.line);
      case kind::regex: {
        std::string error;
        test.expression = regex::compile(text, key_.flags, error);
        if (!test.expression) throw rule_problem{value.line, "regular expression: " + error};
        regex_bytes_ += test.expression->compiled_bytes();
        if (regex_bytes_ > limits::rule_regex_bytes) {
          throw rule_problem{value.line, "the regular expressions are too large together"};
        }
        test.literal = literal_of_regex(text);
        break;
      }
      case kind::number: {
        const auto number = number_of(text);
        if (!number) throw rule_problem{value.line, "'" + text + "' is no number"};
        test.compare = key_.compare;
        test.part = key_.part;
        test.number = *number;
        break;
      }
      case kind::address: {
        const auto range = address_range::parse(text);
        if (!range) throw rule_problem{value.line, "'" + text + "' is no network"};
        test.range = *range;
        break;
      }
      case kind::exists:
        if (!equal_nocase(text, "true") && !equal_nocase(text, "false") &&
            !equal_nocase(text, "yes") && !equal_nocase(text, "no")) {
          throw rule_problem{value.line, "'exists' is neither true nor false"};
        }
        test.expected = equal_nocase(text, "true") || equal_nocase(text, "yes");
        break;
      default:
        test.other = text;
        remove_char(test.other, ' ');
        for (const change c : key_.changes) {
          test.open_start |= c != change::starts_with;
          test.open_end |= c != change::ends_with;
        }
    }
    return add(std::move(test));
  }

  expression from_patterns(const std::string& text, std::size_t line) {
    std::vector<text_pattern> patterns{text_pattern::parse(text)};
    for (const change c : key_.changes) apply(c, patterns, line);
    if (patterns[0].costly_units() > limits::pattern_units) {
      throw rule_problem{line, "too many wildcards in a value"};
    }
    std::vector<expression> parts;
    for (text_pattern& pattern : patterns) {
      field_test test = fresh(kind::text);
      if (key_.field.empty()) pattern.open_start(), pattern.open_end();
      if (!key_.cased) pattern.fold();
      test.pattern = std::move(pattern);
      parts.push_back(add(std::move(test)));
    }
    return expression::join(expression::kind::any_of, std::move(parts));
  }

  static void apply(change c, std::vector<text_pattern>& patterns, std::size_t line) {
    if (c <= change::windash) {
      for (text_pattern& pattern : patterns) {
        if (c == change::ends_with || c == change::contains) pattern.open_start();
        if (c == change::starts_with || c == change::contains) pattern.open_end();
        if (c == change::windash) pattern.any_dash();
      }
      return;
    }
    std::vector<text_pattern> encoded;
    for (const text_pattern& pattern : patterns) {
      const auto texts = pattern.texts(limits::expanded_texts);
      if (!texts) {
        throw rule_problem{line, "a value with wildcards or many dashes cannot be encoded"};
      }
      for (const std::string& text : *texts) append_encoded(c, text, encoded);
    }
    if (encoded.empty()) throw rule_problem{line, "the value is too short for 'base64offset'"};
    patterns = std::move(encoded);
  }

  static void append_encoded(change c, const std::string& text, std::vector<text_pattern>& out) {
    switch (c) {
      case change::base64:
        out.push_back(text_pattern::plain(base64(text)));
        break;
      case change::base64offset:
        for (const std::string& part : base64_at_offsets(text)) {
          if (!part.empty()) out.push_back(text_pattern::plain(part));
        }
        break;
      case change::utf16:
        out.push_back(text_pattern::plain("\xff\xfe" + utf16_bytes(text, false)));
        break;
      default:
        out.push_back(text_pattern::plain(utf16_bytes(text, c == change::utf16be)));
    }
  }

  // The value with its placeholders replaced, once for each of their values.
  std::vector<std::string> expanded(const yaml_node& value) const {
    if (!key_.expand) return {value.text};
    std::vector<std::string> out{""};
    const std::string& text = value.text;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const bool escaped = text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '%';
      const std::size_t end = text[i] == '%' ? text.find('%', i + 1) : std::string::npos;
      if (end == std::string::npos || !is_name(text.substr(i + 1, end - i - 1))) {
        if (escaped) ++i;
        for (std::string& t : out) t += text[i];
        continue;
      }
      out = with_values(out, text.substr(i + 1, end - i - 1), value.line);
      i = end;
    }
    return out;
  }

  std::vector<std::string> with_values(const std::vector<std::string>& texts,
                                       const std::string& name, std::size_t line) const {
    std::vector<std::string> out;
    for (const auto& [known, replacement] : placeholders_) {
      if (known != name) continue;
      for (const std::string& text : texts) {
        if (out.size() == limits::expanded_texts) throw rule_problem{line, "too many placeholders"};
        out.push_back(text + replacement);
      }
    }
    if (out.empty()) throw rule_problem{line, "placeholder %" + name + "% has no value", true};
    return out;
  }

  const field_key& key_;
  const placeholder_values& placeholders_;
  std::vector<field_test>& tests_;
  std::size_t line_ = 0;         // of the value in hand
  std::size_t regex_bytes_ = 0;  // of this field's expressions, compiled
};

}  // namespace

expression read_field(const std::string& key, const yaml_node& value,
                      const placeholder_values& placeholders, std::vector<field_test>& tests) {
  const key_reader parsed(key, value.line);
  return field_reader(parsed.out, placeholders, tests).read(value);
}

}  // namespace zanvik::sigma
