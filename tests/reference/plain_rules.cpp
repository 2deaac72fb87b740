#include "reference/plain_rules.h"

namespace zanvik::sigma {
namespace {

bool passes(const field_test& test, const event_source& source, const event_fields& event,
            test_scratch& scratch) {
  static const field_values none;
  const field_values& other =
      test.what == field_test::kind::field ? event.values(source.field_name(test.other)) : none;
  return field_passes(test, event.values(source.field_name(test.field)), other, scratch);
}

}  // namespace

bool plain_match(const rule& detection, const event_source& source, const event_fields& event,
                 test_scratch& scratch) {
  const bool is_meant = evaluate(source.condition, [&](std::size_t test) {
    return passes(source.where[test], source, event, scratch);
  });
  return is_meant && evaluate(detection.condition, [&](std::size_t test) {
    return passes(detection.tests[test], source, event, scratch);
  });
}

}  // namespace zanvik::sigma
