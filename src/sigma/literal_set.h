// Searches for many literals at once in a text.
//
// Two engines with the same results: Hyperscan, if the build and the processor have it, and a plain
// automaton, which tests compare with the other. Each takes time in proportion to the text,
// whatever the literals are.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zanvik::sigma {

// Memory of searches; one for each thread, for any number of sets.
class literal_scratch {
 public:
  literal_scratch();
  ~literal_scratch();
  literal_scratch(const literal_scratch&) = delete;
  literal_scratch& operator=(const literal_scratch&) = delete;

  std::vector<std::uint32_t> found;  // the answer: literals, each once, in no order
  // The plain engine's: which of its states were visited, by the number of the search.
  std::vector<std::uint32_t> met;
  std::uint32_t search = 0;
  // The other engine's memory, large enough for all sets that it was prepared for.
  void* engine_memory = nullptr;
};

class literal_set {
 public:
  virtual ~literal_set() = default;
  // Prepares `scratch` for searches with this set too.
  virtual void prepare(literal_scratch& scratch) const = 0;
  // Puts the numbers of the literals that occur in `text` into `scratch.found`.
  virtual void find(std::string_view text, literal_scratch& scratch) const = 0;
};

// A set of literals, none empty and no duplicates; they are numbered from 0.
std::unique_ptr<literal_set> make_plain_literal_set(const std::vector<std::string>& literals);
// Null if this engine is missing, or if it cannot take the literals.
std::unique_ptr<literal_set> make_hyperscan_literal_set(const std::vector<std::string>& literals);
// By the better of the two.
std::unique_ptr<literal_set> make_literal_set(const std::vector<std::string>& literals);

// The engine in use, with its version, for people.
std::string literal_engine_name();

}  // namespace zanvik::sigma
