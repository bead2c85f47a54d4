// SPDX-License-Identifier: Apache-2.0
// The reader of documents takes or refuses any text, with words; what it takes can be written.
#include "../tools/zarnnetctl/document.h"
#include "../tools/zarnnetctl/yaml.h"
#include "fuzz.h"

namespace fuzz {
namespace {

FUZZ(documents) {
  const std::string text = in.Rest();
  tool::Mistake mistake;
  const auto document = tool::ReadDocument(text, &mistake);
  REQUIRE(document || !mistake.sentence.empty());
  tool::LineOf(text, "/interfaces/eth0/mtu");
  if (!document || !document->is_object()) return;
  const std::string yaml = tool::WrittenAsYaml(*document, nlohmann::json::object());
  REQUIRE(!yaml.empty() || document->empty());
}

}  // namespace
}  // namespace fuzz
