// SPDX-License-Identifier: Apache-2.0
// The frame: the program's beginning, the files, and what takes the place of programs and the log.
#include "fuzz.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <spawn.h>
#include <sys/mount.h>
#include <syslog.h>

#include "frame/base/text.h"

namespace fs = std::filesystem;

namespace fuzz {

std::string output;
std::string logged;
std::vector<std::string> environment;

namespace {

std::map<std::string, void (*)(Input&)>& Targets() {
  static std::map<std::string, void (*)(Input&)> targets;
  return targets;
}

void (*target)(Input&) = nullptr;

// In their place stand folders in memory.
constexpr const char* kFolders[] = {"/usr/zarn/plugins", "/etc",      "/sys",
                                    "/proc/net",         "/proc/sys", "/run/ddns"};

void Begin(int* argc, char*** argv) {
  const auto found = *argc > 1 ? Targets().find((*argv)[1]) : Targets().end();
  if (found == Targets().end()) {
    for (const auto& [name, run] : Targets())
      std::puts(name.c_str());
    std::exit(*argc > 1 ? 2 : 0);
  }
  target = found->second;
  (*argv)[1] = (*argv)[0];
  ++*argv;
  --*argc;
  // The first is the appliance's alone: on any other machine nothing is done.
  for (const char* folder : kFolders) {
    if (::mount("fuzz", folder, "tmpfs", 0, nullptr) == 0) continue;
    std::perror(folder);
    std::exit(2);
  }
  for (const char* made : {"dhcpd", "sysconfig/network-scripts", "ppp", "gogoc"})
    fs::create_directories(fs::path("/etc") / made);
}

void Restore() {
  for (const char* folder : kFolders) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (!entry.is_directory()) fs::remove(entry.path());
    }
  }
  for (const auto& entry : fs::directory_iterator("/tmp")) {  // where the sources may lie
    if (entry.is_regular_file()) fs::remove(entry.path());
  }
  output.clear();
  logged.clear();
}

}  // namespace

std::string Input::Text() {
  const std::string_view text = bytes_.substr(0, bytes_.find('\0'));
  bytes_.remove_prefix(std::min(text.size() + 1, bytes_.size()));
  return std::string(text);
}

std::vector<std::string> Input::Words() {
  const std::string text = Text();
  const auto words = frame::SplitFields(text, " ");
  return {words.begin(), words.end()};
}

void Input::Files(std::initializer_list<std::string> paths) {
  for (const std::string& path : paths)
    Put(path, &path == paths.end() - 1 ? Rest() : Text());
}

int Input::Number() {
  return std::atoi(Text().substr(0, 9).c_str());
}

Target::Target(const char* name, void (*run)(Input&)) {
  Targets()[name] = run;
}

void Found(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d does not hold: %s\n%s", file, line, condition, logged.c_str());
  std::abort();
}

void Put(const std::string& path, std::string_view text) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string Get(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

int Lines(std::string_view text) {
  return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

std::string Key(const std::string& path, const char* key) {
  char value[8192] = "";
  KOPACFileGetKeyValue(path.c_str(), key, value, sizeof value, 0);
  return value;
}

List::List(const std::vector<std::string>& texts) : list_(KOPACSzListAlloc(4)) {
  for (const std::string& text : texts)
    KOPACSzListPush(&list_, text.c_str());
}

std::vector<std::string> List::Texts() const {
  return {list_->rgszItem, list_->rgszItem + list_->nItem};
}

bool IsPlain(std::string_view text, std::string_view others) {
  return std::all_of(text.begin(), text.end(), [&](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || others.find(c) != std::string::npos;
  });
}

}  // namespace fuzz

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  fuzz::Begin(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  fuzz::Restore();
  fuzz::Input in({reinterpret_cast<const char*>(data), size});
  fuzz::target(in);
  return 0;
}

// ---- in the place of programs and of the log

int KOPACExec(const char* szPath, const char* /*szArg1*/, const char* szArg2, const char* szArg3,
              const char* /*szArg4*/) {
  // Without this one there are no backups.
  if (std::string_view(szPath) == "/bin/cp") fuzz::Put(szArg3, fuzz::Get(szArg2));
  return 0;
}

int KOPACExecl(const char* /*szPath*/, int /*options*/, ...) {
  return 0;
}

int KOPACExecv(const char* /*szPath*/, const char* const /*argv*/[], int /*blWait*/) {
  return 0;
}

FILE* KOPACPopen(const char* /*szPath*/, const char* szMode, ...) {
  return fuzz::output.empty() ? std::fopen("/dev/null", szMode)
                              : ::fmemopen(fuzz::output.data(), fuzz::output.size(), szMode);
}

int KOPACPclose(FILE* fp) {
  return std::fclose(fp);
}

// A plugin's environment is looked at, and no plugin starts.
extern "C" int posix_spawn(pid_t* /*pid*/, const char* /*path*/,
                           const posix_spawn_file_actions_t* /*actions*/,
                           const posix_spawnattr_t* /*attributes*/, char* const /*argv*/[],
                           char* const envp[]) {
  fuzz::environment.clear();
  for (; *envp != nullptr; ++envp)
    fuzz::environment.emplace_back(*envp);
  return ENOENT;
}

extern "C" void syslog(int /*priority*/, const char* format, ...) {
  char line[4096];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  fuzz::logged.append(line).append("\n");
}
