// What `-strict` reports: everything on a command line, in a command file or among the logs that a
// run would otherwise ignore in silence.
//
// Notes are held back until it is certain that `-strict` was given, because options are taken one
// by one. Each is then printed once, on a line of its own on standard error. Without `-strict`
// nothing is printed, and `any` stays false.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace zanvik {

class strict_notes {
 public:
  // A thread that keeps its messages (base/console.h) keeps its notes with them.
  void add(std::string note);
  // The command line has been read; from now on notes are printed at once, or dropped.
  void decide(bool strict);

  bool is_strict() const { return state_ == state::on; }
  // A note was printed, so the run ends with status 1.
  bool any() const { return is_strict() && !told_.empty(); }

 private:
  enum class state { undecided, on, off };

  state state_ = state::undecided;
  std::vector<std::string> held_;
  std::set<std::string> told_;
};

}  // namespace zanvik
