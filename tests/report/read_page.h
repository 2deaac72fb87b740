// Reads the rows out of a report's page, another way than its script does.
//
//   const page_content page(html);
//   page.table("logons").rows[0].at("account")
#pragma once

#include <cstdint>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik::testing {

// JSON as far as the page has it.
struct json_value {
  double number = 0;
  std::string text;
  std::vector<json_value> items;
  std::map<std::string, json_value> members;

  const json_value& operator[](const std::string& name) const { return members.at(name); }
};

class json_reader {
 public:
  explicit json_reader(std::string_view text) : text_(text) {}
  json_value read_all() {
    json_value value = read();
    if (at_ != text_.size()) fail();
    return value;
  }

 private:
  [[noreturn]] void fail() const {
    throw std::runtime_error("no JSON at " + std::to_string(at_) + ": " +
                             std::string(text_.substr(at_, 40)));
  }
  char next() {
    if (at_ >= text_.size()) fail();
    return text_[at_++];
  }
  bool skip(char c) {
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }
  void expect(char c) {
    if (!skip(c)) fail();
  }

  json_value read() {
    json_value value;
    if (skip('[')) {
      while (!skip(']')) {
        if (!value.items.empty()) expect(',');
        value.items.push_back(read());
      }
    } else if (skip('{')) {
      while (!skip('}')) {
        if (!value.members.empty()) expect(',');
        std::string name = read_text();
        expect(':');
        value.members.emplace(std::move(name), read());
      }
    } else if (at_ < text_.size() && text_[at_] == '"') {
      value.text = read_text();
    } else {
      const std::size_t end = text_.find_first_not_of("-0123456789", at_);
      const std::string digits(text_.substr(at_, end - at_));
      if (digits.empty()) fail();
      value.number = std::strtod(digits.c_str(), nullptr);
      at_ += digits.size();
    }
    return value;
  }

  std::string read_text() {
    expect('"');
    std::string out;
    for (char c = next(); c != '"'; c = next()) {
      if (static_cast<unsigned char>(c) < 0x20) fail();
      out += c == '\\' ? read_escape() : c;
    }
    return out;
  }
  // Only the escapes that the page uses; those by number are of ASCII.
  char read_escape() {
    const char c = next();
    if (c == 'n') return '\n';
    if (c == 't') return '\t';
    if (c == '"' || c == '\\') return c;
    if (c != 'u' || next() != '0' || next() != '0') fail();
    const std::string digits{next(), next()};
    return static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

struct page_table {
  std::uint64_t total = 0;
  std::vector<double> times;  // milliseconds since 1970
  std::vector<std::map<std::string, std::string>> rows;
};

class page_content {
 public:
  explicit page_content(std::string_view html) {
    const std::string_view start = "<script type=\"application/json\" id=\"data\">";
    const std::size_t at = html.find(start);
    if (at == std::string_view::npos) throw std::runtime_error("no data");
    const std::string_view rest = html.substr(at + start.size());
    data = json_reader(rest.substr(0, rest.find("</script>"))).read_all();
    for (const json_value& table : data["tables"].items) add(table);
  }
  // An empty one if the page has none of that name.
  page_table table(const std::string& name) const {
    const auto found = tables.find(name);
    return found == tables.end() ? page_table() : found->second;
  }

  json_value data;
  std::map<std::string, page_table> tables;

 private:
  static std::vector<double> sums(const json_value& differences) {
    std::vector<double> out;
    double sum = 0;
    for (const json_value& one : differences.items) out.push_back(sum += one.number);
    return out;
  }

  void add(const json_value& table) {
    page_table& made = tables[table["name"].text];
    made.total = static_cast<std::uint64_t>(table["total"].number);
    made.times = sums(table["time"]);
    made.rows.resize(made.times.size());
    const std::vector<double> records = sums(table["record"]), logs = sums(table["log"]);
    for (std::size_t row = 0; row < made.rows.size(); ++row) {
      made.rows[row]["record"] = std::to_string(static_cast<std::int64_t>(records.at(row)));
      made.rows[row]["log"] = data["logs"].items.at(static_cast<std::size_t>(logs.at(row))).text;
    }
    for (const json_value& column : table["columns"].items) {
      const bool same = column.members.count("rows") == 0;
      for (std::size_t row = 0; row < made.rows.size(); ++row) {
        const double code = same ? 0 : column["rows"].items.at(row).number;
        made.rows[row][column["name"].text] =
            column["values"].items.at(static_cast<std::size_t>(code)).text;
      }
    }
  }
};

}  // namespace zanvik::testing
