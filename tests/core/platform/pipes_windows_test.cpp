#include <windows.h>

#include <aclapi.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "core/local_pipe/client.h"
#include "core/local_pipe/server.h"
#include "core/process.h"

namespace zorvik::core {
namespace {

// A server's pipe as a stranger sees it who opens it by its path.
class PipesWindowsTest : public testing::Test {
 protected:
  void TearDown() override {
    if (pipe != INVALID_HANDLE_VALUE) CloseHandle(pipe);
  }

  void Open(const std::string& name, const std::wstring& path) {
    std::string error;
    ASSERT_TRUE(server.Open(name, error, 3)) << error;
    pipe = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE) << GetLastError();
  }

  LocalPipeServer server;
  HANDLE pipe = INVALID_HANDLE_VALUE;
};

TEST_F(PipesWindowsTest, HasAWidePathForTheSystemAndThisUserAndNobodyElse) {
  Open("zorvik-teste-\xC3\xA7\xE2\x82\xAC", L"\\\\.\\pipe\\zorvik-teste-\u00E7\u20AC");
  DWORD flags = PIPE_TYPE_MESSAGE;
  DWORD outgoing = 0;
  DWORD incoming = 0;
  DWORD instances = 0;
  ASSERT_TRUE(GetNamedPipeInfo(pipe, &flags, &outgoing, &incoming, &instances));
  EXPECT_EQ(flags & PIPE_TYPE_MESSAGE, 0u);
  EXPECT_EQ(outgoing, 65'536u);
  EXPECT_EQ(incoming, 65'536u);
  EXPECT_EQ(instances, 4u);

  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(GetSecurityInfo(pipe, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                            &list, nullptr, &descriptor),
            static_cast<DWORD>(ERROR_SUCCESS));
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  EXPECT_TRUE(GetSecurityDescriptorControl(descriptor, &control, &revision));
  EXPECT_NE(control & SE_DACL_PROTECTED, 0);

  std::array<wchar_t, 300> user{};
  std::array<wchar_t, 300> domain{};
  std::array<std::byte, SECURITY_MAX_SID_SIZE> identifier{};
  auto length = static_cast<DWORD>(user.size());
  ASSERT_TRUE(GetUserNameW(user.data(), &length));
  auto size = static_cast<DWORD>(identifier.size());
  length = static_cast<DWORD>(domain.size());
  SID_NAME_USE use{};
  ASSERT_TRUE(LookupAccountNameW(nullptr, user.data(), identifier.data(), &size, domain.data(),
                                 &length, &use));

  ASSERT_EQ(list->AceCount, 2);
  for (DWORD index = 0; index < 2; ++index) {
    void* entry = nullptr;
    ASSERT_TRUE(GetAce(list, index, &entry));
    auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    EXPECT_EQ(allowed->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
    // Windows turns the general right into those of files; Wine keeps it.
    EXPECT_TRUE(allowed->Mask == GENERIC_ALL || allowed->Mask == FILE_ALL_ACCESS);
    EXPECT_TRUE(index == 0 ? IsWellKnownSid(&allowed->SidStart, WinLocalSystemSid)
                           : EqualSid(&allowed->SidStart, identifier.data()));
  }
  LocalFree(descriptor);
}

TEST_F(PipesWindowsTest, TheNameStandsBetweenOneClientAndTheNext) {
  std::string error;
  const std::string name = "zorvik-teste-" + RandomHex(8);
  ASSERT_TRUE(server.Open(name, error, 1)) << error;
  std::atomic<bool> done = false;
  int connected = 0;
  std::thread clients([&] {
    std::string failure;
    for (int i = 0; i < 80; ++i) connected += LocalPipeClient().Connect(name, 30'000, failure);
    done = true;
  });
  std::vector<LocalPipeServer::Message> messages;
  std::vector<std::int32_t> closed;
  while (!done) server.Poll(messages, closed);
  clients.join();
  EXPECT_EQ(connected, 80);
}

}  // namespace
}  // namespace zorvik::core
