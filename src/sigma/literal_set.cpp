#include "sigma/literal_set.h"

#include <unordered_map>

#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

// The automaton of Aho and Corasick: a tree of all literals, in which each state knows the longest
// other one that the text so far ends with.
class plain_literal_set : public literal_set {
 public:
  explicit plain_literal_set(const std::vector<std::string>& literals) {
    states_.emplace_back();
    for (std::uint32_t i = 0; i < literals.size(); ++i) add(literals[i], i);
    link();
  }

  void prepare(literal_scratch& scratch) const override {
    if (scratch.met.size() < states_.size()) scratch.met.resize(states_.size());
  }

  void find(std::string_view text, literal_scratch& scratch) const override {
    scratch.found.clear();
    if (++scratch.search == 0) {
      scratch.met.assign(scratch.met.size(), 0);
      scratch.search = 1;
    }
    std::uint32_t at = 0;
    for (const char c : text) {
      at = next(at, static_cast<unsigned char>(c));
      // A state that was visited before has been reported, and so has everything that it leads to.
      for (std::uint32_t s = at; s != 0 && scratch.met[s] != scratch.search;
           s = states_[s].output) {
        scratch.met[s] = scratch.search;
        if (states_[s].literal != none) scratch.found.push_back(states_[s].literal);
      }
    }
  }

 private:
  static constexpr std::uint32_t none = UINT32_MAX;
  struct state {
    std::uint32_t literal = none;  // that ends here
    std::uint32_t fallback = 0;    // the longest other state that this one's text ends with
    std::uint32_t output = 0;      // the next of those where a literal ends
    std::uint32_t parent = 0;
    unsigned char byte = 0;
  };

  static std::uint64_t edge(std::uint32_t from, unsigned char byte) {
    return std::uint64_t{from} << 8 | byte;
  }

  void add(std::string_view literal, std::uint32_t number) {
    std::uint32_t at = 0;
    for (const char c : literal) {
      const auto byte = static_cast<unsigned char>(c);
      const auto [it, fresh] =
          edges_.try_emplace(edge(at, byte), static_cast<std::uint32_t>(states_.size()));
      if (fresh) states_.push_back({none, 0, 0, at, byte});
      at = it->second;
    }
    states_[at].literal = number;
  }

  std::uint32_t next(std::uint32_t from, unsigned char byte) const {
    for (;;) {
      const auto it = edges_.find(edge(from, byte));
      if (it != edges_.end()) return it->second;
      if (from == 0) return 0;
      from = states_[from].fallback;
    }
  }

  void link() {
    // Shorter texts first, because a state falls back to a shorter one.
    std::vector<std::uint32_t> depth(states_.size()), order;
    for (std::uint32_t s = 1; s < states_.size(); ++s) depth[s] = depth[states_[s].parent] + 1;
    std::vector<std::vector<std::uint32_t>> by_depth;
    for (std::uint32_t s = 1; s < states_.size(); ++s) {
      if (by_depth.size() <= depth[s]) by_depth.resize(depth[s] + 1);
      by_depth[depth[s]].push_back(s);
    }
    for (const auto& level : by_depth) {
      for (const std::uint32_t s : level) {
        state& current = states_[s];
        if (current.parent != 0) {
          current.fallback = next(states_[current.parent].fallback, current.byte);
        }
        const state& shorter = states_[current.fallback];
        current.output = shorter.literal != none ? current.fallback : shorter.output;
      }
    }
  }

  std::vector<state> states_;
  std::unordered_map<std::uint64_t, std::uint32_t> edges_;
};

}  // namespace

std::unique_ptr<literal_set> make_plain_literal_set(const std::vector<std::string>& literals) {
  return std::make_unique<plain_literal_set>(literals);
}

std::unique_ptr<literal_set> make_literal_set(const std::vector<std::string>& literals) {
  std::unique_ptr<literal_set> out;
  if (literals.size() <= limits::hyperscan_literals) out = make_hyperscan_literal_set(literals);
  return out ? std::move(out) : make_plain_literal_set(literals);
}

}  // namespace zanvik::sigma
