// The records of up to three logs of one chunk each, selected and written as tables and timelines:
// what is known from one log is used for the next.
#include "keep/keeping_sink.h"
#include "select/evtx_selector.h"
#include "tables.h"

namespace zanvik::fuzz {
namespace {

std::vector<ReportCommand> chosen_commands(std::uint8_t choice) {
  ReportCommand listing;
  listing.index = 0;
  listing.all_data = true;
  listing.skip_system_fields = choice & 1;
  if (!(choice & 6)) return {listing};
  ReportCommand pulled;
  pulled.index = 1;
  pulled.name = "a caption, with marks | in it";
  pulled.pull = {"Text", "EventID", "Data [1]", "Provider Name", "A", "Bytes", "text"};
  if (choice & 2) pulled.translators["Bytes"] = {translate_kind::tf, 0, 0, false};
  if (choice & 4) pulled.string_exists = "x";
  if (choice & 1) pulled.pull = {"Provider Name", "Text"};
  return {pulled, listing};
}

}  // namespace

ZANVIK_FUZZ_TARGET(table) {
  input in(bytes);
  const auto choice = in.take<std::uint16_t>();
  const auto flags = in.take<std::uint8_t>();
  const output_format format = chosen_format(choice);
  const std::vector<ReportCommand> commands = chosen_commands(flags & 7);
  write_context context;
  context.log.channel = "application";
  context.inc_slack = flags & 8;
  context.show_offsets = flags & 16;
  context.allparams = flags & 32;
  walk_settings settings;
  settings.inc_slack = context.inc_slack;
  record_container records;
  record_reader reader(format);
  plan_cache plans;
  table_cache tables;
  exact_bytes logs(unpacked_log(in.rest(), log_without_header));
  for (std::size_t at = 0; at < logs.span().size(); at += evtx_layout::chunk_bytes) {
    records.clear_records();
    plans.drop_if_full();
    const auto chunk = logs.span().subspan(at, evtx_layout::chunk_bytes);
    std::memcpy(chunk.data(), &evtx_layout::chunk_signature, 8);
    keeping_sink keeping(commands, records, plans);
    evtx_selector selector(commands, keeping);
    walk_evtx_block(chunk, 0, reader, selector, settings);
    require_tables_agree(records, format, context, tables);
  }
}

}  // namespace zanvik::fuzz
