#define PCRE2_CODE_UNIT_WIDTH 8
#include "sigma/regex.h"

#include <pcre2.h>

#include <array>

#include "sigma/sigma_limits.h"

namespace zanvik::sigma {
namespace {

std::string message_of(int code) {
  std::array<PCRE2_UCHAR, 256> text{};
  pcre2_get_error_message(code, text.data(), text.size());
  return reinterpret_cast<const char*>(text.data());
}

}  // namespace

struct regex_scratch::parts {
  pcre2_match_data* data = pcre2_match_data_create(1, nullptr);
  pcre2_match_context* context = pcre2_match_context_create(nullptr);
  pcre2_jit_stack* stack = pcre2_jit_stack_create(32 << 10, 512 << 10, nullptr);

  parts() {
    if (context == nullptr) return;
    pcre2_set_match_limit(context, limits::regex_steps);
    pcre2_set_heap_limit(context, limits::regex_heap_kib);
    if (stack != nullptr) pcre2_jit_stack_assign(context, nullptr, stack);
  }
  parts(const parts&) = delete;
  parts& operator=(const parts&) = delete;
  ~parts() {
    pcre2_match_data_free(data);
    pcre2_match_context_free(context);
    pcre2_jit_stack_free(stack);
  }
};

regex_scratch::regex_scratch() : parts_(std::make_unique<parts>()) {}
regex_scratch::~regex_scratch() = default;

regex::~regex() { pcre2_code_free(static_cast<pcre2_code*>(code_)); }

namespace {

pcre2_code* compiled(std::string_view text, regex_flags flags, int& error, PCRE2_SIZE& where) {
  std::uint32_t options = PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C;
  if (flags.any_case) options |= PCRE2_CASELESS;
  if (flags.multi_line) options |= PCRE2_MULTILINE;
  if (flags.single_line) options |= PCRE2_DOTALL;
  return pcre2_compile(reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), options, &error,
                       &where, nullptr);
}

}  // namespace

std::shared_ptr<const regex> regex::compile(std::string_view text, regex_flags flags,
                                            std::string& error) {
  if (text.size() > limits::regex_bytes) {
    error = "longer than " + std::to_string(limits::regex_bytes) + " bytes";
    return nullptr;
  }
  int code = 0;
  PCRE2_SIZE where = 0;
  std::shared_ptr<regex> out(new regex);
  pcre2_code* const trial = compiled(text, flags, code, where);
  if (trial == nullptr) {
    error = message_of(code) + " at character " + std::to_string(where + 1);
    return nullptr;
  }
  pcre2_pattern_info(trial, PCRE2_INFO_SIZE, &out->compiled_bytes_);
  pcre2_code_free(trial);
  out->text_ = text;
  out->flags_ = flags;
  return out;
}

void regex::compile_code() const {
  int code = 0;
  PCRE2_SIZE where = 0;
  pcre2_code* const made = compiled(text_, flags_, code, where);
  // If there is no code generator for the processor, the interpreter is used.
  if (made != nullptr) pcre2_jit_compile(made, PCRE2_JIT_COMPLETE);
  code_ = made;
}

regex_answer regex::search(std::string_view text, regex_scratch& scratch) const {
  const auto& parts = *scratch.parts_;
  std::call_once(compiled_, [this] { compile_code(); });
  if (code_ == nullptr || parts.data == nullptr || parts.context == nullptr) {
    return regex_answer::gave_up;
  }
  const int result =
      pcre2_match(static_cast<pcre2_code*>(code_), reinterpret_cast<PCRE2_SPTR>(text.data()),
                  text.size(), 0, 0, parts.data, parts.context);
  if (result >= 0) return regex_answer::yes;
  return result == PCRE2_ERROR_NOMATCH ? regex_answer::no : regex_answer::gave_up;
}

}  // namespace zanvik::sigma
