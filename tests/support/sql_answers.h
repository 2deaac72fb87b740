// A database as its users see it: by the library itself, with all of its views and functions.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace zanvik::testing {

class sql_answers {
 public:
  explicit sql_answers(const std::string& path) {
    if (sqlite3_open(path.c_str(), &handle_) != SQLITE_OK) throw std::runtime_error(path);
  }
  sql_answers(const sql_answers&) = delete;
  sql_answers& operator=(const sql_answers&) = delete;
  ~sql_answers() { sqlite3_close(handle_); }

  // The rows, each with "|" between its columns and "; " behind it; NULL is "~". What fails is
  // "error: " and why.
  std::string operator()(const std::string& sql, const std::string& parameter = "") {
    sqlite3_stmt* asked = nullptr;
    std::string rows;
    int status = sqlite3_prepare_v2(handle_, sql.c_str(), -1, &asked, nullptr);
    if (status == SQLITE_OK) {
      sqlite3_bind_text64(asked, 1, parameter.data(), parameter.size(), SQLITE_STATIC, SQLITE_UTF8);
      while ((status = sqlite3_step(asked)) == SQLITE_ROW) append_row(asked, rows);
    }
    if (status != SQLITE_DONE) rows = std::string("error: ") + sqlite3_errmsg(handle_);
    sqlite3_finalize(asked);
    return rows;
  }

  // Several statements.
  void run(const std::string& sql) {
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle_));
    }
  }

 private:
  static void append_row(sqlite3_stmt* row, std::string& out) {
    for (int i = 0; i < sqlite3_column_count(row); ++i) {
      const auto* const text = sqlite3_column_text(row, i);
      const auto bytes = static_cast<std::size_t>(sqlite3_column_bytes(row, i));
      if (i != 0) out += '|';
      out += text ? std::string(reinterpret_cast<const char*>(text), bytes) : "~";
    }
    out += "; ";
  }

  sqlite3* handle_ = nullptr;
};

// One answer from a database in a file.
inline std::string answer(const std::string& path, const std::string& sql) {
  return sql_answers(path)(sql);
}

// Everything that a case holds, ids included.
inline std::string content_of(const std::string& path) {
  std::string all;
  for (const char* table : {"log", "finding", "channel", "provider", "computer", "sid", "event"}) {
    all += table + std::string(": ") +
           answer(path, "SELECT rowid, * FROM " + std::string(table) + " ORDER BY rowid") + "\n";
  }
  return all;
}

}  // namespace zanvik::testing
