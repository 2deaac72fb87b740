// A whole legacy .evt log: its records, and their tables.
#include "keep/keeping_sink.h"
#include "select/evt_selector.h"
#include "tables.h"

namespace zanvik::fuzz {
namespace {

// Reads all of a record, and passes it on.
class looking_sink : public evt_sink {
 public:
  looking_sink(std::span<const std::byte> log, evt_sink& next) : log_(log), next_(next) {}

  void on_record(const evt_record& record) override {
    require_within(record.source_name);
    require_within(record.computer_name);
    require_within(record.sid);
    require_within(record.data);
    for (const evt_text text : record.strings) require_within(text);
    const std::unique_ptr<char[]> buffer(new char[longest_sid_text]);
    const char* end = write_sid_text(buffer.get(), record.sid);
    std::string text;
    sid_to_text(text, record.sid);
    require_equal({buffer.get(), static_cast<std::size_t>(end - buffer.get())}, text, "SID texts");
    next_.on_record(record);
  }

 private:
  void require_within(std::span<const std::byte> view) const {
    if (view.empty()) return;
    require(view.data() >= log_.data() && view.data() + view.size() <= log_.data() + log_.size(),
            "a view lies in the log");
  }

  std::span<const std::byte> log_;
  evt_sink& next_;
};

}  // namespace

ZANVIK_FUZZ_TARGET(evt) {
  input in(bytes);
  const auto choice = in.take<std::uint16_t>();
  const auto flags = in.take<std::uint8_t>();
  const exact_bytes log(in.rest());
  ReportCommand pulled;
  pulled.is_evt = true;
  pulled.pull = {"1", "name|2", "x|0", "Data", "x"};
  if (flags & 1) pulled.conditions = {"success_type|4", "1|a"};
  if (flags & 2) pulled.string_exists = "a";
  ReportCommand listing;
  listing.is_evt = listing.all_data = true;
  const std::vector<ReportCommand> commands =
      flags & 3 ? std::vector{pulled, listing} : std::vector{listing};
  record_container records;
  plan_cache plans;
  keeping_sink keeping(commands, records, plans);
  evt_selector selector(commands, keeping);
  looking_sink sink(log.span(), selector);
  walk_evt_log(log.span(), sink);
  write_context context;
  context.log.channel = "system";
  context.log.kind = log_kind::evt;
  context.inc_slack = flags & 8;
  context.show_offsets = flags & 16;
  context.allparams = flags & 32;
  table_cache tables;
  require_tables_agree(records, chosen_format(choice), context, tables);
}

}  // namespace zanvik::fuzz
