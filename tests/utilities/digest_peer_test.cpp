// The same files through md5sum, sha1sum and openssl, which are tools of the Linux machine: this
// file is built there only.
#include <gtest/gtest.h>
#include <temvar/utility_string.h>

#include <cstdio>
#include <random>
#include <string>

#include "support/take.h"
#include "support/work_folder.h"

namespace {

using temvar_test::Take;

std::string OutputOf(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  std::string output;
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
  pclose(pipe);
  return output;
}

class DigestPeerTest : public temvar_test::WorkFolderTest {
 protected:
  // `tool` prints the digest of its input first of all, or behind "= ".
  std::string DigestBy(const std::string& tool) {
    std::string output = OutputOf(tool + " < '" + Path("data") + "' 2> /dev/null");
    const size_t sign = output.rfind("= ");
    if (sign != std::string::npos) output.erase(0, sign + 2);
    return output.substr(0, output.find_first_of(" \n"));
  }
};
TEMVAR_IN_EVERY_PLACE(DigestPeerTest);

TEST_P(DigestPeerTest, RandomData) {
  std::mt19937 random(5);
  bool any_peer = false;
  for (int round = 0; round < 10; ++round) {
    std::string data(random() % 20000, '\0');
    for (char& byte : data) byte = static_cast<char>(random() % 255 + 1);
    PutFile("data", data);
    const std::string md5 = Take(TmvUtilityString()->Md5OfFile(Path("data").c_str()));
    const std::string sha1 = Take(TmvUtilityString()->Sha1OfString(data.c_str()));
    const std::pair<const char*, const std::string&> peers[] = {{"md5sum", md5},
                                                                {"openssl dgst -md5", md5},
                                                                {"sha1sum", sha1},
                                                                {"openssl dgst -sha1", sha1}};
    for (const auto& [tool, ours] : peers) {
      const std::string digest = DigestBy(tool);
      if (digest.empty()) continue;
      EXPECT_EQ(ours, digest) << tool;
      any_peer = true;
    }
  }
  if (!any_peer) GTEST_SKIP() << "neither md5sum, sha1sum nor openssl on this machine";
}

}  // namespace
