// SPDX-License-Identifier: Apache-2.0
// A plan's inputs. A file that not everybody may read has no hash of its content, which could be
// tried out, but the numbers that the kernel changes with it.
#include "rehearsal/inputs.h"

#include <array>
#include <cstdio>
#include <nettle/sha2.h>
#include <sys/stat.h>

#include "document/section.h"
#include "record/generation.h"

namespace change {
namespace {

constexpr char kMasked[] = "(secret)";

std::string HashOf(const std::string& text) {
  sha256_ctx context{};
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  ::nettle_sha256_init(&context);
  ::nettle_sha256_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  ::nettle_sha256_digest(&context, digest.size(), digest.data());
  std::string hex;
  for (const std::uint8_t byte : digest) {
    std::array<char, 3> two{};
    std::snprintf(two.data(), two.size(), "%02x", byte);
    hex += two.data();
  }
  return hex;
}

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
  return HashOf(rights + (everybodys ? file.bytes : Numbers(path)));
}

std::string TextOf(const KernelLink& link) {
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

void Mask(const Path& path, Json* value) {
  const Shape* const shape = ShapeAt(DocumentShape(), path);
  if (value->is_object()) {
    for (auto& [name, member] : value->items())
      Mask(path / name, &member);
  } else if (shape != nullptr && shape->secret && value->is_string()) {
    *value = kMasked;
  }
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

Json WithoutSecrets(const Json& wish) {
  Json shown = wish;
  Mask(Path(), &shown);
  return shown;
}

Json PlannedOptions(const Options& options) {
  Json restart = Json::array();
  for (const Path& path : options.restart)
    restart.push_back(path.to_string());
  return {{"insist", options.insist}, {"keep", options.keep}, {"restart", restart}};
}

Json InputsNow() {
  const auto generation = KeepGeneration();
  if (!generation) return Json::object();
  Json files = Json::object();
  for (const auto& [path, file] : generation->files)
    files[path] = StandInFor(path, file);
  const Kernel& now = generation->kernel;
  Json kernel{{"host name", HashOf(now.hostname)}, {"routes", HashOf(RoutesOf(now))}};
  for (const auto& [name, link] : now.links)
    kernel["interface " + name] = HashOf(TextOf(link));
  return {{"files", files}, {"kernel", kernel}};
}

std::string WhyPlanIsStale(const Json& plan, const Json& wish, const Options& options) {
  if (plan.is_null()) return {};
  if (Member(plan, "wish") != WithoutSecrets(wish)) return "the plan is one for another wish";
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
