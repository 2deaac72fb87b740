// The whole run, by the program's own entry: the first bytes choose the options, the rest is the
// log. Results go to /dev/null. The log is a file in memory, under names in a scratch folder,
// because a log's name decides its channel.
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "fuzz_target.h"
#include "run/driver.h"
#include "scratch_dir.h"

namespace zanvik::fuzz {
namespace {

constexpr const char* log_names[] = {"security.evtx", "system.evtx", "driverframeworks-usermode",
                                     "any"};

constexpr std::string_view command_text =
    "!cmd, -enum_evtxlog, -id, 4624, -name, logon, -pull, TargetUserName, -pull, Text\n"
    "!cmd, -enum_evtlog, -all_data, -conditions, success_type|4\n"
    "!cmd, -enum_evtxlog, -translate, Vbr0!vbr|Mbr!mbr|PartitionTable!vtbl|Bytes!tf, -hist, Text\n"
    "!cmd, -enum_evtxlog, -all_data, -success_type, information, -string_exists, a\n";

// What stays the same for all inputs of a process.
class stage {
 public:
  stage() : log_(::memfd_create("log", 0)) {
    require(log_ != -1, "a file in memory can be had");
    const std::string target = "/proc/self/fd/" + std::to_string(log_);
    for (const char* name : log_names) {
      require(::symlink(target.c_str(), scratch_.path(name).c_str()) == 0, "a link can be made");
    }
    scratch_.write("commands", command_text);
  }
  ~stage() { ::close(log_); }

  void set_log(std::span<const std::byte> bytes) const {
    const bool written = ::ftruncate(log_, 0) == 0 && ::lseek(log_, 0, SEEK_SET) == 0 &&
                         ::write(log_, bytes.data(), bytes.size()) == std::ssize(bytes);
    require(written, "the log is written");
  }
  std::string path(const char* name) const { return scratch_.path(name); }

 private:
  testing::scratch_dir scratch_;
  int log_;
};

// The words for a byte of choice: bits select flags, numbers one row of a table.
using words = std::vector<std::string>;

void add_flags(words& args, std::uint8_t bits, std::span<const char* const> names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (bits & (1u << i)) args.emplace_back(names[i]);
  }
}

void add_form(words& args, std::uint8_t choice) {
  static const words forms[] = {
      {},          {"-csv"}, {"-csvl2t"},   {"-bodyfile"}, {"-bodyfile", "-allparams"},
      {"-csvgen"}, {"-xml"}, {"-multiline"}};
  static const words texts[] = {{},
                                {"-dateformat", "mm/dd/yyyy"},
                                {"-dateformat", "dd-mmm-yyy", "-timeformat", "hh:mm:ss.xxxxxxx"},
                                {"-timeformat", "ss:xxxxxxxxxxxx"},
                                {"-csv_separator", "\t"},
                                {"-enable_quoted_csv_fields"},
                                {"-no_whitespace"},
                                {"-csv_separator", "|", "-pair_datetime"}};
  const words& form = forms[choice & 7];
  const words& text = texts[(choice >> 3) & 7];
  args.insert(args.end(), form.begin(), form.end());
  args.insert(args.end(), text.begin(), text.end());
}

void add_selection(words& args, std::uint8_t choice) {
  static const words selections[] = {{},
                                     {"-string", "a"},
                                     {"-string", "S-1-5"},
                                     {"-eventid", "4624, 7, 6005"},
                                     {"-start_time", "01/15/2024 08:00:00"},
                                     {"-stop_time", "01/15/2024 08:00:01", "-string", "text"},
                                     {"-eventid", "6005|7", "-rec_start", "2", "-rec_id", "1 2"},
                                     {"-eventid", "7", "-string", "\xff"}};
  const words& selection = selections[choice & 7];
  args.insert(args.end(), selection.begin(), selection.end());
}

}  // namespace

ZANVIK_FUZZ_TARGET(run) {
  static const stage here;
  static constexpr const char* reports[] = {
      "-pw", "-time", "-logon", "-startstop", "-creds", "-usb", "-partition_metadata"};
  static constexpr const char* flags[] = {"-inc_slack", "-show_offsets", "-base16"};
  input in(bytes);
  words args{"zanvik", "-out", "/dev/null"};
  const auto form = in.take<std::uint8_t>();
  const auto report = in.take<std::uint8_t>();
  const auto select = in.take<std::uint8_t>();
  const auto log = in.take<std::uint8_t>();
  add_form(args, form);
  add_flags(args, report, reports);
  if (report & 0x80) args.insert(args.end(), {"-cmdfile", here.path("commands")});
  add_selection(args, select);
  add_flags(args, select >> 3, flags);
  if (select & 0x40) args.insert(args.end(), {"-stats", "/dev/null"});
  if (select & 0x80)
    args.insert(args.end(), {"-hist", form & 0x40 ? "Text" : "TargetUserName|LogonType"});
  if (form & 0x80) args.insert(args.end(), {"-diags", "/dev/null", "-l2"});
  args.insert(args.end(), {"-log", here.path(log_names[log & 3])});
  if (log & 0x80) {
    here.set_log(in.rest());  // as it is: mostly a legacy log
  } else {
    here.set_log(unpacked_log(in.rest(), log >> 2));
  }
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  (void)run_program(static_cast<int>(argv.size()), argv.data());
}

}  // namespace zanvik::fuzz
