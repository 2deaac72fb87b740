#include "inspect/forms/json_writer.h"

#include "base/digits.h"
#include "export/line_text.h"

namespace zanvik {
void json_writer::next(std::string_view name) {
  if (!first_) out_ += ',';
  first_ = false;
  if (name.empty()) return;
  append_json_text(out_, name);
  out_ += ':';
}

void json_writer::open(std::string_view name, char bracket) {
  next(name);
  out_ += bracket;
  first_ = true;
}

void json_writer::close(char bracket) {
  out_ += bracket;
  first_ = false;
}

void json_writer::member(std::string_view name, bool value) {
  next(name);
  out_ += value ? "true" : "false";
}

void json_writer::member(std::string_view name, std::uint64_t value) {
  next(name);
  append_decimal(out_, value);
}

void json_writer::member(std::string_view name, std::string_view value) {
  next(name);
  append_json_text(out_, value);
}

void json_writer::element(std::uint64_t value) { member({}, value); }

}  // namespace zanvik
