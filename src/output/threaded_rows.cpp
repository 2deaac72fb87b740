#include "output/threaded_rows.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "output/grouping.h"
#include "output/row_jobs.h"
#include "output/tables/event_table.h"
#include "output/timelines/timeline_fields.h"
#include "output/timelines/timeline_text.h"
#include "output/timelines/timeline_writer.h"

namespace zanvik {
namespace {

using record_span = std::span<const LogRecord* const>;

// A table with more records is made in parts.
constexpr std::size_t records_of_small_table = 4 * row_jobs::records_of_job;

// Calls `use` for the parts of the records that are worth a job.
template <typename F>
void for_parts(record_span records, F&& use) {
  while (!records.empty()) {
    const std::size_t count = std::min(records.size(), row_jobs::records_of_job);
    use(records.first(count));
    records = records.subspan(count);
  }
}

// Part of the survey of a large table.
class survey_job : public ordered_job {
 public:
  survey_job(record_span records, table_survey& whole)
      : records_(records), whole_(whole), found_(whole.measures()) {}
  void work(std::size_t) override { found_.add(records_); }
  void commit() override { whole_.add(found_); }

 private:
  record_span records_;
  table_survey& whole_;
  table_survey found_;
};

class threaded_tables {
 public:
  threaded_tables(std::ostream& out, record_span records, const output_format& format,
                  const write_context& context, ordered_work& threads)
      : groups_(records), format_(format), context_(context), rows_(threads, out) {
    of_threads_.resize(rows_.threads());
    survey_large(threads);
  }

  void write() {
    std::size_t first = 0;  // of the small tables that have no job yet
    std::size_t waiting = 0;
    for (std::size_t i = 0; i < groups_.count(); ++i) {
      if (!is_large(i)) {
        waiting += groups_.group(i).size();
        if (waiting < row_jobs::records_of_job) continue;
        add_small(std::exchange(first, i + 1), i + 1);
      } else {
        add_small(first, i);
        first = i + 1;
        add_large(i);
      }
      waiting = 0;
    }
    add_small(first, groups_.count());
    rows_.finish();
  }

 private:
  // The plans of a thread, for the rows of the table that it had last.
  struct thread_plans {
    const table_plan* table = nullptr;
    row_plans plans;
  };

  bool is_large(std::size_t group) const {
    return groups_.group(group).size() > records_of_small_table;
  }

  void survey_large(ordered_work& threads) {
    for (std::size_t i = 0; i < groups_.count(); ++i) {
      if (!is_large(i)) continue;
      table_survey& whole = surveys_.emplace_back(!format_.no_whitespace);
      for_parts(groups_.group(i), [&](record_span part) {
        threads.add(std::make_unique<survey_job>(part, whole), ordered_work::small_jobs);
      });
    }
    threads.finish();
    for (const table_survey& found : surveys_) {
      plans_.push_back(make_table_plan(found, format_, context_));
    }
  }

  // Tables [first, end), whole.
  void add_small(std::size_t first, std::size_t end) {
    if (first == end) return;
    rows_.add([this, first, end](row_buffer& out, std::size_t) {
      time_cells times(format_);
      table_cache tables;
      for (std::size_t i = first; i < end; ++i) {
        if (i != 0) out.append("\n");
        write_event_table(out, times, tables, groups_.group(i), format_, context_);
      }
    });
  }

  void add_large(std::size_t group) {
    const table_plan& table = plans_[next_plan_++];
    bool has_header = false;
    for_parts(groups_.group(group), [&](record_span part) {
      const bool first = !std::exchange(has_header, true);
      rows_.add([this, &table, part, first, group](row_buffer& out, std::size_t thread) {
        if (first && group != 0) out.append("\n");
        if (first) out.append(table.header);
        time_cells times(format_);
        thread_plans& own = of_threads_[thread];
        if (own.table != &table) own = {&table, {}};
        write_table_rows(out, times, table.layout, own.plans, part, format_, context_);
      });
    });
  }

  const grouping groups_;
  const output_format& format_;
  const write_context& context_;
  std::deque<table_survey> surveys_;  // of the large tables, in order
  std::deque<table_plan> plans_;
  std::size_t next_plan_ = 0;
  std::vector<thread_plans> of_threads_;
  row_jobs rows_;
};

}  // namespace

void write_records_threaded(std::ostream& out, record_span records, const output_format& format,
                            const write_context& context, bool& header_pending,
                            ordered_work& threads) {
  if (format.output_bodyfile || format.output_l2t) {
    if (std::exchange(header_pending, false)) out << timeline_head(format);
    std::vector<std::unique_ptr<field_plans>> plans(threads.threads());  // made when needed
    row_jobs rows(threads, out);
    for_parts(records, [&](record_span part) {
      rows.add([part, &format, &context, &plans](row_buffer& lines, std::size_t thread) {
        auto& own = plans[thread];
        if (!own) own = std::make_unique<field_plans>(field_style_of(format, context));
        append_timeline(lines, *own, part, format, context);
      });
    });
    rows.finish();
  } else if (format.output_csv) {
    threaded_tables(out, records, format, context, threads).write();
    header_pending = false;
  }
}

}  // namespace zanvik
