// SPDX-License-Identifier: Apache-2.0
// The buffer cipher: hides a stored password from who sees the file without the machine's key. It
// is its own inverse and leaves no NUL in the text, so that a password of 31 characters stays a
// text of 31 characters; printable text stays printable, so that it stays one line too. The
// keystream is the same for every text, as it must be for that: it is no substitute for the file's
// mode.
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <nettle/hmac.h>
#include <string>
#include <string_view>
#include <sys/random.h>
#include <sys/stat.h>

#include <zarncore/zarncore.h>

#include "common/error.h"
#include "whole_file.h"

namespace {

using platform::Code;
using platform::CodeOf;
using platform::Fail;

constexpr char kKeyFolder[] = "/etc/zarncore";
constexpr char kKeyFile[] = "/etc/zarncore/cipher.key";
constexpr mode_t kKeyMode = 0600;
constexpr std::size_t kKeySize = 32;
constexpr std::size_t kBlockSize = SHA256_DIGEST_SIZE;

// A text that is wiped when it is let go of.
struct Secret {
  std::string text;
  ~Secret() { ::explicit_bzero(text.data(), text.size()); }
};

// The first caller makes the key; of two at the same time the one that has the file's lock.
Code MakeKey(Secret* key) {
  if (::mkdir(kKeyFolder, 0700) == 0) {
    zarncore::SyncFolder("/etc");
  } else if (errno != EEXIST) {
    return CodeOf(Code::kOpen);
  }
  zarncore::FileEdit edit(kKeyFile, kKeyMode);
  if (edit.Error() != Code::kNone) return edit.Error();
  if (!edit.IsNew()) {
    key->text = edit.Content();
    return Code::kNone;
  }
  key->text.resize(kKeySize);
  if (::getentropy(key->text.data(), kKeySize) != 0) return Code::kRead;
  return edit.Replace(key->text);
}

// A key that is there is never replaced: what it has hidden would be lost.
Code MachineKey(Secret* key) {
  zarncore::WholeFile file = zarncore::ReadWhole(kKeyFile);
  const bool isMissing = file.error == Code::kOpen && errno == ENOENT;
  key->text.swap(file.text);
  const Code error = isMissing ? MakeKey(key) : file.error;
  if (error != Code::kNone) return error;
  return key->text.size() >= kKeySize ? Code::kNone : Code::kContent;
}

using Block = std::array<unsigned char, kBlockSize>;

// One block of the keystream: HMAC of the block's number under the machine's key.
Block KeystreamBlock(std::string_view key, std::uint64_t number) {
  hmac_sha256_ctx context;
  Block block{};
  hmac_sha256_set_key(&context, kKeySize, reinterpret_cast<const std::uint8_t*>(key.data()));
  hmac_sha256_update(&context, sizeof number, reinterpret_cast<const std::uint8_t*>(&number));
  hmac_sha256_digest(&context, block.size(), block.data());
  return block;
}

// The place of a byte among the printable ones, or among the others but NUL.
constexpr unsigned kPrintable = 95;  // from blank to tilde
constexpr unsigned kOthers = 160;    // 1 to 31, and 127 to 255
bool IsPrintable(unsigned byte) {
  return byte >= ' ' && byte <= '~';
}
unsigned PlaceOf(unsigned byte) {
  if (IsPrintable(byte)) return byte - ' ';
  return byte < ' ' ? byte - 1 : byte - 1 - kPrintable;
}

// A reflection within the byte's own kind: applied twice it gives the byte back.
char Reflect(unsigned byte, unsigned key) {
  const unsigned size = IsPrintable(byte) ? kPrintable : kOthers;
  const unsigned place = (key % size + size - PlaceOf(byte)) % size;
  if (IsPrintable(byte)) return static_cast<char>(place + ' ');
  return static_cast<char>(place < ' ' - 1U ? place + 1 : place + 1 + kPrintable);
}

void ReflectAll(std::string_view key, std::string* text) {
  Block block{};
  for (std::size_t i = 0; i < text->size(); ++i) {
    if (i % kBlockSize == 0) block = KeystreamBlock(key, i / kBlockSize);
    (*text)[i] = Reflect(static_cast<unsigned char>((*text)[i]), block[i % kBlockSize]);
  }
}

}  // namespace

int KOPACCryptBufCrypt(const char* pIn, size_t cbIn, char* pOut, size_t cbOut) try {
  if (pIn == nullptr || pOut == nullptr || cbOut == 0) return Fail(Code::kArgument);
  Secret secret{std::string(pIn, ::strnlen(pIn, cbIn))};  // the buffers may be the same
  if (secret.text.size() > cbOut) return Fail(Code::kArgument);
  Secret key;
  const Code error = MachineKey(&key);
  if (error != Code::kNone) return Fail(error);
  ReflectAll(key.text, &secret.text);
  std::memset(pOut, 0, cbOut);
  secret.text.copy(pOut, cbOut);
  return 0;
} catch (...) {
  return Fail(Code::kMemory);
}
