#include "examples/sample_editor/bridge.h"

#include <utility>

#include "authoring/catalog.h"
#include "authoring/protocols.h"
#include "examples/sample_editor/errors.h"
#include "examples/sample_editor/operations.h"
#include "examples/sample_editor/rounding.h"

namespace zorvik::sample_editor {

using core::Json;

namespace {

constexpr std::size_t kRememberedLimit = 1000;

Json Success(const Json& id) {
  return Json::Object({{"id", id}, {"ok", true}});
}

Json Failure(const Json& id, Json error) {
  return Json::Object({{"id", id}, {"ok", false}, {"error", std::move(error)}});
}

Json Unauthorized() {
  return authoring::ErrorBody("unauthorized", "O token nao e o deste editor.",
                              "Leia de novo o registro do editor.", Json());
}

Json UnsupportedBridge() {
  return authoring::ErrorBody("unsupported_bridge",
                              "Este editor fala " + std::string(authoring::kBridgeProtocol) + ".",
                              "Use um servidor que fale a mesma ponte.", Json());
}

bool ValidRequestId(const std::string& id) {
  return id.find_first_not_of(
             "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.:-") ==
         std::string::npos;
}

}  // namespace

Bridge::Bridge(World& edited, std::string secret) : world(edited), token(std::move(secret)) {}

Bridge::Reply Bridge::Handle(const core::LocalPipeServer::Message& message) {
  Json request;
  std::string fault;
  // Without an id there is nobody to answer to.
  if (!core::ParseJson(message.line, request, fault) || !request.At("id").IsInteger()) return {};
  const Json& id = request.At("id");
  const std::string& operation = request.At("op").text;
  if (operation == "hello") return Hello(message.connection, request);
  if (request.At("token").text != token || !accepted.contains(message.connection))
    return {Failure(id, Unauthorized())};
  // Every operation is done and answered on the spot, so there is never one to take back.
  if (operation == "cancel") return {Success(id)};
  return {Answer(request)};
}

void Bridge::Forget(std::int32_t connection) {
  accepted.erase(connection);
}

Bridge::Reply Bridge::Hello(std::int32_t connection, const Json& message) {
  const bool known = message.At("token").text == token;
  if (known && message.At("bridge").text == authoring::kBridgeProtocol) {
    accepted.insert(connection);
    return {Success(Json::Int(0))};
  }
  Forget(connection);
  return {.message = Failure(Json::Int(0), known ? UnsupportedBridge() : Unauthorized()),
          .hang_up = true};
}

Json Bridge::Answer(const Json& request) {
  const Json& id = request.At("id");
  const Call call{request.At("op").text,
                  request.At("args"),
                  {"agent", request.At("client").TextOr("cliente MCP")}};
  const std::string& request_id = call.args.At("request_id").text;
  if (!ValidRequestId(request_id))
    return Failure(id, InvalidArgument("request_id", "aceita so A-Z a-z 0-9 _ . : -"));
  // Two clients may well count their requests alike.
  const std::string key = call.author.client + '\n' + request_id;
  if (const auto known = remembered.find(key); known != remembered.end()) {
    Json reply = known->second;
    reply.Set("id", id);
    return reply;
  }
  Json result = Json::Object();
  Json error;
  if (!RunOperation(world, call, result, error)) return Failure(id, std::move(error));
  RoundForAnswer(result);
  Json reply = Json::Object(
      {{"id", id}, {"ok", true}, {"revision", world.revision}, {"result", std::move(result)}});
  // A failed request has applied nothing, and may be repeated with better arguments.
  if (!request_id.empty()) Remember(key, reply);
  return reply;
}

void Bridge::Remember(const std::string& key, const Json& reply) {
  remembered[key] = reply;
  remembered_order.push_back(key);
  if (remembered_order.size() > kRememberedLimit) {
    remembered.erase(remembered_order.front());
    remembered_order.pop_front();
  }
}

}  // namespace zorvik::sample_editor
