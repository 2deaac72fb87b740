// Regular expressions by PCRE2; the only file that uses the library.
//
// An expression comes from a rule and a text from a log, so both are hostile: the length of the
// expression, the steps and the memory of a match are limited (sigma_limits.h), and a match that
// reaches a limit says so and stops. Text is UTF-8; other bytes never match.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace zanvik::sigma {

struct regex_flags {
  bool any_case = false;     // `i`
  bool multi_line = false;   // `m`: ^ and $ at line ends too
  bool single_line = false;  // `s`: the dot takes line ends too
};

enum class regex_answer : unsigned char { no, yes, gave_up };

// Memory of matching; one for each thread.
class regex_scratch {
 public:
  regex_scratch();
  ~regex_scratch();
  regex_scratch(const regex_scratch&) = delete;
  regex_scratch& operator=(const regex_scratch&) = delete;

 private:
  friend class regex;
  struct parts;
  std::unique_ptr<parts> parts_;
};

class regex {
 public:
  // Null, with `error` set, if the expression is not valid. Only expressions that are used stay
  // compiled.
  static std::shared_ptr<const regex> compile(std::string_view text, regex_flags flags,
                                              std::string& error);
  ~regex();
  regex(const regex&) = delete;
  regex& operator=(const regex&) = delete;

  // Whether the expression matches anywhere in `text`.
  regex_answer search(std::string_view text, regex_scratch& scratch) const;

  // Its compiled size in bytes, without the code that the processor runs.
  std::size_t compiled_bytes() const { return compiled_bytes_; }
  const std::string& text() const { return text_; }
  regex_flags flags() const { return flags_; }

 private:
  regex() = default;
  void compile_code() const;

  mutable std::once_flag compiled_;
  mutable void* code_ = nullptr;  // null until the first search
  std::size_t compiled_bytes_ = 0;
  std::string text_;
  regex_flags flags_;
};

// A folded literal (fold_case.h) that is in the folded form of every text that the expression
// matches; empty if none is found. Syntax that is not understood yields none.
std::string literal_of_regex(std::string_view expression);

}  // namespace zanvik::sigma
