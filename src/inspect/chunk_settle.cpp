#include "inspect/chunk_settle.h"

namespace zanvik {
namespace {

// One pass over areas and returned records, both ascending; counts the records that are in no area.
class given_by_offset {
 public:
  explicit given_by_offset(const std::vector<given_record>& given) : given_(given) {}

  // Null if none was returned at that offset.
  const given_record* find(std::uint64_t offset) {
    while (next_ < given_.size() && given_[next_].offset < offset) skip();
    if (next_ == given_.size() || given_[next_].offset != offset) return nullptr;
    return &given_[next_++];  // one more of the same is one too many
  }
  std::uint64_t of_no_area() {
    while (next_ < given_.size()) skip();
    return of_no_area_;
  }

 private:
  void skip() {
    ++of_no_area_;
    ++next_;
  }

  const std::vector<given_record>& given_;
  std::size_t next_ = 0;
  std::uint64_t of_no_area_ = 0;
};

bool is_bad_size(area_kind kind) {
  return kind == area_kind::lost_cut || kind == area_kind::lost_size;
}

area_kind kind_of_given(const given_record& given, const chunk_header& header,
                        std::uint64_t number) {
  if (given.bare) return area_kind::record_bare;
  if (given.part) return area_kind::record_part;
  return header.declares(number) ? area_kind::record_read : area_kind::record_outside;
}

// Nothing in a chunk without its signature is read.
void settle_foreign(walked_chunk& chunk) {
  for (area& part : chunk.areas) {
    const bool record = part.kind == area_kind::record_read || part.kind == area_kind::free_record;
    part.kind = record ? area_kind::lost_chunk : area_kind::foreign_chunk;
  }
}

}  // namespace

std::uint64_t settle_chunk(walked_chunk& chunk, const given_records& given) {
  given_by_offset plain(given.plain);
  given_by_offset slack(given.slack);
  if (chunk.state == chunk_state::foreign) settle_foreign(chunk);
  if (chunk.state != chunk_state::sound) return plain.of_no_area() + slack.of_no_area();
  bool damaged = false;
  for (area& part : chunk.areas) {
    const bool bad_size = is_bad_size(part.kind);
    if (holds_records(part.kind)) {
      const given_record* const read = plain.find(part.offset);
      const given_record* const found = slack.find(part.offset);
      if (part.kind == area_kind::free_record) {
        const given_record* const any = read ? read : found;
        if (!any || any->bare || any->part) part.kind = area_kind::free_record_part;
      } else if (read) {
        part.kind = kind_of_given(*read, chunk.header, part.number);
      } else if (!bad_size) {
        part.kind = damaged ? area_kind::lost_behind : area_kind::lost_undeclared;
      }
    }
    damaged = damaged || bad_size || part.kind == area_kind::damage;
  }
  return plain.of_no_area() + slack.of_no_area();
}

}  // namespace zanvik
