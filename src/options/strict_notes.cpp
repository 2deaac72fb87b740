#include "options/strict_notes.h"

#include <utility>

#include "base/console.h"

namespace zanvik {

void strict_notes::add(std::string note) {
  if (state_ == state::undecided) return held_.push_back(std::move(note));
  if (state_ == state::off) return;
  // A thread may read this state but not change it.
  if (held_messages::keep([this, note] { add(note); })) return;
  if (told_.insert(note).second) print_line("strict: " + note);
}

void strict_notes::decide(bool strict) {
  state_ = strict ? state::on : state::off;
  for (std::string& note : std::exchange(held_, {})) add(std::move(note));
}

}  // namespace zanvik
