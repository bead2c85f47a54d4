// SPDX-License-Identifier: Apache-2.0
// Owners of open files, and readers of the small files of /proc and /sys.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace frame {

class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }

  [[nodiscard]] int Get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  [[nodiscard]] int Release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Opens close-on-exec; null when it cannot be opened, errno says why.
inline File OpenFile(const std::string& path, const char* mode) {
  return File(std::fopen(path.c_str(), std::string(mode).append("e").c_str()));
}

// A stream that owns the descriptor; null when it cannot be had, errno says why.
inline File StreamOf(Descriptor fd, const char* mode) {
  File file(fd ? ::fdopen(fd.Get(), mode) : nullptr);
  if (file) static_cast<void>(fd.Release());  // it is the stream's now
  return file;
}

bool Exists(const std::string& path);

// A folder to look into again and again: the way to it is walked once. Empty when it cannot be
// opened.
Descriptor OpenFolder(const char* path);
// A folder that could not be opened has nothing in it.
bool ExistsIn(const Descriptor& folder, const std::string& name);
// Is this the kernel's own tree of devices, and no stand-in for it?
bool IsInSysfs(const Descriptor& folder);

// Reads a text file line by line, whatever their length.
class LineReader {
 public:
  explicit LineReader(const std::string& path) : file_(OpenFile(path, "r")) {}
  explicit LineReader(File file) : file_(std::move(file)) {}
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_ != nullptr; }
  // The next line with its newline, valid until the next call; nothing at the end or when reading
  // failed.
  std::optional<std::string_view> Next();
  // After Next() answered nothing: did reading fail before the end?
  [[nodiscard]] bool Failed() const;

 private:
  File file_;
  char* buffer_ = nullptr;
  std::size_t capacity_ = 0;
};

// Reads a text file in pieces: a line that does not fit into size - 1 characters goes on in the
// next piece. So files are read whose readers have always taken lines of a fixed size.
class BoundedLines {
 public:
  BoundedLines(const std::string& path, std::size_t size)
      : file_(OpenFile(path, "r")), piece_(size, '\0') {}

  [[nodiscard]] bool IsOpen() const { return file_ != nullptr; }
  // The next piece without its newline; nothing at the end, when reading failed and of a file that
  // could not be opened.
  std::optional<std::string> Next();
  // After Next() answered nothing: could the file not be opened or not be read to its end?
  [[nodiscard]] bool Failed() const { return !IsOpen() || std::ferror(file_.get()) != 0; }

 private:
  File file_;
  std::string piece_;
};

}  // namespace frame
