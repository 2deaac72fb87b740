// From the items of one element to fields: the rules by which names, attributes, values and
// references pair up. Data sections number their fields, everything else is named after its
// element and attribute.
#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "base/digits.h"
#include "base/text.h"
#include "evtx/bxml/bxml_decoder.h"
#include "evtx/bxml/bxml_tokens.h"

namespace zanvik {
namespace {

using item_list = std::vector<element_item>;

constexpr std::uint16_t type_joined = 6;
constexpr std::uint16_t type_joined_data = 21;

std::string_view take_newest(item_list& items) {
  const std::string_view text = items.back().text;
  items.pop_back();
  return text;
}

// Whether a byte of UTF-8 begins a character.
bool begins_character(char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }

std::size_t character_count(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

std::string padded_key(std::string_view name) {
  const std::size_t characters = character_count(name);
  std::string key(characters < 2 ? 2 - characters : 0, '0');
  return key.append(name);
}

std::string numbered_key(unsigned number, std::string_view name) {
  std::string key(number < 10 ? 1 : 0, '0');
  append_decimal(key, number);
  key.push_back(':');
  return key.append(name);
}

std::string_view item_characters(const element_item& item) {
  if ((item.word & 0x0f) != token_entity_reference) return item.text;
  if (item.text == "&amp;") return "&";
  if (item.text == "&lt;") return "<";
  if (item.text == "&gt;") return ">";
  return item.text;
}

// Joins the newest `count` items, oldest first.
std::string joined_text(const item_list& items, std::size_t count) {
  std::string text;
  for (std::size_t i = items.size() - count; i < items.size(); ++i) {
    text.append(item_characters(items[i]));
  }
  return mark_line_ends(text);
}

std::size_t chained_run(const item_list& items) {
  const auto first_unchained = std::find_if(items.rbegin(), items.rend(), [](const auto& item) {
    return (item.word & word_chained) == 0;
  });
  return static_cast<std::size_t>(first_unchained - items.rbegin());
}

// Gives the decode's unnamed data its number when first needed.
unsigned current_index(data_counters& counters) {
  if (counters.current_data_index == 0) counters.current_data_index = ++counters.data_index;
  return counters.current_data_index;
}

void insert_or_append(field_map& fields, std::string key, std::string text, std::uint16_t type) {
  const auto [place, inserted] = fields.try_emplace(std::move(key));
  field_value& field = place->second;
  if (inserted) {
    field = {type, std::move(text), 0};
  } else {
    field.text.append("; ").append(text);
  }
}

// A run of values and references outside a data section: one field, named after what precedes it.
void flush_chain(item_list& items, field_map& fields, data_counters& counters) {
  const std::size_t run = chained_run(items);
  std::string text = joined_text(items, run);
  current_index(counters);
  std::string key = run < items.size() ? padded_key(items[items.size() - run - 1].text)
                                       : std::string("corrupted_data");
  items.clear();
  fields.try_emplace(std::move(key), field_value{type_joined, std::move(text), 0});
}

void flush_data_chain(item_list& items, field_map& fields, data_counters& counters,
                      bool data_element) {
  std::size_t run = chained_run(items);
  if (data_element && run == items.size()) --run;  // the oldest names the field
  std::string text = joined_text(items, run);
  const unsigned number = current_index(counters);
  std::string key = run < items.size() ? numbered_key(number, items[items.size() - run - 1].text)
                                       : std::string("corrupted_data");
  items.clear();
  insert_or_append(fields, std::move(key), std::move(text),
                   data_element ? type_joined_data : type_joined);
}

// Writes a blank behind each two characters.
std::string spaced_pairs(std::string_view value) {
  std::string spaced;
  spaced.reserve(value.size() + value.size() / 2 + 1);
  std::size_t characters = 0;
  for (const char c : value) {
    if (begins_character(c) && characters++ % 2 == 0 && !spaced.empty()) spaced.push_back(' ');
    spaced.push_back(c);
  }
  if (characters % 2 == 0 && characters != 0) spaced.push_back(' ');
  return spaced;
}

// An element of a data section with a single content.
void flush_data_pair(item_list& items, field_map& fields, data_counters& counters, bool no_slots) {
  const std::uint16_t type = items.back().word;
  std::string value(take_newest(items));
  const std::string_view name = take_newest(items);
  if (name == "Data") {
    // Meant: all unnamed data of a decode is in one field.
    std::string key = numbered_key(current_index(counters), name);
    insert_or_append(fields, std::move(key), mark_line_ends(value), type);
    return;
  }
  if (no_slots && name == "Binary") {
    if (counters.data_index == 0) {
      fields.try_emplace("01:Data", field_value{type, {}, 0});
      ++counters.data_index;
    }
    std::string bytes;
    append_decimal(bytes, character_count(value) / 2);
    fields.try_emplace(numbered_key(++counters.data_index, "<unnamed>"),
                       field_value{type, std::move(bytes), 0});
  }
  if (no_slots && (name == "Binary" || name == "binaryData")) value = spaced_pairs(value);
  fields.try_emplace(numbered_key(++counters.data_index, name),
                     field_value{type, mark_line_ends(value), 0});
}

bool is_named_data(const item_list& items) {
  return items.size() == 3 && items[2].word == (token_value | word_second_value) &&
         items[1].word == token_value && items[0].word == (token_attribute | word_in_data);
}

void flush_named_data(item_list& items, field_map& fields, data_counters& counters) {
  const std::uint16_t type = items.back().word;
  std::string value = mark_line_ends(take_newest(items));
  std::string key = numbered_key(++counters.data_index, items.back().text);
  items.clear();
  fields.try_emplace(std::move(key), field_value{type, std::move(value), 0});
}

// Inserts under the key, or under the key with the first free number in brackets.
void insert_numbered(field_map& fields, std::string key, field_value value) {
  // What is not inserted is not moved from.
  const auto [first, inserted] = fields.try_emplace(std::move(key), std::move(value));
  for (bool done = inserted; !done;) {
    std::string free_key = first->first + " [";
    append_decimal(free_key, ++first->second.repeats);
    free_key.push_back(']');
    done = fields.try_emplace(std::move(free_key), std::move(value)).second;
  }
}

void flush_pairs(item_list& items, field_map& fields, const std::string_view* element) {
  while (!items.empty()) {
    const std::uint16_t word = items.back().word;
    if (word == (token_value | word_second_value) && element) {
      insert_numbered(fields, std::string(*element), {word, std::string(take_newest(items)), 0});
      continue;
    }
    std::string value = mark_line_ends(take_newest(items));
    std::string name;
    if (element) name.append(*element).append(" ");
    if (!items.empty()) name += take_newest(items);
    insert_numbered(fields, std::move(name), {word, std::move(value), 0});
  }
}

bool has_attributes(std::uint16_t word) {
  return (word & ~word_in_data) == (token_open_element | token_more);
}

}  // namespace

void flush_items(std::vector<element_item>& items, field_map& fields, data_counters& counters,
                 bool no_slots) {
  if (items.empty()) return;
  const std::uint16_t word = items.front().word;
  std::string_view element;
  const bool has_element = has_attributes(word);
  if (has_element) {
    element = items.front().text;
    items.erase(items.begin());
  }
  if (items.size() >= 2) {
    const bool chained = (items.back().word & word_chained) != 0;
    const bool data_element = has_element && element == "Data";
    if (!(word & word_in_data)) {
      if (chained) return flush_chain(items, fields, counters);
    } else if (chained) {
      return flush_data_chain(items, fields, counters, data_element);
    } else if (data_element && is_named_data(items)) {
      return flush_named_data(items, fields, counters);
    } else if (items.size() == 2) {
      return flush_data_pair(items, fields, counters, no_slots);
    }
  }
  flush_pairs(items, fields, has_element ? &element : nullptr);
}

}  // namespace zanvik
