// A process that ends with the plug-in in use: in child processes, which must end as they say.
#include "tests/plugin/pluginCopy.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <thread>

namespace {

using testplugin::PluginCopy;
using testplugin::SampleMachine;

constexpr int kAsExpected = 7;
constexpr unsigned kPatience = 60; // seconds, after which a child counts as hanging

// The exit status; -1 for a signal's.
int statusOfChild(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(kPatience);
        work();
        _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

const PluginCopy* pluginAtEnd = nullptr;

// Later than the plug-in's own last steps, for it is registered before the plug-in is loaded.
void callLate() {
    const std::int64_t before = pluginAtEnd->countOrStatus();
    const std::int32_t status = pluginAtEnd->initialize();
    const std::int64_t after = pluginAtEnd->countOrStatus();
    pluginAtEnd->finalize();
    const bool isFine =
        before == kTavManErrSoftwareFault && status == 0 && after == testplugin::kSampleDevices;
    _exit(isFine ? kAsExpected : 2);
}

TEST(ProcessEnd, CallsThatComeLaterFindNoListAndMayMakeOne) {
    const SampleMachine machine;
    EXPECT_EQ(statusOfChild([] {
                  std::atexit(callLate);
                  const PluginCopy plugin;
                  pluginAtEnd = &plugin;
                  if (plugin.initialize() == 0)
                      std::exit(3);
              }),
              kAsExpected);
}

TEST(ProcessEnd, IsNotDisturbedByAThreadThatStillCalls) {
    const SampleMachine machine;
    for (int time = 0; time < 20; ++time) {
        EXPECT_EQ(statusOfChild([&] {
                      const PluginCopy plugin;
                      if (plugin.initialize() != 0)
                          return;
                      std::atomic<int> calls = 0;
                      std::thread([&] {
                          char text[TAVPLUGIN_TEXT_SIZE];
                          for (std::uint32_t n = 0;; ++n, ++calls) {
                              plugin.getDeviceAttributeUTF8(n % 4, kTavAttrModelName, text);
                              if (time % 2 != 0)
                                  plugin.initialize();
                          }
                      }).detach();
                      while (calls < 100)
                          std::this_thread::yield();
                      std::exit(kAsExpected);
                  }),
                  kAsExpected);
    }
}

} // namespace
