// SPDX-License-Identifier: Apache-2.0
// SHA-256 of texts and of whole files.
#include "record/digest.h"

#include <array>
#include <cstdint>
#include <nettle/base16.h>
#include <nettle/sha2.h>

namespace change {

std::string DigestOf(const std::string& bytes) {
  sha256_ctx context{};
  ::sha256_init(&context);
  ::sha256_update(&context, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  ::sha256_digest(&context, digest.size(), digest.data());
  std::string digits(BASE16_ENCODE_LENGTH(SHA256_DIGEST_SIZE), '\0');
  ::base16_encode_update(digits.data(), digest.size(), digest.data());
  return digits;
}

std::string DigestOf(const WholeFile& file) {
  // Each part begins with its length: no two files are the same text.
  const auto part = [](const std::string& text) {
    return std::to_string(text.size()) + ":" + text;
  };
  std::string text = part(std::to_string(file.mode)) + part(std::to_string(file.owner)) +
                     part(std::to_string(file.group));
  for (const auto& [name, value] : file.attributes)
    text += part(name) + part(value);
  return DigestOf(text + part(file.bytes));
}

}  // namespace change
