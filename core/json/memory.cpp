#include "core/json/memory.h"

#include <array>
#include <string>
#include <utility>

#include "core/platform/memory.h"

namespace zorvik::core {
namespace {

#ifdef ZORVIK_SANITIZED
constexpr bool kKeepsBlocks = false;
#else
constexpr bool kKeepsBlocks = true;
#endif

// Values take multiples of 96 bytes and fields of 128, so that classes of 32 waste nothing.
constexpr std::size_t kClassSize = 32;
// The fields of an object in a reply, some thirty, take 4 KiB.
constexpr std::size_t kLargestBlock = 8'192;
constexpr std::size_t kMostKept = 4'194'304;
constexpr std::size_t kLongestTextKept = 1'048'576;

struct FreeBlock {
  FreeBlock* next;
};

// Without a destructor of its own: documents of static lifetime come back after the end of the main
// thread's objects.
struct FreeBlocks {
  std::array<FreeBlock*, kLargestBlock / kClassSize + 1> first{};  // By class.
  std::size_t room = kMostKept;
  std::string* text = nullptr;
  bool registered = false;
  bool closed = false;
};

constinit thread_local FreeBlocks blocks;

void DeleteBlocks() noexcept {
  for (std::size_t size_class = 0; size_class < blocks.first.size(); ++size_class) {
    for (FreeBlock* block = blocks.first[size_class]; block != nullptr;) {
      FreeBlock* const next = block->next;
      ::operator delete(block);
      blocks.room += size_class * kClassSize;
      block = next;
    }
    blocks.first[size_class] = nullptr;
  }
}

void DeleteKept() noexcept {
  DeleteBlocks();
  delete std::exchange(blocks.text, nullptr);
}

// From the end of the thread on nothing is kept.
struct ThreadEnd {
  ~ThreadEnd() {
    DeleteKept();
    blocks.closed = true;
  }
};

void RegisterThreadEnd() noexcept {
  thread_local const ThreadEnd end;
  blocks.registered = true;
}

std::size_t ClassOf(std::size_t size) {
  return (size + kClassSize - 1) / kClassSize;
}

}  // namespace

void* TakeListMemory(std::size_t size) {
  if (!kKeepsBlocks || size > kLargestBlock) return ::operator new(size);
  const std::size_t size_class = ClassOf(size);
  FreeBlock*& first = blocks.first[size_class];
  const std::size_t class_size = size_class * kClassSize;
  if (first == nullptr) return ::operator new(class_size);
  FreeBlock* const block = first;
  first = block->next;
  blocks.room += class_size;
  return block;
}

void GiveListMemoryBack(void* memory, std::size_t size) noexcept {
  const std::size_t size_class = ClassOf(size);
  if (!kKeepsBlocks || blocks.closed || size > kLargestBlock) {
    ::operator delete(memory);
    return;
  }
  // What came back last lies together, and what a burst left behind long ago does not.
  if (blocks.room < size_class * kClassSize) DeleteBlocks();
  if (!blocks.registered) RegisterThreadEnd();
  FreeBlock*& first = blocks.first[size_class];
  first = ::new (memory) FreeBlock{first};
  blocks.room -= size_class * kClassSize;
}

std::string TakeSpareText() noexcept {
  return blocks.text == nullptr ? std::string() : std::move(*blocks.text);
}

void KeepSpareText(std::string text) {
  if (!kKeepsBlocks || blocks.closed || text.capacity() > kLongestTextKept) return;
  if (!blocks.registered) RegisterThreadEnd();
  if (blocks.text == nullptr) blocks.text = new std::string;
  text.clear();
  blocks.text->swap(text);
}

void ReleaseSpareMemory() noexcept {
  DeleteKept();
  platform::ReturnFreedMemory();
}

}  // namespace zorvik::core
