// The limits that keep rules from taking a run down, each with the reason for its value. Rules are
// input like logs: anybody may have written them. What goes over one makes the rule unusable, with
// its reason in `hunt --list`.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zanvik::sigma::limits {

// Bytes of one rule file; all public rules in one have 5 MiB.
inline constexpr std::size_t rule_file_bytes = 64 << 20;
// Of one rule; the largest public one has 300 KiB. Brackets take yaml-cpp 240 bytes each.
inline constexpr std::size_t rule_bytes = 512 << 10;
// Rules of one file.
inline constexpr std::size_t rules_of_file = 50000;
// Files below the folders of --rules; the public set has some 3,500 for all products.
inline constexpr std::size_t rule_files = 100000;
// Values of one file with the copies that aliases make; the largest public rule has 6,000.
inline constexpr std::size_t yaml_nodes = 200000;
// How deep a file may nest; rules nest 5 deep. What walks the tree is recursive.
inline constexpr std::size_t yaml_depth = 32;
// Keys of one map, which are looked up one after the other; the largest public rule has 40.
inline constexpr std::size_t yaml_keys = 2000;
// Brackets of a condition, which its parser walks recursively.
inline constexpr std::size_t condition_depth = 64;
// Tests of one rule, which an encoding or placeholders make of its values; the largest public one
// has 4,400.
inline constexpr std::size_t rule_tests = 20000;
// Steps of one rule's condition once names and patterns stand for what they name: `1 of them` over
// many identifiers may stand often. That is so many for each step of its search identifiers, of
// which public rules need 2, and so many besides.
inline constexpr std::size_t steps_for_step = 8, more_steps = 1000;
inline constexpr std::size_t rule_steps = 100000;
// Names of fields that all rules ask for; each is looked up for every kind of event. The public set
// has some 600.
inline constexpr std::size_t all_fields = 8192;
// Steps that filters add to rules; each costs some 400 bytes.
inline constexpr std::size_t filter_steps = 1 << 18;
// How many correlations may stand on one another.
inline constexpr std::size_t correlation_depth = 16;
// Rules that one correlation may stand on; each of its groups has room for each of them.
inline constexpr std::size_t correlation_rules = 256;
// Rules of an ordered correlation that wants only some of them: each match of one costs the square.
inline constexpr std::size_t ordered_rules = 16;
// Texts that one value may become by dashes before an encoding, or by placeholders.
inline constexpr std::size_t expanded_texts = 4096;
// Steps of one regular expression on one value, as PCRE2 counts them. A sound expression takes a
// few for each byte; one that goes back without end is given up, and the run says so.
inline constexpr std::uint32_t regex_steps = 100000;
// Memory that one match may take beyond its first, in KiB.
inline constexpr std::uint32_t regex_heap_kib = 4096;
// Length of one regular expression's text.
inline constexpr std::size_t regex_bytes = 16384;
// What the expressions of one rule, and those of all rules, may come to when compiled: repetition
// makes kilobytes of a few characters. Public rules come to 4 KiB and 43 KiB.
inline constexpr std::size_t rule_regex_bytes = 256 << 10;
inline constexpr std::size_t all_regex_bytes = 8 << 20;
// Values of one log on which the expressions of a rule may reach their limit before the rule is
// left out of the rest of this log.
inline constexpr std::uint32_t given_up_in_log = 64;

// `?` and dashes of one value, and `*`: each may have to be tried at every character of a text.
// Public rules have 6.
inline constexpr std::size_t pattern_units = 256;

// How much of a literal is looked for together with all others; the rest of a longer one is looked
// at where its start was found. Compiling takes half the time of all.
inline constexpr std::size_t searched_literal_bytes = 16;
// Literals of one field that Hyperscan takes; more go to the plain engine, as compiling takes 25 to
// 40 us and 2 KiB for each. Command lines of the public set have some 7,000.
inline constexpr std::size_t hyperscan_literals = 16384;

// Kinds of events (channel, provider, ID) that are known at a time; a machine's logs have some
// 2,000. More starts them anew.
inline constexpr std::size_t kinds = 16384;
// Of one shape: a template that leaves its event ID open is used for some dozens.
inline constexpr std::size_t kinds_of_shape = 256;
// Channels that are counted by name, and how long their names are kept.
inline constexpr std::size_t counted_channels = 4096;
inline constexpr std::size_t counted_channel_bytes = 256;

// Matches that correlations hold until the end, and the bytes of their values: 100 MiB at most.
inline constexpr std::size_t correlated_events = 1 << 19;
inline constexpr std::size_t correlated_values = 1 << 23;
inline constexpr std::size_t correlated_text_bytes = 32 << 20;
// Matches that all correlations together look at, a second or two; many may stand on one rule.
inline constexpr std::size_t correlated_looks = 1 << 24;

}  // namespace zanvik::sigma::limits
