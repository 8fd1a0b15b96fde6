// A host of another compiler family: its half is compiled by clang for the C++ ABI of Visual C++,
// this half makes the objects and hands them over.
#include "foreign_host.h"

#include <gtest/gtest.h>
#include <temvar/temvar.h>

TEST(ForeignHost, CallsThePlainInterfacesAndIsCalledBack) {
  const Library library = {TmvLock(),          TmvTaskPool(), TmvTaskSchedular(), CreateRkTask(),
                           CreateRkTaskFunc(), DestroyRkTask, DestroyRkTaskFunc};
  EXPECT_STREQ(UseLibrary(library), nullptr);
}
