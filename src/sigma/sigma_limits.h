// The limits on rules, each with the reason for its value. Rules are input like logs: anybody may
// have written them. A rule that exceeds one cannot be used, and `hunt --list` shows the reason.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zanvik::sigma::limits {

// Bytes of one rule file; all public rules in one file have 5 MiB.
inline constexpr std::size_t rule_file_bytes = 64 << 20;
// Of one rule; the largest public one has 300 KiB. Brackets cost yaml-cpp 240 bytes each.
inline constexpr std::size_t rule_bytes = 512 << 10;
// Rules of one file.
inline constexpr std::size_t rules_of_file = 50000;
// Files below the folders of --rules; the public set has some 3,500 for all products.
inline constexpr std::size_t rule_files = 100000;
// Values of one file including the copies that aliases make; the largest public rule has 6,000.
inline constexpr std::size_t yaml_nodes = 200000;
// How deep a file may nest; real rules nest 5 deep. The code that walks the tree is recursive.
inline constexpr std::size_t yaml_depth = 32;
// Keys of one map, which are searched linearly; the largest public rule has 40.
inline constexpr std::size_t yaml_keys = 2000;
// Brackets of a condition, which its parser walks recursively.
inline constexpr std::size_t condition_depth = 64;
// Tests of one rule, including those that an encoding or placeholders make of its values; the
// largest public one has 4,400.
inline constexpr std::size_t rule_tests = 20000;
// Steps of one rule's condition when names and patterns are replaced by what they name: `1 of them`
// over many identifiers may be repeated often. This many for each step of its search identifiers,
// of which public rules need 2, plus this many.
inline constexpr std::size_t steps_for_step = 8, more_steps = 1000;
inline constexpr std::size_t rule_steps = 100000;
// Names of fields that all rules use; each is looked up for every kind of event. The public set has
// some 600.
inline constexpr std::size_t all_fields = 8192;
// Steps that filters add to rules; each costs some 400 bytes.
inline constexpr std::size_t filter_steps = 1 << 18;
// How many correlations may stand on one another.
inline constexpr std::size_t correlation_depth = 16;
// Rules that one correlation may use; each of its groups has room for each of them.
inline constexpr std::size_t correlation_rules = 256;
// Rules of an ordered correlation that needs only some of them: each match costs the square of
// this.
inline constexpr std::size_t ordered_rules = 16;
// Texts that one value may become by dashes before an encoding, or by placeholders.
inline constexpr std::size_t expanded_texts = 4096;
// Steps of one regular expression on one value, as PCRE2 counts them. A sound expression takes a
// few for each byte; one that backtracks without end is stopped, and the run says so.
inline constexpr std::uint32_t regex_steps = 100000;
// Additional memory of one match, in KiB.
inline constexpr std::uint32_t regex_heap_kib = 4096;
// Length of one regular expression's text.
inline constexpr std::size_t regex_bytes = 16384;
// Compiled size of the expressions of one rule, and of all rules: repetition makes kilobytes of a
// few characters. Public rules need 4 KiB and 43 KiB.
inline constexpr std::size_t rule_regex_bytes = 256 << 10;
inline constexpr std::size_t all_regex_bytes = 8 << 20;
// Events of one part of a log (a block of chunks, source/log_parts.h) in which the expressions of a
// rule may reach their limit before the rule is skipped for the rest of this part. What was seen in
// other parts does not count, since those may be read later or on other threads.
inline constexpr std::uint32_t given_up_in_part = 16;

// `?` and dashes of one value, and `*`: each may have to be tried at every character of a text.
// Public rules have 6.
inline constexpr std::size_t pattern_units = 256;

// How much of a literal is searched together with all others; the rest of a longer one is compared
// where its start was found. Compiling whole literals would take twice as long.
inline constexpr std::size_t searched_literal_bytes = 16;
// Literals of one field for Hyperscan; more go to the plain engine, because compiling takes 25 to
// 40 us and 2 KiB for each. Command lines of the public set have some 7,000.
inline constexpr std::size_t hyperscan_literals = 16384;

// Kinds of events (channel, provider, ID) that are remembered; a machine's logs have some 2,000.
// Beyond this they are forgotten.
inline constexpr std::size_t kinds = 16384;
// Kinds of one shape: a template with a variable event ID is used for some dozens.
inline constexpr std::size_t kinds_of_shape = 256;
// Channels that are counted by name, and the maximum length of their names.
inline constexpr std::size_t counted_channels = 4096;
// The same within one part of a log; a block of chunks cannot have as many.
inline constexpr std::size_t counted_channels_of_part = 65536;
inline constexpr std::size_t counted_channel_bytes = 256;

// Matches that correlations hold until the end, and the bytes of their values: 100 MiB at most.
inline constexpr std::size_t correlated_events = 1 << 19;
inline constexpr std::size_t correlated_values = 1 << 23;
inline constexpr std::size_t correlated_text_bytes = 32 << 20;
// Matches that all correlations together examine, a second or two; many may use one rule.
inline constexpr std::size_t correlated_looks = 1 << 24;

}  // namespace zanvik::sigma::limits
