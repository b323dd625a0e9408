// A test with user JSMITH logged on over a fresh fax tree given as the
// process's explicit areas.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/fault.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace vltest {

class JsmithTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsExplicitAreas();
    handle_ = LogOn("JSMITH");
    Reported::Clear();
  }
  void TearDown() override {
    os::fault::Clear();
    VlxAPIClosedown(handle_);
  }
  std::string Out() const { return tree_.Users() + "JSMITH\\V-OUT\\"; }
  std::string In() const { return tree_.Users() + "JSMITH\\V-IN\\"; }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
};

}  // namespace vltest
