// SPDX-License-Identifier: Apache-2.0
// What is known of one change: who made it, what it was to do, what came of it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "json.h"
#include "record/deadline.h"
#include "record/process.h"

namespace change {

enum class RecordState {
  kOpen,     // under way, or its process is gone
  kWaiting,  // in effect until somebody confirms it, or until its time is over
  kKept,
  kFailed,      // and put back
  kReverted,    // not confirmed, or taken back before
  kRefused,     // nothing was touched
  kNotPutBack,  // the machine is in between
};

// Digests of a file; empty where there is none.
struct FileDigests {
  std::string before;
  std::string after;
};

struct Record {
  long number = 0;
  RecordState state = RecordState::kOpen;
  std::string began;
  std::string boot;  // the run of the machine in which it began
  Runner runner;     // who makes it or puts it back, until that is done
  double seconds = 0;
  std::string program;
  Json who;          // "uid", "login", "sudo"
  std::string from;  // the session's ends; empty for one at the machine
  Json wish;         // without secrets
  Json options;
  long undoes = 0;  // the number of a change; 0 for a wish
  std::vector<std::string> steps;
  std::vector<std::string> services;  // sections whose programs follow their files
  std::map<std::string, FileDigests> files;
  std::string before;  // the digest of what is kept of before, and of the files after
  std::string after;
  std::optional<Deadline> deadline;
  int result = 0;
  std::string reason;
  std::vector<std::string> problems;
  std::string settled;  // when it was confirmed or put back
  Json settledBy;

  [[nodiscard]] bool IsSettled() const {
    return state != RecordState::kOpen && state != RecordState::kWaiting;
  }
};

const char* WordOf(RecordState state);

std::string BytesOf(const Record& record);
// Empty with what is wrong: a record that is damaged, or of a newer version.
std::optional<Record> RecordOf(const std::string& bytes, std::string* problem);

}  // namespace change
