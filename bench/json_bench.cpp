// Reads and writes every document with the product's Json and with other libraries. Each reading
// starts from a text and leaves nothing behind; simdjson alone keeps its parser between readings,
// as it is meant to be used.

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <string>

#include "bench/documents.h"
#include "core/json.h"

namespace zorvik::bench {
namespace {

struct Zorvik {
  static constexpr const char* kName = "zorvik";
  using Value = core::Json;
  static bool Read(const std::string& text, Value& value) {
    std::string error;
    return core::ParseJson(text, value, error);
  }
  static std::size_t Write(const Value& value) { return core::WriteJson(value).size(); }
};

struct RapidJson {
  static constexpr const char* kName = "rapidjson";
  using Value = rapidjson::Document;
  static bool Read(const std::string& text, Value& value) {
    value.Parse(text.data(), text.size());
    return !value.HasParseError();
  }
  static std::size_t Write(const Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return buffer.GetSize();
  }
};

struct Nlohmann {
  static constexpr const char* kName = "nlohmann";
  using Value = nlohmann::json;
  static bool Read(const std::string& text, Value& value) {
    value = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    return !value.is_discarded();
  }
  static std::size_t Write(const Value& value) { return value.dump().size(); }
};

struct Simdjson {
  static constexpr const char* kName = "simdjson";
  using Value = simdjson::dom::element;
  static bool Read(const std::string& text, Value& value) {
    static simdjson::dom::parser parser;
    return parser.parse(text).get(value) == simdjson::SUCCESS;
  }
  static std::size_t Write(const Value& value) { return simdjson::minify(value).size(); }
};

void CountBytes(benchmark::State& state, std::size_t size) {
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

template <class Library>
void Register(const Document& document) {
  const auto name = [&](const char* way) {
    return std::string(way) + "/" + document.name + "/" + Library::kName;
  };
  const std::string& text = document.text;
  benchmark::RegisterBenchmark(name("read").c_str(), [&text](benchmark::State& state) {
    // Once before, so that what the first of several equal messages costs doesn't depend on luck.
    typename Library::Value first;
    if (!Library::Read(text, first)) state.SkipWithError("not read");
    first = typename Library::Value();
    for (auto _ : state) {
      typename Library::Value value;
      if (!Library::Read(text, value)) state.SkipWithError("not read");
      benchmark::DoNotOptimize(&value);
    }
    CountBytes(state, text.size());
  });
  benchmark::RegisterBenchmark(name("write").c_str(), [&text](benchmark::State& state) {
    typename Library::Value value;
    if (!Library::Read(text, value)) state.SkipWithError("not read");
    for (auto _ : state) benchmark::DoNotOptimize(Library::Write(value));
    CountBytes(state, text.size());
  });
}

const bool kRegistered = [] {
  for (const Document& document : Documents()) {
    Register<Zorvik>(document);
    Register<RapidJson>(document);
    Register<Nlohmann>(document);
    Register<Simdjson>(document);
  }
  return true;
}();

}  // namespace
}  // namespace zorvik::bench
