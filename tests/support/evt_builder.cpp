#include "evt_builder.h"

#include <utility>

namespace zanvik::testing {

constexpr std::size_t record_head_bytes = 56;

byte_vector evt_record_bytes(const evt_record_fields& fields) {
  const byte_vector sid = fields.sid.empty() ? byte_vector{} : sid_bytes(fields.sid);
  byte_vector body;
  const auto here = [&body] { return static_cast<std::uint32_t>(record_head_bytes + body.size()); };
  append_utf16z(body, fields.source);
  append_utf16z(body, fields.computer);
  append_zeros(body, (4 - body.size() % 4) % 4);
  const std::uint32_t sid_offset = here();
  append_bytes(body, sid);
  const std::uint32_t string_offset = here();
  for (const std::string& text : fields.strings) append_utf16z(body, text);
  const std::uint32_t data_offset = here();
  append_bytes(body, fields.data);
  append_zeros(body, (4 - body.size() % 4) % 4);
  const std::uint32_t size = fields.record_size.value_or(here() + 4);

  byte_vector out;
  for (const std::uint32_t value : {size, 0x654c664cu, fields.record_num, fields.time_generated,
                                    fields.time_generated, fields.event_id}) {
    append_u32(out, value);
  }
  append_u16(out, fields.event_type);
  append_u16(out, fields.num_strings.value_or(static_cast<std::uint16_t>(fields.strings.size())));
  append_u16(out, fields.event_category);
  append_u16(out, 0);
  for (const std::uint32_t value :
       {0u, fields.string_offset.value_or(string_offset), static_cast<std::uint32_t>(sid.size()),
        fields.sid_offset.value_or(sid_offset), static_cast<std::uint32_t>(fields.data.size()),
        fields.data_offset.value_or(data_offset)}) {
    append_u32(out, value);
  }
  append_bytes(out, body);
  append_u32(out, size);
  return out;
}

evt_builder::evt_builder() {
  for (const std::uint32_t value :
       {48u, 0x654c664cu, 1u, 1u, 48u, 48u, 1u, 1u, 0x80000u, 0u, 0u, 48u}) {
    append_u32(bytes_, value);
  }
}

evt_builder& evt_builder::add(evt_record_fields fields) {
  if (fields.record_num == 0) fields.record_num = last_number_ + 1;
  last_number_ = fields.record_num;
  if (record_offsets_.empty()) oldest_number_ = fields.record_num;
  record_offsets_.push_back(bytes_.size());
  append_bytes(bytes_, evt_record_bytes(fields));
  return *this;
}

evt_builder& evt_builder::cursor() {
  const auto end = static_cast<std::uint32_t>(bytes_.size());
  const std::uint32_t places[] = {48u, end, last_number_ + 1, oldest_number_};
  for (const std::uint32_t mark : {40u, 0x11111111u, 0x22222222u, 0x33333333u, 0x44444444u}) {
    append_u32(bytes_, mark);
  }
  for (std::size_t i = 0; i < 4; ++i) {
    append_u32(bytes_, places[i]);
    poke_u32(16 + 4 * i, places[i]);
  }
  append_u32(bytes_, 40);
  return *this;
}

evt_builder& evt_builder::raw(std::span<const std::byte> bytes) {
  append_bytes(bytes_, bytes);
  return *this;
}

}  // namespace zanvik::testing
