#include "frame/subject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace temvar {
namespace {

class Recorder : public TMVObserver {
 public:
  Recorder(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {}
  void Update(void* data, const char* key) override {
    log_.push_back(name_ + (key == nullptr ? "-" : key));
    if (data != nullptr) throw std::runtime_error("refused");
  }

 private:
  std::string name_;
  std::vector<std::string>& log_;
};

TEST(Subject, CallsObserversInOrderOfAddition) {
  std::vector<std::string> log;
  Recorder a("a:", log);
  Recorder b("b:", log);
  {
    TMVSubject subject;
    subject.Notify(nullptr, "nobody");
    TMVObserver deaf;  // The base class ignores everything.
    subject.AddObserver(&deaf);
    subject.AddObserver(&b);
    subject.AddObserver(&a);
    subject.AddObserver(&b);
    subject.Notify(nullptr, "x");
  }
  a.Update(nullptr, "y");  // Outlives the subject.
  EXPECT_THAT(log, testing::ElementsAre("b:x", "a:x", "b:x", "a:y"));
}

TEST(Subject, AnExceptionEndsTheWalkAndReachesTheSender) {
  std::vector<std::string> log;
  Recorder a("a:", log);
  Recorder b("b:", log);
  TMVSubject subject;
  subject.AddObserver(&a);
  subject.AddObserver(&b);
  int data = 0;
  EXPECT_THROW(subject.Notify(&data, "x"), std::runtime_error);
  EXPECT_THAT(log, testing::ElementsAre("a:x"));
}

}  // namespace
}  // namespace temvar
