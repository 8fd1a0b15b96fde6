// The C++ layer of a host that loads the library at run time and is not linked with it.
#include <temvar/job.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "support/dynamic_library.h"

namespace {

TEST(LoadedJob, RunsOverExportsThatWereFoundByName) {
  EXPECT_THROW(tmv::MakeTask("early"), std::logic_error);
  for (int life = 0; life < 2; ++life) {
    std::atomic<int> runs{0};
    {
      const test::DynamicLibrary library(TEMVAR_LIBRARY_FILE);
      EXPECT_THROW(tmv::Load([](const char*) -> void* { return nullptr; }), std::runtime_error);
      tmv::Load([&library](const char* name) {
        return reinterpret_cast<void*>(library.Get<void()>(name));
      });
      tmv::RunningPool pool(2);
      tmv::Job job;
      job.AddLane().Then([&runs] { ++runs; }).Then([&runs] { ++runs; });
      job.Start();
      EXPECT_EQ(job.Wait(), tmv::JobState::kSucceeded);
    }
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(test::IsLoaded(TEMVAR_LIBRARY_FILE));
  }
}

}  // namespace
