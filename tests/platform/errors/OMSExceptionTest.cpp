#include "platform/errors/OMSException.h"
#include "platform/errors/ThrowError.h"

#include <gtest/gtest.h>

TEST(OMSException, WhatAppendsBothValuesAsAStreamWritesThem) {
  EXPECT_STREQ(OMSException("m", 2, 0.5).what(), "m, value 1 == 2, value 2 == 0.5");
  EXPECT_STREQ(OMSException("x", -1).what(), "x, value 1 == -1, value 2 == 0");
  EXPECT_STREQ(OMSException("y", 1234567).what(), "y, value 1 == 1.23457e+06, value 2 == 0");
}

TEST(ThrowError, SimpleRaisesAServerErrorThatTheSessionCanRecoverFrom) {
  try {
    ThrowError::Simple("omerrors.err", 102);
    FAIL() << "no exception";
  } catch (const OMSException& e) {
    const auto* server = dynamic_cast<const ServerError*>(&e);
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(server->Number(), 102);
    EXPECT_NE(std::string(e.what()).find("still open"), std::string::npos);
  }
}
