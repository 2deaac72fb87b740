// The way into this folder, which makes one HTML file that shows what happened on the machines.
//
//   collector.h      a sink that gathers rows, counts and script blocks from events, in one pass
//   row_store.h      the rows of the tables, at most so many; text_pool.h their texts, each once
//   script_blocks.h  script blocks put together from their parts
//   activity.h       events by host, day, hour and kind; activity_chart.h draws them as SVG
//   highlights.h     what stands out: cleared logs, guessed passwords, new administrators …
//   report_head.h    what is known of the logs themselves: sizes, checksums, findings
//   page.h           the HTML: the head, the charts, and the rows as JSON for the page's script
//   page_text.h      any text as HTML or JSON that cannot leave its place
//
// page/report.js and page/report.css are built into the program. The page loads nothing and runs
// nothing but that script, which its content security policy names by hash.
//
// Everything shown may be made up by somebody who wants the page to lie or to run something: texts
// go through page_text, and the size of the page is limited (row_store.h, report_limits.h).
#pragma once

#include "report/collector.h"
#include "report/page.h"
