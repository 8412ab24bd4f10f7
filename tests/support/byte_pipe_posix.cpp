#include "tests/support/byte_pipe.h"

#include <unistd.h>

#include <array>
#include <utility>

namespace zorvik::tests {

BytePipe::BytePipe() {
  std::array<int, 2> ends = {-1, -1};
  if (pipe(ends.data()) != 0) return;
  reader = ends[0];
  writer = ends[1];
}

BytePipe::~BytePipe() {
  CloseReader();
  CloseWriter();
}

void BytePipe::CloseReader() {
  close(static_cast<int>(std::exchange(reader, -1)));
}

void BytePipe::CloseWriter() {
  close(static_cast<int>(std::exchange(writer, -1)));
}

}  // namespace zorvik::tests
