#include "support/qx_utf16_write.h"

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

char* write_code_point(char* out, std::uint32_t point) {
  const auto put = [&out](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xc0 | point >> 6);
    put(0x80 | (point & 0x3f));
  } else if (point < 0x10000) {
    put(0xe0 | point >> 12);
    put(0x80 | (point >> 6 & 0x3f));
    put(0x80 | (point & 0x3f));
  } else {
    put(0xf0 | point >> 18);
    put(0x80 | (point >> 12 & 0x3f));
    put(0x80 | (point >> 6 & 0x3f));
    put(0x80 | (point & 0x3f));
  }
  return out;
}

// Copies ASCII units eight at a time; stops at the first other unit, a NUL, or near the end.
const std::byte* copy_ascii(const std::byte* in, const std::byte* end, char*& out) {
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  const __m128i above_ascii = _mm_set1_epi16(static_cast<short>(0xff80));
  while (end - in >= 16) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i good = _mm_andnot_si128(_mm_cmpeq_epi16(units, zero),
                                          _mm_cmpeq_epi16(_mm_and_si128(units, above_ascii), zero));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(units, units));
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(good));
    if (mask != 0xffff) {
      const auto bytes = static_cast<unsigned>(__builtin_ctz(~mask));
      out += bytes / 2;
      return in + bytes;
    }
    out += 8;
    in += 16;
  }
#endif
  while (in != end) {
    const std::uint16_t unit = unit_at(in);
    if (unit == 0 || unit >= 0x80) break;
    *out++ = static_cast<char>(unit);
    in += 2;
  }
  return in;
}

// The rest of a text that holds more than ASCII.
const std::byte* copy_units(const std::byte* in, const std::byte* end, char*& out) {
  const bool pairs = surrogates_pair(in, end);
  for (; in != end; in += 2) {
    const std::uint16_t unit = unit_at(in);
    if (unit == 0) return in;
    if (pairs && is_high_surrogate(unit)) {
      in += 2;
      out = write_code_point(out, 0x10000u + ((unit & 0x3ffu) << 10) + (unit_at(in) & 0x3ffu));
    } else {
      out = write_code_point(out, unit);
    }
  }
  return in;
}

}  // namespace

char* write_utf8_from_utf16(char* out, std::span<const std::byte> bytes, std::size_t& units) {
  const std::byte* const begin = bytes.data();
  const std::byte* const end = begin + (bytes.size() & ~std::size_t{1});
  const std::byte* in = copy_ascii(begin, end, out);
  if (in != end && unit_at(in) != 0) in = copy_units(in, end, out);
  units = static_cast<std::size_t>(in - begin) / 2;
  return out;
}

}  // namespace zanvik
