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
  for (const field_test& test : source.where) {
    if (!passes(test, source, event, scratch)) return false;
  }
  return evaluate(detection.condition, [&](std::size_t test) {
    return passes(detection.tests[test], source, event, scratch);
  });
}

}  // namespace zanvik::sigma
