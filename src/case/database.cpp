#include "case/database.h"

#include <sqlite3.h>

#include <utility>

namespace zanvik {
namespace {

// What a file that somebody prepared may make the library do. The longest value that an event
// makes, its data, stays far below the first of these.
constexpr std::pair<int, int> library_limits[] = {
    {SQLITE_LIMIT_LENGTH, 512 << 20}, {SQLITE_LIMIT_SQL_LENGTH, 1 << 20},
    {SQLITE_LIMIT_EXPR_DEPTH, 200},   {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_TRIGGER_DEPTH, 1},  {SQLITE_LIMIT_WORKER_THREADS, 0},
};

void set_switches(sqlite3* handle) {
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
  for (const auto& [limit, value] : library_limits) sqlite3_limit(handle, limit, value);
}

}  // namespace

statement& statement::operator=(statement&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

statement::~statement() { sqlite3_finalize(handle_); }

statement& statement::bind(int parameter, std::int64_t number) {
  sqlite3_bind_int64(handle_, parameter, number);
  return *this;
}

statement& statement::bind(int parameter, std::string_view text) {
  // A null pointer would be a NULL.
  sqlite3_bind_text64(handle_, parameter, text.data() ? text.data() : "", text.size(),
                      SQLITE_STATIC, SQLITE_UTF8);
  return *this;
}

statement& statement::bind_copy(int parameter, std::string_view text) {
  sqlite3_bind_text64(handle_, parameter, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  return *this;
}

statement& statement::bind_null(int parameter) {
  sqlite3_bind_null(handle_, parameter);
  return *this;
}

bool statement::next() { return handle_ && sqlite3_step(handle_) == SQLITE_ROW; }

bool statement::run() {
  if (!handle_) return false;
  int status = sqlite3_step(handle_);
  while (status == SQLITE_ROW) status = sqlite3_step(handle_);
  return sqlite3_reset(handle_) == SQLITE_OK && status == SQLITE_DONE;
}

void statement::reset() { sqlite3_reset(handle_); }

bool statement::is_null(int column) const {
  return sqlite3_column_type(handle_, column) == SQLITE_NULL;
}
bool statement::is_integer(int column) const {
  return sqlite3_column_type(handle_, column) == SQLITE_INTEGER;
}
bool statement::is_text(int column) const {
  return sqlite3_column_type(handle_, column) == SQLITE_TEXT;
}

std::int64_t statement::integer(int column) const { return sqlite3_column_int64(handle_, column); }

std::string_view statement::text(int column) const {
  const void* const bytes = sqlite3_column_text(handle_, column);
  if (!bytes) return {};
  return {static_cast<const char*>(bytes),
          static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

bool database::open(const std::string& path, access how) {
  close();
  const int flags =
      how == access::read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  // No connection is used by two threads. Names that mean something to the library are names.
  const bool is_name = path.starts_with("file:") || path.starts_with(":");
  if (sqlite3_open_v2((is_name ? "./" + path : path).c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX,
                      nullptr) != SQLITE_OK) {
    return false;
  }
  sqlite3_extended_result_codes(handle_, 1);
  set_switches(handle_);
  return run("PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0");
}

void database::close() {
  sqlite3_close_v2(handle_);
  handle_ = nullptr;
}

bool database::run(const std::string& sql) {
  return sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

statement database::prepare(std::string_view sql) {
  statement made;
  sqlite3_prepare_v3(handle_, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                     &made.handle_, nullptr);
  return made;
}

std::int64_t database::number(std::string_view sql) {
  statement asked = prepare(sql);
  return asked.next() ? asked.integer(0) : 0;
}

std::string database::word(std::string_view sql) {
  statement asked = prepare(sql);
  return asked.next() ? std::string(asked.text(0)) : std::string();
}

std::int64_t database::last_id() const { return sqlite3_last_insert_rowid(handle_); }

bool database::in_transaction() const { return sqlite3_get_autocommit(handle_) == 0; }

bool database::failed() const {
  const int status = sqlite3_errcode(handle_) & 0xff;
  return status != SQLITE_OK && status != SQLITE_ROW && status != SQLITE_DONE;
}

std::string database::error() const {
  if (!handle_) return "no memory for a database";
  const int status = sqlite3_extended_errcode(handle_);
  if ((status & 0xff) == SQLITE_BUSY) return "is in use by another program";
  return sqlite3_errmsg(handle_);
}

void database::set_temporary_folder(const std::string& folder) {
  sqlite3_free(sqlite3_temp_directory);
  sqlite3_temp_directory = folder.empty() ? nullptr : sqlite3_mprintf("%s", folder.c_str());
}

}  // namespace zanvik
