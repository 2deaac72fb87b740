// What one template, or one separate piece of binary XML, says about an event: a flat list of
// tokens in document order, with all texts in one pool.
//
// In: binary XML (template_compiler.h), or what the legacy reader makes for its records. Out:
// tokens that always nest: every open element has its end, and attributes are between an element's
// opening and the end of its start tag. Entities and character references have become text.
// Templates live as long as the cache that they are in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik {

enum class template_token_kind : std::uint8_t {
  open_element,   // the text is its name
  attribute,      // the text is its name; its value's pieces follow, up to the next of these
  end_start_tag,  // the element's content follows
  text,           // a piece of constant text
  slot,           // a piece from the record
  pi_target,      // a processing instruction; `pi_data` may follow
  pi_data,
  end_element,
};

struct template_token {
  template_token_kind kind = template_token_kind::text;
  bool optional = false;   // of a slot: what encloses it is left out if the value is absent
  std::uint16_t slot = 0;  // number in the record's table
  std::uint32_t text = 0;  // where its text begins in the pool
  std::uint32_t text_bytes = 0;

  bool operator==(const template_token&) const = default;
};

struct event_template {
  std::uint64_t id = 0;  // equal IDs are equal templates; never reused in a run
  bool once = false;     // made for one record or chunk: results for it are not worth keeping
  bool missing = false;  // stands in for a template that was not found
  bool cut = false;      // the binary XML broke off
  std::uint32_t source_bytes = 0;   // of the binary XML, or of its texts if these are longer
  std::int32_t event_id_slot = -1;  // the slot that is all of Event/System/EventID; -1 for none
  std::vector<template_token> tokens;
  std::string pool;

  std::string_view text_of(const template_token& token) const {
    return std::string_view(pool).substr(token.text, token.text_bytes);
  }
};

// Sets `event_id_slot` from the tokens.
void find_event_id_slot(event_template& out);

// Builds a template token by token and keeps its nesting correct.
class template_writer {
 public:
  explicit template_writer(event_template& out) : out_(out) {}

  // Deeper elements than the limit are refused.
  [[nodiscard]] bool open(std::string_view name);
  // Ignored if no start tag is open.
  void attribute(std::string_view name);
  void end_start_tag();
  void text(std::string_view piece);
  void slot(std::uint16_t number, bool optional);
  void instruction(std::string_view target, std::string_view data);
  // Ignored if nothing is open.
  void close();
  void close_all();
  bool in_start_tag() const { return in_start_tag_; }

 private:
  void add(template_token_kind kind, std::string_view piece);

  event_template& out_;
  unsigned depth_ = 0;
  bool in_start_tag_ = false;
};

}  // namespace zanvik
