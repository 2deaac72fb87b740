#include "case/question_views.h"

#include <span>
#include <string_view>

#include "questions/questions.h"

namespace zanvik {
namespace {

std::string quoted(std::string_view text, char quote = '\'') {
  std::string out(1, quote);
  for (const char c : text) out.append(c == quote ? 2 : 1, c);
  return out + quote;
}

// A pattern with `*` and `?` for LIKE, which has % and _.
std::string like_pattern(std::string_view pattern) {
  std::string out;
  for (const char c : pattern) {
    if (c == '%' || c == '_' || c == '\\') out += '\\';
    out += c == '*' ? '%' : c == '?' ? '_' : c;
  }
  return quoted(out) + " ESCAPE '\\'";
}

// The value of one alternative of a field; NULL when there is none.
std::string value_of(std::string_view name) {
  if (name == "@Channel") return "(SELECT name FROM channel WHERE id = e.channel)";
  if (name == "@Computer") return "(SELECT name FROM computer WHERE id = e.computer)";
  if (name == "@UserID") return "(SELECT name FROM sid WHERE id = e.user_sid)";
  const std::string datum(name);
  const std::string path =
      name.starts_with('#') ? "$.Data[" + datum.substr(1) + "]" : "$.\"" + datum + "\"";
  const std::string value = "json_extract(e.data, " + quoted(path) + ")";
  return "nullif(nullif(" + value + ", ''), '-')";
}

std::string value_of_field(std::string_view field) {
  if (field.empty()) return "NULL";
  std::string list;
  bool several = false;
  for (;;) {
    const std::size_t bar = field.find('|');
    const std::string value = value_of(field.substr(0, bar));
    if (bar == field.npos) {
      list += value;
      break;
    }
    list += "nullif(" + value + ", '0x0'), ";
    field.remove_prefix(bar + 1);
    several = true;
  }
  return several ? "coalesce(" + list + ")" : list;
}

std::string condition(std::string_view when) {
  if (when.empty()) return "";
  const std::size_t equal = when.find('=');
  const bool negated = when[equal - 1] == '!';
  return "\n    AND " + value_of_field(when.substr(0, equal - negated)) +
         (negated ? " NOT LIKE " : " LIKE ") + like_pattern(when.substr(equal + 1));
}

// The events of one source, with the columns c0, c1 and so on.
std::string source_rows(const question_source& source, std::size_t columns) {
  std::string sql =
      "  SELECT e.id, e.time, e.time_us, e.computer, e.log, " + quoted(source.what) + " AS what";
  for (std::size_t i = 0; i < columns; ++i) {
    sql += ",\n    " + value_of_field(source.fields[i]) + " AS c" + std::to_string(i);
  }
  return sql + "\n  FROM event e WHERE e.event_id = " + std::to_string(source.event_id) +
         " AND e.provider IN\n    (SELECT id FROM provider WHERE name = " +
         quoted(source.provider) + " COLLATE NOCASE)" + condition(source.when);
}

// Words for a code, and the code beside them; a value without words stays.
std::string column(const question_column& column, const std::string& value) {
  const std::string name = quoted(column.name, '"');
  if (!column.codes) return "q." + value + " AS " + name;
  std::string sql = "CASE lower(q." + value + ")";
  for (const code_word& row : column.codes->rows) {
    sql += "\n    WHEN " + quoted(row.code) + " THEN " + quoted(row.words);
  }
  return sql + "\n    ELSE q." + value + " END AS " + name + ",\n  q." + value + " AS " +
         quoted(std::string(column.name) + "_code", '"');
}

std::string view_of(const question& asked) {
  std::string sql = "CREATE VIEW " + std::string(asked.name) +
                    " AS\nSELECT q.id, q.time, co.name AS computer, q.what";
  for (std::size_t i = 0; i < asked.columns.size(); ++i) {
    sql += ",\n  " + column(asked.columns[i], "c" + std::to_string(i));
  }
  sql += ",\n  l.path AS log, q.time_us\nFROM (\n";
  for (const question_source& source : asked.sources) {
    if (&source != asked.sources.data()) sql += "\n  UNION ALL\n";
    sql += source_rows(source, asked.columns.size());
  }
  return sql + ") q\n  JOIN log l ON l.id = q.log\n  LEFT JOIN computer co ON co.id = q.computer";
}

}  // namespace

std::vector<question_view> question_views() {
  std::vector<question_view> views;
  for (const question& asked : questions()) {
    views.push_back({std::string(asked.name), view_of(asked)});
  }
  return views;
}

}  // namespace zanvik
