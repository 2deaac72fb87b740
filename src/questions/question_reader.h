// Reads the rows of the questions' tables from events.
//
//   question_reader reader;
//   for (const question_match& match : reader.matches(event))
//     for (std::size_t column = 0; column < match.columns(); ++column)
//       use(reader.text(event, match, column));
//
// What depends on the shape of an event is looked up once for each shape. An event that answers no
// question costs a look at its ID.
#pragma once

#include <bitset>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "events/event_view.h"
#include "questions/questions.h"

namespace zanvik {

// A field of a shape, or one item of the array that it holds.
struct field_place {
  std::uint32_t field = 0;
  std::int32_t item = -1;  // -1: the whole field
};

// Where the values of one source are in the events of one shape.
struct source_fields {
  const question_source* source = nullptr;
  std::array<std::vector<field_place>, question_columns> columns;  // alternatives, in order
  std::vector<field_place> when;                                   // the condition's fields
};

struct question_match {
  std::uint32_t number = 0;  // of the question, in questions()
  const source_fields* fields = nullptr;

  const question& asked() const { return questions()[number]; }
  const question_source& source() const { return *fields->source; }
  std::size_t columns() const { return asked().columns.size(); }
};

class question_reader {
 public:
  question_reader();

  // The questions that the event answers. Valid until the next call.
  std::span<const question_match> matches(const event_view& event);
  // The value of a column as it is in the event, without words for codes; empty when there is none.
  // Valid until the next call.
  std::string_view text(const event_view& event, const question_match& match, std::size_t column);

 private:
  struct known_source {
    std::uint32_t number = 0;
    const question_source* source = nullptr;
  };
  // Events of one shape may have several IDs.
  struct known_id {
    std::uint16_t event_id = 0;
    std::vector<question_match> sources;
    std::vector<source_fields> fields;  // what `sources` points to
  };
  struct known_shape {
    std::uint64_t id = 0;
    std::vector<known_id> ids;
  };
  const known_id& known_for(const event_view& event, std::uint16_t event_id);
  bool fits(const event_view& event, const source_fields& fields);
  std::string_view value(const event_view& event, const field_place& place);
  std::string_view first_value(const event_view& event, std::span<const field_place> fields);

  std::bitset<65536> event_ids_;
  std::unordered_map<std::uint16_t, std::vector<known_source>> by_id_;
  std::vector<known_shape> shapes_;
  std::vector<question_match> matches_;
  std::string provider_, scratch_;
};

}  // namespace zanvik
