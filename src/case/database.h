// SQLite, as this folder uses it. database.cpp is the only file that knows the library.
//
// In: SQL of ours, and values that are always bound, never part of a statement. Out: rows, and the
// library's words when something failed. Whatever a file of somebody else holds beside its tables
// stays unused: no trigger, no view, no function that a schema names is ever run from here.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace zanvik {

class statement {
 public:
  statement() = default;
  statement(const statement&) = delete;
  statement& operator=(const statement&) = delete;
  statement(statement&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
  statement& operator=(statement&& other) noexcept;
  ~statement();

  bool prepared() const { return handle_ != nullptr; }

  // Parameters count from 1; a text must live until the statement has run.
  statement& bind(int parameter, std::int64_t number);
  statement& bind(int parameter, std::string_view text);
  statement& bind_copy(int parameter, std::string_view text);  // one that need not
  statement& bind_null(int parameter);

  // The next row. False at the end and after an error, which the database then has.
  [[nodiscard]] bool next();
  // Runs a statement without rows, which can then be bound and run again.
  [[nodiscard]] bool run();
  // Ends the rows.
  void reset();

  // Columns count from 0; a text lives until the next row.
  bool is_null(int column) const;
  bool is_integer(int column) const;
  bool is_text(int column) const;
  std::int64_t integer(int column) const;
  std::string_view text(int column) const;

 private:
  friend class database;
  sqlite3_stmt* handle_ = nullptr;
};

class database {
 public:
  enum class access { read, write };

  database() = default;
  database(const database&) = delete;
  database& operator=(const database&) = delete;
  ~database() { close(); }

  // A file that is written is made if there is none.
  [[nodiscard]] bool open(const std::string& path, access how);
  void close();

  // Several statements that return nothing.
  [[nodiscard]] bool run(const std::string& sql);
  [[nodiscard]] statement prepare(std::string_view sql);
  // The first column of the first row; 0 or empty when there is none.
  std::int64_t number(std::string_view sql);
  std::string word(std::string_view sql);

  std::int64_t last_id() const;
  bool in_transaction() const;
  // Whether the last call failed.
  bool failed() const;
  std::string error() const;

  // A folder for the library's temporary files, for all databases of the process.
  static void set_temporary_folder(const std::string& folder);

 private:
  sqlite3* handle_ = nullptr;
};

}  // namespace zanvik
