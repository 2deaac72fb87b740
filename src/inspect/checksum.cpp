#include "inspect/checksum.h"

#include <openssl/evp.h>

#include "base/digits.h"

namespace zanvik {

struct sha256::state {
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  bool good = context != nullptr && EVP_DigestInit_ex(context, EVP_sha256(), nullptr) == 1;
  ~state() { EVP_MD_CTX_free(context); }
};

sha256::sha256() : state_(std::make_unique<state>()) {}
sha256::~sha256() = default;

void sha256::add(std::span<const std::byte> bytes) {
  state_->good = state_->good && EVP_DigestUpdate(state_->context, bytes.data(), bytes.size()) == 1;
}

std::string sha256::finish() {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  if (!state_->good || EVP_DigestFinal_ex(state_->context, digest, &size) != 1) return {};
  state_->good = false;
  std::string text;
  for (unsigned i = 0; i < size; ++i) append_hex(text, digest[i], 2);
  return text;
}

}  // namespace zanvik
