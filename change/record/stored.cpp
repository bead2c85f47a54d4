// SPDX-License-Identifier: Apache-2.0
// Each structure names its members once, for both ways.
#include "record/stored.h"

#include <type_traits>

namespace change {
namespace {

// Texts may be any bytes: files, attributes, the kernel's messages.
Json Bytes(const std::string& text) {
  return Json::binary({text.begin(), text.end()});
}

struct Writer {
  Json json = Json::object();

  Writer& operator()(const char* name, const std::string& text) {
    json[name] = Bytes(text);
    return *this;
  }
  template <class Number>
  requires std::is_arithmetic_v<Number> Writer& operator()(const char* name, Number number) {
    json[name] = number;
    return *this;
  }
};

// Throws for what is missing, or something else.
struct Reader {
  const Json& json;

  Reader& operator()(const char* name, std::string& text) {
    const auto& bytes = json.at(name).get_binary();
    text.assign(bytes.begin(), bytes.end());
    return *this;
  }
  template <class Number>
  requires std::is_arithmetic_v<Number> Reader& operator()(const char* name, Number& number) {
    json.at(name).get_to(number);
    return *this;
  }
};

template <class Part, class Of>
concept Is = std::is_same_v<std::remove_const_t<Part>, Of>;

template <class Archive, Is<WholeFile> File>
void MembersOf(File& file, Archive& archive) {
  archive("bytes", file.bytes)("mode", file.mode)("owner", file.owner)("group", file.group);
}

template <class Archive, Is<KernelAddress> Address>
void MembersOf(Address& address, Archive& archive) {
  archive("family", address.family)("text", address.text)("prefix", address.prefix);
  archive("flags", address.flags)("scope", address.scope)("message", address.message);
}

template <class Archive, Is<KernelRoute> Route>
void MembersOf(Route& route, Archive& archive) {
  archive("family", route.family)("default", route.isDefault)("target", route.target);
  archive("gateway", route.gateway)("ifname", route.ifname)("metric", route.metric);
  archive("protocol", route.protocol)("scope", route.scope)("message", route.message);
}

template <class Archive, Is<KernelLink> Link>
void MembersOf(Link& link, Archive& archive) {
  archive("name", link.name)("index", link.index)("flags", link.flags)("mtu", link.mtu);
  archive("least", link.leastMtu)("most", link.mostMtu)("carrier", link.carrier);
  archive("masterIndex", link.masterIndex)("parentIndex", link.parentIndex)("mac", link.mac);
  archive("kind", link.kind)("master", link.master)("parent", link.parent)("vlan", link.vlanId);
}

template <class Part>
Json Written(const Part& part) {
  Writer writer;
  MembersOf(part, writer);
  return std::move(writer.json);
}

template <class Part>
Part Read(const Json& json) {
  Part part;
  Reader reader{json};
  MembersOf(part, reader);
  return part;
}

template <class Part>
Json WrittenList(const std::vector<Part>& parts) {
  Json list = Json::array();
  for (const Part& part : parts)
    list.push_back(Written(part));
  return list;
}

template <class Part>
std::vector<Part> ReadList(const Json& list) {
  std::vector<Part> parts;
  for (const Json& json : list)
    parts.push_back(Read<Part>(json));
  return parts;
}

// ---- wholes

Json ToJson(const WholeFile& file) {
  Json json = Written(file);
  for (const auto& [name, value] : file.attributes)
    json["attributes"][name] = Bytes(value);
  return json;
}

WholeFile FileOf(const Json& json) {
  WholeFile file = Read<WholeFile>(json);
  const Json& attributes = Member(json, "attributes");
  if (!attributes.is_object()) return file;
  for (const auto& [name, value] : attributes.items())
    file.attributes[name].assign(value.get_binary().begin(), value.get_binary().end());
  return file;
}

Json ToJson(const Kernel& kernel) {
  Json json{{"hostname", kernel.hostname},
            {"routes", WrittenList(kernel.routes)},
            {"switches", kernel.ipv6Switch},
            {"links", Json::array()}};
  for (const auto& [name, link] : kernel.links) {
    Json written = Written(link);
    written["addresses"] = WrittenList(link.addresses);
    json["links"].push_back(std::move(written));
  }
  return json;
}

Kernel KernelOf(const Json& json) {
  Kernel kernel;
  json.at("hostname").get_to(kernel.hostname);
  kernel.routes = ReadList<KernelRoute>(json.at("routes"));
  json.at("switches").get_to(kernel.ipv6Switch);
  for (const Json& written : json.at("links")) {
    auto link = Read<KernelLink>(written);
    link.addresses = ReadList<KernelAddress>(written.at("addresses"));
    kernel.links.emplace(link.name, std::move(link));
  }
  return kernel;
}

std::string Packed(const Json& json) {
  const std::vector<std::uint8_t> bytes = Json::to_cbor(json);
  return {bytes.begin(), bytes.end()};
}

}  // namespace

std::string BytesOf(const Stored& stored) {
  Json files = Json::object();
  for (const auto& [path, file] : stored.generation.files)
    files[path] = ToJson(file);
  return Packed({{"files", std::move(files)},
                 {"kernel", ToJson(stored.generation.kernel)},
                 {"dhcpClients", stored.generation.dhcpClients},
                 {"live", stored.live},
                 {"configured", stored.configured}});
}

std::optional<Stored> StoredOf(const std::string& bytes) {
  try {
    const Json json = Json::from_cbor(bytes);
    Stored stored{{}, json.at("live"), json.at("configured")};
    for (const auto& [path, file] : json.at("files").items())
      stored.generation.files.emplace(path, FileOf(file));
    stored.generation.kernel = KernelOf(json.at("kernel"));
    json.at("dhcpClients").get_to(stored.generation.dhcpClients);
    return stored;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

std::string BytesOf(const Files& files) {
  Json json = Json::object();
  for (const auto& [path, file] : files)
    json[path] = file ? ToJson(*file) : Json();
  return Packed(json);
}

std::optional<Files> FilesOf(const std::string& bytes) {
  try {
    Files files;
    const Json json = Json::from_cbor(bytes);
    for (const auto& [path, file] : json.items())
      files[path] = file.is_null() ? std::nullopt : std::optional(FileOf(file));
    return files;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

}  // namespace change
