// A command file's text, and its commands applied to a small log: the selector compared with the
// plain rule.
#include "commands/command_build.h"
#include "fuzz_target.h"
#include "keep/keeping_sink.h"
#include "log_builder.h"
#include "reference/plain_matching.h"
#include "select/evtx_selector.h"

namespace zanvik::fuzz {
namespace {

// Chunk of five records: named data, unnamed data, user data, named data, none with a template.
std::vector<std::byte> small_chunk() {
  using namespace testing;
  const event named{.event_id = 7,
                    .data = {{"Text", slot::utf16("a\nb, c")},
                             {"Bytes", slot::binary(bytes_of({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}))}}};
  event classic = named;
  classic.classic = true;
  classic.form = payload_form::unnamed_event_data;
  event user = named;
  user.form = payload_form::user_data;
  const bxml_writer plain = [](bxml_builder& x) {
    x.fragment_header().open("Event").close_start();
    x.text_element("EventID", "7").text_element("Text", "a").end_element().end_of_stream();
  };
  const auto built = chunk_builder({testing::record(1, named), testing::record(2, classic),
                                    testing::record(3, user), testing::record(4),
                                    plain_record(5, default_filetime(5), plain)})
                         .build();
  return {built.bytes.begin(), built.bytes.end()};
}

// Compares each kept record with the plain rule; refuses commands whose translators change a record
// on the way.
class judging_sink : public record_sink {
 public:
  judging_sink(const std::vector<ReportCommand>& commands, record_container& records)
      : commands_(commands),
        records_(records),
        keeping_(commands, records, plans_),
        selector_(commands, keeping_) {}

  void on_record(record_fields& record) override {
    std::vector<bool> fits;
    for (const ReportCommand& command : commands_) {
      fits.push_back(match_record_plainly(command, record, scratch_));
    }
    const std::size_t before = records_.size();
    selector_.on_record(record);
    for (std::size_t i = 0; i < commands_.size(); ++i) {
      if (!commands_[i].translators.empty()) return;  // from here on it may be another record
      if (!fits[i]) continue;
      if (records_.size() != before && records_.last().report_entry_id == commands_[i].index)
        return;
      require(!commands_[i].pull.empty() || !commands_[i].emit, "the first that fits keeps it");
    }
    require(records_.size() == before, "what is kept fits a command");
  }

 private:
  const std::vector<ReportCommand>& commands_;
  record_container& records_;
  plan_cache plans_;
  keeping_sink keeping_;
  evtx_selector selector_;
  std::string scratch_;
};

}  // namespace

ZANVIK_FUZZ_TARGET(command) {
  input in(bytes);
  const auto flags = in.take<std::uint8_t>();
  const exact_bytes text(in.rest());
  CommandList list;
  read_command_text(list, text_of(text.span()));
  const log_source known{"security.evtx", "security", flags & 1 ? log_kind::evt : log_kind::evtx};
  log_source log = known;
  const log_classifier classify = [&known](log_source& found, const std::string& path) {
    found = known;
    found.path = path;
    return !path.starts_with('x');
  };
  selection_options selection;
  if (flags & 2) selection.substring = "a";
  output_format format;
  const std::vector<std::string> hist_fields;
  CommandSet set;
  (void)build_command_set(set, list, {log, selection, format, hist_fields, classify}, false);
  std::vector<ReportCommand> commands;
  for (const auto& [path, command] : set) commands.push_back(command);
  if (known.kind != log_kind::evtx) return;
  static const std::vector<std::byte> bytes_of_chunk = small_chunk();
  exact_bytes chunk(bytes_of_chunk);
  record_container records;
  judging_sink sink(commands, records);
  record_reader reader(format);
  walk_evtx_block(chunk.span(), 0, reader, sink, {});
}

}  // namespace zanvik::fuzz
