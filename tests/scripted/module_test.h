// SPDX-License-Identifier: BSD-3-Clause
// The fixture of the module's tests: a new world for each test, and no test passes that made the platform complain.
#pragma once

#include "call_log.h"
#include "request.h"
#include "world.h"

#include <ipmib/module.h>

#include <gtest/gtest.h>

#include <string>

namespace ipmib::scripted
{

inline Reply Request::send() const
{
    return sendTo(IP_ConfigCallBack);
}

class ModuleTest : public testing::Test
{
  protected:
    void SetUp() override { newWorld(); }
    void TearDown() override
    {
        EXPECT_EQ(complaints(), std::vector<std::string>{});
        EXPECT_EQ(openIterators(), 0u) << "an iterator was not finalised";
        recordAnswers();
    }

  private:
    // For the report of which object is answered in which test.
    static void recordAnswers()
    {
        std::string parameters;
        for (const std::uint32_t parameter : answeredParameters()) {
            parameters += (parameters.empty() ? "" : " ") + number(parameter);
        }
        RecordProperty("answered", parameters);
    }
};

} // namespace ipmib::scripted
