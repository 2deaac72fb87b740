#include "case/case_schema.h"

namespace zanvik {
namespace {

constexpr case_table tables[] = {
    {"log", R"(CREATE TABLE log (
  id INTEGER PRIMARY KEY,
  path TEXT NOT NULL,
  kind TEXT NOT NULL,
  sha256 TEXT UNIQUE,
  size INTEGER NOT NULL,
  first_time TEXT,
  last_time TEXT,
  events INTEGER NOT NULL,
  findings INTEGER NOT NULL,
  selection TEXT NOT NULL,
  reader TEXT NOT NULL
))"},
    {"finding", R"(CREATE TABLE finding (
  log INTEGER NOT NULL REFERENCES log(id),
  kind TEXT NOT NULL,
  weight TEXT NOT NULL,
  offset INTEGER NOT NULL,
  chunk INTEGER,
  record INTEGER,
  detail TEXT NOT NULL
))"},
    {"channel", "CREATE TABLE channel (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)"},
    {"provider", "CREATE TABLE provider (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)"},
    {"computer", "CREATE TABLE computer (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)"},
    {"sid", "CREATE TABLE sid (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)"},
    {"event", R"(CREATE TABLE event (
  id INTEGER PRIMARY KEY,
  log INTEGER NOT NULL REFERENCES log(id),
  offset INTEGER NOT NULL,
  record INTEGER,
  time TEXT NOT NULL,
  time_us INTEGER NOT NULL,
  channel INTEGER REFERENCES channel(id),
  provider INTEGER REFERENCES provider(id),
  event_id INTEGER,
  version INTEGER,
  level INTEGER,
  task INTEGER,
  opcode INTEGER,
  keywords INTEGER,
  process_id INTEGER,
  thread_id INTEGER,
  activity_id TEXT,
  computer INTEGER REFERENCES computer(id),
  user_sid INTEGER REFERENCES sid(id),
  data TEXT NOT NULL,
  flags INTEGER NOT NULL
))"},
};

constexpr case_index indexes[] = {
    {"event_by_time", "event (time_us)"},
    {"event_by_id", "event (event_id, provider, time_us)"},
    {"event_by_log", "event (log)"},
};

}  // namespace

std::span<const case_table> case_tables() { return tables; }
std::span<const case_index> case_indexes() { return indexes; }

std::string_view events_view() {
  return R"(CREATE VIEW events AS
SELECT e.id, l.path AS log, e.offset, e.record, e.time, e.time_us, ch.name AS channel,
  p.name AS provider, e.event_id, e.version, e.level,
  CASE e.level WHEN 0 THEN 'information' WHEN 1 THEN 'critical' WHEN 2 THEN 'error'
    WHEN 3 THEN 'warning' WHEN 4 THEN 'information' WHEN 5 THEN 'verbose' END AS level_name,
  e.task, e.opcode, e.keywords, e.process_id, e.thread_id, e.activity_id, co.name AS computer,
  s.name AS user_sid, e.data, e.flags,
  rtrim(iif(e.flags & 1, 'slack ', '') || iif(e.flags & 2, 'cut ', '') ||
    iif(e.flags & 4, 'outside_range ', '') || iif(e.flags & 8, 'no_template ', '') ||
    iif(e.flags & 16, 'carved ', '') || iif(e.flags & 32, 'deleted ', '') ||
    iif(e.flags & 64, 'lossy ', '')) AS flag_names
FROM event e
  JOIN log l ON l.id = e.log
  LEFT JOIN channel ch ON ch.id = e.channel
  LEFT JOIN provider p ON p.id = e.provider
  LEFT JOIN computer co ON co.id = e.computer
  LEFT JOIN sid s ON s.id = e.user_sid)";
}

// The view is what the index shows texts from; the index itself is filled without it.
std::string_view full_text_sql() {
  return R"(CREATE VIEW event_text AS
SELECT id, (SELECT group_concat(atom, char(10)) FROM json_tree(event.data) WHERE atom IS NOT NULL)
  AS text
FROM event;
CREATE VIRTUAL TABLE full_text USING fts5(text, content = 'event_text', content_rowid = 'id'))";
}

std::string_view full_text_add() {
  return R"(INSERT INTO full_text (rowid, text)
SELECT id, (SELECT group_concat(atom, char(10)) FROM json_tree(event.data) WHERE atom IS NOT NULL)
FROM event WHERE id >= ?)";
}

}  // namespace zanvik
