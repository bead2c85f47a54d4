// SPDX-License-Identifier: Apache-2.0
#include "record/store.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

#include "record/digest.h"
#include "record/folder.h"
#include "record/whole_file.h"

namespace change::store {
namespace {

constexpr char kLast[] = "/var/lib/zarnnet/last";
constexpr char kRecord[] = ".json";
constexpr char kBefore[] = ".before";
constexpr char kAfter[] = ".after";

std::string PathOf(long number, const char* kind) {
  return std::string(kFolder) + "/" + std::to_string(number) + kind;
}

std::optional<long> NumberIn(std::string_view text) {
  long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number <= 0) return std::nullopt;
  return number;
}

bool WriteFile(const std::string& path, const std::string& bytes, std::string* problem) {
  constexpr mode_t kRootsAlone = 0600;
  if (WriteWhole(path, {bytes, kRootsAlone, 0, 0, {}})) return true;
  const int reason = errno;
  *problem = "cannot write " + path + ": " + std::strerror(reason);
  return false;
}

// One that somebody made for all to read is closed.
bool MakeFolder(std::string* problem) {
  constexpr mode_t kRootsAlone = 0700;
  constexpr mode_t kAll = 0777;
  ::mkdir("/var/lib", 0755);
  ::mkdir(kFolder, kRootsAlone);
  struct stat status {};
  const bool folder = ::lstat(kFolder, &status) == 0 && S_ISDIR(status.st_mode);
  const bool closed =
      folder && status.st_uid == ::geteuid() &&
      ((status.st_mode & kAll) == kRootsAlone || ::chmod(kFolder, kRootsAlone) == 0);
  if (!closed) *problem = std::string(kFolder) + " is no folder of root's alone";
  return closed;
}

std::vector<long> NumbersOf(const char* kind) {
  std::vector<long> numbers;
  const bool whole = EachNameIn(kFolder, [&](const std::filesystem::path& name) {
    const auto number = name.extension() == kind ? NumberIn(name.stem().string()) : std::nullopt;
    if (number) numbers.push_back(*number);
  });
  // Taken for none, a change that waits would be passed over.
  if (!whole) throw std::runtime_error(std::string(kFolder) + " cannot be read");
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

long LastNumber() {
  const auto file = ReadWhole(kLast);
  const std::string text = file ? file->bytes.substr(0, file->bytes.find('\n')) : "";
  const auto numbers = Numbers();
  return std::max(NumberIn(text).value_or(0), numbers.empty() ? 0 : numbers.back());
}

std::optional<std::string> ReadChecked(const std::string& path, const std::string& digest) {
  auto file = ReadWhole(path);
  if (!file || DigestOf(file->bytes) != digest) return std::nullopt;
  return std::move(file->bytes);
}

// What was on its way to its place when its writer was killed: its number comes never again.
void RemoveLeftOvers() {
  static_cast<void>(EachNameIn(kFolder, [](const std::string& name) {
    if (name.starts_with('.')) ::unlink((std::filesystem::path(kFolder) / name).c_str());
  }));
}

std::vector<long> AllBut(std::vector<long> numbers, long last) {
  numbers.resize(numbers.size() - std::min(numbers.size(), static_cast<std::size_t>(last)));
  return numbers;
}

// Younger than the days for which contents are kept.
bool IsYoung(long number, long days) {
  constexpr long kDay = 24L * 60 * 60;
  struct stat status {};
  return ::stat(PathOf(number, kBefore).c_str(), &status) == 0 &&
         ::time(nullptr) - status.st_mtime < days * kDay;
}

}  // namespace

std::vector<long> Numbers() {
  return NumbersOf(kRecord);
}

std::optional<long> NewNumber(std::string* problem) {
  if (!MakeFolder(problem)) return std::nullopt;
  const long number = LastNumber() + 1;
  if (!WriteFile(kLast, std::to_string(number) + "\n", problem)) return std::nullopt;
  return number;
}

bool Write(const Record& record, std::string* problem) {
  return WriteFile(PathOf(record.number, kRecord), BytesOf(record), problem);
}

std::optional<Record> Read(long number, std::string* problem) {
  const std::string path = PathOf(number, kRecord);
  const auto file = ReadWhole(path);
  if (!file) {
    *problem = "there is no record of a change " + std::to_string(number);
    return std::nullopt;
  }
  auto record = RecordOf(file->bytes, problem);
  if (!record || record->number != number) {
    *problem = "the record of change " + std::to_string(number) + " (" + path +
               ") cannot be used: " + *problem;
    return std::nullopt;
  }
  return record;
}

bool WriteBefore(Record* record, const Stored& before, std::string* problem) {
  const std::string bytes = BytesOf(before);
  record->before = DigestOf(bytes);
  return WriteFile(PathOf(record->number, kBefore), bytes, problem);
}

std::optional<Stored> ReadBefore(const Record& record, std::string* problem) {
  const std::string path = PathOf(record.number, kBefore);
  const auto bytes = ReadChecked(path, record.before);
  auto before = bytes ? StoredOf(*bytes) : std::nullopt;
  if (before) return before;
  const bool there = ::access(path.c_str(), F_OK) == 0;
  *problem = "what the machine was before change " + std::to_string(record.number) +
             (there ? " (" + path + ") is cut or damaged" : " is kept no longer");
  return std::nullopt;
}

bool WriteAfter(Record* record, const Files& after, std::string* problem) {
  const std::string bytes = BytesOf(after);
  record->after = DigestOf(bytes);
  return WriteFile(PathOf(record->number, kAfter), bytes, problem);
}

std::optional<Files> ReadAfter(const Record& record) {
  const auto bytes = ReadChecked(PathOf(record.number, kAfter), record.after);
  return bytes ? FilesOf(*bytes) : std::nullopt;
}

void RemoveOld(long changes, long days, long records) {
  RemoveLeftOvers();
  for (const long number : AllBut(NumbersOf(kBefore), changes)) {
    if (IsYoung(number, days)) continue;
    ::unlink(PathOf(number, kBefore).c_str());
    ::unlink(PathOf(number, kAfter).c_str());
  }
  for (const long number : AllBut(Numbers(), records)) {
    if (::access(PathOf(number, kBefore).c_str(), F_OK) != 0)
      ::unlink(PathOf(number, kRecord).c_str());
  }
}

}  // namespace change::store
