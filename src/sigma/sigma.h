// The way into this folder: Sigma rules on events.
//
//   yaml_text.h       YAML, by yaml-cpp
//   rule.h            a rule; rule_reader.h makes it of YAML: field_reader.cpp its tests,
//                     condition.cpp its condition, correlation_reader.cpp a correlation
//   text_pattern.h    wildcards, escapes, dashes; encodings.h
//   regex.h           regular expressions, by PCRE2
//   field_test.h      one question about one field, and its plain answer
//   log_sources.h     which events a log source stands for; the table is log_sources.yml
//   rule_files.h      files of rules
//   rule_set.h        all rules of a run: what runs, and why what does not
//   group_matcher.h   the rules of one log source as one matcher; literal_set.h and
//                     anchored_set.h are its searches
//   compiled_rules.h  all matchers of a run; hunter.h gives them events, event_names.h their fields
//   correlation.h     what rules match together; correlation_spans.h where a condition holds
//   rule_matches.h    what matched, how often and when
//
// sigma_limits.h has the limits on rules.
#pragma once

#include "sigma/hunter.h"
#include "sigma/rule_set.h"
