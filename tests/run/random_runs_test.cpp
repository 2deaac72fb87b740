// Random logs and command lines: the output of the built program compared with the plain way. Each
// record is decoded by the plain path, compared with the commands by the plain rule, kept without
// knowledge from other records, and written cell by cell.
#include <gtest/gtest.h>

#include <random>

#include "commands/command_build.h"
#include "commands/command_list.h"
#include "evtx/evtx.h"
#include "keep/record_keeper.h"
#include "keep/slack_columns.h"
#include "log_builder.h"
#include "program_run.h"
#include "reference/plain_matching.h"
#include "reference/plain_output.h"
#include "run/log_run.h"

namespace zanvik::testing {
namespace {

class chooser {
 public:
  explicit chooser(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t end) { return random_() % end; }
  bool one_in(std::size_t n) { return below(n) == 0; }
  template <typename T>
  T of(std::initializer_list<T> values) {
    return values.begin()[below(values.size())];
  }
  std::string text() {
    const auto known = of<const char*>({"", "x", "System", "a,b|c", "\n", "\r\nz\t", "{\"a", "0x80",
                                        "\xc3\xa4\xc3\xb6", "4624", " blank ", "\"q\"", "&lt;"});
    return one_in(7) ? std::string(60 + below(700), 'v') : known;
  }
  std::string name() {
    return of<const char*>({"A", "B", "Text", "EventID", "Level", "Provider Name", "SystemTime",
                            "a,b", "Binary", "LogonType", "Channel", "s03"});
  }

 private:
  std::mt19937 random_;
};

slot_value any_value(chooser& choose) {
  const auto number = static_cast<std::uint32_t>(choose.below(choose.one_in(2) ? 9 : 1u << 31));
  switch (choose.below(14)) {
    case 0:
      return slot::uint8(static_cast<std::uint8_t>(number));
    case 1:
      return slot::uint32(number);
    case 2:
      return slot::int64(-std::int64_t{number});
    case 3:
      return slot::hex64(number);
    case 4:
      return slot::boolean(number % 2 != 0);
    case 5:
      return slot::binary(byte_vector(number % 9, std::byte{'x'}));
    case 6:
      return slot::binary(slot::utf16("Disk, C:").bytes);
    case 7:
      return slot::filetime(default_filetime(number));
    case 8:
      return slot::sid(choose.one_in(2) ? "S-1-5-18" : "S-1-5-21-7-500");
    case 9:
      return slot::guid("6b29fc40-ca47-1067-b31d-00dd010662da");
    case 10:
      return slot::multi_utf16({"a", "bc"});
    case 11:
      return slot::null(number % 3);
    default:
      return slot::utf16(choose.text());
  }
}

record_builder any_record(chooser& choose, std::uint64_t number) {
  const std::uint64_t time = filetime(2024, 1, 1) + choose.below(4) * 864'000'000'000;
  if (choose.one_in(6)) {
    return plain_record(number, time, [text = choose.text(), name = choose.name()](auto& x) {
      x.fragment_header().open("Event").close_start().text_element("EventID", "7");
      x.text_element(name, text).open("EventData").close_start();
      x.text_element("Data", "Name", "User", text).end_element().end_element().end_of_stream();
    });
  }
  event made{.event_id = choose.of({1u, 7u, 4624u, 65535u}),
             .provider = choose.of<const char*>({"", "P", "Prov, B"}),
             .level = static_cast<std::uint8_t>(choose.below(6)),
             .filetime = choose.one_in(9) ? 0 : time,
             .user_sid = choose.one_in(2) ? "" : "S-1-5-18",
             .form = choose.of({payload_form::event_data, payload_form::event_data,
                                payload_form::unnamed_event_data, payload_form::user_data,
                                payload_form::none}),
             .classic = choose.one_in(4),
             .nested_head = choose.of({instance_head::with_fragment, instance_head::bare})};
  if (choose.one_in(3)) made.qualifiers = static_cast<std::uint16_t>(choose.below(65536));
  for (std::size_t i = choose.below(5); i > 0; --i) {
    made.data.push_back({choose.name(), any_value(choose)});
  }
  return record(number, made);
}

log_builder any_log(chooser& choose) {
  log_builder log;
  std::vector<record_builder> seen;
  std::uint64_t number = 1 + choose.below(3);
  for (std::size_t chunks = 1 + choose.below(3); chunks > 0; --chunks) {
    chunk_builder chunk;
    for (std::size_t i = 1 + choose.below(12); i > 0; --i) {
      const bool again = !seen.empty() && choose.one_in(2);
      seen.push_back(again ? seen[choose.below(seen.size())] : any_record(choose, number));
      seen.back().number = choose.one_in(30) ? 9000 : number;
      chunk.add(seen.back());
      ++number;
    }
    if (choose.one_in(3)) chunk.slack(any_record(choose, choose.below(20)));
    log.chunk(chunk);
  }
  for (std::size_t i = choose.one_in(3) ? 1 + choose.below(6) : 0; i > 0; --i) {
    const std::size_t begin = log.chunk_offset(0) + (choose.one_in(4) ? 0 : 512);
    log.poke_u8(begin + choose.below(log.size() - begin) % 9000,
                static_cast<std::uint8_t>(choose.of({0u, 1u, 255u, 0x2au})));
  }
  return log;
}

std::vector<std::string> any_options(chooser& choose) {
  std::vector<std::string> words;
  const auto flag = [&](std::size_t n, const char* word) {
    if (choose.one_in(n)) words.emplace_back(word);
  };
  const auto option = [&](std::size_t n, const char* word, std::string value) {
    if (choose.one_in(n)) words.insert(words.end(), {word, std::move(value)});
  };
  if (!choose.one_in(3)) words.emplace_back(choose.of({"-csv", "-csvl2t", "-bodyfile", "-csv"}));
  flag(5, "-enable_quoted_csv_fields");
  flag(4, "-base16");
  flag(4, "-pair_datetime");
  flag(6, "-no_whitespace");
  flag(3, "-show_offsets");
  flag(2, "-inc_slack");
  flag(2, "-allparams");
  flag(4, "-event_time");
  flag(4, "-full_sids");
  option(5, "-csv_separator", choose.of({";", "tab", " , ", "|"}));
  option(5, "-dateformat", choose.of({"mm/dd/yyyy", "yy-mm-dd"}));
  option(5, "-timeformat", choose.of({"hh:mm:ss", "hh:mm:ss.xxxxxxx"}));
  option(5, "-username", choose.text());
  option(4, "-eventid", choose.of({"7", "1|4624", "65535,1", "8"}));
  option(4, "-string", choose.of({"X", "system", "win/2004", "a,B", "true", "Nowhere"}));
  option(5, "-start_time", "01/02/2024");
  option(5, "-stop_time", "01/03/2024 00:00:01");
  return words;
}

// Lines of a command file that overlap.
std::string any_commands(chooser& choose) {
  std::string lines;
  for (std::size_t i = choose.one_in(2) ? 1 + choose.below(4) : 0; i > 0; --i) {
    lines += "!cmd, -enum_evtxlog";
    if (choose.one_in(2)) lines += choose.of({", -id, 7", ", -id, 4624", ", -id, 1"});
    lines += ", -name, c" + std::to_string(i);
    if (choose.one_in(2)) {
      lines += ", -conditions, " + choose.name() + choose.of({"", "|s", "|4", "|X|y"});
    }
    if (choose.one_in(4)) lines += ", -string, " + choose.of<std::string>({"x", "EVENT", "4"});
    if (choose.one_in(3)) {
      lines += ", -all_data";
    } else {
      lines += ", -pull, " + choose.name() + "|" + choose.name() + "|nosuch";
    }
    if (choose.one_in(5)) lines += ", -translate, Binary!vbr";
    lines += "\n";
  }
  return lines;
}

// Keeps what the first command selects, each record with its own caches.
class plain_sink : public record_sink {
 public:
  plain_sink(const command_refs& commands, record_container& records)
      : commands_(commands), records_(records) {}

  void on_record(record_fields& record) override {
    std::string scratch;
    for (const ReportCommand* command : commands_) {
      if (match_record_plainly(*command, record, scratch) && keeps(*command, record)) return;
    }
  }

 private:
  bool keeps(const ReportCommand& command, record_fields& record) {
    record_container own;
    plan_cache plans;
    record_keeper keeper(command, own, plans);
    const bool after_slack = std::exchange(record.after_slack, false);
    (void)keeper.translate(record);
    const bool kept = keeper.keep(record);
    record.after_slack = after_slack;
    if (!kept || own.empty()) return kept;
    LogRecord copy = own.last();
    column_map columns = columns_of(copy);
    if (after_slack) add_slot_columns(columns, copy.flags, record);
    if (after_slack && record.plain && record.in_slack) clean_slack_columns(columns);
    pack_columns(copy, columns, records_);
    for (const std::string** text : {&copy.provider, &copy.description}) {
      *text = records_.intern_text(**text);
    }
    records_.add(copy);
    return true;
  }

  const command_refs& commands_;
  record_container& records_;
};

// The commands of the run for the current log: those of the command file, else a listing.
CommandSet commands_of(log_run& run) {
  const evt_output_options& options = run.options;
  CommandSet set;
  if (!options.cmd_file.empty()) {
    CommandList list;
    read_command_file(list, options.cmd_file);
    log_source log = run.log;
    const log_classifier classifier = [&](log_source& named, const std::string& path) {
      LogEntry entry;
      const bool known = classify_log(entry, path, run.probe);
      named = source_of(entry);
      return known;
    };
    build_command_set(set, list,
                      {log, options.selection, options.format, options.hist_fields, classifier},
                      false);
    return set;
  }
  ReportCommand listing;
  listing.all_data = true;
  listing.log_path = run.log.path;
  listing.start_time = options.selection.start_time;
  listing.stop_time = options.selection.stop_time;
  listing.string_exists = options.selection.substring;
  for (const std::uint64_t id : options.selection.event_ids) {
    listing.event_id = id;
    set.emplace("", listing);
  }
  return set;
}

// The output that the program should write after its first two lines.
std::string plain_results(std::vector<std::string> words) {
  words.insert(words.begin(), "zanvik");
  evt_output_options options;
  EXPECT_TRUE(options.parse_log_options(words, "", ""));
  std::ostringstream out;
  log_run run(options, out);
  bool header_pending = true;
  for (const auto& [path, log] : run.logs) {
    run.log = source_of(log);
    const CommandSet set = commands_of(run);
    if (set.empty()) continue;
    command_refs commands;
    for (const auto& [key, command] : set) commands.add(command);
    record_container records;
    plain_sink sink(commands, records);
    walk_settings settings;
    settings.inc_slack = options.inc_slack;
    settings.reading = options.reading;
    const std::string text = file_text(path);
    byte_vector bytes = bytes_of(std::string_view(text).substr(file_header_bytes));
    record_reader reader(options.format, false);
    walk_evtx_block(bytes, file_header_bytes, reader, sink, settings);
    if (records.empty()) continue;
    const write_context context{.log = run.log,
                                .inc_slack = options.inc_slack,
                                .show_offsets = options.show_offsets,
                                .allparams = options.allparams,
                                .username = options.username,
                                .program_name = "zanvik"};
    const auto ordered = records.in_time_order();
    if (options.format.output_l2t || options.format.output_bodyfile) {
      write_plain_timeline(out, ordered, options.format, context, header_pending);
    } else {
      write_plain_tables(out, ordered, options.format, context);
    }
  }
  return out.str();
}

TEST(random_runs, write_what_the_plain_way_writes) {
  const scratch_dir scratch;
  std::size_t rows = 0;
  for (unsigned seed = 1; seed <= 150; ++seed) {
    chooser choose(seed);
    std::string logs;
    for (std::size_t i = 1 + choose.below(2); i > 0; --i) {
      const std::string path = scratch.path(choose.of({"security", "x"}) + std::to_string(i));
      any_log(choose).write(path);
      logs += path + "|";
    }
    auto words = any_options(choose);
    words.insert(words.end(), {"-quiet", "-log", logs});
    const std::string commands = any_commands(choose);
    if (!commands.empty()) words.insert(words.end(), {"-cmdfile", scratch.write("c", commands)});
    const program_run run = run_zanvik(words);
    const std::string results = run.out.substr(run.out.find("\"\n\n") + 3);
    std::string line;
    for (const std::string& word : words) line += word + " ";
    ASSERT_EQ(results, plain_results(words)) << "seed " << seed << ": " << line << "\n" << commands;
    rows += results.size() / 100;
  }
  EXPECT_GT(rows, 500u);
}

}  // namespace
}  // namespace zanvik::testing
