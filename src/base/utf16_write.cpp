#include "base/utf16_write.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zanvik {
namespace {

std::uint16_t unit_at(const std::byte* bytes) {
  std::uint16_t unit;
  std::memcpy(&unit, bytes, sizeof(unit));
  return unit;
}

bool is_high_surrogate(std::uint16_t unit) { return (unit & 0xfc00) == 0xd800; }
bool is_low_surrogate(std::uint16_t unit) { return (unit & 0xfc00) == 0xdc00; }

// Whether each surrogate up to the first NUL has its partner.
bool surrogates_pair(const std::byte* in, const std::byte* end) {
  for (; in != end; in += 2) {
    const std::uint16_t unit = unit_at(in);
    if (unit == 0) return true;
    if (is_low_surrogate(unit)) return false;
    if (!is_high_surrogate(unit)) continue;
    in += 2;
    if (in == end || !is_low_surrogate(unit_at(in))) return false;
  }
  return true;
}

unsigned kind_of(std::uint16_t ascii) {
  if (ascii < 0x20) return kind_control;
  return ascii == ',' || ascii == '|' ? kind_separator : kind_plain;
}

#if defined(__SSE2__)
constexpr std::ptrdiff_t short_step = 16;  // bytes: eight units
constexpr std::ptrdiff_t long_step = 32;

// Adds the kinds of the ASCII characters.
void add_kinds(__m128i characters, unsigned& kinds) {
  const __m128i separators = _mm_or_si128(_mm_cmpeq_epi8(characters, _mm_set1_epi8(',')),
                                          _mm_cmpeq_epi8(characters, _mm_set1_epi8('|')));
  const __m128i controls = _mm_cmplt_epi8(characters, _mm_set1_epi8(0x20));
  if (_mm_movemask_epi8(_mm_or_si128(separators, controls)) == 0) return;
  if (_mm_movemask_epi8(separators) != 0) kinds |= kind_separator;
  if (_mm_movemask_epi8(controls) != 0) kinds |= kind_control;
}

// Copies sixteen units unless one of them is not ASCII, or NUL.
bool copy_sixteen(const std::byte* in, char* out, unsigned& kinds) {
  const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + short_step));
  const __m128i zero = _mm_setzero_si128();
  const __m128i beyond =
      _mm_and_si128(_mm_or_si128(first, second), _mm_set1_epi16(static_cast<short>(0xff80)));
  const __m128i characters = _mm_packus_epi16(first, second);
  const __m128i bad =
      _mm_or_si128(_mm_cmpgt_epi16(beyond, zero),
                   _mm_or_si128(_mm_cmplt_epi16(beyond, zero), _mm_cmpeq_epi8(characters, zero)));
  if (_mm_movemask_epi8(bad) != 0) return false;
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), characters);
  add_kinds(characters, kinds);
  return true;
}

// Copies eight units; returns how many of them, from the first on, are ASCII and no NUL.
unsigned copy_eight(const std::byte* in, char* out, unsigned& kinds) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i beyond = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xff80)));
  const __m128i good =
      _mm_andnot_si128(_mm_cmpeq_epi16(units, zero), _mm_cmpeq_epi16(beyond, zero));
  const __m128i characters = _mm_packus_epi16(units, units);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), characters);
  // Units after the last good one may be counted; that only costs a second look.
  add_kinds(characters, kinds);
  const auto mask = static_cast<unsigned>(_mm_movemask_epi8(good));
  return mask == 0xffff ? 8 : static_cast<unsigned>(__builtin_ctz(~mask)) / 2;
}
#endif

// Copies ASCII units, sixteen or eight at a time as far as possible; stops at the first other unit
// or a NUL.
const std::byte* copy_ascii(const std::byte* in, const std::byte* end, char*& out,
                            unsigned& kinds) {
#if defined(__SSE2__)
  const std::byte* const begin = in;
  for (; end - in >= long_step && copy_sixteen(in, out, kinds); in += long_step) {
    out += long_step / 2;
  }
  while (end - in >= short_step) {
    const unsigned copied = copy_eight(in, out, kinds);
    out += copied;
    in += 2 * copied;
    if (copied != 8) return in;
  }
  if (in != begin && in != end) {  // the last eight again, together with the rest
    const std::ptrdiff_t again = short_step - (end - in);
    if (copy_eight(end - short_step, out - again / 2, kinds) == 8) {
      out += (end - in) / 2;
      return end;
    }
  }
#endif
  while (in != end) {
    const std::uint16_t unit = unit_at(in);
    if (unit == 0 || unit >= 0x80) break;
    kinds |= kind_of(unit);
    *out++ = static_cast<char>(unit);
    in += 2;
  }
  return in;
}

// The rest of a text that has more than ASCII.
const std::byte* copy_units(const std::byte* in, const std::byte* end, char*& out) {
  const bool pairs = surrogates_pair(in, end);
  for (; in != end; in += 2) {
    const std::uint16_t unit = unit_at(in);
    if (unit == 0) return in;
    if (pairs && is_high_surrogate(unit)) {
      in += 2;
      out = write_utf8(out, 0x10000u + ((unit & 0x3ffu) << 10) + (unit_at(in) & 0x3ffu));
    } else {
      out = write_utf8(out, unit);
    }
  }
  return in;
}

}  // namespace

char* write_utf8(char* out, char32_t code_point) {
  const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  if (code_point < 0x80) {
    put(code_point);
  } else if (code_point < 0x800) {
    put(0xc0 | code_point >> 6);
    put(0x80 | (code_point & 0x3f));
  } else if (code_point < 0x10000) {
    put(0xe0 | code_point >> 12);
    put(0x80 | (code_point >> 6 & 0x3f));
    put(0x80 | (code_point & 0x3f));
  } else {
    put(0xf0 | code_point >> 18);
    put(0x80 | (code_point >> 12 & 0x3f));
    put(0x80 | (code_point >> 6 & 0x3f));
    put(0x80 | (code_point & 0x3f));
  }
  return out;
}

char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes, std::size_t& units,
                            unsigned& kinds) {
  const std::byte* const begin = bytes.data();
  const std::byte* const end = begin + (bytes.size() & ~std::size_t{1});
  const std::byte* in = copy_ascii(begin, end, out, kinds);
  if (in != end && unit_at(in) != 0) {
    kinds |= kind_control | kind_separator;
    in = copy_units(in, end, out);
  }
  units = static_cast<std::size_t>(in - begin) / 2;
  return out;
}

}  // namespace zanvik
