// The examiner's questions to logs, as plain data: who logged on, which programs ran, what was
// installed, when logs were cleared. Each question is a table, and each row of that table comes
// from one event. The report shows the tables, the case database has a view for each.
//
//   for (const question& asked : questions())
//     for (const question_source& source : asked.sources)
//       // events of source.provider with source.event_id; asked.columns[i] is source.fields[i]
//
// A field is written as a text, made of alternatives with `|` between them: the first one that has
// a value counts. An empty text means that these events have no such value.
//
//   Name    the datum, or the leaf below UserData, with that name
//   #3      the fourth datum, of events whose data have no names
//   @Name   a System member: @Channel, @Computer, @UserID
//
// A value of "-" or nothing at all is no value; neither is "0x0" where an alternative follows.
//
// question_reader.h reads rows from events. To add a question, add its columns and sources to one
// of the files here, and its row to questions.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zanvik {

// What a code in an event stands for.
struct code_word {
  std::string_view code;  // as `export` writes the value, in lower case
  std::string_view words;
};
struct code_table {
  std::string_view name;  // "logon_types"
  std::span<const code_word> rows;
};

struct question_column {
  std::string_view name;              // lower case and underscores, for SQL: "source_address"
  std::string_view label;             // for people: "Source address"
  const code_table* codes = nullptr;  // words for its values; a value without words stays
};

inline constexpr std::size_t question_columns = 10;  // at most

// The events of one kind that answer a question.
struct question_source {
  std::string_view provider;  // in any case of letters
  std::uint16_t event_id = 0;
  std::string_view what;                                    // what happened: "account created"
  std::array<std::string_view, question_columns> fields{};  // one for each column
  // Only events whose field fits: "NAME=PATTERN" or "NAME!=PATTERN", with `*` and `?`, in any case
  // of letters; a field that is absent fits no pattern. Empty: all events.
  std::string_view when{};
};

struct question {
  std::string_view name;   // "failed_logons"
  std::string_view title;  // "Failed logons"
  std::string_view group;  // what charts count it as: one of question_groups()
  std::span<const question_column> columns;
  std::span<const question_source> sources;
};

// All questions, in the order in which a report shows them. The columns of every table begin with
// the event's time, its computer and `what`, which are not listed.
std::span<const question> questions();

// The groups of questions, in the order of their colours: "logons", "programs" …
std::span<const std::string_view> question_groups();

// The words for a code, or nothing. The case of letters in `code` does not matter.
std::string_view words_for(const code_table& codes, std::string_view code);

// One part of a question's answer, as the files of this folder define it.
struct question_parts {
  std::span<const question_column> columns;
  std::span<const question_source> sources;
};

}  // namespace zanvik
