// The core library's files, lists, events and cipher.
#include <sys/stat.h>

#include <zarnsdk/zarnsdk.h>

#include "fuzz.h"

namespace fuzz {
namespace {

constexpr char kFile[] = "/etc/file";

// A key is set and removed, and no other line is touched.
FUZZ(key_file) {
  const std::string key = in.Text(), value = in.Text(), other = in.Text(), file = in.Rest();
  Put(kFile, file);
  const bool isOther = key != other && other.find('=') == std::string::npos;
  const std::string kept = Key(kFile, other.c_str());
  const int set = KOPACFileSetKeyValue(kFile, key.c_str(), value.c_str(), "%s=\"%s\"\n");
  const std::string written = Get(kFile);
  REQUIRE(set == 0 || written == file);
  if (set != 0) return;
  REQUIRE(Key(kFile, key.c_str()) == value.substr(0, 8191));
  REQUIRE(KOPACFileCheckKeyValue(kFile, key.c_str(), value.c_str(), 0) == 1);
  REQUIRE(!isOther || Key(kFile, other.c_str()) == kept);
  REQUIRE(Lines(written) <= Lines(file) + 2);
  REQUIRE(KOPACFileSetKeyValue(kFile, key.c_str(), value.c_str(), "%s=\"%s\"\n") == 0);
  REQUIRE(Get(kFile) == written);
  REQUIRE(KOPACFileRemoveKey(kFile, key.c_str()) == 0);
  REQUIRE(("\n" + Get(kFile)).find("\n" + key + "=") == std::string::npos);
  REQUIRE(!isOther || Key(kFile, other.c_str()) == kept);
}

FUZZ(line_file) {
  const std::string after = in.Text(), line = in.Text(), old = in.Text(), other = in.Text();
  const std::string file = in.Rest();
  Put(kFile, file);
  List before, behind;
  REQUIRE(KOPACFileReadLines(kFile, before.Out()) == 0);
  if (KOPACFileAddLine(kFile, after.c_str(), line.c_str(), 0) == 0) {
    REQUIRE(KOPACFileReadLines(kFile, behind.Out()) == 0);
    auto lines = behind.Texts();
    const auto added = std::find(lines.begin(), lines.end(), line);
    REQUIRE(added != lines.end());
    lines.erase(added);
    REQUIRE(lines.size() == before.Texts().size());
    char found[8192];
    REQUIRE(KOPACFileGetLine(kFile, line.c_str(), found, sizeof found, 2) >= 0);
    REQUIRE(Field(found).starts_with(line.substr(0, 8191)));
  }
  const std::string text = Get(kFile);
  if (KOPACFileReplaceSubStr(kFile, old.c_str(), other.c_str()) == 0) {
    REQUIRE(text.find(old) == std::string::npos ? Get(kFile) == text
                                                : Get(kFile).find(other) != std::string::npos);
  }
  Put(kFile, file);
  KOPACFileRemoveKey(kFile, old.c_str());
  REQUIRE(Get(kFile).size() <= file.size());
}

FUZZ(cipher) {
  const std::string text = in.Text();
  const auto more = static_cast<std::size_t>(in.Number() & 0xFF);
  std::vector<char> hidden(text.size() + more + 1), shown(text.size() + 1);
  REQUIRE(KOPACCryptBufCrypt(text.data(), text.size(), hidden.data(), hidden.size()) == 0);
  REQUIRE(::strnlen(hidden.data(), hidden.size()) == text.size());
  REQUIRE(KOPACCryptBufCrypt(hidden.data(), hidden.size(), shown.data(), shown.size()) == 0);
  REQUIRE(text == shown.data());
  REQUIRE(text.empty() || KOPACCryptBufCrypt(text.data(), text.size(), shown.data(), 1) ==
                              (text.size() > 1 ? -1 : 0));
}

// A plugin gets what was set, and nothing else that was not there.
FUZZ(plugin_environment) {
  constexpr char kPlugin[] = "/usr/zarn/plugins/net/fuzz/00";
  Put(kPlugin, "");
  ::chmod(kPlugin, 0755);
  PKOPAPLUGIN event = nullptr;
  REQUIRE(KOPAPluginSDKInit("net", "fuzz", &event) == 0);
  const std::string name = in.Text(), value = in.Text(), list = in.Text();
  List values(in.Words());
  const bool set = KOPAPluginSetArg(event, name.c_str(), value.c_str()) == 0;
  const bool listed = KOPAPluginSetArgByArray(event, list.c_str(), values.Get()) == 0;
  KOPAPluginAction(4, event);
  KOPAPluginExit(event);
  REQUIRE(!environment.empty());
  const auto has = [](const std::string& variable) {
    return std::find(environment.begin(), environment.end(), variable) != environment.end();
  };
  const bool covered = name.starts_with(list) || name == "PLUGIN_ARGS" || list == "PLUGIN";
  REQUIRE(!set || covered || has(name + "=" + value));
  REQUIRE(!listed || list == "PLUGIN" || has(list + "_1=" + values.Texts()[0]));
  for (const std::string& variable : environment) {
    REQUIRE(variable.find('=') != std::string::npos && variable.front() != '=');
    REQUIRE(!variable.starts_with("LD_PRELOAD="));
  }
}

}  // namespace
}  // namespace fuzz
