#include "report/table_json.h"

#include <algorithm>
#include <numeric>

#include "base/text.h"
#include "report/page_text.h"
#include "report/report_times.h"

namespace zanvik {
namespace {

bool is_number(std::string_view text) {
  return !text.empty() && text.size() <= 19 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

class table_writer {
 public:
  table_writer(output_buffer& out, const report_collector& collected)
      : out_(out), texts_(collected.rows().texts()), place_(texts_.size(), none) {}

  void write(const report_table& table, const stored_table& stored, bool several_hosts) {
    put("{\"name\":").text(table.name).put(",\"title\":").text(table.title);
    put(",\"group\":").text(table.group).put(",\"total\":").number(stored.total);
    write_numbers("time", stored,
                  [](const row_place& place) { return unix_milliseconds(place.time); });
    // A number beyond what the script can count is crafted; it comes as -1.
    write_numbers("record", stored, [](const row_place& place) {
      return place.record >> 53 == 0 ? static_cast<std::int64_t>(place.record) : std::int64_t{-1};
    });
    write_numbers("log", stored, [](const row_place& place) { return std::int64_t{place.log}; });
    put(",\"columns\":[");
    bool first = true;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      if (i == host_column && !several_hosts) continue;
      if (i == what_column && !table.lists_all_kinds) continue;
      write_column(table.columns[i], stored, i, first);
    }
    put("]}");
    flush();
  }

 private:
  static constexpr std::uint32_t none = UINT32_MAX;

  table_writer& put(std::string_view text) {
    text_ += text;
    return *this;
  }
  table_writer& text(std::string_view text) {
    append_json(text_, text);
    return *this;
  }
  table_writer& number(std::uint64_t number) { return put(std::to_string(number)); }
  void flush() {
    out_.append(text_);
    text_.clear();
  }

  template <class value_of>
  void write_numbers(std::string_view name, const stored_table& stored, const value_of& value) {
    put(",\"").put(name).put("\":[");
    std::int64_t before = 0;
    for (const row_place& place : stored.places) {
      const std::int64_t now = value(place);
      if (&place != &stored.places.front()) text_ += ',';
      text_ += std::to_string(now - before);
      before = now;
    }
    put("]");
    flush();
  }

  void write_column(const report_column& column, const stored_table& stored, std::size_t number,
                    bool& first) {
    std::vector<std::uint32_t> values;
    for (std::size_t row = 0; row < stored.rows(); ++row) {
      const std::uint32_t cell = stored.cell(row, number);
      if (place_[cell] == none) {
        place_[cell] = 0;
        values.push_back(cell);
      }
    }
    std::sort(values.begin(), values.end(), [this](std::uint32_t a, std::uint32_t b) {
      return reads_before(texts_.text(a), texts_.text(b));
    });
    if (values.size() > 1 || values.front() != 0) {
      put(first ? "{\"name\":" : ",{\"name\":").text(column.name);
      first = false;
      put(",\"label\":").text(column.label).put(",\"values\":[");
      for (std::size_t i = 0; i < values.size(); ++i) {
        if (i != 0) put(",");
        text(texts_.text(values[i]));
        place_[values[i]] = static_cast<std::uint32_t>(i);
        flush();
      }
      put("]");
      if (values.size() > 1) write_cells(stored, number);
      put("}");
    }
    for (const std::uint32_t value : values) place_[value] = none;
  }

  void write_cells(const stored_table& stored, std::size_t number) {
    put(",\"rows\":[");
    for (std::size_t row = 0; row < stored.rows(); ++row) {
      if (row != 0) text_ += ',';
      text_ += std::to_string(place_[stored.cell(row, number)]);
    }
    put("]");
    flush();
  }

  output_buffer& out_;
  const text_pool& texts_;
  std::vector<std::uint32_t> place_;  // of a text among the values of the column in hand
  std::string text_;
};

}  // namespace

bool reads_before(std::string_view a, std::string_view b) {
  const bool number_a = is_number(a), number_b = is_number(b);
  if (number_a && number_b) {
    const auto digits = [](std::string_view text) {
      return text.substr(std::min(text.find_first_not_of('0'), text.size() - 1));
    };
    const std::string_view x = digits(a), y = digits(b);
    if (x != y) return x.size() != y.size() ? x.size() < y.size() : x < y;
    return a.size() < b.size();
  }
  if (number_a != number_b) return number_a;
  const std::size_t both = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < both; ++i) {
    const auto x = static_cast<unsigned char>(lower_char(a[i])),
               y = static_cast<unsigned char>(lower_char(b[i]));
    if (x != y) return x < y;
  }
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

void write_tables_json(output_buffer& out, const report_collector& collected) {
  const bool several_hosts = collected.counts().hosts().size() > 1;
  table_writer writer(out, collected);
  out.append("[");
  bool first = true;
  for (std::size_t i = 0; i < collected.tables().size(); ++i) {
    const stored_table& stored = collected.rows().tables()[i];
    if (stored.rows() == 0) continue;
    if (!first) out.append(",");
    first = false;
    writer.write(collected.tables()[i], stored, several_hosts);
  }
  out.append("]");
}

}  // namespace zanvik
