// SPDX-License-Identifier: Apache-2.0
// A plan's inputs. A file that not everybody may read has no hash of its content, which could be
// tried out, but the numbers that the kernel changes with it.
#include "rehearsal/inputs.h"

#include <sys/stat.h>

#include "record/digest.h"
#include "record/generation.h"
#include "record/secrets.h"

namespace change {
namespace {

std::string Numbers(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {};
  return std::to_string(status.st_ino) + " " + std::to_string(status.st_size) + " " +
         std::to_string(status.st_ctim.tv_sec) + "." + std::to_string(status.st_ctim.tv_nsec);
}

std::string StandInFor(const std::string& path, const WholeFile& file) {
  const std::string rights = std::to_string(file.mode) + " " + std::to_string(file.owner) + " " +
                             std::to_string(file.group) + "\n";
  const bool everybodys = (file.mode & S_IROTH) != 0;
  return DigestOf(rights + (everybodys ? file.bytes : Numbers(path)));
}

std::string SpelledOut(const KernelLink& link) {
  std::string text = link.name + (link.IsUp() ? " up " : " down ") + std::to_string(link.mtu) +
                     " " + link.mac + " " + link.kind + " " + link.master + " " + link.parent;
  for (const KernelAddress& address : link.addresses) {
    if (!address.IsAutomatic()) text += " " + address.WithPrefix();
  }
  return text;
}

std::string RoutesOf(const Kernel& kernel) {
  std::string text;
  for (const KernelRoute& route : kernel.routes) {
    if (!route.IsAutomatic()) text += route.Words() + "\n";
  }
  return text;
}

std::string Stale(const Json& planned, const Json& now, const char* what) {
  for (const auto& [name, value] : now.items()) {
    if (Member(planned, name) != value) return std::string(what) + name;
  }
  for (const auto& [name, value] : planned.items()) {
    if (!now.contains(name)) return std::string(what) + name;
  }
  return {};
}

}  // namespace

Json PlannedOptions(const Options& options) {
  Json json = Json::object();
  if (options.insist) json["insist"] = true;
  if (options.keep) json["keep"] = true;
  for (const Path& path : options.restart)
    json["restart"].push_back(path.to_string());
  return json;
}

Json InputsNow() {
  const auto generation = KeepGeneration();
  if (!generation) return Json::object();
  Json files = Json::object();
  for (const auto& [path, file] : generation->files)
    files[path] = StandInFor(path, file);
  const Kernel& now = generation->kernel;
  Json kernel{{"host name", DigestOf(now.hostname)}, {"routes", DigestOf(RoutesOf(now))}};
  for (const auto& [name, link] : now.links)
    kernel["interface " + name] = DigestOf(SpelledOut(link));
  return {{"files", files}, {"kernel", kernel}};
}

std::string WhyPlanIsStale(const Json& plan, const Json& wish, const Options& options) {
  if (plan.is_null()) return {};
  if (Member(plan, "wish") != WishWithoutSecrets(wish)) return "the plan is one for another wish";
  if (Member(plan, "options") != PlannedOptions(options))
    return "the plan was made with other options";
  const Json now = InputsNow();
  const Json& inputs = Member(plan, "inputs");
  if (!inputs.is_object()) return "the plan does not say what it was made of";
  std::string changed = Stale(Member(inputs, "files"), Member(now, "files"), "");
  if (changed.empty()) changed = Stale(Member(inputs, "kernel"), Member(now, "kernel"), "the ");
  return changed.empty() ? "" : changed + " has changed since the plan was made: make a new one";
}

}  // namespace change
