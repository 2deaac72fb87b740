// Writes the inputs that fuzzing starts from, a folder for each target, into the folder named on
// the command line: make_seeds FOLDER. The tests' log builders make all of them.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include "../tests/support/disk_bytes.h"
#include "evt_builder.h"
#include "fuzz_target.h"
#include "log_builder.h"

namespace zanvik::testing {
namespace {

class seed_folder {
 public:
  explicit seed_folder(std::filesystem::path root) : root_(std::move(root)) {}

  // `choices` are the leading bytes from which a target takes its options.
  void add(const char* parser, const std::string& name, std::initializer_list<int> choices,
           std::span<const std::byte> bytes) const {
    const auto folder = root_ / parser;
    std::filesystem::create_directories(folder);
    std::ofstream out(folder / name, std::ios::binary);
    for (const int choice : choices) out.put(static_cast<char>(choice));
    out.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    if (!out.flush()) throw std::runtime_error("cannot write " + (folder / name).string());
  }
  void add(const char* parser, const std::string& name, std::initializer_list<int> choices,
           std::string_view text) const {
    add(parser, name, choices, std::as_bytes(std::span(text)));
  }

 private:
  std::filesystem::path root_;
};

event in_channel(const char* channel, std::uint32_t id, std::vector<data_field> data) {
  return {.event_id = id, .channel = channel, .data = std::move(data)};
}

// Eight bytes of a time, followed by text.
byte_vector time_bytes() {
  byte_vector bytes;
  append_u64(bytes, default_filetime(1));
  append_utf16(bytes, "hidden");
  return bytes;
}

std::vector<data_field> many_types() {
  return {{"Text", slot::utf16("a\nb, c|d")},
          {"Bytes", slot::binary(time_bytes())},
          {"Ansi", slot::ansi("narrow")},
          {"Int", slot::int32(-5)},
          {"Long", slot::uint64(~0ull)},
          {"Float", slot::float64(-2.5)},
          {"Guid", slot::guid("6b29fc40-ca47-1067-b31d-00dd010662da")},
          {"Size", slot::size64(7)},
          {"Time", slot::filetime(default_filetime(1))},
          {"System", slot::systemtime(2024, 2, 29, 23, 59, 58, 7, 4)},
          {"Sid", slot::sid("S-1-5-21-1-2-3-500")},
          {"Hex", slot::hex32(0xc000006d)},
          {"Multi", slot::multi_utf16({"one", "two"})}};
}

void plain_event(bxml_builder& x, element_form form) {
  x.fragment_header().open("Event", form).close_start().open("System", form).close_start();
  x.open_with_attributes("Provider", form).attribute("Name").value("P").close_empty();
  x.open("EventID", form).close_start().value("709").end_element();
  x.open_with_attributes("TimeCreated", form).attribute("SystemTime");
  x.value("2024-06-03T10:05:59.7654321Z").close_empty().end_element();
  x.open("EventData", form).close_start();
  x.open_with_attributes("Data", form).attribute("Name").value("Text").close_start();
  x.value("a ", true).entity_ref("lt", true).char_ref(10, true).value(" c").end_element();
  x.open("Data", form).close_start().value("unnamed").end_element();
  x.open("Binary", form).close_start().value("0A0B0C").end_element();
  x.end_element().end_element().end_of_stream();
}

log_builder mixed_log() {
  const event named{.event_id = 7, .data = {{"Text", slot::utf16("a\nb")}}};
  event classic = named;
  classic.classic = true;
  classic.form = payload_form::unnamed_event_data;
  event user = named;
  user.form = payload_form::user_data;
  user.nested_head = instance_head::bare;
  chunk_builder first({record(1, named), record(2, classic), record(3, user), record(4, named)});
  first.slack(record(9, user)).slack(plain_record(10, default_filetime(10), [](bxml_builder& x) {
    plain_event(x, element_form::with_id);
  }));
  const auto form = element_form::without_id;
  return log_builder().chunk(first).chunk(
      {record(5, named), record(6, user),
       plain_record(7, default_filetime(7), [](bxml_builder& x) { plain_event(x, form); })});
}

log_builder typed_log() {
  event all{.event_id = 7, .data = many_types()};
  return log_builder().chunk({record(1, all), record(2, all)});
}

log_builder plain_log() {
  return log_builder().chunk(
      {plain_record(1, default_filetime(1),
                    [](bxml_builder& x) { plain_event(x, element_form::with_id); }),
       plain_record(2, default_filetime(2),
                    [](bxml_builder& x) { plain_event(x, element_form::inline_name); })});
}

// Damage followed by an empty candidate, and a chunk that declares endless records.
log_builder damaged_log() {
  auto log = log_builder().chunk(
      chunk_builder({record(7), record(8), raw_record(9, default_filetime(9), byte_vector(16)),
                     record(10), record(11)})
          .declare(7, ~std::uint64_t{0} - 1));
  for (const std::size_t record : {1, 3}) log.poke_u32(log.record_offset(0, record), 0);
  return log;
}

// What the built-in reports look for.
log_builder security_log() {
  const std::vector<data_field> who = {{"TargetUserName", slot::utf16("anna")},
                                       {"TargetUserSid", slot::sid("S-1-5-21-1-2-3-500")},
                                       {"LogonType", slot::uint32(3)},
                                       {"IpAddress", slot::utf16("10.0.0.1")}};
  return log_builder().chunk(
      {record(1, in_channel("Security", 4624, who)), record(2, in_channel("Security", 4724, who)),
       record(3, in_channel("Security", 4616, who)), record(4, in_channel("Security", 4648, who))});
}

log_builder system_log() {
  event start = in_channel("System", 6005, {{"", slot::utf16("x")}, {"Binary", slot::binary({})}});
  start.provider = "EventLog";
  start.classic = true;
  start.form = payload_form::unnamed_event_data;
  event resume = in_channel("System", 1,
                            {{"SleepTime", slot::filetime(default_filetime(1))},
                             {"WakeTime", slot::filetime(default_filetime(2))}});
  resume.provider = "Microsoft-Windows-Power-Troubleshooter";
  return log_builder().chunk({record(1, start), record(2, resume)});
}

log_builder partition_log() {
  byte_vector drives(48 + 144);
  set_u32(drives, 4, 1);
  set_u64(drives, 48 + 16, 5);
  const byte_vector mbr = disk_bytes(512, {{0, 0, 7, 1, 8}, {0, 1, 12, 9, 8}});
  return log_builder().chunk({record(1, in_channel("Microsoft-Windows-Partition/Diagnostic", 1006,
                                                   {{"Mbr", slot::binary(mbr)},
                                                    {"Vbr0", slot::binary(ntfs_sector())},
                                                    {"PartitionTable", slot::binary(drives)},
                                                    {"PartitionTableBytes", slot::uint32(192)}}))});
}

evt_builder legacy_log() {
  evt_builder log;
  log.add({.event_id = 528,
           .source = "Security",
           .sid = "S-1-5-21-1-2-3-500",
           .strings = {"anna", "FABRIKAM", "2", "a\nb,c|d"},
           .data = bytes_of({1, 2, 3})});
  log.add({.event_id = 0x80001771, .event_category = 1, .strings = {"", "x"}});
  log.add({.event_id = 529, .strings = {"1"}, .num_strings = 40});
  return log.cursor();
}

std::span<const std::byte> chunk_of(const byte_vector& packed) {
  return std::span(packed).subspan(
      2, std::to_integer<std::size_t>(packed[0]) + 256 * std::to_integer<std::size_t>(packed[1]));
}

void add_logs(const seed_folder& seeds) {
  struct named_log {
    const char* name;
    log_builder log;
  };
  const named_log logs[] = {{"mixed", mixed_log()},    {"typed", typed_log()},
                            {"plain", plain_log()},    {"security", security_log()},
                            {"system", system_log()},  {"partition", partition_log()},
                            {"damaged", damaged_log()}};
  for (const auto& [name, log] : logs) {
    const byte_vector packed = zanvik::fuzz::packed_log(log.bytes());
    const auto chunk = chunk_of(packed);
    seeds.add("evtx", name, {1}, packed);
    seeds.add("forms", name, {1}, packed);
    seeds.add("chunk", name, {1}, chunk);
    seeds.add("carve", name, {16 + 8, 200, 7}, packed);
    seeds.add("carve", std::string(name) + "_cut", {1, 0, 2}, chunk.subspan(0, chunk.size() / 2));
    seeds.add("carve", std::string(name) + "_rest", {0, 1, 2}, chunk.subspan(512));
    seeds.add("ledger", name, {0}, packed);
    seeds.add("table", name, {1, 0, 0}, packed);
    seeds.add("table", std::string(name) + "_provider", {0, 0, 0x0b}, packed);
    seeds.add("table", std::string(name) + "_pulled", {2, 8, 0x3a}, packed);
    // Name of the log: the first for security, the second for the system, else any.
    const int log_name = *name == 's' ? (name[1] == 'y' ? 1 : 0) : 3;
    seeds.add("run", name, {0x41, 0, 0xc8, log_name}, packed);
    seeds.add("run", std::string(name) + "_padded", {0x80, 0, 0xd0, log_name}, packed);
    seeds.add("run", std::string(name) + "_reports", {2, 0xff, 0xc0, log_name}, packed);
  }
  const auto legacy = legacy_log();
  seeds.add("carve", "legacy", {0, 9, 0}, legacy.bytes());
  seeds.add("ledger", "legacy", {1}, legacy.bytes());
  seeds.add("evt", "listing", {1, 0, 0}, legacy.bytes());
  seeds.add("evt", "pulled", {0, 0, 0x3b}, legacy.bytes());
  seeds.add("forms", "legacy", {0x80, 4}, legacy.bytes());
  seeds.add("run", "legacy", {0, 0xff, 0x40, 0x80}, legacy.bytes());
  seeds.add("run", "legacy_listing", {4, 0, 0, 0x80}, legacy.bytes());
}

// A stream that begins its chunk, so that its offsets are right.
byte_vector stream(const bxml_writer& write) {
  byte_vector bytes;
  chunk_tables tables;
  bxml_builder builder(bytes, tables);
  write(builder);
  return bytes;
}

void add_streams(const seed_folder& seeds) {
  const auto plain = [](element_form form) {
    return stream([form](bxml_builder& x) { plain_event(x, form); });
  };
  seeds.add("bxml", "plain", {0, 0, 0}, plain(element_form::with_id));
  seeds.add("bxml", "without_id", {16, 200, 0}, plain(element_form::without_id));
  seeds.add("bxml", "inline", {8, 0, 0}, plain(element_form::inline_name));
  event user{.form = payload_form::user_data, .data = many_types()};
  event data = user;
  data.form = payload_form::event_data;
  for (const event& content : {user, data}) {
    const auto whole = stream([&](bxml_builder& x) {
      x.fragment_header().template_instance(system_template(content), system_slots(1, content));
    });
    const std::string name = content.form == payload_form::user_data ? "user" : "data";
    seeds.add("bxml", name + "_record", {2, 0, 0}, whole);
    seeds.add("bxml", name + "_stream", {0, 0, 0}, whole);
  }
  // A table of two slots, followed by the stream that names them.
  seeds.add("bxml", "slots", {1, 0, 0}, stream([](bxml_builder& x) {
              x.slot_table({slot::uint16(7), slot::utf16("x")});
              x.fragment_header().open("A").close_start().normal_sub(0, 6).end_element();
              x.open("B", element_form::with_id, 1).close_start().optional_sub(1, 1);
              x.end_element().end_of_stream();
            }));
}

void add_values(const seed_folder& seeds) {
  for (const auto& [name, value] : many_types()) {
    byte_vector head;
    append_u16(head, value.type);
    append_u16(head, static_cast<std::uint16_t>(value.bytes.size()));
    append_bytes(head, value.bytes);
    seeds.add("value", name, {}, head);
  }
}

void add_texts(const seed_folder& seeds) {
  seeds.add("command", "listing", {0},
            "!cmd, -enum_evtxlog, -id, 7, -name, x, -pull, Text, -pull, Bytes, "
            "-conditions, Text|a, -translate, Bytes!tf#0x0|Text!mbr\n");
  seeds.add("command", "several", {2},
            "// a comment\n!cmd, -enum_evtxlog, -all_data, -success_type, information\n"
            "!cmd, -enum_evtxlog, -log, y, -string_exists, b, -start_time, 2024-01-15 08:00:00, "
            "-stop_time, 2024-01-16, -hist, Text|EventID, -type, sec\n!cmd,-enum_evtlog\n"
            "!cmd, !run-x, -comment, a;b, -enum_evtxlog, -id, 100, -conditions, Text\n");
  seeds.add("filter", "terms", {}, "*.evtx|sec*|/logs:*str*\n/a/b/sec.evtx\n2024-01-15 08:00:00\n");
  seeds.add("filter", "all", {}, "*, *.log:*\n\\a\\..\n2024/1/15\n");
  seeds.add("filter", "signature", {}, "45 6c 0x66 | x10\n..\n15-01\n");
  seeds.add("filter", "references", {}, "%PATH%;%vss%/a \"b c\" d\nC:\\a.b\n\n");
  constexpr const char* texts[] = {
      "03/01/2012 12:34:56\nyyyy-mm-dd\nhh:mm:ss.xxx\n",
      "29-feb-12 1:02:03.5 pm\ndd-mmm-yy\nhh:mm:ss.xxxxxxx\n",
      "2012-03-01T12:34:56.1234567Z\nmmm dd, yyyy\nhh:mm\n",
      "2012/March/1 12:30 am\nmm/dd/yyyy\nss.xxxxxxxxx\n",
      "0x1f\nyy.mm.dd\n\n",
  };
  int number = 0;
  for (const char* text : texts) {
    byte_vector bytes;
    append_u64(bytes, default_filetime(1) + 1234567);
    append_bytes(bytes, bytes_of(text));
    seeds.add("date", std::to_string(++number), {}, bytes);
  }
}

byte_vector volume(std::size_t at, std::string_view name, std::size_t size = 512) {
  byte_vector bytes(size);
  put_text(bytes, 3, "MSDOS5.0");
  put_text(bytes, at, name);
  set_u16(bytes, 510, 0xaa55);
  return bytes;
}

void add_rules(const seed_folder& seeds) {
  constexpr const char* head = "title: t\nname: n\nlogsource: {product: windows}\ndetection:\n";
  const auto add = [&](const char* name, const std::string& detection, const char* events) {
    seeds.add("sigma", name, {0}, head + detection + "%%\n" + events);
  };
  add("texts",
      "  s:\n    A|contains|all: [b, 'c?d']\n    B|startswith: 'x*y'\n  f: {A|cased: Q}\n"
      "  condition: s and not 1 of f*\n",
      "A=abcxd\nB=x1y\n\nA=Q\n\n");
  add("types",
      "  s: [{A|re|i: 'a+(b|c)'}, {A|cidr: 10.0.0.0/8}, {A|gt: 5}, {A|exists: false}]\n"
      "  t: {A|fieldref|endswith: B}\n  condition: [s, t]\n",
      "A=aac\n\nA=10.1.2.3\nB=3\n\nA=0x7\n\n");
  add("encodings",
      "  s: {A|wide|base64offset|contains: 'cmd', A|windash|contains: ' -e', A|utf16|base64: x}\n"
      "  k: {'|all': [one, two]}\n  condition: s or k\n",
      "A=xYwBtAGQA /e\n\nB=one two\n");
  add("placeholders", "  s: {A|expand: '%name%\\%'}\n  t: {A: null}\n  condition: s or t\n",
      "A=ax%\n");
  seeds.add("sigma", "correlation", {0},
            std::string(head) + "  s: {A: 1}\n  condition: s\n---\ntitle: c\ncorrelation:\n"
            "  type: value_avg\n  rules: [n]\n  group-by: [B]\n  timespan: 5m\n"
            "  aliases: {B: {n: C}}\n  condition: {field: D, gte: 2.5}\n---\ntitle: f\n"
            "logsource: {product: windows}\nfilter: {rules: [n], s: {B: 2}, condition: s}\n");
  seeds.add("sigma", "aliases", {0}, "a: &a [1, 2]\nb: [*a, *a]\n---\n- {x: y}\n...\n%%\n");
  for (int i = 0; i < 4; ++i) {
    byte_vector bytes;
    for (int k = 0; k < 300; ++k) append_u8(bytes, static_cast<std::uint8_t>(k * (37 + 2 * i) + i));
    seeds.add("sigma", "alphabet_" + std::to_string(i), {1}, bytes);
  }
}

void add_disks(const seed_folder& seeds) {
  seeds.add("disk", "ntfs", {4, 0, 0}, ntfs_sector());
  seeds.add("disk", "exfat", {0, 0, 0x80}, volume(3, "EXFAT   "));
  seeds.add("disk", "bitlocker", {0, 0, 0}, volume(3, "-FVE-FS-"));
  seeds.add("disk", "fat32", {0, 0, 0}, volume(82, "FAT32   "));
  seeds.add("disk", "fat16", {0, 0, 0}, volume(54, "FAT16   "));
  byte_vector ext(1104);
  set_u16(ext, 1024 + 56, 0xef53);
  seeds.add("disk", "ext", {2, 0, 0}, ext);
  put_text(ext, 3, "code");
  seeds.add("disk", "ext_behind_code", {2, 0, 0}, ext);
  byte_vector hfs(1026);
  set_u16(hfs, 1024, 0x2b48);
  seeds.add("disk", "hfs", {2, 0, 0}, hfs);
  byte_vector chain = disk_bytes(
      1536, {{0, 0, 7, 1, 1}, {0, 1, 5, 1, 9}, {1, 0, 6, 1, 1}, {1, 1, 15, 1, 9}, {2, 0, 6, 1, 1}});
  seeds.add("disk", "chain", {3, 0, 0}, chain);
  chain.insert(chain.begin(), 512, std::byte{0});
  seeds.add("disk", "chain_behind", {3, 0, 0}, chain);
  byte_vector large = disk_bytes(4096, {{0, 0, 7, 1, 1}}, 4096);
  seeds.add("disk", "large_sectors", {3, 0, 0}, large);
  byte_vector drives(48 + 144 * 2);
  set_u32(drives, 4, 2);
  set_u32(drives, 8, 5);
  set_u64(drives, 48 + 16, 5);
  set_u64(drives, 48 + 144 + 16, 5);
  seeds.add("disk", "drives", {0, 0, 0}, drives);
  set_u32(drives, 48 + 40, 5);
  seeds.add("disk", "drives_mbr", {4, 0, 0x80}, drives);
  seeds.add("disk", "time", {0, 0, 0}, time_bytes());
}

}  // namespace
}  // namespace zanvik::testing

int main(int argc, char** argv) {
  using namespace zanvik::testing;
  if (argc != 2) {
    std::fputs("usage: make_seeds FOLDER\n", stderr);
    return 1;
  }
  try {
    const seed_folder seeds{argv[1]};
    add_logs(seeds);
    add_streams(seeds);
    add_values(seeds);
    add_texts(seeds);
    add_rules(seeds);
    add_disks(seeds);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return 1;
  }
  return 0;
}
