// SPDX-License-Identifier: Apache-2.0
// What the processes of a rehearsal share: where things are in the private copy, and the journal
// that notes what was called. A record is its count of fields and the fields, each ended by a NUL,
// written at once: calls of scripts side by side do not mix.
#pragma once

#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace rehearsal {

inline constexpr char kFolder[] = "/dev/rehearsal";
inline constexpr char kJournal[] = "/dev/rehearsal/journal";
// "path<TAB>inside|answered<TAB>the real program" a line.
inline constexpr char kPrograms[] = "/dev/rehearsal/programs";
inline constexpr char kRecorder[] = "/dev/rehearsal/recorder";
// A link to the recorder with the name of a process that it stands in for.
inline constexpr char kStandIns[] = "/dev/rehearsal/as/";
// A file for each job that runs, by name and instance.
inline constexpr char kJobs[] = "/dev/rehearsal/jobs/";
// The program by which a call was made, when it was not the library itself.
inline constexpr char kWithin[] = "ZARNNET_REHEARSED_WITHIN";

using Fields = std::vector<std::string>;

// How a program was called: "inside" the copy; or "answered" in its place, or "refused".
inline constexpr char kProgramRecord[] = "program";  // seconds, within, how, arguments
inline constexpr char kEventRecord[] = "event";      // name, stage, NAME=value...
inline constexpr char kRemarkRecord[] = "remark";    // what, reason
inline constexpr char kRefusalRecord[] =
    "refusal";  // what the DHCP server's check said, and the settings

inline std::string Seconds() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return std::to_string(static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9);
}

inline void Note(const Fields& fields) {
  std::string record = std::to_string(fields.size());
  record += '\0';
  for (const std::string& field : fields)
    record.append(field) += '\0';
  const int fd = ::open(kJournal, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) return;
  // A record that is cut short would be read as another: the reader stops there.
  static_cast<void>(!::write(fd, record.data(), record.size()));
  ::close(fd);
}

inline std::vector<Fields> ReadJournal() {
  std::ifstream file(kJournal, std::ios::binary);
  std::vector<Fields> records;
  for (std::string count; std::getline(file, count, '\0');) {
    Fields fields(static_cast<std::size_t>(std::atol(count.c_str())));
    for (std::string& field : fields)
      std::getline(file, field, '\0');
    if (file) records.push_back(std::move(fields));
  }
  return records;
}

}  // namespace rehearsal
