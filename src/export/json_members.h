// Members of JSON objects, for forms made of an event's fields rather than of its tree.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "export/form_program.h"
#include "export/json_names.h"

namespace zanvik {

class json_members {
 public:
  json_members(const event_view& event, form_program& out) : event_(event), out_(out) {}

  void open_object(std::string_view name = {});
  void close_object();

  // A member's name, with what precedes it; its value comes next.
  void name(std::string_view name);
  // Reserves a name that other code will write.
  void reserve(std::string_view name) { (void)open_.back().names.take(name); }
  void constant(std::string_view name, std::string_view text);
  void gap_text(std::string_view name, gap how, std::int32_t slot = -1);  // in quotes
  void gap_bare(std::string_view name, gap how, std::int32_t slot = -1);
  // Left out if the event has no such member.
  void text(std::string_view name, system_member member);
  void number(std::string_view name, system_member member);
  // The text of a field, in quotes.
  void field_text(std::string_view name, const value_parts& parts);
  // The same without a name.
  void quoted(const value_parts& parts, gap how = gap::json_text);
  void unquoted(const value_parts& parts, gap how = gap::json_text);

  // The field's only slot, or -1.
  std::int32_t slot_of(system_member member) const;

 private:
  const event_view& event_;
  form_program& out_;
  struct object {
    json_names names;
    bool empty = true;
  };
  std::vector<object> open_;
};

}  // namespace zanvik
