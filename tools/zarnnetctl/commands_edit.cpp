// SPDX-License-Identifier: Apache-2.0
// zarnnetctl edit: the state in the administrator's editor, until it is right or given up.
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "change_call.h"
#include "commands.h"
#include "query.h"
#include "wish.h"
#include "wish_between.h"

namespace tool {
namespace {

constexpr char kMistake[] = "#! ";  // begins the lines that tell of mistakes, and no others
constexpr char kHeading[] =
    "# The networking of this machine. What is changed here is changed there when the editor "
    "ends;\n"
    "# what is taken out is removed. An empty file changes nothing.\n"
    "# Passwords are not shown: without the field they stay as they are.\n";

Failure CannotEdit(const std::string& reason) {
  return {"cannot edit the state", std::nullopt, reason};
}

// A file of one's own for the editor, gone at the end.
class EditedFile {
 public:
  EditedFile() {
    const char* const folder = std::getenv("TMPDIR");
    path_ =
        std::string(folder != nullptr && *folder == '/' ? folder : "/tmp") + "/zarnnet-XXXXXX.yaml";
    constexpr int kSuffix = 5;
    const int file = ::mkostemps(path_.data(), kSuffix, O_CLOEXEC);  // made with mode 0600
    if (file < 0) throw CannotEdit(path_ + ": " + std::strerror(errno));
    ::close(file);
  }
  ~EditedFile() { ::unlink(path_.c_str()); }
  EditedFile(const EditedFile&) = delete;
  EditedFile& operator=(const EditedFile&) = delete;

  [[nodiscard]] const std::string& Path() const { return path_; }

  // An editor may have put another file in its place: that is read, and written over.
  void Write(const std::string& text) const {
    const int file = ::open(path_.c_str(), O_WRONLY | O_TRUNC | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                            S_IRUSR | S_IWUSR);
    const bool written =
        file >= 0 && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (file >= 0) ::close(file);
    if (!written) throw CannotEdit("cannot write " + path_);
  }

 private:
  std::string path_;
};

// $VISUAL or $EDITOR, a program and its arguments apart by blanks: no shell sees them.
std::vector<std::string> Editor() {
  for (const char* name : {"VISUAL", "EDITOR"}) {
    const char* const value = std::getenv(name);
    std::istringstream words(value != nullptr ? value : "");
    std::vector<std::string> editor(std::istream_iterator<std::string>(words), {});
    if (!editor.empty()) return editor;
  }
  return {"vi"};
}

void RunEditor(const std::string& path) {
  std::vector<std::string> words = Editor();
  words.push_back(path);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words)
    arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int error =
      ::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ);
  if (error != 0) throw CannotEdit(words.front() + ": " + std::strerror(error));
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw CannotEdit(words.front() + " did not end well; nothing was changed");
}

// ---- mistakes, beside their lines

using Mistakes = std::multimap<std::size_t, std::string>;

std::string WithoutMistakes(const std::string& text) {
  std::istringstream lines(text);
  std::string rest;
  for (std::string line; std::getline(lines, line);)
    if (line.find(kMistake) != line.find_first_not_of(' ') || line.find(kMistake) == line.npos)
      rest += line + "\n";
  return rest;
}

// Each stands above its line, those without one at the top.
std::string WithMistakes(const std::string& text, const Mistakes& mistakes) {
  std::istringstream lines(text);
  std::string marked;
  std::size_t number = 0;
  const auto tell = [&](std::size_t line) {
    const auto [begin, end] = mistakes.equal_range(line);
    for (auto mistake = begin; mistake != end; ++mistake)
      marked += kMistake + mistake->second + "\n";
  };
  tell(0);
  for (std::string line; std::getline(lines, line);) {
    tell(++number);
    marked += line + "\n";
  }
  for (auto late = mistakes.upper_bound(number); late != mistakes.end(); ++late)
    marked += kMistake + late->second + "\n";
  return marked;
}

Mistakes MistakesIn(const std::string& text, const Json& report) {
  Mistakes mistakes;
  const Json findings = report.value("findings", Json::array());
  for (const Json& finding : findings) {
    if (finding["severity"] == "warning") continue;
    const std::string path = finding["path"];
    mistakes.emplace(LineOf(text, path), path + ": " + finding["sentence"].get<std::string>());
  }
  if (mistakes.empty()) mistakes.emplace(0, report.value("reason", "out of memory"));
  return mistakes;
}

// ---- the round of editing

struct Edited {
  Document wish;  // null when there is nothing to do
  bool givenUp = false;
};

bool IsBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

// What is wrong with the text; the wish that it is, where nothing is.
Mistakes Judge(const std::string& text, const Document& before, const Json& options,
               Document* wish) {
  Mistake mistake;
  const auto after = ReadDocument(text, &mistake);
  if (!after) return {{mistake.line, mistake.sentence}};
  *wish = WishBetween(before, *after);
  if (wish->empty()) return {};
  const Answered checked = CheckWish(*wish, options);
  return checked.result == ZARNNETCHANGE_DONE ? Mistakes() : MistakesIn(text, checked.report);
}

Edited EditUntilRight(const Document& before, const Json& options) {
  const EditedFile file;
  std::string shown = kHeading + WrittenAsYaml(before, StateSchema());
  const std::string first = shown;
  for (;;) {
    file.Write(shown);
    RunEditor(file.Path());
    const std::string saved = ReadText(file.Path());
    if (saved == shown || IsBlank(saved)) return {nullptr, shown != first};
    const std::string text = WithoutMistakes(saved);
    Document wish;
    const Mistakes mistakes = Judge(text, before, options, &wish);
    if (mistakes.empty()) return {wish.empty() ? Document() : wish, false};
    shown = WithMistakes(text, mistakes);
  }
}

void Edit(Context* context) {
  RequireRoot("cannot edit the state");
  const Json options = OptionsOf(*context);
  const Document before = Document::parse(ReadMachine(Json::object()).dump());
  const Edited edited = EditUntilRight(before, options);
  if (!edited.wish.is_null()) return ApplyWish(*context, TextOfWish(edited.wish), options);
  std::cout << (edited.givenUp ? "given up: nothing was changed\n" : "nothing was changed\n");
  context->status = edited.givenUp ? kFailed : kDone;
}

}  // namespace

void AddEditCommand(const Group& app, Context& context) {
  const Verb edit =
      AddChange(app, context, "edit", "Opens the state in $VISUAL or $EDITOR, as YAML",
                "  zarnnetctl edit\n  EDITOR=nano zarnnetctl edit --confirm 60");
  edit.Run([&context] { Edit(&context); });
}

}  // namespace tool
