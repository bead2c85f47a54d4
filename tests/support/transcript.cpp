// SPDX-License-Identifier: Apache-2.0
// Files and kernel before and after a call, the journal of what happened between, and the
// comparison with the golden text.
#include "support/transcript.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <map>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <regex.h>
#include <set>
#include <sstream>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/kernel_answers.h"

namespace test {
namespace {

namespace fs = std::filesystem;

struct Entry {
  int mode;
  ino_t inode;
  std::string text;
};
using Files = std::map<std::string, Entry>;

struct Machine {
  Files files;
  std::set<std::string> kernel;
};

std::string goldenFolder;
std::string told;
Machine before;
bool rewrites = false;

// What differs from run to run: the group in each match is replaced.
using MaskList = std::vector<std::pair<std::string, std::string>>;
const MaskList kPlaces{{"^  log [0-9] [A-Za-z0-9_.]+:([0-9]+)", "#"},
                       {"^  log [0-9] [A-Za-z0-9_]+ ?[A-Za-z0-9_]*\\(([0-9]+)\\)", "#"},
                       {"\\[0x[0-9A-F]{4} ([^]:]*:[0-9]+)\\]", "#:#"},
                       {"\\.tmp([0-9]+)", "#"}};
MaskList masks = kPlaces;

// ---- the machine

// Of others: sources and build, locks, process numbers, what the appliance's programs note, this
// file's own.
bool IsLeftOut(const std::string& path) {
  for (const char* const folder :
       {ZARNNET_TREE, ZARNNET_BUILD_FOLDER, "/run/lock", "/run/jobs", "/var/log", "/run/mounts",
        kJournal, "/run/recorded-calls", "/run/child-log", "/var/lib/zarnnet"}) {
    if (path == folder) return true;
  }
  // A watcher ends in its own time, and signs the lock of changes for a moment before that.
  const bool watcher = path.starts_with("/run/zarnnet/watch.") ||
                       path.find("/change.holder") != std::string::npos ||
                       path.find("/.change.holder") != std::string::npos;
  return watcher || path.ends_with(".output");
}

void AddFile(const fs::directory_entry& entry, Files& files) {
  struct stat status {};
  const std::string path = entry.path();
  if (::lstat(path.c_str(), &status) != 0) return;
  std::string text;
  if (S_ISREG(status.st_mode)) text = ReadFile(path);
  if (S_ISLNK(status.st_mode)) text = "-> " + fs::read_symlink(entry.path()).string();
  files[path] = {static_cast<int>(status.st_mode), status.st_ino, text};
}

Files AllFiles() {
  Files files;
  for (const char* const root : {"/etc", "/tmp", "/run", "/var", "/root"}) {
    std::error_code ignored;  // a folder may go while it is looked at
    for (auto it = fs::recursive_directory_iterator(root, ignored); it != fs::end(it);
         it.increment(ignored)) {
      if (IsLeftOut(it->path())) {
        it.disable_recursion_pending();
      } else {
        AddFile(*it, files);
      }
    }
  }
  return files;
}

std::string Numeric(const sockaddr* address) {
  char text[NI_MAXHOST] = "";
  const bool v6 = address->sa_family == AF_INET6;
  ::getnameinfo(address, v6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in), text, sizeof text,
                nullptr, 0, NI_NUMERICHOST);
  return text;
}

int PrefixLength(const sockaddr* mask) {
  const bool v6 = mask->sa_family == AF_INET6;
  const auto* const bytes =
      reinterpret_cast<const unsigned char*>(mask) +
      (v6 ? offsetof(sockaddr_in6, sin6_addr) : offsetof(sockaddr_in, sin_addr));
  int length = 0;
  for (int i = 0; i < (v6 ? 16 : 4); ++i)
    length += __builtin_popcount(bytes[i]);
  return length;
}

// Link-local addresses are left out: the kernel gives them by itself, a moment after a port is up.
std::string LineOf(const ifaddrs& entry) {
  const std::string name = entry.ifa_name;
  if (entry.ifa_addr->sa_family == AF_PACKET) {
    ifreq request{};
    name.copy(request.ifr_name, IFNAMSIZ - 1);
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ::syscall(SYS_ioctl, fd, SIOCGIFMTU, &request);
    ::close(fd);
    return name + ((entry.ifa_flags & IFF_UP) != 0 ? " up" : " down") + " mtu " +
           std::to_string(request.ifr_mtu);
  }
  const std::string address = Numeric(entry.ifa_addr);
  if (address.starts_with("fe80:")) return "";
  return name + " " + address + "/" + std::to_string(PrefixLength(entry.ifa_netmask));
}

// An address as the tables show it: of IPv4 one number, of IPv6 all bytes.
std::string FromHex(const std::string& hex) {
  unsigned char bytes[16] = {};
  for (std::size_t i = 0; i < hex.size() / 2; ++i)
    bytes[i] = static_cast<unsigned char>(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
  if (hex.size() == 8) std::reverse(bytes, bytes + 4);
  char text[INET6_ADDRSTRLEN];
  return ::inet_ntop(hex.size() == 8 ? AF_INET : AF_INET6, bytes, text, sizeof text);
}

// The tables of process 1: those of this process may be hidden by the test.
void AddRoutes(std::set<std::string>& lines) {
  for (const char* const table : {"/proc/1/net/route", "/proc/1/net/ipv6_route"}) {
    std::istringstream text(ReadFile(table));
    for (std::string line; std::getline(text, line);) {
      std::istringstream words(line);
      std::vector<std::string> word{std::istream_iterator<std::string>(words), {}};
      const bool v6 = word.size() == 10;
      // Of IPv6 the default routes: all others follow from the addresses.
      if (word.size() < 8 || word[0] == "Iface" || (v6 && word[1] + word[9] == "00lo")) continue;
      if (v6 && (word[1] != "00" || word[9] == "lo")) continue;
      lines.insert(v6 ? "route default via " + FromHex(word[4]) + " " + word[9]
                      : "route " + FromHex(word[1]) + "/" + FromHex(word[7]) + " via " +
                            FromHex(word[2]) + " " + word[0]);
    }
  }
}

// A lock that a call keeps would be a change of the kernel.
void AddHeldLocks(std::set<std::string>& lines) {
  std::error_code ignored;
  for (const auto& file : fs::directory_iterator("/run/lock/zarncore", ignored)) {
    struct flock range {};
    range.l_type = F_WRLCK;
    const int fd = ::open(file.path().c_str(), O_RDWR | O_CLOEXEC);
    if (::fcntl(fd, F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK)
      lines.insert("lock " + file.path().filename().string() + " held");
    ::close(fd);
  }
}

std::set<std::string> KernelState() {
  std::set<std::string> lines;
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) ADD_FAILURE() << "no addresses";
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr != nullptr) lines.insert(LineOf(*entry));
  }
  ::freeifaddrs(list);
  AddRoutes(lines);
  AddHeldLocks(lines);
  const fs::path conf = "/proc/sys/net/ipv6/conf";
  std::error_code ignored;
  for (const auto& folder : fs::directory_iterator(conf, ignored)) {
    for (const char* const key : {"accept_ra", "disable_ipv6"})
      lines.insert(folder.path().filename().string() + " " + key + " " +
                   ReadFile(folder.path() / key).substr(0, 1));
  }
  lines.erase("");
  return lines;
}

// ---- the text

// A line as it can be read: no control character stays.
std::string Visible(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '\t') {
      out += "\\t";
    } else if (c == '\n') {
      out += "\\n";
    } else if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') {
      char code[8];
      std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(c));
      out += code;
    } else {
      out += c;
    }
  }
  return out;
}

std::string Replaced(const std::string& text, const std::string& expression,
                     const std::string& with) {
  regex_t compiled;
  if (::regcomp(&compiled, expression.c_str(), REG_EXTENDED) != 0) {
    ADD_FAILURE() << "bad expression " << expression;
    return text;
  }
  std::string out;
  std::size_t at = 0;
  regmatch_t match[2];
  while (::regexec(&compiled, text.c_str() + at, 2, match, at != 0 ? REG_NOTBOL : 0) == 0 &&
         match[1].rm_eo > match[1].rm_so) {
    out += text.substr(at, static_cast<std::size_t>(match[1].rm_so)) + with;
    at += static_cast<std::size_t>(match[1].rm_eo);
  }
  ::regfree(&compiled);
  return out + text.substr(at);
}

std::string Masked(std::string text) {
  for (const auto& [expression, with] : masks)
    text = Replaced(text, expression, with);
  return text;
}

void Add(const std::string& line) {
  const std::string masked = Masked(line);
  if (!masked.empty()) told += masked + "\n";
}

// The last line without a newline is marked.
Lines LinesOf(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(Visible(line));
  if (!text.empty() && text.back() != '\n') lines.back() += " \\";
  return lines;
}

// Each line behind its mark: ' ' in both, '-' in the first alone, '+' in the second alone.
Lines Difference(const Lines& a, const Lines& b) {
  std::vector<std::vector<int>> common(a.size() + 1, std::vector<int>(b.size() + 1));
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;)
      common[i][j] =
          a[i] == b[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
  }
  Lines lines;
  for (std::size_t i = 0, j = 0; i < a.size() || j < b.size();) {
    if (i < a.size() && j < b.size() && a[i] == b[j]) {
      lines.push_back(" " + a[i++]);
      ++j;
    } else if (j == b.size() || (i < a.size() && common[i + 1][j] >= common[i][j + 1])) {
      lines.push_back("-" + a[i++]);
    } else {
      lines.push_back("+" + b[j++]);
    }
  }
  return lines;
}

// Of a long file what has changed is enough.
void AddDifference(const std::string& from, const std::string& to) {
  const Lines lines = Difference(LinesOf(from), LinesOf(to));
  for (const std::string& line : lines) {
    if (line[0] != ' ' || lines.size() <= 30) Add("    " + line);
  }
}

std::string ModeOf(const Entry& entry) {
  char mode[8];
  std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned>(entry.mode) & 07777);
  return S_ISDIR(entry.mode) ? std::string("folder ") + mode : mode;
}

void AddFiles(const Files& from, const Files& to) {
  for (const auto& [path, entry] : from) {
    if (!to.contains(path)) Add("  gone " + path);
  }
  for (const auto& [path, entry] : to) {
    const auto former = from.find(path);
    if (former == from.end()) {
      Add("  new " + path + " " + ModeOf(entry));
      AddDifference("", entry.text);
      continue;
    }
    const Entry& old = former->second;
    if (old.mode != entry.mode) {
      Add("  changed " + path + " " + ModeOf(old) + " to " + ModeOf(entry));
    } else if (old.text != entry.text) {
      Add("  changed " + path);
    } else if (rewrites && old.inode != entry.inode) {
      Add("  rewritten " + path);
    }
    if (old.text != entry.text) AddDifference(old.text, entry.text);
  }
}

// Sleeps that follow each other are one.
void AddJournal() {
  std::istringstream journal(ReadFile(kJournal));
  long slept = 0;
  const auto addSleep = [&slept] {
    if (slept != 0) Add("  slept " + std::to_string(slept) + " ms");
    slept = 0;
  };
  for (std::string line; std::getline(journal, line);) {
    if (line.starts_with("slept ")) {
      slept += std::atol(line.c_str() + 6);
      continue;
    }
    addSleep();
    Add("  " + Visible(line));
  }
  addSleep();
}

// ---- the golden text

std::string GoldenPath(const ::testing::TestInfo& test) {
  return goldenFolder + "/" + test.test_suite_name() + "." + test.name() + ".txt";
}

void Compare(const std::string& path) {
  std::ifstream file(path);
  if (!file) {
    ADD_FAILURE() << path << " is missing (README.md of the tests says how it is made)\n" << told;
    return;
  }
  std::ostringstream golden;
  golden << file.rdbuf();
  if (golden.str() == told) return;
  std::string text;
  const Lines lines = Difference(LinesOf(golden.str()), LinesOf(told));
  for (const std::string& line : lines)
    text += line + "\n";
  ADD_FAILURE() << "not as in " << path << ":\n" << text;
}

void Write(const std::string& path) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream file(path);
  file << told;
  file.close();
  if (!file) ADD_FAILURE() << "cannot write " << path;
}

class AtTheEnd : public ::testing::EmptyTestEventListener {
  void OnTestStart(const ::testing::TestInfo&) override {
    told.clear();
    masks = kPlaces;
    rewrites = false;
  }
  void OnTestEnd(const ::testing::TestInfo& test) override {
    if (told.empty()) return;
    const char* const wish = std::getenv("ZARNNET_GOLDEN");
    if (wish != nullptr && std::string_view(wish) == "write") {
      Write(GoldenPath(test));
    } else {
      Compare(GoldenPath(test));
    }
  }
};

const bool listening = (::testing::UnitTest::GetInstance()->listeners().Append(new AtTheEnd), true);

// Events and recorded programs go to the journal too, in their order.
void JoinJournals() {
  for (const char* const other : {"/run/recorded-calls", "/var/log/plugin-events.log"}) {
    if (fs::is_symlink(other)) continue;
    fs::remove(other);
    fs::create_symlink(kJournal, other);
  }
}

}  // namespace

std::string transcript::Code() {
  char code[16];
  std::snprintf(code, sizeof code, ", code 0x%04X", static_cast<unsigned>(KOPACErrGet()));
  return KOPACErrGet() != 0 ? code : "";
}

void Say(std::string_view remark) {
  const bool ends = remark.ends_with('\n');
  for (const std::string& line : LinesOf(std::string(remark) + (ends ? "" : "\n")))
    Add("# " + line);
}

void TellRewrites() {
  rewrites = true;
}

void Mask(const std::string& expression, const std::string& with) {
  masks.emplace_back(expression, with);
}

namespace transcript {

void Begin(const char* folder) {
  goldenFolder = folder;
  static_cast<void>(Kernel());  // brings in the ioctl that takes notes
  JoinJournals();
  before = {AllFiles(), KernelState()};
  WriteFile(kJournal, "");
  KOPACErrSetEx(0, "", 0);
}

void End(const std::string& heading, long result) {
  Add(Visible(heading) + " = " + std::to_string(result) + (result < 0 ? Code() : ""));
  AddJournal();
  const Machine after{AllFiles(), KernelState()};
  AddFiles(before.files, after.files);
  const Lines kernel = Difference({before.kernel.begin(), before.kernel.end()},
                                  {after.kernel.begin(), after.kernel.end()});
  for (const std::string& line : kernel) {
    if (line[0] != ' ') Add("  kernel " + Visible(line));
  }
}

}  // namespace transcript
}  // namespace test
