#include "base/file_filter.h"

#include <span>

#include "base/number_text.h"
#include "base/text.h"
#include "base/text_split.h"
#include "base/utf16.h"

namespace zanvik {
namespace {

// Removes all stars from `text`. One that is first or last at its turn sets that flag; one inside
// leaves no trace, so "sec*log" becomes the name "seclog". This is meant.
void take_stars(std::string& text, bool& front, bool& back) {
  for (std::size_t at = text.find('*'); at != std::string::npos; at = text.find('*')) {
    if (at == 0) front = true;
    if (at == text.size() - 1) back = true;
    text.erase(at, 1);
  }
}

// Removes the stream from the entry's name. Returns true if it is `*`.
bool take_stream(file_filter_entry& entry) {
  const std::size_t colon = entry.name.find(':');
  if (colon == std::string::npos) return false;
  entry.has_stream = true;
  entry.stream = entry.name.substr(colon + 1);
  entry.name.resize(colon);
  if (entry.stream == "*") return true;
  take_stars(entry.stream, entry.stream_star_front, entry.stream_star_back);
  return false;
}

std::vector<std::string> filter_terms(const std::string& value) {
  std::vector<std::string> terms;
  const char separator = value.find('|') != std::string::npos ? '|' : ',';
  if (value.find(separator) != std::string::npos) {
    split_on_char(value, separator, terms, true, false, false);
  }
  if (terms.empty()) terms.push_back(value);
  return terms;
}

std::vector<file_filter_entry> filter_entries(const std::string& value) {
  std::vector<file_filter_entry> entries;
  for (const std::string& term : filter_terms(value)) {
    file_filter_entry entry;
    entry.match_all = term == "*";
    if (entry.match_all) return {entry};
    entry.term = entry.name = term;
    const bool any_stream = take_stream(entry);
    if (entry.name == "*") {
      entry.match_all = true;
    } else {
      take_stars(entry.name, entry.star_front, entry.star_back);
      entry.is_path = entry.name.starts_with('/');
    }
    entries.push_back(std::move(entry));
    if (any_stream) entries.front().stream_all = true;  // of the first term, whichever had it
  }
  return entries;
}

}  // namespace

void parse_filter_list(std::string_view value, std::vector<file_filter_entry>& out) {
  std::vector<file_filter_entry> entries =
      filter_entries(is_strict_utf8(value) ? to_lower(value) : std::string());
  for (file_filter_entry& entry : entries) out.push_back(std::move(entry));
}

void parse_signature_filter(std::string_view value, std::vector<file_filter_entry>& out) {
  std::vector<std::string> items;
  split_on_first_of(value, items, true, false, "|,");
  std::vector<std::uint8_t> signature;
  if (items.empty() || parse_hex_bytes(signature, items[0], ' ', true) == 0) return;
  file_filter_entry entry;
  const auto bytes = std::as_bytes(std::span(signature));
  entry.signature.assign(bytes.begin(), bytes.end());
  if (items.size() == 2) entry.signature_offset = u64_from_text(items[1]).value_or(0);
  out.push_back(std::move(entry));
}

}  // namespace zanvik
