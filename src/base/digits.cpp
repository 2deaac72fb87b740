#include "base/digits.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zanvik {
namespace {

// The bytes at `bytes`, in order.
template <std::size_t count>
char* write_hex_bytes(char* out, const std::byte* bytes) {
  for (std::size_t i = 0; i < count; ++i)
    out = write_hex_pair(out, std::to_integer<std::uint8_t>(bytes[i]));
  return out;
}

// The little-endian field at `bytes`.
template <std::size_t count>
char* write_hex_field(char* out, const std::byte* bytes) {
  for (std::size_t i = count; i-- != 0;)
    out = write_hex_pair(out, std::to_integer<std::uint8_t>(bytes[i]));
  return out;
}

// A number below 10,000, without zeros in front.
char* write_up_to_four(char* out, std::uint32_t value) {
  if (value >= 100) {
    const std::uint32_t upper = value / 100;
    if (upper >= 10) {
      out = write_decimal_pair(out, upper);
    } else {
      *out++ = static_cast<char>('0' + upper);
    }
    return write_decimal_pair(out, value % 100);
  }
  if (value >= 10) return write_decimal_pair(out, value);
  *out = static_cast<char>('0' + value);
  return out + 1;
}

// The four digits of a number below 10,000.
char* write_four(char* out, std::uint32_t value) {
  return write_decimal_pair(write_decimal_pair(out, value / 100), value % 100);
}

char* write_shortest(char* out, std::uint64_t value) {
  if (value < 10'000) return write_up_to_four(out, static_cast<std::uint32_t>(value));
  if (value < 100'000'000) {
    const auto number = static_cast<std::uint32_t>(value);
    return write_four(write_up_to_four(out, number / 10'000), number % 10'000);
  }
  out = write_shortest(out, value / 100'000'000);
  const auto last = static_cast<std::uint32_t>(value % 100'000'000);
  return write_four(write_four(out, last / 10'000), last % 10'000);
}

// The 16 digits of `value`.
void write_sixteen(char* out, std::uint64_t value) {
#if defined(__SSE2__)
  const __m128i bytes = _mm_cvtsi64_si128(static_cast<long long>(__builtin_bswap64(value)));
  const __m128i low_half = _mm_set1_epi8(0x0f);
  const __m128i upper = _mm_and_si128(_mm_srli_epi64(bytes, 4), low_half);
  const __m128i digits = _mm_unpacklo_epi8(upper, _mm_and_si128(bytes, low_half));
  const __m128i is_letter = _mm_cmpgt_epi8(digits, _mm_set1_epi8(9));
  const __m128i to_letter = _mm_and_si128(is_letter, _mm_set1_epi8('a' - '0' - 10));
  const __m128i text = _mm_add_epi8(_mm_add_epi8(digits, _mm_set1_epi8('0')), to_letter);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text);
#else
  write_all_hex(out, value);
#endif
}

}  // namespace

char* write_decimal(char* out, std::uint64_t value, unsigned min_width) {
  if (min_width <= 1) return write_shortest(out, value);
  char digits[20];
  const auto count = static_cast<std::size_t>(write_shortest(digits, value) - digits);
  if (count < min_width) {
    std::memset(out, '0', min_width - count);
    out += min_width - count;
  }
  std::memcpy(out, digits, count);
  return out + count;
}

char* write_hex(char* out, std::uint64_t value, unsigned min_width) {
  constexpr unsigned most_digits = 16;
  for (; min_width > most_digits; --min_width) *out++ = '0';
  const unsigned needed = (static_cast<unsigned>(std::bit_width(value | 1)) + 3) / 4;
  const unsigned count = std::max(needed, min_width);
  // All 16 are written, for which there is room; those that are not needed have left the front.
  write_sixteen(out, count == most_digits ? value : value << 4 * (most_digits - count));
  return out + count;
}

void append_hex(std::string& out, std::uint64_t value, unsigned min_width) {
  char digits[32];
  assert(min_width <= sizeof digits);
  const auto end = write_hex(digits, value, std::min<unsigned>(min_width, sizeof digits));
  out.append(digits, static_cast<std::size_t>(end - digits));
}

char* write_guid(char* out, std::span<const std::byte, 16> bytes) {
  const std::byte* const in = bytes.data();
  out = write_hex_field<4>(out, in);
  *out++ = '-';
  out = write_hex_field<2>(out, in + 4);
  *out++ = '-';
  out = write_hex_field<2>(out, in + 6);
  *out++ = '-';
  out = write_hex_bytes<2>(out, in + 8);
  *out++ = '-';
  return write_hex_bytes<6>(out, in + 10);
}

void append_guid(std::string& out, std::span<const std::byte, 16> bytes) {
  char text[guid_text_size];
  write_guid(text, bytes);
  out.append(text, sizeof text);
}

}  // namespace zanvik
