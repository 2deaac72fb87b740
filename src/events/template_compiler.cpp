#include "events/template_compiler.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "base/limits.h"
#include "base/utf16.h"
#include "evtx/bxml/bxml_tokens.h"

namespace zanvik {
namespace {

constexpr std::uint8_t token_cdata = 7;
constexpr std::uint8_t token_pi_target = 10;
constexpr std::uint8_t token_pi_data = 11;
constexpr std::uint8_t type_text = 1;
// The slot number for a fragment without a table: there is no such slot.
constexpr std::uint16_t no_slot = 0xffff;

// The character that an entity stands for; an unknown one keeps its spelling.
std::string entity_text(std::string_view name) {
  if (name == "lt") return "<";
  if (name == "gt") return ">";
  if (name == "amp") return "&";
  if (name == "quot") return "\"";
  if (name == "apos") return "'";
  return "&" + std::string(name) + ";";
}

class compiler {
 public:
  compiler(const chunk_view& chunk, std::uint64_t offset, std::uint64_t end, std::int64_t& budget,
           event_template& out, fragment_texts* texts)
      : chunk_(chunk),
        at_(offset),
        end_(std::min<std::uint64_t>(end, chunk.bytes.size())),
        budget_(budget),
        writer_(out),
        texts_(texts) {}

  // True if the stream reached its own end, with all elements closed.
  bool run() {
    if (chunk_.bytes.at<std::uint32_t>(at_) == expected_fragment) at_ += 4;
    while (at_ < end_) {
      const auto token = chunk_.bytes.at_or_zero<std::uint8_t>(at_);
      if (token == token_end_of_stream) return depth_ == 0;
      const std::uint64_t before = at_;
      if (!read(token) || !work_budget::spend(budget_, at_ - before)) return false;
    }
    return false;
  }

  void finish() { writer_.close_all(); }
  // As far as it was read; a damaged length leads further.
  std::uint64_t position() const { return std::min(at_, end_); }

 private:
  bool read(std::uint8_t token) {
    if (!is_acceptable(token)) return false;
    switch (token & 0x1f) {
      case token_open_element:
        return element();
      case token_close_start:
        writer_.end_start_tag();
        end_text();
        return step(1);
      case token_close_empty:
      case token_end_element:
        return close();
      case token_value:
        return value();
      case token_attribute:
        return attribute();
      case token_cdata:
        return counted_text(1);
      case token_character_reference:
        return character();
      case token_entity_reference:
        return entity();
      case token_pi_target:
        return instruction();
      case token_normal_substitution:
        return slot(false);
      case token_optional_substitution:
        return slot(true);
      default:
        return false;
    }
  }

  bool step(std::uint64_t length) {
    at_ += length;
    return true;
  }

  bool element() {
    const named_token found = element_at(chunk_, at_);
    if (found.length == 0 || found.name_past_end || !pay_name(found)) return false;
    end_text();
    ++depth_;
    if (system_depth_ == 0 && found.name.text == "System") system_depth_ = depth_;
    return writer_.open(found.name.text) && step(found.length);
  }

  void end_text() {
    in_text_ = false;
    keeps_text_ = false;
  }

  bool close() {
    writer_.close();
    end_text();
    if (depth_ == system_depth_) system_depth_ = 0;
    if (depth_ != 0) --depth_;
    return step(1);
  }

  bool attribute() {
    const named_token found = attribute_at(chunk_, at_);
    if (found.length == 0 || !writer_.in_start_tag() || !pay_name(found)) return false;
    end_text();
    keeps_text_ =
        found.name.text.starts_with("xmlns") || (found.name.text == "Name" && system_depth_ == 0);
    writer_.attribute(found.name.text);
    return step(found.length);
  }

  bool entity() {
    const named_token found = entity_at(chunk_, at_);
    if (found.length == 0 || !pay_name(found)) return false;
    add_text(entity_text(found.name.text));
    return step(found.length);
  }

  bool pay_name(const named_token& token) {
    return work_budget::spend(budget_, 2 * token.name.units_read + 1);
  }

  bool value() {
    if (chunk_.bytes.at<std::uint8_t>(at_ + 1) != type_text) return false;
    return counted_text(2);
  }

  // A 16-bit count at `head` bytes into the token, and that many units.
  bool counted_text(std::uint64_t head) {
    const auto units = chunk_.bytes.at<std::uint16_t>(at_ + head);
    if (!units || !chunk_.bytes.has(at_ + head + 2, 2u * *units)) return false;
    const zanvik::counted_text found =
        counted_text_at(chunk_, at_ + head + 2, *units, true, head + 2, chunk_.memory->texts);
    add_text(found.text);
    return step(found.length);
  }

  // A piece of text; pieces with nothing between them are joined.
  void add_text(std::string_view piece) {
    const bool full = texts_ && texts_->ends.size() == limits::slots_per_event_table;
    if (!texts_ || keeps_text_ || (full && !in_text_)) return writer_.text(piece);
    if (!in_text_) {
      writer_.slot(static_cast<std::uint16_t>(texts_->ends.size()), false);
      texts_->ends.emplace_back();
    }
    in_text_ = true;
    texts_->pool.append(piece);
    texts_->ends.back() = texts_->pool.size();
  }

  bool character() {
    const auto code = chunk_.bytes.at<std::uint16_t>(at_ + 1);
    if (!code) return false;
    std::string text;
    append_utf8(text, *code);
    add_text(text);
    return step(3);
  }

  bool instruction() {
    const auto name_offset = chunk_.bytes.at<std::uint32_t>(at_ + 1);
    if (!name_offset) return false;
    const zanvik::counted_text target = chunk_.memory->names.at(chunk_, *name_offset);
    if (!target.present || !work_budget::spend(budget_, 2 * target.units_read + 1)) return false;
    at_ += 5 + (*name_offset == at_ + 5 ? target.length : 0);
    std::string data;
    if (chunk_.bytes.at<std::uint8_t>(at_) == token_pi_data) {
      const auto units = chunk_.bytes.at<std::uint16_t>(at_ + 1);
      if (!units || !chunk_.bytes.has(at_ + 3, 2u * *units)) return false;
      append_utf8_from_utf16(data, chunk_.bytes.bytes_at(at_ + 3, 2u * *units));
      at_ += 3 + 2u * *units;
    }
    in_text_ = false;
    writer_.instruction(target.text, data);
    return true;
  }

  bool slot(bool optional) {
    const auto number = chunk_.bytes.at<std::uint16_t>(at_ + 1);
    if (!number || !chunk_.bytes.has(at_, 4)) return false;
    in_text_ = false;
    writer_.slot(texts_ ? no_slot : *number, optional);
    return step(4);
  }

  const chunk_view& chunk_;
  std::uint64_t at_;
  std::uint64_t end_;
  std::int64_t& budget_;
  template_writer writer_;
  fragment_texts* texts_;
  unsigned depth_ = 0;
  unsigned system_depth_ = 0;  // of the System element that is open; 0 for none
  bool in_text_ = false;       // the previous text is one of `texts_`, and continues
  bool keeps_text_ = false;    // an attribute is open whose text stays in the template
};

}  // namespace

bool compile_fragment(const chunk_view& chunk, std::uint64_t offset, std::uint64_t end,
                      std::int64_t& budget, event_template& out, fragment_texts* texts) {
  out.tokens.clear();
  out.pool.clear();
  compiler work(chunk, offset, end, budget, out, texts);
  out.cut = !work.run();
  work.finish();
  // Each name may stand in many places and be written in full in each of them.
  out.source_bytes = static_cast<std::uint32_t>(
      std::max<std::uint64_t>(std::max(work.position(), offset) - offset, out.pool.size()));
  return !out.tokens.empty() && out.tokens.front().kind == template_token_kind::open_element;
}

}  // namespace zanvik
