#include "events/cell_text.h"

#include <algorithm>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zanvik {

#if defined(__SSE2__)
namespace {

constexpr std::ptrdiff_t clean_step = 16;

// Copies as many characters unless a tab or a line end is among them; `out` may be up to all of
// them before `in`. Adds `kind_separator` for a comma or a vertical bar.
bool copy_clean(const char* in, char* out, unsigned& kinds) {
  const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const auto is = [text](char c) { return _mm_cmpeq_epi8(text, _mm_set1_epi8(c)); };
  if (_mm_movemask_epi8(_mm_or_si128(is('\t'), _mm_or_si128(is('\r'), is('\n')))) != 0)
    return false;
  if (_mm_movemask_epi8(_mm_or_si128(is(','), is('|'))) != 0) kinds |= kind_separator;
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text);
  return true;
}

}  // namespace
#endif

char* clean_cell_text(char* begin, char* end, cell_form form, bool& marked) {
  const char line_feed = form == cell_form::all_data ? ':' : ',';
  unsigned kinds = kind_plain;
  const char* in = begin;
  char* out = begin;
  while (in != end) {
#if defined(__SSE2__)
    if (end - in >= clean_step && copy_clean(in, out, kinds)) {
      in += clean_step;
      out += clean_step;
      continue;
    }
    const char* const stop = end - in < clean_step ? end : in + clean_step;
#else
    const char* const stop = end;
#endif
    for (; in != stop; ++in) {
      const char c = *in == '\n' ? line_feed : *in;
      if (c == ',' || c == '|') kinds |= kind_separator;
      *out = c;
      out += c != '\r' && c != '\t';
    }
  }
  if (form == cell_form::all_data && out != begin && *begin == ':') {
    out = std::copy(begin + 1, out, begin);
  }
  marked = marked || kinds != kind_plain;
  return out;
}

char* write_any_cell_text(value_writer& writer, char* out, const raw_value& value, cell_form form,
                          bool& marked) {
  const bool all_data = form == cell_form::all_data;
  unsigned kinds = kind_plain;
  char* const end = writer.write(out, value, kinds, all_data ? " " : ", ");
  // Most texts hold nothing that would have to be cleaned.
  if ((kinds & kind_control) != 0 || (all_data && end != out && *out == ':')) {
    return clean_cell_text(out, end, form, marked);
  }
  marked = marked || (kinds & kind_separator) != 0;
  return end;
}

void clean_cell_text(std::string& text, cell_form form) {
  bool marked = false;
  const char* end = clean_cell_text(text.data(), text.data() + text.size(), form, marked);
  text.resize(static_cast<std::size_t>(end - text.data()));
}

}  // namespace zanvik
