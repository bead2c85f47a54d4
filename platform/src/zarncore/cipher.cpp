// The buffer cipher: hides a stored password from who sees the file without the machine's key. It
// is its own inverse and leaves no NUL in the text, so that a password of 31 characters stays a
// text of 31 characters; printable text stays printable, so that it stays one line too. The
// keystream is the same for every text, as it must be for that: it is no substitute for the file's
// mode.
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <openssl/crypto.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <zarncore/zarncore.h>

#include "descriptor.h"
#include "whole_file.h"

namespace {

constexpr char kKeyFolder[] = "/etc/zarncore";
constexpr char kKeyFile[] = "/etc/zarncore/cipher.key";
constexpr int kKeySize = 32;
constexpr std::size_t kBlockSize = 32;  // of SHA-256

using Key = std::array<unsigned char, kKeySize>;

std::optional<Key> ReadKey() {
  const zarncore::Descriptor fd(::open(kKeyFile, O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  Key key{};
  if (!fd || ::read(fd.Get(), key.data(), key.size()) != static_cast<ssize_t>(key.size()))
    return std::nullopt;
  return key;
}

// The first caller makes the key; of two at the same time the first to link it in place wins.
bool MakeKey() {
  if (::mkdir(kKeyFolder, 0700) != 0 && errno != EEXIST) return false;
  Key key{};
  if (RAND_bytes(key.data(), kKeySize) != 1) return false;
  char temporary[] = "/etc/zarncore/cipher.key.XXXXXX";
  zarncore::Descriptor fd(::mkostemp(temporary, O_CLOEXEC));  // mode 0600
  if (!fd) return false;
  const bool written =
      ::write(fd.Get(), key.data(), key.size()) == static_cast<ssize_t>(key.size()) &&
      ::fsync(fd.Get()) == 0 && fd.Close();
  const bool linked = written && (::link(temporary, kKeyFile) == 0 || errno == EEXIST);
  ::unlink(temporary);
  // What is enciphered with a key that a power cut takes back is lost.
  return linked && zarncore::SyncFolder(kKeyFolder) && zarncore::SyncFolder("/etc");
}

std::optional<Key> MachineKey() {
  if (const auto key = ReadKey()) return key;
  if (::access(kKeyFile, F_OK) == 0 || !MakeKey())
    return std::nullopt;  // never replace a key that is there
  return ReadKey();
}

// One block of the keystream: HMAC of the block's number under the machine's key.
std::optional<std::array<unsigned char, kBlockSize>> KeystreamBlock(const Key& key,
                                                                    std::uint64_t number) {
  std::array<unsigned char, kBlockSize> block{};
  unsigned length = 0;
  unsigned char text[sizeof number];
  std::memcpy(text, &number, sizeof number);
  if (HMAC(EVP_sha256(), key.data(), kKeySize, text, sizeof text, block.data(), &length) ==
      nullptr) {
    return std::nullopt;
  }
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

bool ReflectAll(const Key& key, std::string* text) {
  std::optional<std::array<unsigned char, kBlockSize>> block;
  for (std::size_t i = 0; i < text->size(); ++i) {
    if (i % kBlockSize == 0) block = KeystreamBlock(key, i / kBlockSize);
    if (!block) return false;
    (*text)[i] = Reflect(static_cast<unsigned char>((*text)[i]), (*block)[i % kBlockSize]);
  }
  return true;
}

}  // namespace

int KOPACCryptBufCrypt(const char* pIn, size_t cbIn, char* pOut, size_t cbOut) try {
  if (pIn == nullptr || pOut == nullptr || cbOut == 0) return -1;
  std::string text(pIn, ::strnlen(pIn, cbIn));  // the buffers may be the same
  if (text.size() > cbOut) return -1;
  const auto key = MachineKey();
  if (!key || !ReflectAll(*key, &text)) return -1;
  std::memset(pOut, 0, cbOut);
  std::memcpy(pOut, text.data(), text.size());
  OPENSSL_cleanse(text.data(), text.size());
  return 0;
} catch (...) {
  return -1;
}
