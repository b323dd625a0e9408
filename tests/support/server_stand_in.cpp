#include "tests/support/server_stand_in.h"

#include <gtest/gtest.h>

#include "api/process_state.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"

namespace vltest {

ServerStandIn::ServerStandIn(const std::string& requestArea) {
#ifdef _WIN32
  holder_ = std::make_unique<FileHolder>(requestArea + "VELOMAR.LOK", "ab");
  EXPECT_TRUE(holder_->opened()) << "the stand-in cannot hold the server's lock file";
#else
  WriteFile(requestArea + "VELOMAR.LOK", "");
  vl::Process().checkServerDisabled = 1;
#endif
}

ServerStandIn::~ServerStandIn() { Stop(); }

void ServerStandIn::Stop() {
#ifdef _WIN32
  holder_.reset();
#else
  vl::Process().checkServerDisabled = 0;
#endif
}

}  // namespace vltest
