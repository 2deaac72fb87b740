#include "reference/plain_events.h"

#include <charconv>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <set>

#include "base/time_value.h"
#include "events/template_compiler.h"
#include "evtx/bxml/bxml_tokens.h"
#include "evtx/values/value_text.h"
#include "export/escaped_text.h"

namespace zanvik::testing {
namespace {

using text32 = std::u32string;

struct value {
  unsigned type = 0;
  std::vector<unsigned char> bytes{};
};

// A node of the tree: an element, an attribute (`@name`), or a piece of text.
struct node {
  std::string name{};
  std::vector<node> children{};
  bool is_piece = false;
  bool is_constant = false;
  std::string constant{};
  value slot{};
};

struct event {
  std::vector<node> roots{};
  bool cut = false;
  bool no_template = false;
  bool lossy = false;
};

template <typename T>
T number_of(const value& v) {
  T number = 0;
  std::memcpy(&number, v.bytes.data(), std::min(sizeof(T), v.bytes.size()));
  return number;
}

std::string printed(const char* format, auto... args) {
  char text[512];
  std::snprintf(text, sizeof(text), format, args...);
  return text;
}

std::string utf8(char32_t c) {
  std::string out;
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xc0 | c >> 6);
    out += static_cast<char>(0x80 | (c & 63));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xe0 | c >> 12);
    out += static_cast<char>(0x80 | (c >> 6 & 63));
    out += static_cast<char>(0x80 | (c & 63));
  } else {
    out += static_cast<char>(0xf0 | c >> 18);
    out += static_cast<char>(0x80 | (c >> 12 & 63));
    out += static_cast<char>(0x80 | (c >> 6 & 63));
    out += static_cast<char>(0x80 | (c & 63));
  }
  return out;
}

// UTF-16 as code points; a surrogate alone is U+FFFD.
text32 from_utf16(std::vector<unsigned char> bytes, bool& lossy) {
  std::vector<unsigned> units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    units.push_back(bytes[i] | static_cast<unsigned>(bytes[i + 1]) << 8);
  }
  while (!units.empty() && units.back() == 0) units.pop_back();
  text32 out;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const unsigned unit = units[i];
    const bool high = unit >= 0xd800 && unit < 0xdc00;
    if (high && i + 1 < units.size() && units[i + 1] >= 0xdc00 && units[i + 1] < 0xe000) {
      out += static_cast<char32_t>(0x10000 + ((unit - 0xd800) << 10) + (units[++i] - 0xdc00));
    } else if (unit >= 0xd800 && unit < 0xe000) {
      lossy = true;
      out += U'\ufffd';
    } else {
      out += static_cast<char32_t>(unit);
    }
  }
  return out;
}

// Constant text came from UTF-16: its only damage is surrogates, as 3 bytes each.
text32 from_utf8(const std::string& text, bool& lossy) {
  text32 out;
  for (std::size_t i = 0; i < text.size();) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned lead = byte(i);
    const unsigned more = lead < 0x80 ? 0 : lead < 0xe0 ? 1 : lead < 0xf0 ? 2 : 3;
    char32_t c = more == 0 ? lead : lead & (0x3f >> more);
    for (unsigned k = 1; k <= more; ++k) c = c << 6 | (byte(i + k) & 63);
    i += more + 1;
    if (c >= 0xd800 && c < 0xe000) {
      lossy = true;
      out += U"\ufffd\ufffd\ufffd";  // a byte at a time
    } else {
      out += c;
    }
  }
  return out;
}

text32 widened(const std::string& ascii) { return text32(ascii.begin(), ascii.end()); }

std::string iso_time(std::uint64_t filetime) {
  const std::time_t seconds = static_cast<std::time_t>(filetime / 10'000'000) - 11'644'473'600;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  if (parts.tm_year + 1900 > 9999) return printed("%" PRIu64, filetime);
  return printed("%04d-%02d-%02dT%02d:%02d:%02d.%07dZ", parts.tm_year + 1900, parts.tm_mon + 1,
                 parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                 static_cast<int>(filetime % 10'000'000));
}

std::string hex_text(const value& v) {
  std::string out;
  for (const unsigned char byte : v.bytes) out += printed("%02X", byte);
  return out;
}

bool is_integer(unsigned type) { return (type >= 3 && type <= 10) || type == 16; }
bool has_integer_size(const value& v) {
  return v.bytes.size() == 1 || v.bytes.size() == 2 || v.bytes.size() == 4 || v.bytes.size() == 8;
}

bool is_float(const value& v) {
  return (v.type == 11 && v.bytes.size() == 4) || (v.type == 12 && v.bytes.size() == 8);
}
bool is_finite(const value& v) {
  return v.type == 11 ? std::isfinite(number_of<float>(v)) : std::isfinite(number_of<double>(v));
}

std::string float_text(const value& v) {
  char text[64];
  const auto end = v.type == 11 ? std::to_chars(text, text + 64, number_of<float>(v))
                                : std::to_chars(text, text + 64, number_of<double>(v));
  return {text, end.ptr};
}

std::string sid_text(const value& v) {
  std::uint64_t authority = 0;
  for (int i = 2; i < 8; ++i) authority = authority << 8 | v.bytes[static_cast<std::size_t>(i)];
  std::string out = printed("S-%u-", static_cast<unsigned>(v.bytes[0]));
  out += authority >> 32 ? printed("0x%012" PRIx64, authority) : printed("%" PRIu64, authority);
  for (std::size_t i = 0; i < v.bytes[1]; ++i) {
    std::uint32_t part;
    std::memcpy(&part, v.bytes.data() + 8 + 4 * i, 4);
    out += printed("-%u", part);
  }
  return out;
}

text32 text_of(const value& v, bool& lossy);

// Items of an array.
std::vector<value> items_of(const value& v) {
  static const std::map<unsigned, std::size_t> sizes = {
      {3, 1},  {4, 1},  {5, 2},   {6, 2},  {7, 4},  {8, 4},   {9, 8},  {10, 8}, {11, 4},
      {12, 8}, {13, 4}, {15, 16}, {16, 8}, {17, 8}, {18, 16}, {20, 4}, {21, 8}};
  const unsigned type = v.type & 0x7f;
  std::vector<value> items;
  std::size_t at = 0;
  while (at < v.bytes.size()) {
    std::size_t bytes = v.bytes.size() - at;
    std::size_t behind = 0;
    if (const auto fixed = sizes.find(type); fixed != sizes.end()) {
      bytes = std::min(bytes, fixed->second);
    } else if (type == 1) {
      for (std::size_t i = at; i + 1 < v.bytes.size(); i += 2) {
        if (v.bytes[i] != 0 || v.bytes[i + 1] != 0) continue;
        bytes = i - at;
        behind = 2;
        break;
      }
    } else if (type == 2) {
      for (std::size_t i = at; i < v.bytes.size(); ++i) {
        if (v.bytes[i] != 0) continue;
        bytes = i - at;
        behind = 1;
        break;
      }
    } else if (type == 19 && bytes >= 8 && bytes >= 8u + 4u * v.bytes[at + 1]) {
      bytes = 8u + 4u * v.bytes[at + 1];
    }
    const auto begin = v.bytes.begin() + static_cast<std::ptrdiff_t>(at);
    items.push_back({type, {begin, begin + static_cast<std::ptrdiff_t>(bytes)}});
    at += bytes + behind;
  }
  return items;
}

text32 text_of(const value& v, bool& lossy) {
  if (v.type & 0x80) {
    text32 out;
    bool first = true;
    for (const value& item : items_of(v)) {
      if (!first) out += U", ";
      first = false;
      out += text_of(item, lossy);
    }
    return out;
  }
  const std::size_t size = v.bytes.size();
  if (v.type == 0) return {};
  if (v.type == 1 || v.type == 35) return from_utf16(v.bytes, lossy);
  if (v.type == 2) {
    text32 out;
    std::size_t end = size;
    while (end != 0 && v.bytes[end - 1] == 0) --end;
    for (std::size_t i = 0; i < end; ++i) {
      static const std::u16string high =
          u"\u20ac\u0081\u201a\u0192\u201e\u2026\u2020\u2021\u02c6\u2030\u0160\u2039\u0152\u008d"
          u"\u017d\u008f\u0090\u2018\u2019\u201c\u201d\u2022\u2013\u2014\u02dc\u2122\u0161\u203a"
          u"\u0153\u009d\u017e\u0178";
      const unsigned byte = v.bytes[i];
      out += byte >= 0x80 && byte < 0xa0 ? high[byte - 0x80] : static_cast<char32_t>(byte);
    }
    return out;
  }
  if (is_integer(v.type) && has_integer_size(v)) {
    const bool is_signed = v.type == 3 || v.type == 5 || v.type == 7 || v.type == 9;
    if (!is_signed) return widened(printed("%" PRIu64, number_of<std::uint64_t>(v)));
    const std::int64_t number = size == 1   ? number_of<std::int8_t>(v)
                                : size == 2 ? number_of<std::int16_t>(v)
                                : size == 4 ? number_of<std::int32_t>(v)
                                            : number_of<std::int64_t>(v);
    return widened(printed("%" PRId64, number));
  }
  if ((v.type == 20 || v.type == 21 || v.type == 32) && has_integer_size(v)) {
    return widened(printed("0x%" PRIx64, number_of<std::uint64_t>(v)));
  }
  if (v.type == 13 && has_integer_size(v)) {
    return number_of<std::uint64_t>(v) != 0 ? U"true" : U"false";
  }
  if (is_float(v)) return widened(float_text(v));
  if (v.type == 15 && size == 16) {
    const auto* b = v.bytes.data();
    return widened(printed("{%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                           b[3], b[2], b[1], b[0], b[5], b[4], b[7], b[6], b[8], b[9], b[10], b[11],
                           b[12], b[13], b[14], b[15]));
  }
  if (v.type == 17 && size == 8) return widened(iso_time(number_of<std::uint64_t>(v)));
  if (v.type == 18 && size == 16) {
    std::uint16_t p[8];
    std::memcpy(p, v.bytes.data(), 16);
    return widened(printed("%04u-%02u-%02uT%02u:%02u:%02u.%03u0000Z", p[0], p[1], p[3], p[4], p[5],
                           p[6], p[7]));
  }
  if (v.type == 19 && size >= 8 && size >= 8u + 4u * v.bytes[1]) return widened(sid_text(v));
  return widened(hex_text(v));
}

// --- reading ---------------------------------------------------------------------------------

class record_tree {
 public:
  record_tree(const chunk_view& chunk, std::uint64_t value_end, work_budget& budget, event& out)
      : chunk_(chunk), value_end_(value_end), budget_(budget), out_(out) {}

  std::vector<node> fragment(std::uint64_t offset, std::uint64_t end, bool outermost) {
    const auto head = nested_instance_at(chunk_, offset);
    event_template body;
    if (!head) {
      if (!compile_fragment(chunk_, offset, end, budget_.plain_bytes, body)) {
        if (outermost) out_.no_template = true;
        return {};
      }
      out_.cut = out_.cut || body.cut;
      return expand(body, {}, outermost);
    }
    std::uint64_t table = offset + head->length;
    const auto size = chunk_.bytes.at<std::uint32_t>(head->definition + 20);
    if (head->definition == table && size) table += 24 + *size;
    const auto slots = read_table(table);
    const auto id = chunk_.bytes.at<std::uint32_t>(head->definition + 4);
    bool found = head->definition != 0 && size && id;
    if (found) {
      const std::uint64_t begin = head->definition + 24;
      std::int64_t budget = 1 << 30;
      found = compile_fragment(chunk_, begin, begin + *size, budget, body) &&
              (*id == head->template_id || !body.cut);
    }
    if (!found) return missing(slots, outermost);
    out_.cut = out_.cut || body.cut;
    return expand(body, slots, outermost);
  }

 private:
  struct slot {
    value v;
    std::uint64_t offset = 0;
  };

  std::vector<slot> read_table(std::uint64_t table) {
    std::vector<slot> slots;
    const auto count = chunk_.bytes.at_or_zero<std::uint32_t>(table);
    if (count == 0) return slots;
    if (count > limits::slots_per_event_table || !chunk_.bytes.has(table + 4, 4ull * count)) {
      out_.cut = true;
      return slots;
    }
    std::uint64_t at = table + 4 + 4ull * count;
    for (std::uint32_t i = 0; i < count; ++i) {
      std::uint64_t size = chunk_.bytes.at_or_zero<std::uint16_t>(table + 4 + 4 * i);
      unsigned type = chunk_.bytes.at_or_zero<std::uint16_t>(table + 6 + 4 * i);
      if (type > 255) type = 14;
      const std::uint64_t declared = size;
      const std::uint64_t left = at < value_end_ ? value_end_ - at : 0;
      if (size > left) {
        size = left;
        out_.cut = true;
      }
      slot read{{type, {}}, at};
      for (const std::byte byte : chunk_.bytes.bytes_at(at, size)) {
        read.v.bytes.push_back(static_cast<unsigned char>(byte));
      }
      slots.push_back(std::move(read));
      at += declared;
    }
    return slots;
  }

  std::vector<node> missing(const std::vector<slot>& slots, bool outermost) {
    out_.no_template = true;
    node data{.name = "EventData"};
    for (const slot& from : slots) {
      node datum{.name = "Data"};
      add_slot(from, true, datum.children);
      data.children.push_back(std::move(datum));
    }
    if (!outermost) return slots.empty() ? std::vector<node>{} : std::vector<node>{data};
    node event_node{.name = "Event"};
    if (!slots.empty()) event_node.children.push_back(std::move(data));
    return {event_node};
  }

  void add_slot(const slot& from, bool, std::vector<node>& out) {
    if (from.v.type == 33 && !from.v.bytes.empty()) {
      const bool instance = nested_instance_at(chunk_, from.offset).has_value();
      const bool lost_before = out_.no_template;
      auto nested = fragment(from.offset, from.offset + from.v.bytes.size(), false);
      if (instance || !nested.empty()) {
        for (node& child : nested) out.push_back(std::move(child));
        return;
      }
      out_.no_template = lost_before;
    }
    node piece{.is_piece = true};
    piece.slot = from.v;
    out.push_back(std::move(piece));
  }

  // What a broken template has no place for: templates, then data without names.
  void add_rest(const std::vector<slot>& slots, const std::set<unsigned>& placed,
                std::vector<node>& out) {
    node data{.name = "EventData"};
    for (unsigned i = 0; i < slots.size(); ++i) {
      if (placed.contains(i) || slots[i].v.type == 0) continue;
      std::vector<node> shown;
      add_slot(slots[i], true, shown);
      const bool is_nested = slots[i].v.type == 33 && (shown.size() != 1 || !shown[0].is_piece);
      if (is_nested) {
        for (node& child : shown) out.push_back(std::move(child));
      } else {
        data.children.push_back({.name = "Data", .children = std::move(shown)});
      }
    }
    if (!data.children.empty()) out.push_back(std::move(data));
  }

  std::vector<node> expand(const event_template& body, const std::vector<slot>& slots,
                           bool outermost) {
    node root;
    std::vector<node*> open{&root};
    node* attribute = nullptr;
    bool optional_absent = false;
    const auto end_attribute = [&] {
      if (attribute && optional_absent && attribute->children.size() == 1) {
        open.back()->children.pop_back();
      }
      attribute = nullptr;
      optional_absent = false;
    };
    std::set<unsigned> shown;
    std::set<unsigned> placed;
    for (const template_token& token : body.tokens) {
      const std::string text(body.text_of(token));
      using kind = template_token_kind;
      if (token.kind != kind::text && token.kind != kind::slot) end_attribute();
      std::vector<node>& into = attribute ? attribute->children : open.back()->children;
      switch (token.kind) {
        case kind::open_element:
          into.push_back({.name = text});
          open.push_back(&into.back());
          break;
        case kind::attribute:
          into.push_back({.name = "@" + text});
          attribute = &into.back();
          break;
        case kind::text:
          into.push_back({.is_piece = true, .is_constant = true, .constant = text});
          break;
        case kind::slot:
          placed.insert(token.slot);
          if (token.slot >= slots.size()) {
            optional_absent = token.optional;
            into.push_back({.is_piece = true});
          } else {
            const slot& from = slots[token.slot];
            optional_absent = token.optional && from.v.type == 0;
            if (from.v.type == 33 && (attribute || shown.contains(token.slot))) break;
            shown.insert(token.slot);
            add_slot(from, token.optional, into);
          }
          break;
        case kind::end_element:
          open.pop_back();
          break;
        default:
          break;
      }
    }
    if (body.cut && !(outermost && root.children.empty())) {
      add_rest(slots, placed, outermost ? root.children.front().children : root.children);
    }
    return std::move(root.children);
  }

  const chunk_view& chunk_;
  std::uint64_t value_end_;
  work_budget& budget_;
  event& out_;
};

// --- writing ---------------------------------------------------------------------------------

std::string json_string(const text32& text) {
  std::string out = "\"";
  for (const char32_t c : text) {
    static const std::map<char32_t, std::string> escapes = {
        {'"', "\\\""}, {'\\', "\\\\"}, {'\b', "\\b"}, {'\f', "\\f"},
        {'\n', "\\n"}, {'\r', "\\r"},  {'\t', "\\t"}};
    if (const auto escape = escapes.find(c); escape != escapes.end()) {
      out += escape->second;
    } else {
      out += c < 0x20 ? printed("\\u%04x", static_cast<unsigned>(c)) : utf8(c);
    }
  }
  return out + "\"";
}

class json_writer {
 public:
  explicit json_writer(event& e) : event_(e) {}

  std::string members(const std::vector<node>& children, std::set<std::string> names, bool comma) {
    std::string out;
    bool unnamed = false;
    const auto add = [&](const std::string& name, const std::string& json) {
      std::string taken = name;
      for (int i = 1; !names.insert(taken).second; ++i) taken = name + "_" + std::to_string(i);
      if (comma) out += ",";
      comma = true;
      out += json_string(from_utf8(taken, event_.lossy)) + ":" + json;
    };
    for (const node& child : children) {
      if (child.is_piece || child.name.starts_with("@")) continue;
      if (!is_datum(child)) {
        add(child.name, element(child));
      } else if (!child.children.empty() && child.children.front().name == "@Name") {
        std::string name;
        for (const char32_t c : text(child.children.front().children)) name += utf8(c);
        add(name, single(pieces(child)));
      } else if (!unnamed) {
        unnamed = true;
        add("Data", unnamed_data(children));
      }
    }
    return out;
  }

 private:
  static std::vector<node> pieces(const node& element) {
    std::vector<node> out;
    for (const node& child : element.children) {
      if (child.is_piece) out.push_back(child);
    }
    return out;
  }
  static bool is_leaf(const node& element) {
    for (const node& child : element.children) {
      if (!child.is_piece && !child.name.starts_with("@")) return false;
    }
    return true;
  }
  static std::size_t attributes(const node& element) {
    std::size_t count = 0;
    for (const node& child : element.children) count += child.name.starts_with("@");
    return count;
  }
  static bool is_datum(const node& element) {
    return element.name == "Data" && is_leaf(element) &&
           (attributes(element) == 0 ||
            (attributes(element) == 1 && element.children.front().name == "@Name"));
  }

  text32 text(const std::vector<node>& from) {
    text32 out;
    for (const node& piece : from) {
      out += piece.is_constant ? from_utf8(piece.constant, event_.lossy)
                               : text_of(piece.slot, event_.lossy);
    }
    return out;
  }

  std::string typed(const value& v) {
    if (v.type == 0) return "null";
    if (v.type & 0x80) {
      std::string out;
      for (const value& item : items_of(v)) out += (out.empty() ? "" : ",") + typed(item);
      return "[" + out + "]";
    }
    const text32 shown = text_of(v, event_.lossy);
    const bool bare = (has_integer_size(v) && (is_integer(v.type) || v.type == 13)) ||
                      (is_float(v) && is_finite(v));
    return bare ? std::string(shown.begin(), shown.end()) : json_string(shown);
  }

  std::string single(const std::vector<node>& from) {
    if (from.empty()) return "null";
    if (from.size() == 1 && !from.front().is_constant) return typed(from.front().slot);
    return json_string(text(from));
  }

  std::string unnamed_data(const std::vector<node>& siblings) {
    std::vector<std::string> values;
    bool several = false;
    std::size_t count = 0;
    for (const node& child : siblings) {
      if (child.name != "Data" || !is_datum(child) || attributes(child) != 0) continue;
      ++count;
      const auto from = pieces(child);
      if (from.size() == 1 && (from.front().slot.type & 0x80)) {
        for (const value& item : items_of(from.front().slot)) values.push_back(typed(item));
        several = several || values.size() != 1;
      } else {
        values.push_back(single(from));
      }
    }
    several = several || count > 1;
    if (!several && values.front() == "null") return "null";
    std::string out;
    for (const std::string& one : values) out += (out.empty() ? "" : ",") + one;
    return "{\"#text\":" + (several ? "[" + out + "]" : out) + "}";
  }

  std::string element(const node& from) {
    const auto text_pieces = pieces(from);
    if (attributes(from) == 0 && is_leaf(from)) return single(text_pieces);
    std::string out = "{";
    std::string inner;
    std::map<std::string, int> taken;
    for (const node& child : from.children) {
      if (!child.name.starts_with("@")) continue;
      std::string name = child.name.substr(1);
      if (const int again = taken[name]++) name += "_" + std::to_string(again);
      inner += (inner.empty() ? "" : ",") + json_string(from_utf8(name, event_.lossy)) + ":" +
               single(child.children);
    }
    if (!inner.empty()) out += "\"#attributes\":{" + inner + "}";
    const std::string below = members(from.children, {"#attributes", "#text"}, !inner.empty());
    out += below;
    if (!text_pieces.empty()) {
      out += (inner.empty() && below.empty() ? "" : ",") + ("\"#text\":" + single(text_pieces));
    }
    return out + "}";
  }

  event& event_;
};

class xml_writer {
 public:
  explicit xml_writer(event& e) : event_(e) {}

  std::string element(const node& from) {
    const std::string name = tag(from.name);
    std::string start = "<" + name;
    std::string content;
    std::vector<const node*> parts;
    std::map<std::string, int> taken;
    for (const node& child : from.children) {
      if (!child.name.starts_with("@")) {
        parts.push_back(&child);
        continue;
      }
      std::string attribute = tag(child.name.substr(1));
      if (const int again = taken[attribute]++) attribute += "_" + std::to_string(again);
      start += " " + attribute + "=\"";
      for (const node& piece : child.children) start += escaped(piece, true);
      start += "\"";
    }
    const bool array = parts.size() == 1 && (parts.front()->slot.type & 0x80);
    if (array) {
      std::string out;
      for (const value& item : items_of(parts.front()->slot)) {
        const std::string text = escape(text_of(item, event_.lossy), false);
        out += start + (text.empty() ? "/>" : ">" + text + "</" + name + ">");
      }
      return out.empty() ? start + "/>" : out;
    }
    bool only_empty_pieces = true;
    for (const node* part : parts) {
      content += part->is_piece ? escaped(*part, false) : element(*part);
      // Several pieces, or an element that shows nothing, still count as content.
      only_empty_pieces = only_empty_pieces && part->is_piece &&
                          (part->slot.type == 0 ? part->constant.empty() : parts.size() == 1);
    }
    if (content.empty() && only_empty_pieces) return start + "/>";
    return start + ">" + content + "</" + name + ">";
  }

 private:
  // Names beyond ASCII come only from damage; which characters are letters is up to the form.
  std::string tag(const std::string& name) {
    for (const char c : name) {
      if (static_cast<unsigned char>(c) >= 0x80) return xml_name(name, event_.lossy);
    }
    std::string out = name.empty() ? "_" : "";
    for (const char c : name) {
      const bool start = std::isalpha(static_cast<unsigned char>(c)) || c == '_';
      const bool inside =
          start || std::isdigit(static_cast<unsigned char>(c)) || c == '-' || c == '.';
      const bool good = out.empty() ? start : inside;
      // A namespace declaration keeps its colon.
      out += good || (c == ':' && out == "xmlns") ? c : '_';
    }
    return out;
  }

  std::string escape(const text32& text, bool attribute) {
    std::string out;
    for (char32_t c : text) {
      switch (c) {
        case '&':
          out += "&amp;";
          break;
        case '<':
          out += "&lt;";
          break;
        case '>':
          out += "&gt;";
          break;
        case '"':
          out += attribute ? "&quot;" : "\"";
          break;
        case '\r':
          out += "&#13;";
          break;
        case '\t':
          out += attribute ? "&#9;" : "\t";
          break;
        case '\n':
          out += attribute ? "&#10;" : "\n";
          break;
        default:
          if (c < 0x20 || c == 0xfffe || c == 0xffff) {
            event_.lossy = true;
            c = U'\ufffd';
          }
          out += utf8(c);
      }
    }
    return out;
  }
  std::string escaped(const node& piece, bool attribute) {
    return escape(piece.is_constant ? from_utf8(piece.constant, event_.lossy)
                                    : text_of(piece.slot, event_.lossy),
                  attribute);
  }

  event& event_;
};

}  // namespace

void plain_event_reader::start_chunk(std::span<const std::byte> bytes, std::uint64_t bound,
                                     std::uint64_t file_offset) {
  budget_ = {};
  chunk_ = {byte_cursor(bytes, file_offset), bound, file_offset, &budget_, &memory_};
  memory_.start_chunk();
}

bool plain_event_reader::on_record(std::uint64_t offset) {
  write(offset, false);
  return true;
}

void plain_event_reader::on_slack_candidate(std::uint64_t offset, std::uint64_t) {
  write(offset, true);
}

void plain_event_reader::write(std::uint64_t offset, bool slack) {
  const byte_cursor& bytes = chunk_.bytes;
  event found;
  const std::uint64_t value_end =
      offset < 65536 ? std::min<std::uint64_t>(65536, bytes.size()) : bytes.size();
  found.roots =
      record_tree(chunk_, value_end, budget_, found).fragment(offset + 24, value_end, true);
  const auto number = bytes.at_or_zero<std::uint64_t>(offset + 8);
  const bool outside =
      number < bytes.at_or_zero<std::uint64_t>(24) || number > bytes.at_or_zero<std::uint64_t>(32);
  const std::string place =
      printed("\"offset\":%" PRIu64 ",\"record\":%" PRIu64, chunk_.file_offset + offset, number);
  const auto oddities = [&](const char* format) {
    std::string out;
    const std::pair<bool, const char*> all[] = {{slack, "slack"},
                                                {found.cut, "cut"},
                                                {outside, "outside_range"},
                                                {found.no_template, "no_template"}};
    for (const auto& [holds, name] : all) {
      if (holds) out += printed(format, name);
    }
    return out;
  };
  std::string tree = json_writer(found).members(found.roots, {"zanvik"}, false);
  if (tree.empty()) tree = "\"Event\":null";
  json += "{" + tree + ",\"zanvik\":{\"log\":\"" + log_ + "\"," + place + ",\"written\":\"" +
          iso_time(bytes.at_or_zero<std::uint64_t>(offset + 16)) + "\"" + oddities(",\"%s\":true") +
          (found.lossy ? ",\"lossy\":true" : "") + "}}\n";
  std::string elements;
  xml_writer writer(found);
  for (const node& root : found.roots) elements += writer.element(root);
  if (elements.empty()) elements = "<Event/>";
  xml += printed("<?zanvik log=\"%s\" offset=\"%" PRIu64 "\" record=\"%" PRIu64 "\"", log_.c_str(),
                 chunk_.file_offset + offset, number) +
         oddities(" %s=\"true\"") + "?>" + elements + "\n";
}

}  // namespace zanvik::testing
