#include "strict_parsers.h"

#include <algorithm>
#include <set>
#include <vector>

namespace zanvik::testing {
namespace {

struct fault {
  std::string what;
};

// The characters of a text, one code point at a time; a byte that begins none is a fault.
class reader {
 public:
  explicit reader(std::string_view text) : text_(text) {}

  bool at_end() const { return at_ == text_.size(); }
  char peek() const { return at_end() ? '\0' : text_[at_]; }
  bool take(std::string_view expected) {
    if (!text_.substr(at_).starts_with(expected)) return false;
    at_ += expected.size();
    return true;
  }
  void need(std::string_view expected) {
    if (!take(expected)) fail("expected " + std::string(expected));
  }
  [[noreturn]] void fail(const std::string& what) const {
    throw fault{what + " at " + std::to_string(at_) + ": " + std::string(text_.substr(at_, 40))};
  }

  char32_t next() {
    if (at_end()) fail("the text ends");
    const auto byte = [this](std::size_t i) { return static_cast<unsigned char>(text_[at_ + i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    char32_t c = length == 1 ? lead : lead & (0x7fu >> length);
    if ((lead >= 0x80 && lead < 0xc2) || lead > 0xf4 || text_.size() - at_ < length) fail("UTF-8");
    for (std::size_t i = 1; i < length; ++i) {
      if ((byte(i) & 0xc0) != 0x80) fail("UTF-8");
      c = c << 6 | (byte(i) & 0x3f);
    }
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < least[length] || (c >= 0xd800 && c < 0xe000) || c > 0x10ffff) fail("UTF-8");
    at_ += length;
    return c;
  }

 protected:
  std::string_view text_;
  std::size_t at_ = 0;
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

class json_reader : public reader {
 public:
  using reader::reader;

  void line() {
    if (peek() != '{') fail("a line is an object");
    value(0);
    need("\n");
  }

 private:
  void value(unsigned depth) {
    if (depth > 200) fail("too deep");
    if (peek() == '{') return object(depth);
    if (take("[")) {
      if (take("]")) return;
      do value(depth + 1);
      while (take(","));
      return need("]");
    }
    if (peek() == '"') {
      (void)string();
    } else if (!take("true") && !take("false") && !take("null")) {
      number();
    }
  }

  void object(unsigned depth) {
    std::set<std::string> names;
    need("{");
    if (take("}")) return;
    do {
      const std::string name = string();
      if (!names.insert(name).second) fail("a name twice: " + name);
      need(":");
      value(depth + 1);
    } while (take(","));
    need("}");
  }

  // As it is spelt: forms spell the same name in one way.
  std::string string() {
    need("\"");
    const std::size_t begin = at_;
    while (peek() != '"') {
      const char32_t c = next();
      if (c < 0x20) fail("a control character");
      if (c == '\\') escape();
    }
    std::string spelt(text_.substr(begin, at_ - begin));
    need("\"");
    return spelt;
  }

  void escape() {
    const char32_t c = next();
    if (c != 'u') {
      if (std::u32string_view(U"\"\\/bfnrt").find(c) == std::u32string_view::npos) fail("escape");
      return;
    }
    for (int i = 0; i < 4; ++i) {
      const char32_t digit = next() | 0x20;
      if (!(digit >= '0' && digit <= '9') && !(digit >= 'a' && digit <= 'f')) fail("escape");
    }
  }

  void digits() {
    if (!is_digit(peek())) fail("a digit is missing");
    while (is_digit(peek())) ++at_;
  }

  void number() {
    (void)take("-");
    if (!take("0")) digits();
    if (take(".")) digits();
    if (take("e") || take("E")) {
      if (!take("+")) (void)take("-");
      digits();
    }
  }
};

class xml_reader : public reader {
 public:
  using reader::reader;

  void document() {
    need("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (peek() != '<') fail("an element");
    std::vector<std::string> open;
    do {
      if (take("</")) {
        end_tag(open);
      } else if (take("<?")) {
        instruction();
      } else if (take("<")) {
        start_tag(open);
      } else {
        character("<");
      }
    } while (!open.empty());
    need("\n");
    if (!at_end()) fail("something behind the document");
  }

 private:
  static bool is_character(char32_t c) {
    return c == '\t' || c == '\n' || (c >= 0x20 && c < 0xd800) || (c >= 0xe000 && c < 0xfffe) ||
           c >= 0x10000;
  }
  static bool is_name_start(char32_t c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0xc0;
  }
  static bool is_name(char32_t c) {
    return is_name_start(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == 0xb7;
  }

  std::string name() {
    const std::size_t begin = at_;
    if (!is_name_start(next())) fail("a name");
    while (!at_end()) {
      const std::size_t before = at_;
      if (is_name(next())) continue;
      at_ = before;
      break;
    }
    return std::string(text_.substr(begin, at_ - begin));
  }

  // One character of content, or a reference.
  void character(std::string_view reserved) {
    if (take("&")) return reference();
    const char32_t c = next();
    if (!is_character(c) || (c < 0x80 && reserved.find(static_cast<char>(c)) != reserved.npos)) {
      fail("a character that XML reserves");
    }
    if (c == ']' && text_.substr(at_).starts_with("]>")) fail("]]>");
  }

  void reference() {
    if (take("#")) {
      char32_t code = 0;
      for (; is_digit(peek()); ++at_) {
        code = std::min<char32_t>(10 * code + static_cast<char32_t>(peek() - '0'), 0x110000);
      }
      if (!is_character(code) && code != '\r') fail("a reference to no character");
    } else if (!take("lt") && !take("gt") && !take("amp") && !take("quot") && !take("apos")) {
      fail("an entity");
    }
    need(";");
  }

  void start_tag(std::vector<std::string>& open) {
    const std::string tag = name();
    std::set<std::string> attributes;
    while (take(" ")) {
      std::string attribute = name();
      if (attribute == "xmlns" && take(":")) attribute += ":" + name();
      if (!attributes.insert(attribute).second) fail("an attribute twice: " + attribute);
      need("=\"");
      while (!take("\"")) character("<\"\n\t");
    }
    if (take("/>")) return;
    need(">");
    open.push_back(tag);
    if (open.size() > 250) fail("too deep");
  }

  void end_tag(std::vector<std::string>& open) {
    if (open.empty() || name() != open.back()) fail("an end tag of another element");
    need(">");
    open.pop_back();
  }

  void instruction() {
    std::string target = name();
    for (char& c : target) c = static_cast<char>(c | 0x20);
    if (target == "xml") fail("an instruction of that name");
    if (take("?>")) return;
    need(" ");
    while (!take("?>")) {
      if (!is_character(next())) fail("a character that XML does not have");
    }
  }
};

class csv_reader : public reader {
 public:
  using reader::reader;

  void row(std::size_t cells) {
    for (std::size_t i = 1; i < cells; ++i) {
      cell();
      need(",");
    }
    cell();
    need("\n");
  }

 private:
  void cell() {
    if (!take("\"")) {
      while (peek() != ',' && peek() != '\n') {
        if (const char32_t c = next(); c == '"' || c < 0x20) fail("a cell that needs quotes");
      }
      return;
    }
    for (;;) {
      if (take("\"\"")) continue;
      if (take("\"")) return;
      if (next() == 0) fail("a NUL");
    }
  }
};

template <typename F>
std::string fault_of(F&& read) {
  try {
    read();
    return {};
  } catch (const fault& found) {
    return found.what;
  }
}

}  // namespace

std::string fault_in_json_lines(std::string_view text) {
  return fault_of([&] {
    for (json_reader in(text); !in.at_end();) in.line();
  });
}

std::string fault_in_xml(std::string_view text) {
  return fault_of([&] { xml_reader(text).document(); });
}

std::string fault_in_csv(std::string_view text, std::size_t cells) {
  return fault_of([&] {
    for (csv_reader in(text); !in.at_end();) in.row(cells);
  });
}

}  // namespace zanvik::testing
