// What all events of one kind share: the tree of elements from their templates, and the named
// fields, each with the slots that its value comes from.
//
// Two events have the same shape if they are made from the same templates, nested in the same
// slots, and the same slots are absent, arrays or nested. Everything that follows from this is
// computed once for the shape: a form's constant text, a rule's fields. Records of a kind share it,
// so a consumer keeps its results in a vector, by `index`, and compares the `id`:
//
//   auto& known = mine[shape.index];                        // grown as needed
//   if (known.id != shape.id) known = work_out(shape);      // the first event of its kind
//
// IDs are never reused in a run. Indices are, so that a long run stays small. A shape is valid
// during the call that passes its event, its index until its ID changes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "events/event_template.h"
#include "events/event_value.h"

namespace zanvik {

// A piece of a text: constant, or the value of a slot.
struct value_part {
  std::int32_t slot = -1;  // among all slots of the event; -1 for a constant, -2 for an absent one
  std::string_view text;
  bool array = false;  // the slot holds an array
};
inline constexpr std::int32_t absent_slot = -2;
using value_parts = std::vector<value_part>;

struct event_attribute {
  std::string_view name;
  value_parts value;
};

// The content of an element, in order: elements, pieces of text, processing instructions.
struct event_item {
  enum class kind : std::uint8_t { element, part, instruction };
  kind what = kind::part;
  std::uint32_t element = 0;  // number in `event_shape::elements`
  value_part part;            // its text is an instruction's data
  std::string_view target;
};

struct event_element {
  std::string_view name;
  std::vector<event_attribute> attributes;
  std::vector<event_item> content;
};

// The System members that events share.
enum class system_member : std::uint8_t {
  provider_name,
  provider_guid,
  event_source_name,
  event_id,
  qualifiers,
  version,
  level,
  task,
  opcode,
  keywords,
  time_created,
  event_record_id,
  activity_id,
  related_activity_id,
  process_id,
  thread_id,
  channel,
  computer,
  user_id,
  count
};
inline constexpr std::size_t system_members = static_cast<std::size_t>(system_member::count);
// The usual name: "EventID", "UserID".
std::string_view name_of(system_member member);

enum class field_group : std::uint8_t { system, data, other };

// A named value of the event: of System, a Data (or Binary) element, or any other leaf.
struct event_field {
  field_group group = field_group::other;
  std::string name;   // of the datum, the leaf element or the attribute; empty if it has none
  std::string path;   // from below the root: "UserData/EventXML/Param1", "System/Provider@Name"
  value_parts parts;  // the pieces of its text, one after the other
  std::uint32_t position = 0;  // among the data, from 0
};

class event_shape {
 public:
  std::uint64_t id = 0;
  std::uint32_t index = 0;  // small; see above
  bool once = false;        // no other event will have it: results for it are not worth keeping
  bool no_template = false;
  bool cut = false;
  // Tree and fields are made when first needed; both may be dropped between events.
  bool has_tree = false;
  bool has_fields = false;
  std::size_t new_bytes = 0;  // made since the last account
  // Slots that the templates use again and again, and how often.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> overused;
  std::uint64_t source_bytes = 0;   // of the templates
  std::uint64_t paid_in_chunk = 0;  // for the reader's account

  std::vector<event_item> roots;  // of the tree
  std::vector<event_element> elements;
  std::vector<event_field> fields;  // in document order

  // The slot that is all of the member, known once the fields have been listed, even if they are
  // gone since; -1 when they have to be asked.
  std::int32_t slot_of(system_member member) const {
    return slots_[static_cast<std::size_t>(member)];
  }
  // The field's number, or -1.
  std::int32_t find(system_member member) const {
    return system_[static_cast<std::size_t>(member)];
  }
  // The first datum of that name, in any case.
  std::int32_t find_datum(std::string_view name) const;
  // The datum at that position.
  std::int32_t datum_at(std::uint32_t position) const;
  // Numbers of all fields that `name` may mean: a System member by its name here, a datum or leaf
  // by its name, anything by its path; in any case. Data without a name are all called Data, and
  // the second of them param2.
  std::vector<std::uint32_t> find_all(std::string_view name) const;

  // Drops tree and fields.
  void make_hollow();

  // Fills `fields` from the tree.
  void list_fields();

  // Approximate size of the tree.
  std::size_t tree_bytes() const;

 private:
  static constexpr std::array<std::int32_t, system_members> no_slots() {
    std::array<std::int32_t, system_members> none{};
    none.fill(-1);
    return none;
  }
  void list_element(const event_element& element, const std::string& path, bool is_system,
                    unsigned depth);
  void add_field(field_group group, std::string_view name, std::string path,
                 const value_parts& parts);

  std::int32_t system_[system_members];
  std::array<std::int32_t, system_members> slots_ = no_slots();
  std::uint32_t data_ = 0;
};

// The parts of an element's own text.
value_parts text_of(const event_element& element);
// Whether all parts are constant; `out` gets the text.
bool constant_text(const value_parts& parts, std::string& out);

}  // namespace zanvik
