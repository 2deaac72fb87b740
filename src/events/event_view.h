// One event of either reader, whole: its tree, its System members, its data by name and by
// position, with their types. Forms, conditions and rules use it.
//
// A view allocates nothing: it points at the event's shape (event_shape.h), which lists its fields,
// and at the record's slots, which say where the values are. It and everything it points to are
// valid only during the sink's call.
//
// To read a field, look it up once for each shape, then read it by number from each event:
//
//   class my_sink : public event_sink {
//     void on_event(const event_view& event) override {
//       const event_shape& shape = event.shape();
//       if (shape.index >= mine_.size()) mine_.resize(shape.index + 1);
//       my_fields& known = mine_[shape.index];
//       if (known.id != shape.id) known = {shape.id, shape.find_datum("TargetUserName")};
//       if (known.user >= 0) use(event.text(known.user, scratch_));
//     }
//   };
//
// `text` returns UTF-8; `value` the bytes and their type, which distinguishes absent (null) from
// empty. A field of several parts has no single value: it has no type, and `text` joins the parts.
// `header().time()` and the like also work for records without the System member.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "events/event_shapes.h"
#include "events/event_value.h"
#include "events/log_source.h"

namespace zanvik {

// What is odd about an event.
enum event_flag : std::uint32_t {
  event_slack = 1,          // found in free space
  event_cut = 2,            // a value or its binary XML broke off
  event_outside_range = 4,  // its number is not among those that its chunk declares
  event_no_template = 8,    // a template was not found: its values have no names
  event_carved = 16,        // found by its signature alone, in bytes that may be anything
  event_deleted = 32,       // of a file that is deleted
};

struct event_header {
  std::uint64_t record_number = 0;
  std::uint64_t written = 0;      // FILETIME
  std::uint64_t file_offset = 0;  // of the record, in bytes
  std::uint32_t flags = 0;        // of `event_flag`
};

class event_view {
 public:
  const event_shape& shape() const {
    if (!shape_->has_fields) list_fields();
    return *shape_;
  }
  // The same without the fields.
  const event_shape& tree() const {
    if (!shape_->has_tree) build_tree();
    return *shape_;
  }
  // Of the shape, which need not be complete for that.
  std::uint64_t shape_id() const { return shape_->id; }
  std::uint32_t shape_index() const { return shape_->index; }
  const event_header& header() const { return header_; }
  const log_source& source() const { return *source_; }
  std::span<const event_value> slots() const { return slots_; }
  // Bytes that may be read from the start of any value on: none behind it lies outside memory.
  const std::byte* readable_end() const { return readable_end_; }

  // The value of the field with that number in `shape().fields`.
  event_value value(std::uint32_t field) const;
  event_value value(system_member member) const;
  // The same as UTF-8, in `scratch` or where it stands; empty for an absent one and for field -1.
  std::string_view text(std::int32_t field, std::string& scratch) const;
  std::string_view text(system_member member, std::string& scratch) const;
  // The member as a number; false when there is none.
  bool number(system_member member, std::uint64_t& out) const;
  // FILETIME: of TimeCreated, else of the record's header.
  std::uint64_t time() const;

  // For readers, which fill in a view and hand it out.
  void assign(event_shape& shape, std::span<const event_instance> instances,
              std::span<const event_value> slots, const event_header& header,
              const log_source& source, const std::byte* readable_end) {
    shape_ = &shape;
    instances_ = instances;
    slots_ = slots;
    header_ = header;
    source_ = &source;
    readable_end_ = readable_end;
  }

 private:
  void build_tree() const;
  void list_fields() const;

  event_shape* shape_ = nullptr;
  std::span<const event_instance> instances_;
  std::span<const event_value> slots_;
  event_header header_;
  const log_source* source_ = nullptr;
  const std::byte* readable_end_ = nullptr;
};

class event_sink {
 public:
  virtual ~event_sink() = default;
  virtual void on_event(const event_view& event) = 0;
};

// The value of one part.
event_value part_value(const value_part& part, std::span<const event_value> slots);

}  // namespace zanvik
