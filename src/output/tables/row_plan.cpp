#include "output/tables/row_plan.h"

#include <algorithm>
#include <string_view>

namespace zanvik {
namespace {

// Adds cells to the row from the first field column on; those past the last column are dropped.
class planner {
 public:
  planner(const table_layout& layout, const text_rules& rules, const std::string& separator)
      : layout_(layout), rules_(rules), separator_(separator), at_(layout.first_field) {}

  void add_text(std::string_view text) {
    if (!begin_cell()) return;
    append_text_cell(plan_.text, text, width(), rules_);
    ++at_;
  }
  void add_value() {
    if (!begin_cell()) return skip_value();
    const auto padding = static_cast<std::uint32_t>(rules_.padded ? width() : 0);
    add_step({0, padding, false});
    plan_.room += std::max<std::size_t>(long_value, padding) + 2;  // 2 for quotes
    ++at_;
  }
  void skip_value() { add_step({0, 0, true}); }
  row_plan finish();

 private:
  // Writes what precedes the next cell; false if there is no column for it.
  bool begin_cell() {
    if (at_ == layout_.columns.size()) return false;
    if (at_ != layout_.first_field) plan_.text += separator_;
    return true;
  }
  std::size_t width() const { return layout_.columns[at_].width; }
  void add_step(plan_step step) {
    step.text_size = static_cast<std::uint32_t>(plan_.text.size() - planned_text_);
    planned_text_ = plan_.text.size();
    plan_.steps.push_back(step);
  }

  const table_layout& layout_;
  const text_rules& rules_;
  const std::string& separator_;
  std::size_t at_;
  std::size_t planned_text_ = 0;  // how much of the text the steps use
  row_plan plan_;
};

row_plan planner::finish() {
  plan_.has_log_cell = begin_cell();
  // Values skipped at the end of a block need not be read at all.
  while (!plan_.steps.empty() && plan_.steps.back().skipped) {
    planned_text_ -= plan_.steps.back().text_size;
    plan_.steps.pop_back();
  }
  plan_.tail_size = plan_.text.size() - planned_text_;
  plan_.room += plan_.text.size();
  plan_.text.append(row_plan::slack, '\0');
  return std::move(plan_);
}

}  // namespace

row_plan make_row_plan(const table_layout& layout, const LogRecord& record, const text_rules& rules,
                       const std::string& separator) {
  planner plan(layout, rules, separator);
  const std::vector<shape_column>& names = layout.naming_shape(record).columns;
  const std::vector<shape_column>& columns = record.shape->columns;
  std::size_t next = 0;  // of the record's columns, which are in the order of the fields
  const auto pass_over = [&] {
    if (!columns[next++].literal) plan.skip_value();
  };
  for (const field_column& field : layout.fields) {
    while (next < names.size() && names[next].name < field.name) pass_over();
    const bool found = next < names.size() && names[next].name == field.name;
    if (!found) {
      // A dropped column that the record lacks takes a cell too, and moves all later ones by one.
      // Meant: reports have always looked like that.
      plan.add_text({});
    } else if (field.dropped) {
      pass_over();
    } else if (columns[next].literal) {
      plan.add_text(columns[next++].text);
    } else {
      plan.add_value();
      ++next;
    }
  }
  return plan.finish();
}

}  // namespace zanvik
