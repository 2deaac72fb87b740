// What a thread of `export` does: events of a part of a log as the text of a form.
#pragma once

#include <memory>

#include "export/event_form.h"
#include "export/output_pieces.h"
#include "verbs/line_sorter.h"
#include "verbs/log_jobs.h"
#include "verbs/log_options.h"

namespace zanvik {

// What the workers of a run share. All must outlive them.
struct export_work {
  const log_options& logs;
  const form_name& form;
  const form_options& options;
  output_buffer& out;              // the results go there in their turn,
  line_sorter* by_time = nullptr;  // or there, if they have to be in one order of time
  bool one_thread = false;         // then each event is passed on at once
  piece_memory pieces;
};

std::unique_ptr<log_worker> make_export_worker(export_work& work);

}  // namespace zanvik
