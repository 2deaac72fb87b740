// The channel in a log's first record, which classifies a log of unknown name: the text between
// "<channel>" and "</channel>", in any case, in the XML-like text of the record.
//
// Most of that text comes from the template: where the channel is in it, and which values precede
// its end, is computed once for a template body and used for all logs of a run. If that is not
// certain for a record, the whole record is rendered; tests compare the two ways.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "evtx/bxml/bxml_decoder.h"
#include "evtx/templates/template_bodies.h"
#include "evtx/templates/template_catalogue.h"

namespace zanvik {

// What the text of a record says about the channel.
struct found_channel {
  bool closed = true;               // false: the element is opened and never closed
  std::optional<std::string> text;  // lower case; nothing if there is no such element
};

// Looks for the channel in a record's text.
found_channel channel_in_text(std::string text);

class channel_finder {
 public:
  // The channel of the first record of `chunk`, its 65,536 bytes; the caller has checked the
  // signature.
  found_channel find(std::span<const std::byte> chunk);

 private:
  // A body's text up to the end of the channel: the slots of the values in it, and the channel
  // itself as text with at most one value.
  struct outline {
    bool certain = false;
    std::vector<std::size_t> slots;    // whose texts precede the channel's end
    std::string before, after;         // the channel's text around its value
    std::optional<std::size_t> value;  // its slot
  };

  std::optional<found_channel> find_quickly(std::span<const std::byte> chunk);
  std::optional<found_channel> channel_by(const outline& known, const chunk_view& view) const;
  const outline& outline_of(const chunk_view& chunk, const template_ref& ref, std::uint32_t body,
                            std::size_t slot_count);
  static outline make_outline(const chunk_view& chunk, const template_ref& ref,
                              std::size_t slot_count);

  bxml_memory memory_;
  template_catalogue catalogue_;
  template_bodies bodies_;
  std::map<std::pair<std::uint32_t, std::size_t>, outline> outlines_;  // by body, count of slots
  std::vector<slot_entry> slots_;
};

}  // namespace zanvik
