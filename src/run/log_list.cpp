#include "run/log_list.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/byte_cursor.h"
#include "base/fileio.h"
#include "base/path_text.h"
#include "base/text.h"
#include "base/text_split.h"
#include "evt/evt_record.h"
#include "evtx/container/chunk.h"

namespace zanvik {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t signature_head_bytes = 16;
constexpr std::string_view evt_file_head = "\x30\0\0\0LfLe"sv;
constexpr std::string_view evtx_file_head = "ElfFile\0"sv;
// In the chunk: where the first record's binary XML, if it is a template instance, refers to its
// definition.
constexpr std::uint64_t first_definition_at =
    evtx_layout::chunk_header_bytes + evtx_layout::record_header_bytes + 10;
constexpr std::size_t evt_header_bytes = 48;
// The first record of a legacy log must have a length within these bounds, in bytes.
constexpr std::uint32_t evt_record_bytes_min = 60;
constexpr std::uint32_t evt_record_bytes_max = 4096;
constexpr std::size_t evt_head_bytes = evt_header_bytes + evt_record_bytes_max;

bool starts_with(std::span<const std::byte> bytes, std::string_view signature) {
  return bytes.size() >= signature.size() &&
         std::memcmp(bytes.data(), signature.data(), signature.size()) == 0;
}

// The channel of a log with a well-known name, whatever its content. The first row whose text is
// anywhere in the name decides.
std::optional<std::string> channel_from_name(std::string_view name) {
  struct known_name {
    std::string_view part;
    std::string_view channel;
  };
  static constexpr std::array<known_name, 7> known = {{
      {"security.", "security"},
      {"secevent.", "security"},
      {"system.", "system"},
      {"sysevent.", "system"},
      {"application.", "application"},
      {"appevent.", "application"},
      {"driverframeworks-usermode", "driverframeworks"},
  }};
  for (const known_name& row : known) {
    if (name.find(row.part) != std::string_view::npos) return std::string(row.channel);
  }
  return std::nullopt;
}

// Sets `channel` to the one in the first record; without a channel it is unchanged. Returns false
// if the log has no whole chunk, or if that element is not closed.
bool channel_from_evtx(channel_finder& channels, const head_reader& first, std::string& channel) {
  constexpr std::size_t wanted = log_file::most_bytes;
  const auto head = first(wanted);
  if (head.size() < wanted) return false;
  const auto chunk = head.subspan(evtx_layout::file_header_bytes);
  const byte_cursor cursor(chunk);
  if (cursor.at<std::uint64_t>(0) != evtx_layout::chunk_signature) return false;
  if (cursor.at_or_zero<std::uint32_t>(first_definition_at) > wanted) return false;
  found_channel found = channels.find(chunk);
  if (!found.text) return found.closed;
  channel = *std::move(found.text);
  remove_char(channel, '"');
  if (channel.find("driverframeworks-usermode") != std::string::npos) channel = "driverframeworks";
  return true;
}

// True if the zero-terminated UTF-16 text at the start of `units` is `text` in any case.
bool is_wide_text(std::span<const std::byte> units, std::string_view text) {
  const byte_cursor cursor(units);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto unit = cursor.at_or_zero<std::uint16_t>(2 * i);
    if (unit > 0x7f || lower_char(static_cast<char>(unit)) != text[i]) return false;
  }
  return cursor.at_or_zero<std::uint16_t>(2 * text.size()) == 0;
}

bool channel_from_evt(const head_reader& first, std::string& channel) {
  const auto head = first(evt_head_bytes);
  const byte_cursor cursor(head);
  const auto length = cursor.at_or_zero<std::uint32_t>(evt_header_bytes);
  if (length < evt_record_bytes_min || length > evt_record_bytes_max) return false;
  // This is four bytes into the source name, so it is hardly ever "security". It is meant: most
  // legacy logs are recognised by their file name.
  constexpr std::size_t text_at = evt_header_bytes + evt_layout::record_head_bytes + 4;
  const std::size_t start = std::min(text_at, head.size());
  if (is_wide_text(head.subspan(start), "security")) channel = "security";
  return true;
}

}  // namespace

bool has_log_signature(std::span<const std::byte> head) {
  return starts_with(head, evt_file_head) || starts_with(head, evtx_file_head);
}

bool classify_log(LogEntry& entry, const std::string& path, log_probe& probe) {
  const bool is_open = probe.file.open(path);
  return classify_log(entry, path, probe.channels, [&](std::size_t count) {
    return is_open ? probe.file.first(count) : std::span<const std::byte>();
  });
}

bool classify_log(LogEntry& entry, const std::string& path, channel_finder& channels,
                  const head_reader& first) {
  entry.channel.clear();
  entry.path = path;
  std::string folder;
  std::string name;
  split_path(path, folder, name);
  if (name.empty()) name = path;
  to_lower_in_place(name);
  entry.unclassified = true;
  const auto head = first(signature_head_bytes);
  if (!has_log_signature(head)) return false;
  entry.is_evtx = starts_with(head, evtx_file_head);
  entry.unclassified = false;
  entry.channel = name;
  if (const auto known = channel_from_name(name)) {
    entry.channel = *known;
    return true;
  }
  return entry.is_evtx ? channel_from_evtx(channels, first, entry.channel)
                       : channel_from_evt(first, entry.channel);
}

void add_logs(const std::string& value, LogEntry& scratch, log_probe& probe, log_map& table) {
  std::vector<std::string> items;
  split_on_first_of(value, items, true, false, "|,;");
  for (const std::string& item : items) {
    const std::string path = expand_env_references(item, true);
    (void)classify_log(scratch, path, probe);  // if it is not a log, opening it will tell
    table.emplace(path, scratch);
  }
}

}  // namespace zanvik
