#include "mcp/eras.h"

#include <algorithm>
#include <vector>

#include "authoring/protocols.h"

namespace zorvik::mcp {

using core::Json;

namespace {

Json SupportedList() {
  Json versions = Json::Array({authoring::kNewestProtocol});
  for (const std::string& version : authoring::LegacyProtocols()) versions.Add(Json::Text(version));
  return versions;
}

}  // namespace

std::string SettledVersion(const std::string& requested) {
  const std::vector<std::string>& versions = authoring::LegacyProtocols();
  const auto found = std::find(versions.begin(), versions.end(), requested);
  return found != versions.end() ? *found : versions.front();
}

std::optional<Era> EraOf(const Json& id, const Json& params,
                         const std::optional<std::string>& legacy_version, std::string& failure) {
  const Json& meta = params.At("_meta");
  const Json& asked = meta.At("io.modelcontextprotocol/protocolVersion");
  if (asked.kind == Json::Kind::Text) {
    if (asked.text != authoring::kNewestProtocol) {
      failure = Failure(id, kUnsupportedVersion, "Unsupported protocol version",
                        Json::Object({{"supported", SupportedList()}, {"requested", asked}}));
      return std::nullopt;
    }
    if (meta.At("io.modelcontextprotocol/clientCapabilities").kind != Json::Kind::Object) {
      failure = Failure(id, kInvalidParams,
                        "Invalid params: _meta sem io.modelcontextprotocol/clientCapabilities");
      return std::nullopt;
    }
    return Era{true, authoring::kNewestProtocol};
  }
  if (legacy_version) return Era{false, *legacy_version};

  std::string versions;
  for (const Json& version : SupportedList().items) {
    if (!versions.empty()) versions += ", ";
    versions += version.text;
  }
  failure = Failure(id, kInvalidRequest,
                    "Sem initialize e sem _meta.io.modelcontextprotocol/protocolVersion; versoes "
                    "suportadas: " +
                        versions);
  return std::nullopt;
}

}  // namespace zorvik::mcp
