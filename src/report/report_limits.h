// How large a page may grow, whatever is in the logs.
#pragma once

#include <cstddef>

namespace zanvik::report_limits {

// Rows of all tables together. A browser sorts and searches that many at once; what is more is a
// matter for a database.
inline constexpr std::size_t rows = 200'000;

// Bytes of one cell: a command line of Windows has at most 32,767 characters.
inline constexpr std::size_t cell_bytes = 32'768;

// Bytes of all different texts in the tables, as they are written. A usual machine has 5 MB.
inline constexpr std::size_t text_bytes = 32 << 20;

// Of one script block, and of all: a few real ones have 1 MB.
inline constexpr std::size_t script_bytes = 256 << 10;
inline constexpr std::size_t all_script_bytes = 16 << 20;
inline constexpr std::size_t script_blocks = 50'000;
inline constexpr std::size_t script_parts = 500'000;

// Computers that are told apart. A folder of logs of all machines of a site has hundreds.
inline constexpr std::size_t hosts = 2'000;
// Hosts with a chart of their own.
inline constexpr std::size_t charted_hosts = 12;
// Days of a host on which something happened: ten years of twenty hosts.
inline constexpr std::size_t host_days = 80'000;
// Columns of a chart; more days are shown as weeks, months or years.
inline constexpr std::size_t chart_columns = 370;

// Findings that are listed, of one log and of all; all are counted.
inline constexpr std::size_t findings_of_log = 50;
inline constexpr std::size_t findings = 2'000;

}  // namespace zanvik::report_limits
