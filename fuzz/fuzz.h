// SPDX-License-Identifier: Apache-2.0
// The frame of the fuzz targets. A target is a function of one input, registered by its name; all
// of them are one program, which runs in the appliance and has its kernel's tables and its files in
// memory. Programs are not run: /bin/cp is done by the frame, and what a program prints is the
// input.
#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <zarncore/zarncore.h>

namespace fuzz {

// The bytes of a run: texts that end with a NUL, as a caller's do, and the rest, which is a file's.
class Input {
 public:
  explicit Input(std::string_view bytes) : bytes_(bytes) {}
  std::string Text();  // the next one
  // Fields of a record get the next texts, and lack their end where one is too long.
  template <class... Fields>
  void Fill(Fields&... fields) {
    (Text().copy(static_cast<char*>(std::memset(fields, 0, sizeof fields)), sizeof fields), ...);
  }
  // The next texts are these files', the rest the last one's.
  void Files(std::initializer_list<std::string> paths);
  std::vector<std::string> Words();  // the next text split at blanks
  int Number();                      // the next text, 0 for what is none
  std::string Rest() { return std::string(std::exchange(bytes_, {})); }

 private:
  std::string_view bytes_;
};

struct Target {
  Target(const char* name, void (*run)(Input&));
};
#define FUZZ(name)                           \
  void name(Input& in);                      \
  const Target register_##name(#name, name); \
  void name(Input& in)

// Ends the run as a finding.
#define REQUIRE(condition) ((condition) ? void() : ::fuzz::Found(__FILE__, __LINE__, #condition))
[[noreturn]] void Found(const char* file, int line, const char* condition);

// ---- files: a run begins with none in any folder that calls look into
void Put(const std::string& path, std::string_view text);
std::string Get(const std::string& path);  // empty without the file
int Lines(std::string_view text);          // newlines

// ---- keys and lists, read with the platform's own functions
std::string Key(const std::string& path, const char* key);

class List {
 public:
  explicit List(const std::vector<std::string>& texts = {});
  ~List() { KOPACSzListFree(list_); }
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  PKOPACSZLIST Get() { return list_; }
  PKOPACSZLIST* Out() { return &list_; }
  [[nodiscard]] std::vector<std::string> Texts() const;

 private:
  PKOPACSZLIST list_;
};

template <std::size_t N>
std::string Field(const char (&field)[N]) {
  return {field, ::strnlen(field, N)};
}

// ---- what stands in other places than files
extern std::string output;                    // what the next program prints
extern std::string logged;                    // all log lines of this run
extern std::vector<std::string> environment;  // of the last plugin

bool IsPlain(std::string_view text, std::string_view others = ".:_-");  // letters, digits, others

}  // namespace fuzz
