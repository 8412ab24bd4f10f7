#include "tests/faulty_editor/faulty_editor.h"

#include <stdexcept>
#include <utility>

namespace zorvik::tests {

using core::Json;

FaultyEditor::FaultyEditor(const std::string& pipe_name, const std::string& token,
                           const std::vector<std::string>& wanted)
    : pipe(pipe_name), bridge(world, token) {
  for (const std::string& text : wanted) {
    const std::size_t sign = text.find('=');
    const Fault fault = FindFault(std::string_view(text).substr(0, sign));
    if (fault == nullptr || sign == std::string::npos)
      throw std::runtime_error("no fault of an operation: " + text);
    faults[text.substr(sign + 1)] = fault;
  }
}

void FaultyEditor::Turn() {
  core::Lines lines;
  pipe.Poll(lines);
  for (const std::string& line : lines) Handle(line);
  while (!later.empty() && later.begin()->first <= Clock::now())
    Write(later.extract(later.begin()).mapped());
}

void FaultyEditor::Handle(const std::string& line) {
  Json request;
  std::string error;
  if (pipe.Connection() == ignored || !core::ParseJson(line, request, error)) return;
  const auto found = faults.find(request.At("op").text);
  if (found != faults.end())
    found->second(*this, request);
  else
    Write(SoundAnswer(request));
}

std::string FaultyEditor::SoundAnswer(const Json& request) {
  const Json answer = bridge.Handle({pipe.Connection(), core::WriteJson(request)}).message;
  return answer.kind == Json::Kind::Null ? "" : core::WriteJson(answer) + '\n';
}

void FaultyEditor::WriteLater(std::string bytes, std::chrono::milliseconds delay) {
  later.emplace(Clock::now() + delay, std::move(bytes));
}

}  // namespace zorvik::tests
