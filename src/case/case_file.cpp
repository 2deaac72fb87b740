#include "case/case_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <span>

#include "case/case_schema.h"
#include "case/question_views.h"
#include "source/block_reader.h"

namespace zanvik {
namespace {

// Of the file's header, as SQLite documents it.
constexpr std::string_view sqlite_start{"SQLite format 3\0", 16};
constexpr std::size_t read_version_at = 19;
constexpr std::byte wal_version{2};
constexpr std::size_t version_at = 60;
constexpr std::size_t application_at = 68;
constexpr std::size_t header_bytes = 100;

// Pages of 16 KiB hold some 25 events each. Dirty pages beyond the cache go to the disk, so that a
// log of any size takes the same memory. In WAL mode, NORMAL syncs where soundness needs it.
constexpr const char* settings = R"(PRAGMA page_size = 16384;
PRAGMA cache_size = -32768;
PRAGMA locking_mode = EXCLUSIVE;
PRAGMA synchronous = NORMAL;
PRAGMA foreign_keys = OFF)";

std::uint32_t big_endian(std::span<const std::byte> bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    number = number << 8 | std::to_integer<std::uint32_t>(bytes[at + i]);
  }
  return number;
}

using file_start = std::array<std::byte, header_bytes>;

// Bytes read, or -1 with errno.
ssize_t read_start(const std::string& path, file_start& head) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return -1;
  const ssize_t got = read_fully(file, head, 0);
  const int error = errno;
  ::close(file);
  errno = error;
  return got;
}

std::string judge(std::span<const std::byte> head) {
  if (head.size() < header_bytes ||
      std::memcmp(head.data(), sqlite_start.data(), sqlite_start.size()) != 0) {
    return "is another file, not a case: nothing was written";
  }
  if (big_endian(head, application_at) != case_application_id) {
    return "is a database, but not a case: nothing was written";
  }
  const std::uint32_t version = big_endian(head, version_at);
  if (version == case_version) return "";
  return "is a case of version " + std::to_string(version) + ", and this program has version " +
         std::to_string(case_version) + ": nothing was written";
}

}  // namespace

std::string why_no_case(const std::string& path) {
  struct stat about {};
  if (::stat(path.c_str(), &about) != 0) return errno == ENOENT ? "" : std::strerror(errno);
  if (!S_ISREG(about.st_mode)) return "is not a file that a case can be in";
  if (about.st_size == 0) return "";
  file_start head;
  const ssize_t got = read_start(path, head);
  if (got < 0) return std::strerror(errno);
  return judge(std::span(head).first(static_cast<std::size_t>(got)));
}

bool is_unfinished_case(const std::string& path) {
  file_start head;
  return read_start(path, head) == std::ssize(head) && head[read_version_at] == wal_version;
}

std::string why_no_case_tables(database& base) {
  for (const case_table& table : case_tables()) {
    statement kept = base.prepare("SELECT sql FROM sqlite_schema WHERE name = ? COLLATE NOCASE");
    kept.bind(1, table.name);
    const bool same = kept.next() && kept.text(0) == table.sql && !kept.next();
    if (base.failed()) return base.error();
    if (!same) return "its table " + std::string(table.name) + " is not that of a case";
  }
  return "";
}

std::string case_file::open(const std::string& path, bool full_text) {
  std::string problem = why_no_case(path);
  if (!problem.empty()) return problem;
  if (!base_.open(path, database::access::write) || !base_.run(settings)) return base_.error();
  if (!base_.run("BEGIN IMMEDIATE")) return base_.error();
  const bool is_new = base_.number("SELECT count(*) FROM sqlite_schema") == 0;
  problem = base_.failed() ? base_.error() : is_new ? make() : check();
  if (problem.empty()) problem = update_views();
  if (problem.empty() && full_text && !full_text_) problem = add_full_text();
  if (problem.empty() && !base_.run("COMMIT")) problem = base_.error();
  if (!problem.empty()) base_.close();
  return problem;
}

std::string case_file::make() {
  std::string sql = "PRAGMA application_id = " + std::to_string(case_application_id) +
                    ";PRAGMA user_version = " + std::to_string(case_version) + ";";
  for (const case_table& table : case_tables()) sql += std::string(table.sql) + ";";
  return base_.run(sql) ? "" : base_.error();
}

std::string case_file::check() {
  if (base_.number("PRAGMA application_id") != case_application_id) return "is not a case";
  std::string problem = why_no_case_tables(base_);
  statement kept = base_.prepare("SELECT 1 FROM sqlite_schema WHERE name = ?");
  full_text_ = kept.bind(1, full_text_table).next();
  return problem;
}

// The views of the program that writes; others of the same names go.
std::string case_file::update_views() {
  std::string sql;
  statement kept = base_.prepare("SELECT 1 FROM sqlite_schema WHERE name = ? AND sql = ?");
  const auto view = [&](std::string_view name, std::string_view make) {
    const bool same = kept.bind(1, name).bind(2, make).next();
    kept.reset();
    if (same) return;
    sql += "DROP VIEW IF EXISTS " + std::string(name) + ";" + std::string(make) + ";";
  };
  view("events", events_view());
  for (const question_view& made : question_views()) view(made.name, made.sql);
  return base_.run(sql) ? "" : base_.error();
}

std::string case_file::add_full_text() {
  if (!base_.run(std::string(full_text_sql()))) return base_.error();
  statement add = base_.prepare(full_text_add());
  full_text_ = add.prepared() && add.bind(1, std::int64_t{0}).run();
  return full_text_ ? "" : base_.error();
}

std::string case_file::start_adding() {
  if (adding_) return "";
  adding_ = true;
  std::string sql = "PRAGMA journal_mode = WAL;";
  const std::int64_t held = base_.number("SELECT total(size) FROM log");
  if (held <= 0 || bytes_ > static_cast<std::uint64_t>(held)) {
    for (const case_index& index : case_indexes()) {
      sql += "DROP INDEX IF EXISTS " + std::string(index.name) + ";";
    }
  }
  return base_.run(sql) ? "" : base_.error();
}

std::string case_file::finish() {
  std::string sql = "BEGIN;";
  for (const case_index& index : case_indexes()) {
    sql += "CREATE INDEX IF NOT EXISTS " + std::string(index.name) + " ON " +
           std::string(index.on) + ";";
  }
  sql += "COMMIT;";
  // Also behind a run that was killed.
  if (base_.word("PRAGMA journal_mode") == "wal") sql += "PRAGMA journal_mode = DELETE";
  const std::string problem = base_.run(sql) ? "" : base_.error();
  base_.close();
  return problem;
}

}  // namespace zanvik
