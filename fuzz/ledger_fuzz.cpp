// The ledger of a log in memory: its lines add up to the log, and what it says is given is what the
// reader gives.
#include <algorithm>

#include "evt/evt.h"
#include "fuzz_target.h"
#include "inspect/event_facts.h"
#include "inspect/inspect.h"
#include "source/log_events.h"

namespace zanvik::fuzz {
namespace {

class counting : public event_sink {
 public:
  void on_event(const event_view& event) override {
    ++events;
    offsets.push_back(event.header().file_offset);
  }
  std::uint64_t events = 0;
  std::vector<std::uint64_t> offsets;
};

void check_sum(log_ledger& ledger) {
  require(ledger.account.bytes() == ledger.size, "every byte has its line");
  require(ledger.findings.kept().size() <= finding_kinds * limits::findings_of_a_kind,
          "findings are bounded");
}

void check_evtx(std::span<std::byte> log, bool has_header) {
  log_ledger ledger;
  ledger.size = log.size();
  const log_source source{"a", "", log_kind::evtx};
  event_facts facts(ledger);
  evtx_ledger work(ledger, source, facts, 0);
  const std::size_t head =
      has_header ? std::min<std::size_t>(log.size(), evtx_layout::file_header_bytes) : 0;
  if (has_header) work.add_header(log.first(head));
  if (head < log.size()) work.add_block(log.subspan(head), head);
  work.finish();
  check_sum(ledger);
}

void check_evt(std::span<std::byte> log) {
  log_ledger ledger;
  ledger.size = log.size();
  const log_source source{"a", "", log_kind::evt};
  counting events;
  evt_event_reader reader(events);
  reader.set_source(source);
  reader.set_buffer(0, log.data() + log.size());
  walk_evt_log(log, reader);
  evt_ledger(ledger, 0).run(log, events.offsets);
  check_sum(ledger);
}

}  // namespace

ZANVIK_FUZZ_TARGET(ledger) {
  input in(bytes);
  const auto flags = in.take<std::uint8_t>();
  if (flags & 1) {
    exact_bytes log(in.rest());
    check_evt(log.span());
  } else {
    const auto unpacked = unpacked_log(in.rest(), flags & (log_without_header | log_cut_short));
    exact_bytes log(unpacked);
    check_evtx(log.span(), !(flags & log_without_header));
  }
}

}  // namespace zanvik::fuzz
